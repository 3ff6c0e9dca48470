#include "reference/reference_key.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace norava::reference {

namespace {

constexpr int kBufferFrames = 48000;

double clamp01(double x) {
    return std::clamp(x, 0.0, 1.0);
}

}  // namespace

Key::Key(int note, const SoundSettings& instrument)
    : settings(instrument),
      key(note),
      keyFrequency(static_cast<float>(220.0 * std::exp2((note - 57) / 12.0))) {
    for (Line& line : lines)
        line.data.resize(kBufferFrames);
    reset();
}

void Key::reset() {
    active = firstBlock = false;
    envelope.setFinished();
    envelopeValue = lfoValue = velocity = releaseFlag = 0;
    sinceStart = 0;
    sinceRelease = -1;
    stringFrequency = baseFrequency = pitchRatio = phase = 0;
    saturation = noiseCoefficient = clip = mix1 = mix2 = 0;
    ampTarget = ampRate = amp = envTarget = envRate = env = cutoff = feedback = 0;
    b = c1 = c2 = x1 = x2 = y1 = y2 = held = 0;
    combLevel = combFeedback = 0;
    for (auto* four : {&stage, &damping, &sharpness, &gain, &smoothedGain, &f1, &f2, &mean, &output,
                       &smoothedOutput})
        four->fill(0.0f);
    previousLeft = previousRight = currentLeft = currentRight = inverse1 = inverse2 = 0;
    for (Line& line : lines) {
        std::fill(line.data.begin(), line.data.end(), 0.0f);
        line.position = 0;
    }
}

void Key::start(float noteVelocity) {
    sinceStart = 0;
    sinceRelease = -1;
    releaseFlag = 0;
    velocity = noteVelocity;
    firstBlock = true;
    const int octave = static_cast<int>(settings.octaveSelector * 6.0f);
    stringFrequency = keyFrequency * std::pow(2.0, octave - 3);
    const int period = static_cast<int>(48000 / stringFrequency);
    int s = period, q = period;
    switch (settings.stringRatio) {
        case 0:
            s = std::max(period / 4, 1), q = 4 * s;
            break;
        case 1:
            s = std::max(period / 3, 1), q = 3 * s;
            break;
        case 2:
            s = std::max(period / 2, 1), q = 2 * s;
            break;
        case 4:
            s = 2 * period;
            break;
        case 5:
            s = 3 * period;
            break;
        case 6:
            s = 4 * period;
            break;
        default:
            break;
    }
    q = std::min(q, kBufferFrames);
    s = std::clamp(s, 1, kBufferFrames);
    baseFrequency = 48000.0 / q;
    lines[0].end = lines[1].end = q;
    lines[2].end = lines[3].end = s;
    inverse1 = static_cast<float>(1.0 / q);
    inverse2 = static_cast<float>(1.0 / s);
    lines[4].end =
        std::clamp(static_cast<int>(q * static_cast<double>(settings.combRatio)), 1, kBufferFrames);
    lines[5].end =
        std::clamp(static_cast<int>(s * static_cast<double>(settings.combRatio)), 1, kBufferFrames);
    envelope.start(0, settings.egAttackSeconds, settings.egDecaySeconds, settings.egSustain,
                   settings.egReleaseSeconds, 0, 0, 0, 48000.0, 1.0);
    x1 = x2 = y1 = y2 = 0;
    active = true;
}

void Key::release() {
    sinceRelease = 0;
    releaseFlag = 1;
    envelope.release();
}

float Key::modulation(int destination) const {
    double sum = 0;
    bool used = false;
    for (const ModulationSlot& slot : settings.matrix) {
        if (slot.destination != destination || slot.source == 0) continue;
        used = true;
        const double sources[] = {0,
                                  envelopeValue,
                                  lfoValue,
                                  settings.modWheel,
                                  settings.pitchWheel,
                                  settings.channelAftertouch,
                                  velocity,
                                  key / 80.0,
                                  releaseFlag};
        sum += static_cast<double>(slot.amount) *
               (slot.source > 0 && slot.source < 9 ? sources[slot.source] : 0.0);
    }
    if (!used && destination < 2) return 1.0f;
    return static_cast<float>(std::clamp(sum, -64.0, 64.0));
}

void Key::updateParams(int frames) {
    if (!active) return;
    const auto m = [this](int d) { return static_cast<double>(modulation(d)); };
    const auto table = [this](const float* values, double neutral) {
        return values ? values[key] : neutral;
    };
    saturation =
        static_cast<float>(std::pow(static_cast<double>(settings.stringSaturation), 3) * 100);
    pitchRatio =
        stringFrequency / baseFrequency *
        std::exp2(m(3) / 6 + (table(settings.keyTuningSemitones, 0) + settings.tuneSemitones) / 12);
    pitchRatio = std::min(pitchRatio, 15.999);
    envelopeValue = envelope.GetFrame(frames);
    lfoValue = settings.lfoValue * modulation(0);
    noiseCoefficient =
        static_cast<float>(std::pow(1 - clamp01(settings.noiseRate + m(14)), 0.25) * 0.996);
    clip = settings.hiCutDrive;
    const double g = settings.noiseLevelComplement;
    mix1 = static_cast<float>(g * g);
    mix2 = static_cast<float>(1 - g);

    const double a = 0.5 * std::pow(clamp01(settings.hiCutAttack + m(6)), 2);
    const double dcy = 0.001 + 3 * std::pow(clamp01(settings.hiCutDecay + m(7)), 3);
    if (sinceRelease >= 0) {
        envTarget = 0;
        envRate = 0.002f;
    } else if (sinceStart <= a) {
        envTarget = 1;
        envRate = a < 0.001 ? 1.0f : static_cast<float>(0.0002 / a);
    } else {
        envTarget = static_cast<float>(std::pow(static_cast<double>(settings.hiCutSustain), 2));
        envRate = static_cast<float>(0.0002 / dcy);
    }
    const double hiCut = clamp01(std::pow(settings.hiCutCutoff + 0.5 * m(5), 2));
    cutoff = static_cast<float>(hiCut);
    feedback = static_cast<float>(std::max(-10.0 * settings.hiCutResonance * (1 - hiCut), -4.0));

    const double w = 2 * std::numbers::pi *
                     std::exp2(9.3 * clamp01(settings.loCutCutoff + 0.5 * m(4)) + 5) / 48000;
    const double q = settings.loCutResonance * 10.0 + 1;
    b = static_cast<float>((1 + std::cos(w)) / (2 + std::sin(w) / q));
    c1 = static_cast<float>(-2 * q * std::cos(w) / (q + std::sin(w)));
    c2 = static_cast<float>((q - std::sin(w)) / (q + std::sin(w)));

    for (std::size_t string = 0; string < 2; ++string) {
        const StringSettings& sound = string == 0 ? settings.string1 : settings.string2;
        const int own = static_cast<int>(string);
        const double x = clamp01(sound.dampAmount + (m(13) + m(11 + own)));
        const double f = std::pow(50.0, 2.57 * (1 - 0.35 * x * x * x));
        const auto dampingA = static_cast<float>(std::min(f / 22050, 1.0));
        const auto dampingB =
            static_cast<float>(std::min(f * (1.0 - sound.dampOffset) / 22050, 1.0));
        damping[2 * string] = dampingA;
        damping[2 * string + 1] = dampingB;
        sharpness[2 * string] = static_cast<float>(-0.5 * sound.dampSharpness * (1.0 - dampingA));
        sharpness[2 * string + 1] =
            static_cast<float>(-0.5 * sound.dampSharpness * (1.0 - dampingB));
        const double y = clamp01(sound.decay + (m(10) + m(8 + own)));
        const auto loop = static_cast<float>(std::pow(y, static_cast<double>(0.05f)));
        gain[2 * string] = gain[2 * string + 1] = sound.decayInverted ? 0.0f - loop : loop;
    }

    const double level = std::min(std::pow(10.0, 2 * m(1)), 1e30);
    const double separation = settings.stringStereoSeparation;
    const double left = table(settings.keyGainLeft, 1), right = table(settings.keyGainRight, 1);
    const double k1 = level * (1.0 - settings.stringMix) * 0.05;
    const double k2 = level * settings.stringMix * 0.05;
    const double p1 = clamp01(separation + m(2)), p2 = clamp01(1 - separation + m(2));
    output = {static_cast<float>(k1 * (1 - p1) * left), static_cast<float>(k1 * p1 * right),
              static_cast<float>(k2 * (1 - p2) * left), static_cast<float>(k2 * p2 * right)};
    combFeedback = settings.combFeedbackInverted ? -settings.combFeedback : settings.combFeedback;
    combLevel = settings.combLevelInverted ? -settings.combLevel : settings.combLevel;

    const double dt = frames / 48000.0;
    if (sinceRelease >= 0) {
        if (sinceRelease > settings.ampReleaseSeconds) return reset();
        ampTarget = 0;
        ampRate =
            static_cast<float>(8.82 / (static_cast<double>(settings.ampReleaseSeconds) * 48000));
        sinceRelease += dt;
    } else if (settings.ampAttackSeconds > sinceStart) {
        ampTarget = 5;
        ampRate = static_cast<float>(
            8.82 / (static_cast<double>(settings.ampAttackSeconds) * 39.441975 * 48000));
    } else {
        ampTarget = settings.ampSustain;
        ampRate =
            static_cast<float>(8.82 / (static_cast<double>(settings.ampDecaySeconds) * 48000));
    }
    if (firstBlock) {
        smoothedGain = gain;
        smoothedOutput = output;
    }
    sinceStart += dt;
}

void Key::stringStep(float e, float saturationAmount, float* peak1, float* peak2) {
    for (Line& line : lines)
        line.wrap();
    std::array<float, 4> h;
    for (std::size_t i = 0; i < 4; ++i) {
        mean[i] = mean[i] + (e - mean[i]) * (i < 2 ? inverse1 : inverse2);
        const float driven = e - mean[i];
        h[i] = lines[i].head();
        f1[i] = f1[i] + damping[i] * (h[i] + sharpness[i] * f2[i] - f1[i]);
        f2[i] = f2[i] + damping[i] * (f1[i] - f2[i]);
        f2[i] = f2[i] / (1.0f + saturationAmount * (f2[i] * f2[i]));
        lines[i].head() = f2[i] * smoothedGain[i] + driven;
    }
    const float o1 = h[0] + lines[4].head() * combLevel;
    const float o2 = h[2] + lines[5].head() * combLevel;
    *peak1 = std::max(*peak1, std::abs(o1 * (smoothedOutput[0] + smoothedOutput[1])));
    *peak2 = std::max(*peak2, std::abs(o2 * (smoothedOutput[2] + smoothedOutput[3])));
    lines[4].head() = lines[4].head() * combFeedback + h[1];
    lines[5].head() = lines[5].head() * combFeedback + h[3];
    for (Line& line : lines)
        ++line.position;
    previousLeft = currentLeft;
    previousRight = currentRight;
    currentLeft = o1 * smoothedOutput[0] + o2 * smoothedOutput[2];
    currentRight = o1 * smoothedOutput[1] + o2 * smoothedOutput[3];
    for (std::size_t i = 0; i < 4; ++i) {
        smoothedGain[i] += 0.05f * (gain[i] - smoothedGain[i]);
        smoothedOutput[i] += 0.001f * (output[i] - smoothedOutput[i]);
    }
}

namespace {

void renderGroup(const std::array<Key*, 4>& group, std::uint32_t& seed, float* left, float* right,
                 int frames, bool first, float* peak1, float* peak2) {
    for (int i = 0; i < frames; ++i) {
        std::array<float, 4> exciter;
        for (std::size_t lane = 0; lane < 4; ++lane) {
            Key& k = *group[lane];
            const float u = static_cast<float>(seed) / 4294967296.0f;
            seed = seed * 0x0BB38435u + 0x3619636Bu;
            if (u > k.noiseCoefficient) k.held = u;
            const float x = k.held * k.mix1 + k.mix2;
            const float y = k.b * (x - 2.0f * k.x1 + k.x2) - (k.c1 * k.y1 + k.c2 * k.y2);
            k.x2 = k.x1;
            k.x1 = x;
            k.y2 = k.y1;
            k.y1 = y;
            k.env = k.env + (k.envTarget - k.env) * k.envRate;
            const float g = k.env * k.cutoff;
            auto& s = k.stage;
            s[0] = s[0] + g * (y + k.feedback * s[3] - s[0]);
            for (std::size_t n = 1; n < 4; ++n)
                s[n] = s[n] + g * (s[n - 1] - s[n]);
            s[3] = s[3] / (1.0f + k.clip * (s[3] * s[3]));
            exciter[lane] = s[3];
        }
        double sumLeft = 0, sumRight = 0;
        for (std::size_t lane = 0; lane < 4; ++lane) {
            Key& k = *group[lane];
            if (!k.active) continue;
            k.phase += k.pitchRatio;
            const int steps = static_cast<int>(k.phase);
            k.phase -= steps;
            for (int n = 0; n < steps; ++n)
                k.stringStep(exciter[lane], group[0]->saturation, peak1, peak2);
            const double pl = k.previousLeft, pr = k.previousRight;
            sumLeft += (pl + (k.currentLeft - pl) * k.phase) * static_cast<double>(k.amp);
            sumRight += (pr + (k.currentRight - pr) * k.phase) * static_cast<double>(k.amp);
            k.amp = std::min(k.amp + (k.ampTarget - k.amp) * k.ampRate, 1.0f);
        }
        left[i] = first ? static_cast<float>(sumLeft) : left[i] + static_cast<float>(sumLeft);
        right[i] = first ? static_cast<float>(sumRight) : right[i] + static_cast<float>(sumRight);
    }
}

}  // namespace

void processKeys(std::vector<Key>& keys, std::uint32_t& seed, float* left, float* right, int frames,
                 float* peak1, float* peak2) {
    for (Key& k : keys)
        k.updateParams(frames);
    std::vector<Key*> list;
    for (Key& k : keys)
        if (k.active) list.push_back(&k);
    const std::size_t sounding = list.size();
    for (Key& k : keys)
        if (!k.active) list.push_back(&k);
    for (std::size_t i = 0; i < sounding; i += 4)
        renderGroup({list[i], list[i + 1], list[i + 2], list[i + 3]}, seed, left, right, frames,
                    i == 0, peak1, peak2);
}

}  // namespace norava::reference
