#include "QuorvaneCore/ratelimits/GrokRateLimitStore.h"

#include <cstdint>

#include "QuorvaneCore/model/JSONNumber.h"
#include "QuorvaneCore/platform/FilePath.h"
#include "QuorvaneCore/platform/JSONParser.h"
#include "QuorvaneCore/platform/UserFolders.h"
#include "QuorvaneCore/ratelimits/detail/CaptureFile.h"

namespace quorvane {
namespace {

constexpr std::int64_t weekMinutes = 10080;
constexpr std::string_view planWithoutAName = "SuperGrok";

/// Absent means the default place.
detail::CaptureFile fileAt(const std::optional<std::string>& url) {
    return {url ? url : GrokRateLimitStore::defaultURL(), &GrokRateLimitStore::decodeRaw};
}

}  // namespace

std::optional<std::string> GrokRateLimitStore::defaultURL() {
    return FilePath::joining(UserFolders::quorvaneSupport(), "grok-rate-limits.json");
}

std::optional<RateLimitSnapshot> GrokRateLimitStore::load(Date now, const std::optional<std::string>& url) {
    return fileAt(url).load(now);
}

std::optional<RateLimitSnapshot> GrokRateLimitStore::decode(std::string_view bytes, Date now) {
    return detail::CaptureFile::current(decodeRaw(bytes, now), now);
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
    return fileAt(url).awaitingResetHint(now);
}

bool GrokRateLimitStore::isActive(Date now, const std::optional<std::string>& url) {
    return load(now, url).has_value();
}

bool GrokRateLimitStore::clear(const std::optional<std::string>& url) {
    return fileAt(url).clear();
}

}  // namespace quorvane
