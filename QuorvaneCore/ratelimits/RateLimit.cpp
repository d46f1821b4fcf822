#include "QuorvaneCore/ratelimits/RateLimit.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

#include "QuorvaneCore/model/JSONNumber.h"
#include "QuorvaneCore/platform/TextForms.h"

namespace quorvane {
namespace {

constexpr std::string_view weekPrefix = "seven_day_";

constexpr std::array<std::pair<std::string_view, std::string_view>, 3> knownLabels{{
    {"seven_day_opus", "Fable"},
    {"seven_day_sonnet", "Sonnet"},
    {"seven_day_overage_included", "Weekly incl. credits"},
}};

/// The comparison is written so that not-a-number fails it.
double heldToPercent(double value) noexcept {
    return value > 0 ? std::min(value, 100.0) : 0.0;
}

std::optional<RateLimitWindow> currentOf(const std::optional<RateLimitWindow>& window, Date at) {
    return window ? window->current(at) : std::nullopt;
}

}  // namespace

std::optional<RateLimitWindow> RateLimitWindow::fromJSON(JSONValue json, std::int64_t windowMinutes) {
    const std::optional<double> used = JSONNumber::asDouble(json["used_percentage"]);
    if (!used) return std::nullopt;
    RateLimitWindow window{.usedPercent = heldToPercent(*used), .windowMinutes = windowMinutes, .resetsAt = {}};
    if (const auto seconds = JSONNumber::asDouble(json["resets_at"])) window.resetsAt = Date{*seconds};
    return window;
}

std::optional<RateLimitWindow> RateLimitWindow::current(Date at) const {
    if (resetsAt && !(*resetsAt > at)) return std::nullopt;
    return *this;
}

bool RateLimitWindow::recentlyReset(Date at, double grace) const noexcept {
    return resetsAt && *resetsAt <= at && at - *resetsAt <= grace;
}

std::string ModelScopedRateLimitWindow::label() const {
    for (const auto& [knownKey, text] : knownLabels) {
        if (key == knownKey) return std::string{text};
    }
    std::string_view rest = key;
    if (rest.starts_with(weekPrefix)) rest.remove_prefix(weekPrefix.size());
    std::string words;
    while (!rest.empty()) {
        const std::size_t end = std::min(rest.find('_'), rest.size());
        if (end > 0) {
            if (!words.empty()) words += ' ';
            words += capitalisingFirst(rest.substr(0, end));
        }
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    return words.empty() ? key : words;
}

std::optional<ModelScopedRateLimitWindow> ModelScopedRateLimitWindow::current(Date at) const {
    if (!window.current(at)) return std::nullopt;
    return *this;
}

std::optional<RateLimitSnapshot> RateLimitSnapshot::current(Date at) const {
    RateLimitSnapshot reduced{.primary = currentOf(primary, at),
                              .secondary = currentOf(secondary, at),
                              .planType = planType,
                              .capturedAt = capturedAt,
                              .modelWindows = {}};
    if (!reduced.primary && !reduced.secondary) return std::nullopt;
    for (const ModelScopedRateLimitWindow& scoped : modelWindows) {
        if (auto kept = scoped.current(at)) reduced.modelWindows.push_back(*std::move(kept));
    }
    return reduced;
}

bool RateLimitSnapshot::likelyAtLimit(Date now, double highThreshold, double maxFreshMinutes) const noexcept {
    if (!capturedAt || !primary) return false;
    return primary->usedPercent >= highThreshold && now - *capturedAt > maxFreshMinutes * 60;
}

bool RateLimitSnapshot::awaitingFreshDataAfterReset(Date at, double grace) const {
    if (current(at)) return false;
    if (primary && primary->recentlyReset(at, grace)) return true;
    return secondary && secondary->recentlyReset(at, grace);
}

}  // namespace quorvane
