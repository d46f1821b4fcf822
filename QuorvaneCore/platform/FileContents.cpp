#include "QuorvaneCore/platform/FileContents.h"

#include <cerrno>
#include <system_error>

#include <simdjson.h>
#include <unistd.h>

#include "QuorvaneCore/platform/FileHandle.h"

namespace quorvane {
namespace {

/// Reads the whole file into `content`; 0, or the system's number of the failure.
int readWhole(const std::string& path, std::string& content) {
    std::optional<FileHandle> file = FileHandle::open(path);
    if (!file) return errno;
    constexpr std::size_t chunk = 65536;
    for (;;) {
        const std::size_t filled = content.size();
        content.resize(filled + chunk);
        const std::optional<std::size_t> count = file->read({content.data() + filled, chunk});
        if (!count) return errno;
        content.resize(filled + *count);
        if (*count == 0) return 0;
    }
}

}  // namespace

std::optional<std::string> readFile(const std::string& path) {
    std::string content;
    if (readWhole(path, content) != 0) return std::nullopt;
    return content;
}

std::string readText(const std::string& path) {
    std::string content;
    int failure = readWhole(path, content);
    if (failure == 0 && !simdjson::validate_utf8(content.data(), content.size())) failure = EILSEQ;
    if (failure != 0) throw std::system_error{failure, std::generic_category(), path};
    return content;
}

bool removeFile(const std::string& path) noexcept {
    return ::unlink(path.c_str()) == 0;
}

}  // namespace quorvane
