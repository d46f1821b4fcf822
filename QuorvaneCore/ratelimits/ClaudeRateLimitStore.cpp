#include "QuorvaneCore/ratelimits/ClaudeRateLimitStore.h"

#include <algorithm>
#include <cstdint>

#include "QuorvaneCore/model/JSONNumber.h"
#include "QuorvaneCore/platform/FileContents.h"
#include "QuorvaneCore/platform/FilePath.h"
#include "QuorvaneCore/platform/JSONParser.h"
#include "QuorvaneCore/platform/UserFolders.h"

namespace quorvane {
namespace {

constexpr std::int64_t fiveHourMinutes = 300;
constexpr std::int64_t weekMinutes = 10080;

std::optional<std::string> pathOf(const std::optional<std::string>& url) {
    return url ? url : ClaudeRateLimitStore::defaultURL();
}

/// The file's snapshot with nothing of it expired.
std::optional<RateLimitSnapshot> loadRaw(Date now, const std::optional<std::string>& url) {
    const std::optional<std::string> path = pathOf(url);
    const std::optional<std::string> bytes = path ? readFile(*path) : std::nullopt;
    return bytes ? ClaudeRateLimitStore::decodeRaw(*bytes, now) : std::nullopt;
}

std::optional<RateLimitSnapshot> currentOf(const std::optional<RateLimitSnapshot>& snapshot, Date now) {
    return snapshot ? snapshot->current(now) : std::nullopt;
}

}  // namespace

std::optional<std::string> ClaudeRateLimitStore::defaultURL() {
    return FilePath::joining(UserFolders::quorvaneSupport(), "claude-rate-limits.json");
}

std::optional<RateLimitSnapshot> ClaudeRateLimitStore::load(Date now, const std::optional<std::string>& url) {
    return currentOf(loadRaw(now, url), now);
}

std::optional<RateLimitSnapshot> ClaudeRateLimitStore::decode(std::string_view bytes, Date now) {
    return currentOf(decodeRaw(bytes, now), now);
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
    const std::optional<RateLimitSnapshot> snapshot = loadRaw(now, url);
    return snapshot && snapshot->awaitingFreshDataAfterReset(now, RateLimitSnapshot::resetHintGrace);
}

bool ClaudeRateLimitStore::isActive(Date now, const std::optional<std::string>& url) {
    return load(now, url).has_value();
}

bool ClaudeRateLimitStore::clear(const std::optional<std::string>& url) {
    const std::optional<std::string> path = pathOf(url);
    return path && removeFile(*path);
}

}  // namespace quorvane
