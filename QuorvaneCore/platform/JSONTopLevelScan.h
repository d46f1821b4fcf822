#pragma once
#include <optional>
#include <string_view>

namespace quorvane {

/// Tells the string member `key` of a JSON object from the beginning of its text, so that a log line that cannot matter
/// need not be parsed. `key` has no characters that JSON escapes.
/// A text: the first member of that key is this string (the bytes between the quotes; they hold no escapes, and point
/// into `text`). The empty text: there is no such member, or its first one is no string, or it is the empty string.
/// Absent: it cannot be told cheaply, because an escape stands in a key or in the string, because much stands before
/// it, or because the text is odd; only a parser knows.
/// The answer is for texts that are valid JSON; of others it may say anything.
[[nodiscard]] std::optional<std::string_view> scanTopLevelString(std::string_view text, std::string_view key) noexcept;

}  // namespace quorvane
