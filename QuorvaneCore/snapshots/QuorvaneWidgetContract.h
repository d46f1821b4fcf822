#pragma once
#include <string_view>

namespace quorvane {

/// What host and widget must agree on.
class QuorvaneWidgetContract {
public:
    QuorvaneWidgetContract() = delete;

    /// The identifier under which the widget is registered.
    static constexpr std::string_view kind = "QuorvaneWidget";
    static constexpr std::string_view extensionBundleIdentifier = "com.orlanmere.quorvane.widget";
};

}  // namespace quorvane
