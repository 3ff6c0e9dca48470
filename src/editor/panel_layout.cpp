#include "editor/panel_layout.h"

#include <algorithm>
#include <iterator>

namespace norava {

namespace {

// One row a line in all three tables: the artwork is made from them too.
// clang-format off
constexpr PanelPicture kPictures[] = {
    {kBackgroundPicture, "bg.tga", {855, 532}, 1},
    {3, "KNB Chrom Big.tga", {43, 43}, 64},
    {2, "KNB Chrom Medium.tga", {31, 31}, 64},
    {1, "KNB Chrom Small.tga", {30, 28}, 64},
    {4, "KNB Main.tga", {47, 42}, 64},
    {5, "KNB Matrix.tga", {39, 39}, 64},
    {6, "BTN Invert.tga", {31, 19}, 2},
    {8, "BTN Matrix Invert.tga", {32, 13}, 2},
    {7, "BTN Off-On.tga", {22, 22}, 2},
    {9, "FDR.tga", {29, 19}, 1},
    {10, "FDR Resonator.tga", {14, 22}, 1},
    {11, "FDR Pick-Up.tga", {20, 52}, 1},
    {kStringPicture, "String.tga", {215, 25}, 16},
    {kLowerDamperPicture, "Damper Lower.tga", {34, 40}, 1},
    {kUpperDamperPicture, "Damper Top.tga", {34, 40}, 1},
    {kPreviousArrowPicture, "prev_arrow.tga", {17, 18}, 2},
    {kNextArrowPicture, "next_arrow.tga", {17, 18}, 2},
    {kAboutPicture, "about.tga", {340, 190}, 1},
    {kOptionsPicture, "BTN Options.tga", {54, 18}, 2},
};

constexpr PanelControl kControls[] = {
    // Header
    {113, 2, {572, 21, 31, 31}},
    {1, 2, {632, 21, 31, 31}},
    {0, 3, {701, 15, 43, 43}},
    {kProgramDisplay, kNoPicture, {293, 25, 170, 24}},
    {kPreviousProgram, kPreviousArrowPicture, {467, 28, 17, 18}},
    {kNextProgram, kNextArrowPicture, {484, 28, 17, 18}},
    {kOptionsMenu, kOptionsPicture, {504, 28, 54, 18}},
    {kNamePlate, kNoPicture, {10, 14, 200, 58}},
    // Exciter
    {31, 9, {14, 170, 37, 99}},
    {32, 2, {17, 298, 31, 31}},
    // Filter
    {29, 4, {84, 105, 47, 42}},
    {30, 4, {84, 165, 47, 42}},
    {33, 4, {84, 225, 47, 42}},
    {26, 4, {144, 105, 47, 42}},
    {27, 4, {144, 165, 47, 42}},
    {28, 4, {144, 225, 47, 42}},
    {24, 4, {84, 285, 47, 42}},
    {25, 4, {144, 285, 47, 42}},
    // String 1
    {6, 3, {221, 106, 43, 43}},
    {9, 3, {281, 106, 43, 43}},
    {10, 2, {347, 118, 31, 31}},
    {8, 2, {437, 106, 31, 31}},
    {7, 6, {227, 167, 31, 19}},
    {111, kNoPicture, {225, 216, 35, 13}},
    // String 2
    {11, 3, {221, 286, 43, 43}},
    {14, 3, {281, 286, 43, 43}},
    {15, 2, {347, 286, 31, 31}},
    {13, 2, {437, 298, 31, 31}},
    {12, 6, {227, 249, 31, 19}},
    // Comb
    {22, 3, {491, 106, 43, 43}},
    {23, 6, {497, 168, 31, 19}},
    {19, 11, {357, 192, 122, 52}},
    {21, 6, {497, 250, 31, 19}},
    {20, 3, {491, 286, 43, 43}},
    // Mix
    {17, 4, {564, 105, 47, 42}},
    {18, 9, {569, 170, 37, 99}},
    {16, 4, {564, 285, 47, 42}},
    // Amp
    {2, 4, {624, 105, 47, 42}},
    {3, 4, {624, 165, 47, 42}},
    {4, 4, {624, 225, 47, 42}},
    {5, 4, {624, 285, 47, 42}},
    // Envelope and LFO
    {34, 5, {14, 385, 39, 39}},
    {35, 5, {54, 385, 39, 39}},
    {36, 5, {94, 385, 39, 39}},
    {37, 5, {134, 385, 39, 39}},
    {38, 5, {184, 385, 39, 39}},
    // Delay
    {63, 7, {427, 508, 22, 22}},
    {64, 4, {24, 466, 47, 42}},
    {112, kNoPicture, {90, 487, 35, 13}},
    {65, 4, {144, 466, 47, 42}},
    {66, 4, {204, 466, 47, 42}},
    {67, 4, {264, 466, 47, 42}},
    {68, 4, {324, 466, 47, 42}},
    {69, 4, {384, 466, 47, 42}},
    // Chorus
    {70, 7, {627, 508, 22, 22}},
    {72, 4, {464, 466, 47, 42}},
    {71, 4, {524, 466, 47, 42}},
    {73, 4, {584, 466, 47, 42}},
    // Reverb
    {74, 7, {827, 508, 22, 22}},
    {76, 4, {664, 466, 47, 42}},
    {77, 4, {724, 466, 47, 42}},
    {75, 4, {784, 466, 47, 42}},
    // Resonators: feedback, frequency, switch
    {47, 1, {700, 107, 30, 28}},
    {39, 10, {734, 109, 98, 26}},
    {55, 7, {833, 111, 22, 22}},
    {48, 1, {700, 135, 30, 28}},
    {40, 10, {734, 137, 98, 26}},
    {56, 7, {833, 139, 22, 22}},
    {49, 1, {700, 163, 30, 28}},
    {41, 10, {734, 165, 98, 26}},
    {57, 7, {833, 167, 22, 22}},
    {50, 1, {700, 191, 30, 28}},
    {42, 10, {734, 193, 98, 26}},
    {58, 7, {833, 195, 22, 22}},
    {51, 1, {700, 219, 30, 28}},
    {43, 10, {734, 221, 98, 26}},
    {59, 7, {833, 223, 22, 22}},
    {52, 1, {700, 247, 30, 28}},
    {44, 10, {734, 249, 98, 26}},
    {60, 7, {833, 251, 22, 22}},
    {53, 1, {700, 275, 30, 28}},
    {45, 10, {734, 277, 98, 26}},
    {61, 7, {833, 279, 22, 22}},
    {54, 1, {700, 303, 30, 28}},
    {46, 10, {734, 305, 98, 26}},
    {62, 7, {833, 307, 22, 22}},
    // Modulation matrix: source, amount, invert, destination
    {79, kNoPicture, {239, 372, 71, 13}},
    {80, 5, {234, 385, 39, 39}},
    {81, 8, {277, 399, 32, 13}},
    {82, kNoPicture, {239, 424, 71, 13}},
    {83, kNoPicture, {314, 372, 71, 13}},
    {84, 5, {309, 385, 39, 39}},
    {85, 8, {352, 399, 32, 13}},
    {86, kNoPicture, {314, 424, 71, 13}},
    {87, kNoPicture, {389, 372, 71, 13}},
    {88, 5, {384, 385, 39, 39}},
    {89, 8, {427, 399, 32, 13}},
    {90, kNoPicture, {389, 424, 71, 13}},
    {91, kNoPicture, {464, 372, 71, 13}},
    {92, 5, {459, 385, 39, 39}},
    {93, 8, {502, 399, 32, 13}},
    {94, kNoPicture, {464, 424, 71, 13}},
    {95, kNoPicture, {539, 372, 71, 13}},
    {96, 5, {534, 385, 39, 39}},
    {97, 8, {577, 399, 32, 13}},
    {98, kNoPicture, {539, 424, 71, 13}},
    {99, kNoPicture, {614, 372, 71, 13}},
    {100, 5, {609, 385, 39, 39}},
    {101, 8, {652, 399, 32, 13}},
    {102, kNoPicture, {614, 424, 71, 13}},
    {103, kNoPicture, {689, 372, 71, 13}},
    {104, 5, {684, 385, 39, 39}},
    {105, 8, {727, 399, 32, 13}},
    {106, kNoPicture, {689, 424, 71, 13}},
    {107, kNoPicture, {764, 372, 71, 13}},
    {108, 5, {759, 385, 39, 39}},
    {109, 8, {802, 399, 32, 13}},
    {110, kNoPicture, {764, 424, 71, 13}},
};

constexpr PanelLabel kLabels[] = {
    {"EXCITER", 32.5F, 96, PanelLabelStyle::title},
    {"FILTER", 137.5F, 96, PanelLabelStyle::title},
    {"STRING 1", 346, 96, PanelLabelStyle::title},
    {"COMB", 512.5F, 96, PanelLabelStyle::title},
    {"MIX", 587.5F, 96, PanelLabelStyle::title},
    {"AMP", 647.5F, 96, PanelLabelStyle::title},
    {"RESONATORS", 770, 96, PanelLabelStyle::title},
    {"STRING 2", 346, 343, PanelLabelStyle::title},
    {"ENVELOPE", 95.5F, 366, PanelLabelStyle::title},
    {"LFO", 205.5F, 366, PanelLabelStyle::title},
    {"MODULATION MATRIX", 537, 366, PanelLabelStyle::title},
    {"DELAY", 228, 459, PanelLabelStyle::title},
    {"CHORUS", 556, 459, PanelLabelStyle::title},
    {"REVERB", 756, 459, PanelLabelStyle::title},
    // Header
    {"OCTAVE", 587.5F, 67, PanelLabelStyle::control},
    {"TUNE", 647.5F, 67, PanelLabelStyle::control},
    {"MASTER", 722.5F, 67, PanelLabelStyle::control},
    {"PROGRAM", 378, 67, PanelLabelStyle::wide},
    // Exciter
    {"LEVEL", 32.5F, 281, PanelLabelStyle::control},
    {"NOISE", 32.5F, 156, PanelLabelStyle::control},
    {"RATE", 32.5F, 336, PanelLabelStyle::control},
    // Filter
    {"CUTOFF", 107.5F, 156, PanelLabelStyle::control},
    {"RES", 107.5F, 216, PanelLabelStyle::control},
    {"DRIVE", 107.5F, 276, PanelLabelStyle::control},
    {"ATTACK", 167.5F, 156, PanelLabelStyle::control},
    {"DECAY", 167.5F, 216, PanelLabelStyle::control},
    {"SUSTAIN", 167.5F, 276, PanelLabelStyle::control},
    {"CUTOFF", 107.5F, 336, PanelLabelStyle::control},
    {"RES", 167.5F, 336, PanelLabelStyle::control},
    // String 1
    {"DECAY", 242.5F, 159, PanelLabelStyle::control},
    {"DAMP", 302.5F, 159, PanelLabelStyle::control},
    {"SHARP", 362.5F, 159, PanelLabelStyle::control},
    {"OFFSET", 452.5F, 147, PanelLabelStyle::control},
    {"RATIO", 242.5F, 212, PanelLabelStyle::control},
    // String 2
    {"DECAY", 242.5F, 282, PanelLabelStyle::control},
    {"DAMP", 302.5F, 282, PanelLabelStyle::control},
    {"SHARP", 362.5F, 282, PanelLabelStyle::control},
    {"OFFSET", 452.5F, 294, PanelLabelStyle::control},
    // Comb
    {"LEVEL", 512.5F, 159, PanelLabelStyle::control},
    {"FEEDBACK", 512.5F, 282, PanelLabelStyle::control},
    // Mix
    {"MIX", 587.5F, 156, PanelLabelStyle::control},
    {"STEREO", 587.5F, 281, PanelLabelStyle::control},
    {"SATURATION", 587.5F, 336, PanelLabelStyle::control},
    // Amp
    {"ATTACK", 647.5F, 156, PanelLabelStyle::control},
    {"DECAY", 647.5F, 216, PanelLabelStyle::control},
    {"SUSTAIN", 647.5F, 276, PanelLabelStyle::control},
    {"RELEASE", 647.5F, 336, PanelLabelStyle::control},
    // Envelope and LFO
    {"ATTACK", 35.5F, 434, PanelLabelStyle::control},
    {"DECAY", 75.5F, 434, PanelLabelStyle::control},
    {"SUSTAIN", 115.5F, 434, PanelLabelStyle::control},
    {"RELEASE", 155.5F, 434, PanelLabelStyle::control},
    {"RATE", 205.5F, 434, PanelLabelStyle::control},
    // Delay
    {"ON", 438, 505, PanelLabelStyle::control},
    {"TIME", 47.5F, 517, PanelLabelStyle::control},
    {"SYNC", 107.5F, 517, PanelLabelStyle::control},
    {"FEEDBACK", 167.5F, 517, PanelLabelStyle::control},
    {"MOD SPEED", 227.5F, 517, PanelLabelStyle::control},
    {"MOD DEPTH", 287.5F, 517, PanelLabelStyle::control},
    {"BLUR", 347.5F, 517, PanelLabelStyle::control},
    {"WET", 407.5F, 517, PanelLabelStyle::control},
    // Chorus
    {"ON", 638, 505, PanelLabelStyle::control},
    {"DEPTH", 487.5F, 517, PanelLabelStyle::control},
    {"RATE", 547.5F, 517, PanelLabelStyle::control},
    {"WET", 607.5F, 517, PanelLabelStyle::control},
    // Reverb
    {"ON", 838, 505, PanelLabelStyle::control},
    {"DECAY", 687.5F, 517, PanelLabelStyle::control},
    {"COLOR", 747.5F, 517, PanelLabelStyle::control},
    {"MIX", 807.5F, 517, PanelLabelStyle::control},
    // Mix, the ends of its knob
    {"1", 570, 152, PanelLabelStyle::control},
    {"2", 605, 152, PanelLabelStyle::control},
    // String window
    {"COMB RATIO", 418, 262, PanelLabelStyle::window},
    // Resonators
    {"1", 695, 125, PanelLabelStyle::control},
    {"2", 695, 153, PanelLabelStyle::control},
    {"3", 695, 181, PanelLabelStyle::control},
    {"4", 695, 209, PanelLabelStyle::control},
    {"5", 695, 237, PanelLabelStyle::control},
    {"6", 695, 265, PanelLabelStyle::control},
    {"7", 695, 293, PanelLabelStyle::control},
    {"8", 695, 321, PanelLabelStyle::control},
    {"FDBK", 715, 341, PanelLabelStyle::control},
    {"FREQUENCY", 783, 341, PanelLabelStyle::control},
    {"ON", 844, 341, PanelLabelStyle::control},
    // Modulation matrix
    {"1", 293.5F, 396, PanelLabelStyle::number},
    {"2", 368.5F, 396, PanelLabelStyle::number},
    {"3", 443.5F, 396, PanelLabelStyle::number},
    {"4", 518.5F, 396, PanelLabelStyle::number},
    {"5", 593.5F, 396, PanelLabelStyle::number},
    {"6", 668.5F, 396, PanelLabelStyle::number},
    {"7", 743.5F, 396, PanelLabelStyle::number},
    {"8", 818.5F, 396, PanelLabelStyle::number},
    {"SRC", 845, 381, PanelLabelStyle::small},
    {"DST", 845, 433, PanelLabelStyle::small},
    // Turned, centred on x = 79 and y, or x = 196
    {"HI-CUT", 79, 192.5F, PanelLabelStyle::readingUp},
    {"LO-CUT", 79, 313, PanelLabelStyle::readingUp},
    {"HI-CUT ENV", 196, 192.5F, PanelLabelStyle::readingDown},
};
// clang-format on

template <typename Row>
const Row* FindRow(std::span<const Row> rows, int id) {
    const auto row = std::ranges::find(rows, id, &Row::id);
    return row == rows.end() ? nullptr : &*row;
}

}  // namespace

std::span<const PanelPicture> GetPanelPictures() {
    return kPictures;
}

const PanelPicture* FindPanelPicture(int id) {
    return FindRow(GetPanelPictures(), id);
}

std::span<const PanelControl> GetPanelControls() {
    return kControls;
}

const PanelControl* FindPanelControl(int id) {
    return FindRow(GetPanelControls(), id);
}

std::span<const PanelLabel> GetPanelLabels() {
    return kLabels;
}

}  // namespace norava
