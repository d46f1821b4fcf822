#pragma once
#include <string>
#include <string_view>

namespace quorvane {

/// A block of lines between two markers in a text that the user owns, such as a script or a shell start-up file.
/// What is put in comes out again, byte for byte, and nothing else does.
/// Pure; texts are bytes, with line feeds as line ends. Any thread may call any operation.
class MarkedBlock {
public:
    /// The markers must outlive this object; neither is empty or occurs in the other.
    constexpr MarkedBlock(std::string_view beginMarker, std::string_view endMarker) noexcept
        : beginMarker_{beginMarker}, endMarker_{endMarker} {}

    /// Whether `text` contains the begin marker, with or without an end marker behind it.
    [[nodiscard]] bool isIn(std::string_view text) const noexcept;

    /// `text` without its first whole block: from a begin marker to the next end marker, with no other begin marker in
    /// between, so that a begin marker which lost its end never takes the user's lines along. With the block go the
    /// line end behind it and one blank line directly ahead of it, as `appended` puts them there. What stands beside a
    /// marker on its line stays, on a line of its own. A text without a whole block, such as one whose end marker
    /// stands ahead of the begin marker, comes back unchanged.
    [[nodiscard]] std::string removedFrom(std::string_view text) const;

    /// `text` with a line feed at its end if it has none, a blank line, `block`, and a line feed. In an empty text the
    /// block begins at the first line. `block` begins and ends with the markers, more or less of text behind the first.
    /// `removedFrom` then gives back `text`, but for the line feed added to its end.
    [[nodiscard]] static std::string appended(std::string_view text, std::string_view block);

private:
    std::string_view beginMarker_;
    std::string_view endMarker_;
};

}  // namespace quorvane
