#pragma once
#include <string>
#include <string_view>

namespace quorvane::host {

/// Makes text from logs fit for a page. Bytes that are no UTF-8, control characters, code points that stand for no
/// character, and those that turn the direction of what follows become U+FFFD. Pure; any thread.
class HTMLText {
public:
    HTMLText() = delete;

    /// For the text of an element and for an attribute's value in either kind of quotes.
    [[nodiscard]] static std::string escaped(std::string_view text);

    /// A name, isolated, so that its direction does not spill over. At most 80 characters, with an ellipsis in the
    /// middle where some are left out.
    [[nodiscard]] static std::string name(std::string_view text);

    /// The same as `name` for an attribute: escaped, without an element around it.
    [[nodiscard]] static std::string plainName(std::string_view text);
};

}  // namespace quorvane::host
