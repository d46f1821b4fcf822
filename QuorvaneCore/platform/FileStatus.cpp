#include "QuorvaneCore/platform/FileStatus.h"

#include <sys/stat.h>
#include <unistd.h>

namespace quorvane {

std::optional<FileStatus> FileStatus::of(const std::string& path) noexcept {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0) return std::nullopt;
    return FileStatus{
        .size = status.st_size,
        .modified = {status.st_mtim.tv_sec, status.st_mtim.tv_nsec},
        .changed = {status.st_ctim.tv_sec, status.st_ctim.tv_nsec},
        .mode = status.st_mode,
        .owner = status.st_uid,
        .group = status.st_gid,
        .isDirectory = S_ISDIR(status.st_mode),
        .isRegular = S_ISREG(status.st_mode),
    };
}

bool FileStatus::isExecutableFile(const std::string& path) noexcept {
    const std::optional<FileStatus> status = of(path);
    return status && status->isRegular && ::access(path.c_str(), X_OK) == 0;
}

}  // namespace quorvane
