#pragma once
#include <string>

namespace quorvane::host {

/// Keeps the refreshes of several processes apart. A file that is read anew loses its rows for a moment, so that
/// whoever sums up beside a running refresh would show too little; one that has waited also finds the work done.
///
/// The lock is on the index's folder itself, leaves no file, and goes with the process. It is a courtesy, not a
/// condition: where it cannot be had, or not within a minute, the refresh goes on without it.
class RefreshLock {
public:
    /// Waits until no other process refreshes the index at `indexPath`.
    explicit RefreshLock(const std::string& indexPath);
    RefreshLock(const RefreshLock&) = delete;
    RefreshLock& operator=(const RefreshLock&) = delete;
    ~RefreshLock();

private:
    int descriptor_ = -1;
};

}  // namespace quorvane::host
