#pragma once
#include <string_view>

namespace quorvane {

/// Remarks that more than one component makes.
class WidgetTexts {
public:
    WidgetTexts() = delete;

    static constexpr std::string_view preview = "Preview data";
    static constexpr std::string_view stale = "Stale — open Quorvane";
};

}  // namespace quorvane
