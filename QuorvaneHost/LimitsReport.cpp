#include "QuorvaneHost/LimitsReport.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include <fmt/format.h>

namespace quorvane::host {

bool LimitsReport::Row::isStale(Date moment) const {
    return limits && limits->capturedAt && moment - *limits->capturedAt > RateLimitSnapshot::resetHintGrace;
}

LimitsReport LimitsReport::collect(const std::vector<Reader>& readers, Date now) {
    LimitsReport report{.now = now};
    for (const Reader& reader : readers) {
        if (!reader->isAvailable()) continue;
        Row row{.id = reader->id(), .limits = reader->latestRateLimits()};
        row.headroom = ProviderHeadroom::resolve(row.limits, now);
        row.isAwaitingReset = reader->latestRateLimitAwaitingReset(now);
        report.rows.push_back(std::move(row));
    }
    return report;
}

std::map<ProviderID, RateLimitSnapshot> LimitsReport::byProvider() const {
    std::map<ProviderID, RateLimitSnapshot> limits;
    for (const Row& row : rows) {
        if (row.limits) limits.emplace(row.id, *row.limits);
    }
    return limits;
}

std::string timeUntil(Date date, Date now) {
    const double seconds = date - now;
    if (!(seconds > 0)) return "now";
    constexpr double longest = 1e9;  // beyond, the figure would mean nothing
    const auto minutes = static_cast<std::int64_t>(std::ceil(std::min(seconds, longest) / 60));
    if (minutes < 60) return fmt::format("in {}m", minutes);
    if (minutes < 24 * 60) return fmt::format("in {}h {}m", minutes / 60, minutes % 60);
    return fmt::format("in {}d {}h", minutes / (24 * 60), minutes / 60 % 24);
}

std::string windowName(std::int64_t minutes) {
    if (minutes == 7 * 24 * 60) return "week";
    if (minutes % (24 * 60) == 0) return fmt::format("{}d", minutes / (24 * 60));
    if (minutes % 60 == 0) return fmt::format("{}h", minutes / 60);
    return fmt::format("{}m", minutes);
}

}  // namespace quorvane::host
