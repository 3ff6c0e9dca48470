#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>

#include "files/text_buffer.h"

namespace norava {

// One file, open for reading or for writing, with its path and position; and the joining and taking
// apart of paths. Only regular files open: a pipe or a device named like a file is refused at once.
// Failures are reported by false, 0 or an empty text. Not for the audio thread.
class CFileManager {
  public:
    CFileManager() = default;
    explicit CFileManager(const char* initialPath) { SetPath(initialPath); }

    // Every '\' becomes '/'. A path that is null or longer than 1023 bytes leaves the path empty
    // (so that the next opening fails instead of meeting the wrong file) and returns false.
    bool SetPath(const char* newPath);
    // Folder and name with one '/' between them; empty when either is null or empty, or both are
    // too long.
    bool SetPath(const char* folder, const char* name);
    [[nodiscard]] const char* GetPath() const { return path; }

    // Last part of the path, with and without the text from its last '.'; and what stands before
    // it. Empty when the path holds no '/'. One '/' at the end is ignored. The next call overwrites
    // the result.
    [[nodiscard]] const char* GetFileNameWithExt();
    [[nodiscard]] const char* GetFileName();
    [[nodiscard]] const char* GetDirName();

    // Null: the stored path. On success the path given becomes the stored one. False when a file is
    // open already. Writing creates the file or empties it.
    [[nodiscard]] bool OpenFileForReading(const char* newPath = nullptr);
    [[nodiscard]] bool OpenFileForWriting(const char* newPath = nullptr);
    // Forgets the path too. False when bytes written before could not be brought to the disk.
    bool CloseFile();
    [[nodiscard]] bool IsOpen() const { return file != nullptr; }
    // Bytes, as measured when the file was opened for reading; 0 while writing.
    [[nodiscard]] int64_t GetFileSize() const { return fileSize; }
    [[nodiscard]] bool CheckIfFileExists(const char* otherPath = nullptr) const;

    // The offset is brought into 0 .. size, which is 0 while writing.
    bool SetPosition(int offset);
    // Reads all of `count` bytes (at least one) or moves nothing.
    [[nodiscard]] bool ReadData(void* buffer, int count);
    [[nodiscard]] bool WriteData(const void* buffer, int count);

    // Little-endian, and big-endian (BE). 0 when the value cannot be read.
    [[nodiscard]] int8_t ReadChar();
    [[nodiscard]] uint8_t ReadUChar();
    [[nodiscard]] int16_t ReadShort();
    [[nodiscard]] uint16_t ReadUShort();
    [[nodiscard]] int32_t ReadInt();
    [[nodiscard]] uint32_t ReadUInt();
    [[nodiscard]] float ReadFloat();
    [[nodiscard]] int16_t ReadShortBE();
    [[nodiscard]] uint16_t ReadUShortBE();
    [[nodiscard]] int32_t ReadIntBE();
    [[nodiscard]] uint32_t ReadUIntBE();
    [[nodiscard]] float ReadFloatBE();

    // Makes the folder and the parents it lacks. True when the folder is there in the end. Null:
    // the stored path.
    bool CreateDirectory(const char* folder = nullptr) const;

  private:
    struct CloseStream {
        void operator()(std::FILE* stream) const { std::fclose(stream); }
    };
    using Stream = std::unique_ptr<std::FILE, CloseStream>;

    bool TakeOver(std::FILE* stream, const char* openedPath, bool forReading);
    const char* KeepName(std::string_view name);
    template <size_t count>
    bool ReadBytes(uint8_t (&bytes)[count]);

    bool readMode = true;
    Stream file;
    int64_t fileSize = 0;
    int64_t position = 0;
    char path[kPathBufferBytes] = "";
    char nameBuffer[kPathBufferBytes] = "";
};

}  // namespace norava
