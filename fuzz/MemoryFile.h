#pragma once
#include <string>
#include <string_view>

#include <sys/mman.h>
#include <unistd.h>

#include "fuzz/FuzzTarget.h"

namespace quorvane::fuzz {

/// A file in memory that readers can open by its path, for as long as this object lives.
class MemoryFile {
public:
    explicit MemoryFile(std::string_view content) : descriptor_{::memfd_create("input", MFD_CLOEXEC)} {
        require(descriptor_ >= 0, "a file in memory can be made");
        while (!content.empty()) {
            const ssize_t count = ::write(descriptor_, content.data(), content.size());
            require(count > 0, "a file in memory can be written");
            content.remove_prefix(static_cast<std::size_t>(count));
        }
    }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;
    ~MemoryFile() { ::close(descriptor_); }

    [[nodiscard]] std::string path() const { return "/proc/self/fd/" + std::to_string(descriptor_); }

private:
    int descriptor_;
};

}  // namespace quorvane::fuzz
