#pragma once
#include <string>
#include <string_view>

namespace quorvane {

/// The mark, the product's name and what the widget tells of.
struct WidgetHeader {
    static constexpr std::string_view productName = "Quorvane";

    std::string title;
    bool compact = false;

    friend bool operator==(const WidgetHeader&, const WidgetHeader&) = default;
};

}  // namespace quorvane
