// The whole instrument: frames in core cycles, the worst blocks against the median one, memory and
// start-up.

#include <benchmark/benchmark.h>
#if defined(__GLIBC__)
#include <malloc.h>
#endif
#if defined(__linux__)
#include <sys/resource.h>
#include <unistd.h>
#endif

#include <algorithm>
#include <array>
#include <fstream>
#include <limits>
#include <memory>
#include <vector>

#include "benchmarks/cycles.h"
#include "synth/player.h"

namespace norava::bench {
namespace {

using test::Player;

constexpr double kSampleRate = 48000.0;
constexpr int kBlockFrames = 64;
constexpr double kQuotedHertz = 4.0e9;  // of the processor that "times real time" is said for

// An instrument with its own buffers to render into.
class Bench {
  public:
    explicit Bench(double rate = kSampleRate) : player(rate) {}

    void UseEveryEffect() {
        for (int band = 0; band < kResonatorBands; ++band) {
            const float share = static_cast<float>(band) / kResonatorBands;
            player.Set({{param::kResonatorFrequency + band, 0.2f + 0.7f * share}});
            player.Set({{param::kResonatorFeedback + band, 0.9f}});
            player.Set({{param::kResonatorOn + band, 1.0f}});
        }
        player.Set({{param::kChorusOn, 1.0f}, {param::kReverbOn, 1.0f}, {param::kDelayOn, 1.0f}});
    }
    void AllNotes(bool on) {
        for (int note = kFirstKeyNote; note < kFirstKeyNote + kNumKeys; ++note) {
            on ? player.NoteOn(note) : player.NoteOff(note);
        }
    }
    void Block(int frames) {
        const std::array<float*, 2> channels{left_.data(), right_.data()};
        HostBlock host;
        host.outputs = channels;
        host.frames = frames;
        RunBlock(player.synth, host, {.tempo = 120.0, .beatPos = {}, .transportChangedTo = {}});
    }
    void Seconds(double seconds, int block = 512) {
        const int blocks = static_cast<int>(seconds * player.synth.GetSampleRate()) / block;
        for (int i = 0; i < blocks; ++i)
            Block(block);
    }

    Player player;

  private:
    std::array<float, 8192> left_{};
    std::array<float, 8192> right_{};
};

// Instruments that play the same, one block of each after the other, and what they cost.
struct Ensemble {
    // Each with `notes` sounding keys, every effect or none.
    Ensemble(int size, const std::vector<int>& notes, bool effects, double rate, int block)
        : blockFrames(block), blocks(std::max(1024 / block, 1)) {
        for (int i = 0; i < size; ++i) {
            Bench& bench = *benches.emplace_back(std::make_unique<Bench>(rate));
            if (effects) bench.UseEveryEffect();
            for (const int note : notes)
                bench.player.NoteOn(note);
            bench.Seconds(0.5);
        }
    }
    void Measure() {
        measured.take([&] {
            for (int i = 0; i < blocks; ++i) {
                for (const auto& bench : benches)
                    bench->Block(blockFrames);
            }
        });
    }
    // Measures both in turn, often enough in a row that each has the caches to itself again.
    static void MeasureInTurn(Ensemble& a, Ensemble& b) {
        constexpr int kInARow = 8;
        for (int i = 0; i < kInARow; ++i)
            a.Measure();
        for (int i = 0; i < kInARow; ++i)
            b.Measure();
    }
    double Frames() const { return static_cast<double>(benches.size()) * blocks * blockFrames; }
    double CyclesPerFrame() const { return measured.undisturbed() / Frames(); }
    // A frame's cost in multiples of one of `other`, measured in turn with this.
    double TimesDearerThan(const Ensemble& other) const {
        return measured.timesLongerThan(other.measured) * other.Frames() / Frames();
    }

    std::vector<std::unique_ptr<Bench>> benches;
    int blockFrames;
    int blocks;  // in one measurement
    Measurements measured;
};

// `count` notes from the middle outwards.
std::vector<int> MiddleNotes(int count) {
    std::vector<int> notes;
    for (int i = 0; i < count; ++i)
        notes.push_back(kFirstKeyNote + (42 + i) % kNumKeys);
    return notes;
}

void instrument(benchmark::State& state, int notes, bool effects, double rate, int blockFrames) {
    Ensemble one(1, MiddleNotes(notes), effects, rate, blockFrames);
    for (auto _ : state)
        one.Measure();
    state.counters["cycles/frame"] = one.CyclesPerFrame();
    state.counters["x real time"] = kQuotedHertz / (one.CyclesPerFrame() * rate);
}

BENCHMARK_CAPTURE(instrument, idle, 0, false, 48000.0, kBlockFrames);
BENCHMARK_CAPTURE(instrument, idleAt44k1, 0, false, 44100.0, kBlockFrames);
BENCHMARK_CAPTURE(instrument, idleFramesOf1, 0, false, 48000.0, 1);
BENCHMARK_CAPTURE(instrument, oneNote, 1, false, 48000.0, kBlockFrames);
BENCHMARK_CAPTURE(instrument, keys84, 84, false, 48000.0, kBlockFrames);
BENCHMARK_CAPTURE(instrument, keys84Effects, 84, true, 48000.0, kBlockFrames);
BENCHMARK_CAPTURE(instrument, keys84EffectsAt44k1, 84, true, 44100.0, kBlockFrames);

// A second of all keys and effects against a second of the same at another rate or in other blocks.
struct Case {
    double rate;
    int blockFrames;
};
void instrumentAgainst(benchmark::State& state, Case measured, Case base) {
    const auto make = [](Case c) {
        return Ensemble(1, MiddleNotes(kNumKeys), true, c.rate, c.blockFrames);
    };
    Ensemble one = make(measured);
    Ensemble other = make(base);
    for (auto _ : state)
        Ensemble::MeasureInTurn(one, other);
    state.counters["cycles/frame"] = one.CyclesPerFrame();
    state.counters["base cycles/frame"] = other.CyclesPerFrame();
    state.counters["ratio"] = one.TimesDearerThan(other) * measured.rate / base.rate;
}
BENCHMARK_CAPTURE(instrumentAgainst, at96k, {96000.0, kBlockFrames}, {48000.0, kBlockFrames});
BENCHMARK_CAPTURE(instrumentAgainst, framesOf1, {48000.0, 1}, {48000.0, 512});

// One block in which something happens to all keys, against the median block around it.
void worstBlock(benchmark::State& state, bool ending) {
    constexpr std::size_t kBlocks = 100;
    constexpr int kReleaseBlocks = 4800 / kBlockFrames;  // of the shortest release
    std::array<double, kBlocks> least;
    least.fill(std::numeric_limits<double>::infinity());
    Bench bench;
    for (auto _ : state) {
        bench.player.synth.Reset(0.0);
        bench.AllNotes(true);
        bench.Seconds(0.05, kBlockFrames);
        bench.AllNotes(!ending);
        for (double& time : least) {
            time = std::min(time, detail::nanosecondsOf([&] { bench.Block(kBlockFrames); }));
        }
    }
    // Notes that end do so in one of the blocks after the release; every one before it is like the
    // others.
    const auto sounding = ending ? least.begin() + kReleaseBlocks : least.end();
    const double worst = ending ? *std::max_element(sounding, least.end()) : least.front();
    std::vector<double> sorted(least.begin(), sounding);
    std::ranges::sort(sorted);
    state.counters["worst/median"] = worst / sorted[sorted.size() / 2];
}

BENCHMARK_CAPTURE(worstBlock, noteOns84, false)->Iterations(30);
BENCHMARK_CAPTURE(worstBlock, noteEnds84, true)->Iterations(30);

// What the process has mapped; 0 where nobody tells.
double MappedBytes() {
#if defined(__GLIBC__)
    malloc_trim(0);
#endif
    long pages = 0;
#if defined(__linux__)
    std::ifstream("/proc/self/statm") >> pages;
    pages *= sysconf(_SC_PAGESIZE);
#endif
    return static_cast<double>(pages);
}

// Pages that this process had to wait for so far.
long PageFaults() {
#if defined(__linux__)
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_minflt + usage.ru_majflt;
#else
    return 0;
#endif
}

// A whole state, or a reset in the callback, in one block of a chord with every effect.
void loadState(benchmark::State& state) {
    Bench bench;
    bench.UseEveryEffect();
    bench.player.NoteOn(60);
    bench.Seconds(0.5);
    std::vector<char> block(kStateSize);
    bench.player.synth.SaveState(block.data());
    for (auto _ : state) {
        benchmark::DoNotOptimize(bench.player.synth.LoadState(block.data(), kStateSize));
        bench.player.synth.ApplyPendingValues();
    }
}
BENCHMARK(loadState)->Unit(benchmark::kMicrosecond);

// The block in which a program takes the instrument's sound away, against the blocks before it.
void resetBlock(benchmark::State& state) {
    constexpr int kBlocks = 20;
    Bench bench;
    bench.UseEveryEffect();
    std::vector<char> program(kStateSize);
    bench.player.synth.SaveState(program.data());
    Measurements resets;
    Measurements others;
    for (auto _ : state) {
        for (int note = 0; note < 8; ++note)
            bench.player.NoteOn(45 + 5 * note);
        bench.Seconds(0.1, kBlockFrames);
        for (int i = 0; i < kBlocks; ++i)
            others.take([&] { bench.Block(kBlockFrames); });
        bench.player.synth.LoadProgram(program.data(), kStateSize, "program");
        resets.take([&] { bench.Block(kBlockFrames); });
    }
    state.counters["worst/median"] = resets.quantile(0.5) / others.quantile(0.5);
}
BENCHMARK(resetBlock)->Iterations(100);

// How long a host waits for the blocks of a chord with every effect, interruptions by whatever else
// the machine does included; and the pages that were missing meanwhile. Two minutes long, in which
// what is not struck again dies away, through all the numbers near 0 that some processors are slow
// with.
enum class Chord { struckAgain, held, released };

void blockSpread(benchmark::State& state, Chord chord) {
    constexpr std::size_t kBlocks = 100000;
    constexpr std::size_t kBlocksAStroke = 400;
    Bench bench;
    bench.UseEveryEffect();
    const auto strike = [&] {
        for (int note = 0; note < 8; ++note)
            bench.player.NoteOn(45 + 5 * note);
    };
    strike();
    bench.Seconds(0.5, kBlockFrames);
    if (chord == Chord::released) {
        for (int note = 0; note < 8; ++note)
            bench.player.NoteOff(45 + 5 * note);
    }
    std::vector<double> microseconds(kBlocks, 0.0);
    for (auto _ : state) {
        const long faults = PageFaults();
        for (std::size_t i = 0; i < kBlocks; ++i) {
            if (chord == Chord::struckAgain && i % kBlocksAStroke == 0) strike();
            const auto start = detail::Clock::now();
            bench.Block(kBlockFrames);
            microseconds[i] = 1e-3 * detail::nanosecondsBetween(start, detail::Clock::now());
        }
        state.counters["page faults"] = static_cast<double>(PageFaults() - faults);
    }
    std::ranges::sort(microseconds);
    state.counters["median us"] = microseconds[kBlocks / 2];
    state.counters["99.9% us"] = microseconds[kBlocks - kBlocks / 1000];
    state.counters["worst us"] = microseconds.back();
}
BENCHMARK_CAPTURE(blockSpread, struckAgain, Chord::struckAgain)->Iterations(1);
BENCHMARK_CAPTURE(blockSpread, held, Chord::held)->Iterations(1);
BENCHMARK_CAPTURE(blockSpread, released, Chord::released)->Iterations(1);

void makeAndReset(benchmark::State& state) {
    for (auto _ : state) {
        const auto bench = std::make_unique<Bench>(44100.0);
        bench->player.synth.Reset(kSampleRate);
        benchmark::DoNotOptimize(bench.get());
    }
    const double before = MappedBytes();
    const auto player = std::make_unique<Player>(kSampleRate);
    state.counters["MB"] = (MappedBytes() - before) / 1.0e6;
}
BENCHMARK(makeAndReset)->Unit(benchmark::kMillisecond);

// Many instances of the same chord against one: what they cost each other by sharing the caches.
void instances(benchmark::State& state, const std::vector<int>& chord, bool effects) {
    Ensemble one(1, chord, effects, kSampleRate, kBlockFrames);
    Ensemble many(32, chord, effects, kSampleRate, kBlockFrames);
    for (auto _ : state)
        Ensemble::MeasureInTurn(one, many);
    state.counters["cycles/frame"] = many.CyclesPerFrame();
    state.counters["base cycles/frame"] = one.CyclesPerFrame();
    state.counters["ratio"] = many.TimesDearerThan(one);
}
const std::vector<int> kChord = {45, 50, 55, 60, 65, 70, 75, 80};
BENCHMARK_CAPTURE(instances, idle, {}, false);
BENCHMARK_CAPTURE(instances, chord, kChord, false);
BENCHMARK_CAPTURE(instances, chordEffects, kChord, true);

}  // namespace
}  // namespace norava::bench
