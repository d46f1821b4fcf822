#include "QuorvaneCore/providers/CursorEventCache.h"

#include <utility>

#include "QuorvaneCore/platform/CheckedArithmetic.h"

namespace quorvane {

CursorEventCache& CursorEventCache::shared() {
    static CursorEventCache cache;
    return cache;
}

std::optional<std::vector<UsageEvent>> CursorEventCache::events(const std::string& path,
                                                                const FileCursor::Status& status) const {
    const std::lock_guard guard{lock_};
    if (!entry_ || entry_->path != path) return std::nullopt;
    if (FileCursor::Status{entry_->size, entry_->mtime, entry_->ctime} != status) return std::nullopt;
    return entry_->events;
}

void CursorEventCache::store(Entry entry) {
    const std::lock_guard guard{lock_};
    entry_ = std::move(entry);
}

void CursorEventCache::countTraversal() {
    const std::lock_guard guard{lock_};
    traversalCount_ = checkedAdd(traversalCount_, 1);
}

std::int64_t CursorEventCache::traversalCount() const {
    const std::lock_guard guard{lock_};
    return traversalCount_;
}

}  // namespace quorvane
