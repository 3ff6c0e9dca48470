#include "program/check_picture.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <ostream>
#include <string>

namespace norava {

namespace {

constexpr int kRowHeight = 13, kHeadHeight = 44, kGroupHeight = 22, kFootHeight = 14;
constexpr int kNameWidth = 150, kStripWidth = 92, kStripGap = 14, kNearestWidth = 120;
constexpr int kMargin = 16;

struct Strip {
    const char* title;
    const char* unit;
    double from, to;                // the ends of the strip
    double allowedFrom, allowedTo;  // shaded
    bool isPitch;                   // faint where a program is not meant to be pitched
    std::array<double ProgramFigures::*, 2> values;  // the second may be null
};

constexpr double kAny = 1.0e3;
const std::array kStrips{
    Strip{"loudness",
          "LUFS",
          -20,
          -16,
          kLoudnessTarget - kLoudnessTolerance,
          kLoudnessTarget + kLoudnessTolerance,
          false,
          {&ProgramFigures::loudness, nullptr}},
    Strip{"peak, raised",
          "dBFS",
          -14,
          0,
          -kAny,
          kHighestPeak,
          false,
          {&ProgramFigures::chordPeak, &ProgramFigures::raisedPeak}},
    Strip{"A3 and C5",
          "cents",
          -10,
          10,
          -kPitchTolerance,
          kPitchTolerance,
          true,
          {&ProgramFigures::centsA3, &ProgramFigures::centsC5}},
    Strip{"release to silence",
          "s",
          0,
          kLongestDecay,
          -kAny,
          kLongestDecay,
          false,
          {&ProgramFigures::decaySeconds, nullptr}},
    Strip{"velocity",
          "dB",
          0,
          20,
          kLeastVelocityRange,
          kAny,
          false,
          {&ProgramFigures::velocityRange, nullptr}},
    Strip{"modulation wheel",
          "dB",
          -24,
          18,
          kLeastWheelChange,
          kAny,
          false,
          {&ProgramFigures::wheelChange, nullptr}},
};
constexpr const char* kColours[] = {"#b5532a", "#2a6f97"};

class Svg {
  public:
    explicit Svg(std::ostream& stream) : out(stream) {}

    void Text(double x, double y, const std::string& text, const char* style = "") {
        out << "<text x='" << x << "' y='" << y << "'" << style << '>' << Escaped(text)
            << "</text>\n";
    }
    void Box(double x, double y, double width, double height, const char* colour) {
        out << "<rect x='" << x << "' y='" << y << "' width='" << width << "' height='" << height
            << "' fill='" << colour << "'/>\n";
    }
    void Dot(double x, double y, const char* colour, bool faint) {
        out << "<circle cx='" << Rounded(x) << "' cy='" << y << "' r='2.6' fill='" << colour << '\''
            << (faint ? " opacity='0.25'" : "") << "/>\n";
    }

  private:
    static std::string Escaped(const std::string& text) {
        std::string safe;
        for (const char c : text)
            safe += c == '&' ? "&amp;" : c == '<' ? "&lt;" : std::string(1, c);
        return safe;
    }
    static double Rounded(double x) { return std::round(x * 10.0) / 10.0; }

    std::ostream& out;
};

std::string Short(double value) {
    char text[32];
    std::snprintf(text, sizeof(text), "%g", std::round(value * 10.0) / 10.0);
    return text;
}

int LeftOf(std::size_t strip) {
    return kMargin + kNameWidth + int(strip) * (kStripWidth + kStripGap);
}

// What lies outside is drawn at the end.
double Across(const Strip& strip, double value) {
    const double part =
        (std::clamp(value, strip.from, strip.to) - strip.from) / (strip.to - strip.from);
    return part * kStripWidth;
}

void DrawHead(Svg& svg, int height) {
    for (std::size_t i = 0; i < kStrips.size(); ++i) {
        const Strip& strip = kStrips[i];
        const double left = LeftOf(i);
        const double begin = Across(strip, strip.allowedFrom), end = Across(strip, strip.allowedTo);
        svg.Box(left, kHeadHeight, kStripWidth, height - kHeadHeight - kFootHeight, "#f3f1ec");
        svg.Box(left + begin, kHeadHeight, end - begin, height - kHeadHeight - kFootHeight,
                "#e2eadf");
        svg.Text(left, 18, std::string(strip.title), " font-weight='bold'");
        svg.Text(left, 34, Short(strip.from) + " .. " + Short(strip.to) + ' ' + strip.unit,
                 " fill='#777'");
        if (strip.values[1] == nullptr) continue;
        svg.Dot(left + kStripWidth - 28, 15, kColours[0], false);
        svg.Dot(left + kStripWidth - 20, 15, kColours[1], false);
    }
    const double left = LeftOf(kStrips.size());
    svg.Text(left, 18, "nearest other", " font-weight='bold'");
    svg.Text(left, 34, "at least " + Short(kLeastDistance) + " dB", " fill='#777'");
}

void DrawRow(Svg& svg, const CheckedProgram& program, double y) {
    const Program& source = program.entry.program;
    const bool faulty = !program.faults.empty();
    svg.Text(kMargin, y + 4, source.name, faulty ? " fill='#c00000'" : "");
    for (std::size_t i = 0; i < kStrips.size(); ++i) {
        const Strip& strip = kStrips[i];
        const bool faint = strip.isPitch && !source.HasTag("pitched");
        for (std::size_t v = 0; v < strip.values.size(); ++v) {
            if (strip.values[v] == nullptr) continue;
            const double x = Across(strip, program.figures.*strip.values[v]);
            svg.Dot(LeftOf(i) + x, y, kColours[v], faint);
        }
    }
    svg.Text(LeftOf(kStrips.size()), y + 4,
             Short(program.nearestDistance) + "  " + program.nearestName, " fill='#777'");
}

}  // namespace

void WriteCheckPicture(std::ostream& out, std::span<const CheckedProgram> programs) {
    const int groups = int(std::ranges::count_if(programs, [&](const CheckedProgram& program) {
        return &program == programs.data() ||
               program.entry.category != (&program - 1)->entry.category;
    }));
    const int height =
        kHeadHeight + int(programs.size()) * kRowHeight + groups * kGroupHeight + kFootHeight;
    const int width = LeftOf(kStrips.size()) + kNearestWidth + kMargin;
    out << "<svg xmlns='http://www.w3.org/2000/svg' viewBox='0 0 " << width << ' ' << height
        << "' font-family='Helvetica, Arial, sans-serif' font-size='10' fill='#222'>\n";
    Svg svg(out);
    svg.Box(0, 0, width, height, "#fff");
    DrawHead(svg, height);
    int y = kHeadHeight;
    std::string category;
    for (const CheckedProgram& program : programs) {
        if (program.entry.category != category) {
            category = program.entry.category;
            svg.Text(kMargin, y + kGroupHeight - 6, category, " font-weight='bold'");
            y += kGroupHeight;
        }
        const int middle = y + kRowHeight / 2;
        DrawRow(svg, program, middle);
        y += kRowHeight;
    }
    out << "</svg>\n";
}

}  // namespace norava
