#include "QuorvaneCore/snapshots/MenuBarProviderLimit.h"

namespace quorvane {

MenuBarProviderLimit::Window MenuBarProviderLimit::windowOf(std::optional<std::int64_t> minutes) noexcept {
    if (minutes == 300) return Window::FiveHour;
    if (minutes == 10080) return Window::Weekly;
    return Window::Other;
}

std::string_view MenuBarProviderLimit::windowSuffix() const noexcept {
    switch (window) {
        case Window::FiveHour: return " (5hr)";
        case Window::Weekly: return " (W)";
        case Window::Other: return "";
    }
    return {};
}

std::string_view MenuBarProviderLimit::windowSpoken() const noexcept {
    switch (window) {
        case Window::FiveHour: return " in the 5-hour window";
        case Window::Weekly: return " in the weekly window";
        case Window::Other: return "";
    }
    return {};
}

}  // namespace quorvane
