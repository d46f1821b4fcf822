#include "QuorvaneCore/platform/FileContents.h"

#include "QuorvaneCore/platform/FileHandle.h"

namespace quorvane {

std::optional<std::string> readFile(const std::string& path) {
    std::optional<FileHandle> file = FileHandle::open(path);
    if (!file) return std::nullopt;
    constexpr std::size_t chunk = 65536;
    std::string content;
    for (;;) {
        const std::size_t filled = content.size();
        content.resize(filled + chunk);
        const std::optional<std::size_t> count = file->read({content.data() + filled, chunk});
        if (!count) return std::nullopt;
        content.resize(filled + *count);
        if (*count == 0) return content;
    }
}

}  // namespace quorvane
