#pragma once
#include <string_view>

namespace quorvane {

/// The natural order of names in the language of the current locale: runs of digits count by their value, case does not
/// count. Below 0 where `left` comes first, above 0 where `right` does, 0 where the two are alike. Any thread.
[[nodiscard]] int compareNaturally(std::string_view left, std::string_view right);

}  // namespace quorvane
