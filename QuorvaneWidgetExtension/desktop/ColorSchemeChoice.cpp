#include "QuorvaneWidgetExtension/desktop/ColorSchemeChoice.h"

namespace quorvane::desktop {

std::string_view rawName(ColorSchemeChoice choice) noexcept {
    switch (choice) {
        case ColorSchemeChoice::desktop: return "desktop";
        case ColorSchemeChoice::light: return "light";
        case ColorSchemeChoice::dark: return "dark";
    }
    return {};
}

std::optional<ColorSchemeChoice> colorSchemeChoiceFromRawName(std::string_view text) noexcept {
    for (const ColorSchemeChoice choice : allColorSchemeChoices) {
        if (rawName(choice) == text) return choice;
    }
    return std::nullopt;
}

std::string_view displayText(ColorSchemeChoice choice) noexcept {
    switch (choice) {
        case ColorSchemeChoice::desktop: return "As the desktop";
        case ColorSchemeChoice::light: return "Light";
        case ColorSchemeChoice::dark: return "Dark";
    }
    return {};
}

WidgetColorScheme resolved(ColorSchemeChoice choice, WidgetColorScheme ofDesktop) noexcept {
    switch (choice) {
        case ColorSchemeChoice::light: return WidgetColorScheme::Light;
        case ColorSchemeChoice::dark: return WidgetColorScheme::Dark;
        case ColorSchemeChoice::desktop: break;
    }
    return ofDesktop;
}

}  // namespace quorvane::desktop
