#include "QuorvaneWidgetExtension/QuorvaneWidget/QuorvaneWidgetFamily.h"

namespace quorvane {

std::string_view rawName(QuorvaneWidgetFamily family) noexcept {
    switch (family) {
        case QuorvaneWidgetFamily::small: return "small";
        case QuorvaneWidgetFamily::medium: return "medium";
        case QuorvaneWidgetFamily::large: return "large";
    }
    return {};
}

std::optional<QuorvaneWidgetFamily> quorvaneWidgetFamilyFromRawName(std::string_view text) noexcept {
    for (const QuorvaneWidgetFamily family : allQuorvaneWidgetFamilies) {
        if (rawName(family) == text) return family;
    }
    return std::nullopt;
}

std::string_view displayText(QuorvaneWidgetFamily family) noexcept {
    switch (family) {
        case QuorvaneWidgetFamily::small: return "Small";
        case QuorvaneWidgetFamily::medium: return "Medium";
        case QuorvaneWidgetFamily::large: return "Large";
    }
    return {};
}

QuorvaneWidgetSize size(QuorvaneWidgetFamily family) noexcept {
    switch (family) {
        case QuorvaneWidgetFamily::small: return {.width = 170, .height = 170};
        case QuorvaneWidgetFamily::medium: return {.width = 364, .height = 170};
        case QuorvaneWidgetFamily::large: return {.width = 364, .height = 382};
    }
    return {};
}

}  // namespace quorvane
