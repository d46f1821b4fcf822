#pragma once
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace quorvane {

/// Finds the directory that the programs of one group share, by the group's identifier; absent if there is none.
using SharedContainerLookup = std::function<std::optional<std::string>(std::string_view groupID)>;

/// The platform's own lookup. Linux knows no such directories: always absent.
[[nodiscard]] inline std::optional<std::string> sharedContainer(std::string_view /*groupID*/) {
    return std::nullopt;
}

}  // namespace quorvane
