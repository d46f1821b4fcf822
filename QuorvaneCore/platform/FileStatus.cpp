#include "QuorvaneCore/platform/FileStatus.h"

#include <sys/stat.h>

namespace quorvane {

std::optional<FileStatus> FileStatus::of(const std::string& path) noexcept {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0) return std::nullopt;
    return FileStatus{
        .size = status.st_size,
        .modified = {status.st_mtim.tv_sec, status.st_mtim.tv_nsec},
        .changed = {status.st_ctim.tv_sec, status.st_ctim.tv_nsec},
        .mode = status.st_mode,
        .isDirectory = S_ISDIR(status.st_mode),
        .isRegular = S_ISREG(status.st_mode),
    };
}

}  // namespace quorvane
