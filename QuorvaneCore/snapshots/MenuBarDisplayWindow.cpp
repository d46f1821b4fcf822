#include "QuorvaneCore/snapshots/MenuBarDisplayWindow.h"

namespace quorvane {

std::string_view rawName(MenuBarDisplayWindow window) noexcept {
    switch (window) {
        case MenuBarDisplayWindow::FiveHour: return "fiveHour";
        case MenuBarDisplayWindow::Weekly: return "weekly";
        case MenuBarDisplayWindow::Estimate: return "estimate";
        case MenuBarDisplayWindow::Other: return "other";
    }
    return {};
}

std::optional<MenuBarDisplayWindow> menuBarDisplayWindowFromRawName(std::string_view text) noexcept {
    for (const MenuBarDisplayWindow window : {MenuBarDisplayWindow::FiveHour, MenuBarDisplayWindow::Weekly,
                                              MenuBarDisplayWindow::Estimate, MenuBarDisplayWindow::Other}) {
        if (rawName(window) == text) return window;
    }
    return std::nullopt;
}

std::string_view titleSuffix(MenuBarDisplayWindow window) noexcept {
    switch (window) {
        case MenuBarDisplayWindow::FiveHour: return "5h";
        case MenuBarDisplayWindow::Weekly: return "week";
        case MenuBarDisplayWindow::Estimate:
        case MenuBarDisplayWindow::Other: return "";
    }
    return {};
}

MenuBarDisplayWindow menuBarDisplayWindow(std::optional<std::int64_t> windowMinutes, bool isEstimate) noexcept {
    if (isEstimate) return MenuBarDisplayWindow::Estimate;
    if (windowMinutes == 300) return MenuBarDisplayWindow::FiveHour;
    if (windowMinutes == 10080) return MenuBarDisplayWindow::Weekly;
    return MenuBarDisplayWindow::Other;
}

}  // namespace quorvane
