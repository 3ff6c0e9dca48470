#include "dsp/key_voice.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "dsp/numbers.h"

namespace norava {

namespace {

constexpr int kMaxLineFrames = kInternalRate;

// The strings' lengths for one note, in frames at kInternalRate.
struct StringLengths {
    int string1;
    int string2;
};

// Frames of one period, at least 1. hz > 0.
int periodFrames(double hz) {
    return std::max(1, static_cast<int>(std::min(kInternalRate / hz, 1e9)));
}

// The two strings stand in a ratio of small whole numbers; where the second is the shorter one, the
// first becomes a whole multiple of it.
StringLengths stringLengths(int period, int ratio) {
    switch (ratio) {
        case 0:
        case 1:
        case 2: {
            const int multiple = 4 - ratio;
            const int second = std::max(1, period / multiple);
            return {multiple * second, second};
        }
        case 4:
        case 5:
        case 6:
            return {period, (ratio - 2) * period};
        default:
            return {period, period};
    }
}

double octaveFactor(float selector) {
    // Single precision: the seven knob positions k / 6 give k exactly.
    const float position = selector * 6.0f;
    if (!(position > -1.0f && position < 7.0f)) return 1.0;
    return std::ldexp(1.0, static_cast<int>(position) - 3);
}

std::size_t alignedBytes(int frames, int stride) {
    return (static_cast<std::size_t>(frames) * static_cast<std::size_t>(stride) + 15) &
           ~std::size_t{15};
}

constexpr v128i kLineStride = {8, 8, 4, 4};

// Where a key's lines lie in its memory, as long as its lowest tuning can need: three octaves down,
// and the second string four times as long as the first.
struct KeyLineLayout {
    explicit KeyLineLayout(float keyFrequencyHz) {
        const int period = std::min(periodFrames(keyFrequencyHz / 8.0), kMaxLineFrames);
        const int longest = std::min(4 * period, kMaxLineFrames);
        capacityFrames = {period, longest, period, longest};
        for (int i = 0; i < kKeyLines; ++i) {
            start[i] = static_cast<std::int32_t>(bytes);
            bytes += alignedBytes(capacityFrames[static_cast<std::size_t>(i)], kLineStride[i]);
        }
    }
    std::array<int, kKeyLines> capacityFrames;
    v128i start{};
    std::size_t bytes = 0;
};

float keyFrequency(int key) {
    return static_cast<float>(220.0 * std::exp2((key - 57) / 12.0));
}

}  // namespace

std::size_t CNoravaKey::bytesFor(int key) {
    return LineMemory::sizeOf(KeyLineLayout(keyFrequency(key)).bytes);
}

CNoravaKey::CNoravaKey(int key, SoundSettings& settings, LineMemory& memory)
    : settings_(settings), key_(key), keyFrequencyHz_(keyFrequency(key)) {
    const KeyLineLayout layout(keyFrequencyHz_);
    capacityFrames_ = layout.capacityFrames;
    data_.strings.lines.start = layout.start;
    data_.strings.lines.stride = kLineStride;
    memory_ = memory.take(layout.bytes);
    data_.strings.memory = reinterpret_cast<unsigned char*>(memory_.get());
    reset();
}

CNoravaKey::CNoravaKey(int key, SoundSettings& settings)
    : CNoravaKey(key, settings, *std::make_unique<LineMemory>(bytesFor(key))) {}

void CNoravaKey::setActive(bool active) {
    active_ = active;
    const auto at = static_cast<unsigned>(index());
    const std::uint64_t bit = std::uint64_t{1} << (at % 64);
    std::uint64_t& word = settings_.activeKeys[at / 64 % settings_.activeKeys.size()];
    word = active ? word | bit : word & ~bit;
}

void CNoravaKey::reset() {
    setActive(false);
    modulationEnvelope_.setFinished();
    envelopeValue_ = lfoAmplitude_ = lfoValue_ = velocity_ = releaseFlag_ = 0.0f;
    secondsSinceStart_ = 0.0;
    secondsSinceRelease_ = -1.0;
    baseRatio_ = 1.0;

    data_.exciter = KeyExciter{};
    settings_.exciters.leave(index());
    KeyStrings& strings = data_.strings;
    KeyStrings cleared{};
    cleared.lines = strings.lines;
    cleared.lines.next = cleared.lines.valid = cleared.lines.start;
    cleared.memory = strings.memory;
    strings = cleared;

    seenRevision_ = settledRevision_ = 0;
    memos_ = Memos{};
}

void CNoravaKey::start(float velocity) {
    secondsSinceStart_ = 0.0;
    secondsSinceRelease_ = -1.0;
    releaseFlag_ = 0.0f;
    velocity_ = velocity;
    setStringLengths();
    modulationEnvelope_.start(0.0, settings_.egAttackSeconds, settings_.egDecaySeconds,
                              settings_.egSustain, settings_.egReleaseSeconds, 0.0, 0.0, 0.0,
                              static_cast<double>(kInternalRate), 1.0);
    KeyExciter& exciter = data_.exciter;
    exciter.loCutX1 = exciter.loCutX2 = exciter.loCutY1 = exciter.loCutY2 = 0.0f;
    settings_.exciters.clearLoCut(index());
    seenRevision_ = settledRevision_ = 0;
    setActive(true);
}

void CNoravaKey::setStringLengths() {
    KeyStrings& strings = data_.strings;
    const double stringHz = keyFrequencyHz_ * octaveFactor(settings_.octaveSelector);
    const StringLengths wanted = stringLengths(periodFrames(stringHz), settings_.stringRatio);
    const int frames1 = std::min(wanted.string1, capacityFrames_[kString1Pair]);
    const int frames2 = std::min(wanted.string2, capacityFrames_[kString2Pair]);
    const double combRatio = clampOr(settings_.combRatio, 0.0f, 1.0f, 0.0f);
    const auto combFrames = [&](int frames) {
        return std::max(1, static_cast<int>(frames * combRatio));
    };
    KeyLines& lines = strings.lines;
    lines.length = v128i{frames1, frames2, combFrames(frames1), combFrames(frames2)} * lines.stride;
    lines.end = lines.start + lines.length;
    strings.allValid = false;

    baseRatio_ = stringHz / (kInternalRate / static_cast<double>(frames1));
    const auto inverse1 = static_cast<float>(1.0 / frames1);
    const auto inverse2 = static_cast<float>(1.0 / frames2);
    strings.inverseLength = v128_Set(inverse1, inverse1, inverse2, inverse2);
}

void CNoravaKey::release() {
    secondsSinceRelease_ = 0.0;
    releaseFlag_ = 1.0f;
    modulationEnvelope_.release();
    seenRevision_ = settledRevision_ = 0;
}

double CNoravaKey::sourceValue(int source) const {
    switch (static_cast<ModulationSource>(source)) {
        case ModulationSource::envelope:
            return envelopeValue_;
        case ModulationSource::lfo:
            return lfoValue_;
        case ModulationSource::modWheel:
            return settings_.modWheel;
        case ModulationSource::pitchWheel:
            return settings_.pitchWheel;
        case ModulationSource::aftertouch:
            return settings_.channelAftertouch;
        case ModulationSource::velocity:
            return velocity_;
        case ModulationSource::keyNumber:
            return key_ / 80.0;
        case ModulationSource::release:
            return releaseFlag_;
        case ModulationSource::none:
            break;
    }
    return 0.0;
}

float CNoravaKey::getModulator(int destination) const {
    // Feedback of the LFO into its own amplitude would otherwise grow without bound.
    constexpr double kLimit = 64.0;
    if (destination < 0 || destination >= kModulationDestinations) return 0.0f;
    if (settings_.plan.revision != settings_.revision)
        settings_.plan.decode(settings_.matrix, settings_.revision);
    unsigned slots = settings_.plan.slots[static_cast<std::size_t>(destination)];
    if (slots == 0) {
        const auto d = static_cast<ModulationDestination>(destination);
        const bool isFactor =
            d == ModulationDestination::lfoAmplitude || d == ModulationDestination::level;
        return isFactor ? 1.0f : 0.0f;
    }
    double sum = 0.0;
    for (std::size_t s = 0; slots != 0; ++s, slots >>= 1) {
        if ((slots & 1u) == 0) continue;
        const ModulationSlot& slot = settings_.matrix[s];
        sum += static_cast<double>(slot.amount) * sourceValue(slot.source);
    }
    return static_cast<float>(clampOr(sum, -kLimit, kLimit, 0.0));
}

}  // namespace norava
