#include "QuorvaneWidgetExtension/QuorvaneWidget/QuorvaneWidgetTimeframeChoice.h"

namespace quorvane {

std::string_view rawName(QuorvaneWidgetTimeframeChoice choice) noexcept {
    switch (choice) {
        case QuorvaneWidgetTimeframeChoice::sevenDays: return "sevenDays";
        case QuorvaneWidgetTimeframeChoice::fourteenDays: return "fourteenDays";
        case QuorvaneWidgetTimeframeChoice::thirtyDays: return "thirtyDays";
        case QuorvaneWidgetTimeframeChoice::ninetyDays: return "ninetyDays";
    }
    return {};
}

std::optional<QuorvaneWidgetTimeframeChoice> quorvaneWidgetTimeframeChoiceFromRawName(std::string_view text) noexcept {
    for (const QuorvaneWidgetTimeframeChoice choice : allQuorvaneWidgetTimeframeChoices) {
        if (rawName(choice) == text) return choice;
    }
    return std::nullopt;
}

std::int64_t days(QuorvaneWidgetTimeframeChoice choice) noexcept {
    switch (choice) {
        case QuorvaneWidgetTimeframeChoice::sevenDays: return 7;
        case QuorvaneWidgetTimeframeChoice::fourteenDays: return 14;
        case QuorvaneWidgetTimeframeChoice::thirtyDays: return 30;
        case QuorvaneWidgetTimeframeChoice::ninetyDays: return 90;
    }
    return 0;
}

std::string_view displayText(QuorvaneWidgetTimeframeChoice choice) noexcept {
    switch (choice) {
        case QuorvaneWidgetTimeframeChoice::sevenDays: return "7 days";
        case QuorvaneWidgetTimeframeChoice::fourteenDays: return "14 days";
        case QuorvaneWidgetTimeframeChoice::thirtyDays: return "30 days";
        case QuorvaneWidgetTimeframeChoice::ninetyDays: return "90 days";
    }
    return {};
}

}  // namespace quorvane
