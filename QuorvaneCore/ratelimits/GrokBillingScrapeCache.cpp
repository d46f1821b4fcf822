#include "QuorvaneCore/ratelimits/GrokBillingScrapeCache.h"

namespace quorvane {

GrokBillingScrapeCache& GrokBillingScrapeCache::shared() {
    static GrokBillingScrapeCache cache;
    return cache;
}

std::optional<GrokBillingScrapeCache::Entry> GrokBillingScrapeCache::entry(const std::string& log) const {
    const std::lock_guard guard{lock_};
    const auto found = entries_.find(log);
    return found == entries_.end() ? std::nullopt : std::optional{found->second};
}

void GrokBillingScrapeCache::store(const std::string& log, Entry entry) {
    const std::lock_guard guard{lock_};
    entries_.insert_or_assign(log, entry);
}

}  // namespace quorvane
