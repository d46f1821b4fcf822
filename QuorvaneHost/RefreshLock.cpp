#include "QuorvaneHost/RefreshLock.h"

#include <cerrno>
#include <chrono>
#include <thread>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include "QuorvaneCore/platform/FilePath.h"

namespace quorvane::host {

RefreshLock::RefreshLock(const std::string& indexPath)
    : descriptor_{::open(std::string{FilePath::parent(indexPath)}.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)} {
    if (descriptor_ < 0) return;
    using std::chrono::steady_clock;
    const steady_clock::time_point end = steady_clock::now() + std::chrono::minutes{1};
    while (::flock(descriptor_, LOCK_EX | LOCK_NB) != 0) {
        const bool isHeldByAnother = errno == EWOULDBLOCK || errno == EINTR;
        if (!isHeldByAnother || steady_clock::now() >= end) return;
        std::this_thread::sleep_for(std::chrono::milliseconds{2});
    }
}

RefreshLock::~RefreshLock() {
    if (descriptor_ >= 0) ::close(descriptor_);
}

}  // namespace quorvane::host
