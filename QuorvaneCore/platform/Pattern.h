#pragma once
#include <cstddef>
#include <memory>
#include <optional>
#include <string_view>

namespace quorvane {

/// A compiled regular expression in RE2's syntax: linear time on any input. Bytes are compared as Latin-1, so a text
/// need not be valid UTF-8. Any thread may search with a shared pattern.
class Pattern {
public:
    /// `expression` is the program's own and must be valid; anything else is a defect of the caller.
    explicit Pattern(std::string_view expression);
    Pattern(Pattern&&) noexcept;
    Pattern& operator=(Pattern&&) noexcept;
    ~Pattern();

    /// The byte position at which the leftmost match begins; absent without a match.
    [[nodiscard]] std::optional<std::size_t> search(std::string_view text) const;

private:
    struct State;
    std::unique_ptr<const State> state_;
};

}  // namespace quorvane
