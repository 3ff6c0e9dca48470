#include "render/midi_track.h"

#include <cstddef>
// The library's header expects size_t to be known.
#include <portSMF/mfmidi.h>

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <string>

#include "render/bad_input.h"

namespace norava {

namespace {

using Bytes = std::span<const std::uint8_t>;

// A file with one track, as the library wants to see it in front of every track.
constexpr std::uint8_t kOneTrackHeader[] = {'M', 'T', 'h', 'd', 0, 0, 0, 6, 0, 0, 0, 1, 0, 96};

// A track whose one text makes the library allocate its message buffer. It looks at the first
// five bytes of any meta event without asking how many there are, so there must be some.
constexpr std::uint8_t kPrimingTrack[] = {'M',  'T', 'r', 'k', 0, 0, 0, 10, 0,
                                          0xFF, 1,   6,   0,   0, 0, 0, 0,  0};

// The library's buffer grows by copying 128 bytes at a time, so a message this long is already
// a noticeable wait.
constexpr std::size_t kLongestMessage = 1 << 20;

// Ticks are summed up from the file; a sum beyond this comes from no song.
constexpr std::int64_t kLatestTick = std::int64_t{1} << 40;

constexpr std::uint8_t kTempoHead[] = {0xFF, 0x51, 3};
constexpr std::size_t kTempoBytes = 6;

// Collects what the library finds in one track. The library is never trusted with more than one
// track's bytes, and stops when it is told that they have ended: that is how an error ends it.
class TrackReader final : Midifile_reader {
  public:
    TrackReader() { Feed(kPrimingTrack); }
    ~TrackReader() { finalize(); }
    TrackReader(const TrackReader&) = delete;
    TrackReader& operator=(const TrackReader&) = delete;

    MidiTrack Read(Bytes chunk) {
        track_ = {};
        Feed(chunk);
        if (!error_.empty()) throw BadInput(error_);
        return std::move(track_);
    }

  private:
    void Feed(Bytes chunk) {
        header_ = kOneTrackHeader;
        chunk_ = chunk;
        position_ = 0;
        ended_ = false;
        error_.clear();
        midifile();
    }

    void Fail(const std::string& what) {
        if (!ended_ && error_.empty()) error_ = what;
        ended_ = true;
    }

    // The library adds up delta times without a bound; they must stay in range and never go back.
    bool AdvanceTime() {
        if (ended_) return false;
        if (Mf_currtime < track_.lengthTicks || Mf_currtime > kLatestTick) {
            Fail("a track's time goes out of bounds");
            return false;
        }
        track_.lengthTicks = Mf_currtime;
        return true;
    }

    void Channel(int kind, int channel, int data1, int data2) {
        if (!AdvanceTime()) return;
        constexpr int kHighestData = 127;
        if (std::min(data1, data2) < 0 || std::max(data1, data2) > kHighestData) {
            return Fail("a track holds a data byte above 127");
        }
        track_.events.push_back(
            {track_.lengthTicks,
             {std::uint8_t(kind | channel), std::uint8_t(data1), std::uint8_t(data2)}});
    }

    int Mf_getc() override {
        if (ended_) return EOF;
        if (!header_.empty()) {
            const int byte = header_.front();
            header_ = header_.subspan(1);
            return byte;
        }
        return position_ < chunk_.size() ? chunk_[position_++] : EOF;
    }
    void Mf_error(char* what) override {
        Fail(position_ == chunk_.size() ? "the file is truncated in the middle of a track"
                                        : std::string("a track is damaged: ") + what);
    }
    void Mf_eot() override {
        AdvanceTime();
        ended_ = true;
    }
    void Mf_endtrack() override { Mf_eot(); }

    void Mf_tempo(int microseconds) override {
        if (!AdvanceTime()) return;
        // The three bytes are taken from a message of any length, so look at what was sent.
        const Bytes sent = chunk_.first(position_);
        if (sent.size() < kTempoBytes ||
            !std::equal(std::begin(kTempoHead), std::end(kTempoHead), sent.end() - kTempoBytes)) {
            return Fail("a tempo change has the wrong length");
        }
        if (microseconds == 0) return Fail("a tempo change asks for infinite speed");
        track_.tempos.push_back({track_.lengthTicks, microseconds});
    }

    void Mf_on(int channel, int key, int velocity) override {
        Channel(NOTEON, channel, key, velocity);
    }
    void Mf_off(int channel, int key, int velocity) override {
        Channel(NOTEOFF, channel, key, velocity);
    }
    void Mf_pressure(int channel, int key, int value) override {
        Channel(PRESSURE, channel, key, value);
    }
    void Mf_controller(int channel, int number, int value) override {
        Channel(CONTROLLER, channel, number, value);
    }
    void Mf_pitchbend(int channel, int low, int high) override {
        Channel(PITCHBEND, channel, low, high);
    }
    void Mf_program(int channel, int program) override { Channel(PROGRAM, channel, program, 0); }
    void Mf_chanpressure(int channel, int value) override {
        Channel(CHANPRESSURE, channel, value, 0);
    }

    void* Mf_malloc(size_t size) override {
        if (size > kLongestMessage) Fail("a message is longer than a megabyte");
        return std::calloc(size, 1);
    }
    void Mf_free(void* memory, size_t) override { std::free(memory); }

    // Heard of, and of no use to an instrument.
    void Mf_starttrack() override {}
    void Mf_header(int, int, int) override {}
    void Mf_chanprefix(int) override {}
    void Mf_portprefix(int) override {}
    void Mf_sysex(int, unsigned char*) override {}
    void Mf_arbitrary(int, unsigned char*) override {}
    void Mf_metamisc(int, int, unsigned char*) override {}
    void Mf_seqnum(int) override {}
    void Mf_smpte(int, int, int, int, int) override {}
    void Mf_timesig(int, int, int, int) override {}
    void Mf_keysig(int, int) override {}
    void Mf_sqspecific(int, unsigned char*) override {}
    void Mf_text(int, int, unsigned char*) override {}

    Bytes header_;
    Bytes chunk_;
    std::size_t position_ = 0;  // in chunk_
    bool ended_ = false;
    std::string error_;
    MidiTrack track_;
};

}  // namespace

MidiTrack ReadMidiTrack(Bytes chunk) {
    return TrackReader().Read(chunk);
}

}  // namespace norava
