#pragma once
#include <cstddef>
#include <functional>
#include <string_view>

namespace quorvane {

/// Lets an unordered map with text keys be searched by a view, without making a string.
struct StringHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const noexcept { return std::hash<std::string_view>{}(text); }
};

}  // namespace quorvane
