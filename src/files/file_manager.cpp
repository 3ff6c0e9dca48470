#include "files/file_manager.h"

#include <algorithm>
#include <bit>
#include <string>

#include "files/file_system.h"

namespace norava {

namespace {

bool IsEmpty(const char* text) {
    return text == nullptr || *text == '\0';
}

bool FitsPathBuffer(const char* text) {
    return std::strlen(text) < kPathBufferBytes;
}

// The path without one '/' at its end, which names the same folder.
std::string_view WithoutClosingSlash(std::string_view path) {
    if (path.ends_with('/')) path.remove_suffix(1);
    return path;
}

uint32_t Joined(uint8_t low, uint8_t second, uint8_t third, uint8_t high) {
    return static_cast<uint32_t>(low) | static_cast<uint32_t>(second) << 8 |
           static_cast<uint32_t>(third) << 16 | static_cast<uint32_t>(high) << 24;
}

uint16_t Joined(uint8_t low, uint8_t high) {
    return static_cast<uint16_t>(low | high << 8);
}

}  // namespace

bool CFileManager::SetPath(const char* newPath) {
    const bool good = newPath != nullptr && FitsPathBuffer(newPath);
    CopyText(path, sizeof path, good ? newPath : "");
    std::replace(path, path + std::strlen(path), '\\', '/');
    return good;
}

bool CFileManager::SetPath(const char* folder, const char* name) {
    if (IsEmpty(folder) || IsEmpty(name)) return SetPath(""), false;
    std::string joined = folder;
    if (!joined.ends_with('/') && !joined.ends_with('\\')) joined += '/';
    return SetPath((joined + name).c_str());
}

const char* CFileManager::KeepName(std::string_view name) {
    CopyText(nameBuffer, sizeof nameBuffer, name);
    return nameBuffer;
}

const char* CFileManager::GetFileNameWithExt() {
    const std::string_view whole = WithoutClosingSlash(path);
    const size_t slash = whole.rfind('/');
    return KeepName(slash == whole.npos ? std::string_view() : whole.substr(slash + 1));
}

const char* CFileManager::GetFileName() {
    const std::string_view name = GetFileNameWithExt();
    return KeepName(name.substr(0, name.rfind('.')));
}

const char* CFileManager::GetDirName() {
    const std::string_view whole = WithoutClosingSlash(path);
    const size_t slash = whole.rfind('/');
    return KeepName(slash == whole.npos ? std::string_view() : whole.substr(0, slash));
}

bool CFileManager::TakeOver(std::FILE* stream, const char* openedPath, bool forReading) {
    if (stream == nullptr) return false;
    Stream owned(stream);
    const int64_t size = forReading ? file_system::SizeOf(stream) : 0;
    if (size < 0) return false;
    file = std::move(owned);
    readMode = forReading;
    fileSize = size;
    position = 0;
    if (openedPath != path) SetPath(openedPath);
    return true;
}

bool CFileManager::OpenFileForReading(const char* newPath) {
    const char* wanted = newPath != nullptr ? newPath : path;
    if (IsOpen() || IsEmpty(wanted) || !FitsPathBuffer(wanted)) return false;
    return TakeOver(file_system::OpenForReading(wanted), wanted, true);
}

bool CFileManager::OpenFileForWriting(const char* newPath) {
    const char* wanted = newPath != nullptr ? newPath : path;
    if (IsOpen() || IsEmpty(wanted) || !FitsPathBuffer(wanted)) return false;
    return TakeOver(file_system::OpenForWriting(wanted), wanted, false);
}

bool CFileManager::CloseFile() {
    const bool good = !file || std::fclose(file.release()) == 0;
    path[0] = '\0';
    fileSize = 0;
    position = 0;
    readMode = true;
    return good;
}

bool CFileManager::CheckIfFileExists(const char* otherPath) const {
    const char* wanted = otherPath != nullptr ? otherPath : path;
    if (IsEmpty(wanted) || !FitsPathBuffer(wanted)) return false;
    return Stream(file_system::OpenForReading(wanted)) != nullptr;
}

bool CFileManager::SetPosition(int offset) {
    if (!IsOpen()) return false;
    const int64_t target = std::clamp<int64_t>(offset, 0, fileSize);
    if (!file_system::Seek(file.get(), target)) return false;
    position = target;
    return true;
}

bool CFileManager::ReadData(void* buffer, int count) {
    if (!IsOpen() || !readMode || buffer == nullptr || count < 1) return false;
    if (count > fileSize - position) return false;
    const auto wanted = static_cast<size_t>(count);
    if (std::fread(buffer, 1, wanted, file.get()) != wanted) {
        // The file has shrunk since it was opened: half a block is no block.
        std::clearerr(file.get());
        static_cast<void>(file_system::Seek(file.get(), position));
        return false;
    }
    position += count;
    return true;
}

bool CFileManager::WriteData(const void* buffer, int count) {
    if (!IsOpen() || readMode || count < 0 || (buffer == nullptr && count > 0)) return false;
    const auto wanted = static_cast<size_t>(count);
    const size_t written = wanted == 0 ? 0 : std::fwrite(buffer, 1, wanted, file.get());
    position += static_cast<int64_t>(written);
    return written == wanted;
}

template <size_t count>
bool CFileManager::ReadBytes(uint8_t (&bytes)[count]) {
    return ReadData(bytes, static_cast<int>(count));
}

uint8_t CFileManager::ReadUChar() {
    uint8_t b[1];
    return ReadBytes(b) ? b[0] : uint8_t{0};
}

uint16_t CFileManager::ReadUShort() {
    uint8_t b[2];
    return ReadBytes(b) ? Joined(b[0], b[1]) : uint16_t{0};
}

uint32_t CFileManager::ReadUInt() {
    uint8_t b[4];
    return ReadBytes(b) ? Joined(b[0], b[1], b[2], b[3]) : 0;
}

uint16_t CFileManager::ReadUShortBE() {
    uint8_t b[2];
    return ReadBytes(b) ? Joined(b[1], b[0]) : uint16_t{0};
}

uint32_t CFileManager::ReadUIntBE() {
    uint8_t b[4];
    return ReadBytes(b) ? Joined(b[3], b[2], b[1], b[0]) : 0;
}

int8_t CFileManager::ReadChar() {
    return static_cast<int8_t>(ReadUChar());
}
int16_t CFileManager::ReadShort() {
    return static_cast<int16_t>(ReadUShort());
}
int32_t CFileManager::ReadInt() {
    return static_cast<int32_t>(ReadUInt());
}
float CFileManager::ReadFloat() {
    return std::bit_cast<float>(ReadUInt());
}
int16_t CFileManager::ReadShortBE() {
    return static_cast<int16_t>(ReadUShortBE());
}
int32_t CFileManager::ReadIntBE() {
    return static_cast<int32_t>(ReadUIntBE());
}
float CFileManager::ReadFloatBE() {
    return std::bit_cast<float>(ReadUIntBE());
}

bool CFileManager::CreateDirectory(const char* folder) const {
    const char* wanted = folder != nullptr ? folder : path;
    if (IsEmpty(wanted) || !FitsPathBuffer(wanted)) return false;
    if (file_system::KindOf(wanted) == file_system::EntryKind::folder) return true;
    // From the top down, so that no depth of folders can use up the stack.
    const std::string whole = wanted;
    for (size_t slash = whole.find('/', 1); slash != whole.npos;
         slash = whole.find('/', slash + 1)) {
        const std::string parent = whole.substr(0, slash);
        if (parent.ends_with('/')) continue;
        if (!file_system::MakeFolder(parent.c_str())) return false;
    }
    return whole.ends_with('/') || file_system::MakeFolder(wanted);
}

}  // namespace norava
