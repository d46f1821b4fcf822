#include "QuorvaneCore/platform/AtomicFile.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "QuorvaneCore/platform/FilePath.h"
#include "QuorvaneCore/platform/FileStatus.h"

namespace quorvane {
namespace {

[[noreturn]] void fail(int reason, const std::string& path) {
    throw std::system_error{reason, std::generic_category(), path};
}

/// The temporary file while it is being written; removed when the replacement does not come about.
class TemporaryFile {
public:
    explicit TemporaryFile(const std::string& target)
        : path_{FilePath::joining(FilePath::parent(target),
                                  "." + std::string{FilePath::lastComponent(target)} + ".XXXXXX")} {
        descriptor_ = ::mkostemp(path_.data(), O_CLOEXEC);
        if (descriptor_ < 0) fail(errno, target);
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    ~TemporaryFile() {
        if (descriptor_ >= 0) ::close(descriptor_);
        if (!renamed_) ::unlink(path_.c_str());
    }

    /// Gives the file to the owner and the group of the one that it replaces. False where this process's rights or the
    /// file system do not allow that.
    [[nodiscard]] bool giveToOwnerOf(const FileStatus& old) noexcept {
        return ::fchown(descriptor_, old.owner, old.group) == 0;
    }

    void write(std::string_view bytes, unsigned mode, const std::string& target) {
        while (!bytes.empty()) {
            const ssize_t count = ::write(descriptor_, bytes.data(), bytes.size());
            if (count < 0 && errno == EINTR) continue;
            if (count < 0) fail(errno, target);
            bytes.remove_prefix(static_cast<std::size_t>(count));
        }
        if (::fchmod(descriptor_, mode) != 0 || ::fsync(descriptor_) != 0) fail(errno, target);
        const int descriptor = descriptor_;
        descriptor_ = -1;
        if (::close(descriptor) != 0) fail(errno, target);
    }

    void renameTo(const std::string& target) {
        if (::rename(path_.c_str(), target.c_str()) != 0) fail(errno, target);
        renamed_ = true;
    }

private:
    std::string path_;
    int descriptor_ = -1;
    bool renamed_ = false;
};

/// The path that `path` leads to over all links, whether there is anything yet at the end of them or not.
std::string behindLinks(const std::string& path) {
    constexpr int mostLinks = 40;  // as the system itself counts
    std::string target = path;
    for (int link = 0; link < mostLinks; ++link) {
        std::error_code noLink;
        const std::filesystem::path next = std::filesystem::read_symlink(target, noLink);
        if (noLink) return target;
        target = next.is_absolute() ? next.string() : FilePath::joining(FilePath::parent(target), next.string());
    }
    fail(ELOOP, path);
}

}  // namespace

void replaceFile(const std::string& path, std::string_view bytes, unsigned newMode) {
    const std::string target = behindLinks(path);
    const std::optional<FileStatus> old = FileStatus::of(target);
    TemporaryFile temporary{target};
    unsigned mode = newMode;
    // A program that runs with its owner's rights must not come to run with another's.
    if (old) mode = old->mode & (temporary.giveToOwnerOf(*old) ? 07777U : 0777U);
    temporary.write(bytes, mode, path);
    temporary.renameTo(target);
}

}  // namespace quorvane
