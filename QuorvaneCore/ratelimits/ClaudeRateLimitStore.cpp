#include "QuorvaneCore/ratelimits/ClaudeRateLimitStore.h"

#include <algorithm>
#include <cstdint>

#include "QuorvaneCore/model/JSONNumber.h"
#include "QuorvaneCore/platform/FilePath.h"
#include "QuorvaneCore/platform/JSONParser.h"
#include "QuorvaneCore/platform/UserFolders.h"
#include "QuorvaneCore/ratelimits/detail/CaptureFile.h"

namespace quorvane {
namespace {

constexpr std::int64_t fiveHourMinutes = 300;
constexpr std::int64_t weekMinutes = 10080;

/// Absent means the default place.
detail::CaptureFile fileAt(const std::optional<std::string>& url) {
    return {url ? url : ClaudeRateLimitStore::defaultURL(), &ClaudeRateLimitStore::decodeRaw};
}

}  // namespace

std::optional<std::string> ClaudeRateLimitStore::defaultURL() {
    return FilePath::joining(UserFolders::quorvaneSupport(), "claude-rate-limits.json");
}

std::optional<RateLimitSnapshot> ClaudeRateLimitStore::load(Date now, const std::optional<std::string>& url) {
    return fileAt(url).load(now);
}

std::optional<RateLimitSnapshot> ClaudeRateLimitStore::decode(std::string_view bytes, Date now) {
    return detail::CaptureFile::current(decodeRaw(bytes, now), now);
}

std::optional<RateLimitSnapshot> ClaudeRateLimitStore::decodeRaw(std::string_view bytes, Date now) {
    JSONParser parser;
    const JSONValue object = parser.parse(bytes);
    RateLimitSnapshot snapshot;
    if (const std::optional<double> seconds = JSONNumber::asDouble(object["capturedAt"])) {
        snapshot.capturedAt = Date{*seconds};
        if (now - *snapshot.capturedAt > maxAgeSeconds) return std::nullopt;
    }
    snapshot.primary = RateLimitWindow::fromJSON(object["five_hour"], fiveHourMinutes);
    snapshot.secondary = RateLimitWindow::fromJSON(object["seven_day"], weekMinutes);
    if (!snapshot.primary && !snapshot.secondary) return std::nullopt;
    snapshot.modelWindows = modelScopedWindows(object);
    return snapshot;
}

std::vector<ModelScopedRateLimitWindow> ClaudeRateLimitStore::modelScopedWindows(JSONValue object) {
    std::vector<ModelScopedRateLimitWindow> windows;
    object.forEachMember([&](std::string_view key, JSONValue value) {
        if (!key.starts_with("seven_day_")) return;
        if (const auto window = RateLimitWindow::fromJSON(value, weekMinutes))
            windows.push_back({.key = std::string{key}, .window = *window});
    });
    std::sort(windows.begin(), windows.end(), [](const auto& left, const auto& right) { return left.key < right.key; });
    return windows;
}

bool ClaudeRateLimitStore::awaitingResetHint(Date now, const std::optional<std::string>& url) {
    return fileAt(url).awaitingResetHint(now);
}

bool ClaudeRateLimitStore::isActive(Date now, const std::optional<std::string>& url) {
    return load(now, url).has_value();
}

bool ClaudeRateLimitStore::clear(const std::optional<std::string>& url) {
    return fileAt(url).clear();
}

}  // namespace quorvane
