#include "presets/program_file.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>

#include "files/file_system.h"

namespace norava {

namespace {

constexpr std::size_t kChunkOffset = 60;  // in a VST program file
constexpr std::size_t kKindOffset = 8;

bool IsVstProgramWithChunk(std::span<const char> head) {
    const std::string_view bytes(head.data(), head.size());
    return bytes.starts_with("CcnK") && bytes.substr(kKindOffset).starts_with("FPCh");
}

std::string_view LastPart(std::string_view path) {
    return path.substr(path.rfind('/') + 1);
}

}  // namespace

std::optional<ProgramBlock> DecodeProgram(std::span<const char> head, long fileBytes) {
    if (!IsProgramFileSize(fileBytes)) return std::nullopt;
    if (static_cast<long>(head.size()) < std::min<long>(fileBytes, kProgramHeadBytes))
        return std::nullopt;
    long size = fileBytes;
    head = head.first(static_cast<std::size_t>(std::min<long>(fileBytes, kProgramHeadBytes)));
    if (IsVstProgramWithChunk(head)) {
        size += static_cast<long>(kChunkOffset);
        head = head.subspan(std::min(kChunkOffset, head.size()));
    }
    ProgramBlock block;
    block.size = static_cast<int>(std::min<long>(size, kProgramBlockBytes));
    std::ranges::copy(head.first(std::min(head.size(), block.bytes.size())), block.bytes.begin());
    return block;
}

std::optional<ProgramBlock> ReadProgramFile(const std::string& path) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(
        file_system::OpenForReading(path.c_str()), std::fclose);
    if (!file) return std::nullopt;
    const int64_t size = file_system::SizeOf(file.get());
    if (!IsProgramFileSize(size)) return std::nullopt;
    std::array<char, kProgramHeadBytes> head;
    const auto wanted = std::min(head.size(), static_cast<std::size_t>(size));
    if (std::fread(head.data(), 1, wanted, file.get()) != wanted) return std::nullopt;
    return DecodeProgram(std::span(head).first(wanted), static_cast<long>(size));
}

std::string_view ProgramNameOf(std::string_view path) {
    const std::string_view file = LastPart(path);
    return file.substr(0, file.rfind('.'));
}

std::string_view FolderNameOf(std::string_view path) {
    const std::size_t slash = path.rfind('/');
    return slash == path.npos ? std::string_view() : LastPart(path.substr(0, slash));
}

}  // namespace norava
