#include "QuorvaneCore/ratelimits/GrokRateLimitStore.h"

#include <cstdint>

#include "QuorvaneCore/model/JSONNumber.h"
#include "QuorvaneCore/platform/FileContents.h"
#include "QuorvaneCore/platform/FilePath.h"
#include "QuorvaneCore/platform/JSONParser.h"
#include "QuorvaneCore/platform/UserFolders.h"

namespace quorvane {
namespace {

constexpr std::int64_t weekMinutes = 10080;
constexpr std::string_view planWithoutAName = "SuperGrok";

std::optional<std::string> pathOf(const std::optional<std::string>& url) {
    return url ? url : GrokRateLimitStore::defaultURL();
}

/// The file's snapshot, expired or not.
std::optional<RateLimitSnapshot> loadRaw(Date now, const std::optional<std::string>& url) {
    const std::optional<std::string> path = pathOf(url);
    const std::optional<std::string> bytes = path ? readFile(*path) : std::nullopt;
    return bytes ? GrokRateLimitStore::decodeRaw(*bytes, now) : std::nullopt;
}

std::optional<RateLimitSnapshot> currentOf(const std::optional<RateLimitSnapshot>& snapshot, Date now) {
    return snapshot ? snapshot->current(now) : std::nullopt;
}

}  // namespace

std::optional<std::string> GrokRateLimitStore::defaultURL() {
    return FilePath::joining(UserFolders::quorvaneSupport(), "grok-rate-limits.json");
}

std::optional<RateLimitSnapshot> GrokRateLimitStore::load(Date now, const std::optional<std::string>& url) {
    return currentOf(loadRaw(now, url), now);
}

std::optional<RateLimitSnapshot> GrokRateLimitStore::decode(std::string_view bytes, Date now) {
    return currentOf(decodeRaw(bytes, now), now);
}

std::optional<RateLimitSnapshot> GrokRateLimitStore::decodeRaw(std::string_view bytes, Date now) {
    JSONParser parser;
    const JSONValue object = parser.parse(bytes);
    RateLimitSnapshot snapshot;
    if (const std::optional<double> seconds = JSONNumber::asDouble(object["capturedAt"])) {
        snapshot.capturedAt = Date{*seconds};
        if (now - *snapshot.capturedAt > maxAgeSeconds) return std::nullopt;
    }
    snapshot.secondary = RateLimitWindow::fromJSON(object["weekly"], weekMinutes);
    if (!snapshot.secondary) return std::nullopt;
    const std::string_view plan = object["plan_type"].string().value_or(std::string_view{});
    snapshot.planType = plan.empty() ? planWithoutAName : plan;
    return snapshot;
}

bool GrokRateLimitStore::awaitingResetHint(Date now, const std::optional<std::string>& url) {
    const std::optional<RateLimitSnapshot> snapshot = loadRaw(now, url);
    return snapshot && snapshot->awaitingFreshDataAfterReset(now, RateLimitSnapshot::resetHintGrace);
}

bool GrokRateLimitStore::isActive(Date now, const std::optional<std::string>& url) {
    return load(now, url).has_value();
}

bool GrokRateLimitStore::clear(const std::optional<std::string>& url) {
    const std::optional<std::string> path = pathOf(url);
    return path && removeFile(*path);
}

}  // namespace quorvane
