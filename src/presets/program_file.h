#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace norava {

// The most that the instrument takes of a program: its state block. What a file holds beyond it is
// of no use to anyone.
inline constexpr int kProgramBlockBytes = 588;

// The state inside a program file, ready to be handed to the renderer.
struct ProgramBlock {
    std::array<char, kProgramBlockBytes> bytes{};
    int size = 0;  // bytes that count; 0: the file holds no program

    bool IsUsable() const { return size > 0; }
    bool operator==(const ProgramBlock&) const = default;
};

// Larger files are refused: no program is nearly as large.
inline constexpr int kMaxProgramFileBytes = 64 * 1024;
// Smaller ones are no programs.
inline constexpr int kMinProgramFileBytes = 17;

constexpr bool IsProgramFileSize(std::int64_t bytes) {
    return bytes >= kMinProgramFileBytes && bytes <= kMaxProgramFileBytes;
}

// Takes the state out of a program file of `fileBytes` bytes, of which `head` holds the first ones
// (all, or kProgramHeadBytes of them). A plain file is the state as it stands. A file that starts
// as a VST program with a chunk has it from offset 60 and counts as 60 bytes longer than it is, the
// missing ones zero. Empty for a file of a wrong size.
std::optional<ProgramBlock> DecodeProgram(std::span<const char> head, long fileBytes);
inline constexpr int kProgramHeadBytes = 60 + kProgramBlockBytes;

// Reads a program file; empty when it cannot be read or is no regular file of a program's size.
// Never waits for anything but the disk. Not for the audio thread.
std::optional<ProgramBlock> ReadProgramFile(const std::string& path);

// Last part of a path, without the text from its last '.'.
std::string_view ProgramNameOf(std::string_view path);
// The part before that; empty when there is none. "Pads" for "/root/Pads/Warm.norava".
std::string_view FolderNameOf(std::string_view path);

}  // namespace norava
