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

}  // namespace

void replaceFile(const std::string& path, std::string_view bytes, unsigned newMode) {
    std::error_code notThere;
    const std::filesystem::path resolved = std::filesystem::canonical(path, notThere);
    const std::string target = notThere ? path : resolved.string();
    const std::optional<FileStatus> old = FileStatus::of(target);
    TemporaryFile temporary{target};
    temporary.write(bytes, old ? old->mode & 07777U : newMode, path);
    temporary.renameTo(target);
}

}  // namespace quorvane
