#pragma once
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace quorvane {

/// A file opened for reading; closed when the handle goes. Foreign logs are read, never mapped: a mapped file that its
/// writer cuts short would end the process.
/// Opening never blocks, not even on a named pipe without a writer. One thread at a time.
class FileHandle {
public:
    /// Absent if the file cannot be opened.
    [[nodiscard]] static std::optional<FileHandle> open(const std::string& path) noexcept;

    FileHandle(FileHandle&& other) noexcept;
    FileHandle& operator=(FileHandle&& other) noexcept;
    FileHandle(const FileHandle&) = delete;
    FileHandle& operator=(const FileHandle&) = delete;
    ~FileHandle();

    /// Fills `buffer` from the current position as far as the file reaches, and moves on. 0 at the end of the file;
    /// absent on a read error.
    [[nodiscard]] std::optional<std::size_t> read(std::span<char> buffer) noexcept;

    /// False if the position, in bytes from the start, cannot be taken. Beyond the end is allowed.
    [[nodiscard]] bool seek(std::int64_t position) noexcept;

    /// Moves to the end and returns its position, which is the size in bytes; absent on failure.
    [[nodiscard]] std::optional<std::int64_t> seekToEnd() noexcept;

private:
    explicit FileHandle(int descriptor) noexcept : descriptor_{descriptor} {}

    int descriptor_ = -1;
};

}  // namespace quorvane
