#include "QuorvaneCore/platform/FileHandle.h"

#include <cerrno>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quorvane {

std::optional<FileHandle> FileHandle::open(const std::string& path) noexcept {
    int descriptor = -1;
    do {
        descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    } while (descriptor < 0 && errno == EINTR);
    if (descriptor < 0) return std::nullopt;
    return FileHandle{descriptor};
}

FileHandle::FileHandle(FileHandle&& other) noexcept : descriptor_{std::exchange(other.descriptor_, -1)} {}

FileHandle& FileHandle::operator=(FileHandle&& other) noexcept {
    std::swap(descriptor_, other.descriptor_);
    return *this;
}

FileHandle::~FileHandle() {
    if (descriptor_ >= 0) ::close(descriptor_);
}

std::optional<std::size_t> FileHandle::read(std::span<char> buffer) noexcept {
    std::size_t filled = 0;
    while (filled < buffer.size()) {
        const ssize_t count = ::read(descriptor_, buffer.data() + filled, buffer.size() - filled);
        if (count > 0) {
            filled += static_cast<std::size_t>(count);
        } else if (count == 0) {
            break;
        } else if (errno != EINTR) {
            // What came before the error is delivered; the error itself shows at the next call.
            if (filled > 0) break;
            return std::nullopt;
        }
    }
    return filled;
}

bool FileHandle::seek(std::int64_t position) noexcept {
    return ::lseek(descriptor_, position, SEEK_SET) >= 0;
}

std::optional<std::int64_t> FileHandle::seekToEnd() noexcept {
    // A folder can be opened, and some file systems give it an end that is no size.
    struct stat status {};
    if (::fstat(descriptor_, &status) != 0 || S_ISDIR(status.st_mode)) return std::nullopt;
    const off_t end = ::lseek(descriptor_, 0, SEEK_END);
    if (end < 0) return std::nullopt;
    return end;
}

}  // namespace quorvane
