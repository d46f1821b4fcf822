#include "QuorvaneCore/providers/RateLimitTailCache.h"

#include <string_view>
#include <unordered_set>
#include <utility>

namespace quorvane {

RateLimitTailCache& RateLimitTailCache::shared() {
    static RateLimitTailCache cache;
    return cache;
}

std::optional<RateLimitTailCache::Entry> RateLimitTailCache::entry(const std::string& file) const {
    const std::lock_guard guard{lock_};
    const auto found = entries_.find(file);
    return found == entries_.end() ? std::nullopt : std::optional{found->second};
}

void RateLimitTailCache::store(const std::string& file, Entry entry) {
    const std::lock_guard guard{lock_};
    entries_.insert_or_assign(file, std::move(entry));
}

void RateLimitTailCache::prune(const std::vector<std::string>& files) {
    const std::lock_guard guard{lock_};
    if (entries_.size() <= files.size()) return;
    const std::unordered_set<std::string_view> kept{files.begin(), files.end()};
    std::erase_if(entries_, [&](const auto& known) { return !kept.contains(known.first); });
}

std::size_t RateLimitTailCache::count() const {
    const std::lock_guard guard{lock_};
    return entries_.size();
}

}  // namespace quorvane
