#pragma once
#include <mutex>
#include <string>
#include <string_view>
#include <unordered_map>

#include "QuorvaneCore/ingest/FileCursor.h"
#include "QuorvaneCore/platform/StringHash.h"

namespace quorvane::detail {

/// The files that this process has dealt with, and their status then. Not stored: empty at each start.
class VerifiedFileStateCache {
public:
    static VerifiedFileStateCache& shared() {
        static VerifiedFileStateCache cache;
        return cache;
    }

    [[nodiscard]] bool holds(std::string_view path, const FileCursor::Status& status) const {
        const std::lock_guard guard{lock_};
        const auto entry = verified_.find(path);
        return entry != verified_.end() && entry->second == status;
    }

    void store(const std::string& path, const FileCursor::Status& status) {
        const std::lock_guard guard{lock_};
        verified_.insert_or_assign(path, status);
    }

    void remove(const std::string& path) {
        const std::lock_guard guard{lock_};
        verified_.erase(path);
    }

private:
    /// Guards `verified_`; a leaf, held for one lookup or one store.
    mutable std::mutex lock_;
    std::unordered_map<std::string, FileCursor::Status, StringHash, std::equal_to<>> verified_;
};

}  // namespace quorvane::detail
