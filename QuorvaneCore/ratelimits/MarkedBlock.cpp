#include "QuorvaneCore/ratelimits/MarkedBlock.h"

#include <cstddef>

namespace quorvane {
namespace {

bool endsALine(std::string_view before) noexcept {
    return before.empty() || before.back() == '\n';
}

/// How many bytes a line end at the beginning of `text` has; 0 if there is none. An editor may have given the whole
/// file other line ends, the block's included.
std::size_t leadingLineEnd(std::string_view text) noexcept {
    if (text.starts_with('\n')) return 1;
    return text.starts_with("\r\n") ? 2 : 0;
}

/// How many bytes the blank line at the end of `text`, which ends in a line feed or is empty, has; 0 if there is none.
std::size_t trailingBlankLine(std::string_view text) noexcept {
    for (const std::string_view blank : {std::string_view{"\n"}, std::string_view{"\r\n"}}) {
        if (text.ends_with(blank) && endsALine(text.substr(0, text.size() - blank.size()))) return blank.size();
    }
    return 0;
}

}  // namespace

bool MarkedBlock::isIn(std::string_view text) const noexcept {
    return text.find(beginMarker_) != std::string_view::npos;
}

std::string MarkedBlock::removedFrom(std::string_view text) const {
    std::size_t begin = text.find(beginMarker_);
    const std::size_t end = begin == std::string_view::npos ? begin : text.find(endMarker_, begin);
    if (end == std::string_view::npos) return std::string{text};
    begin = text.rfind(beginMarker_, end);

    std::string_view before = text.substr(0, begin);
    const std::string_view block = text.substr(begin, end + endMarker_.size() - begin);
    std::string_view after = text.substr(begin + block.size());
    const bool isMultiline = block.find('\n') != std::string_view::npos;
    std::string rest;
    rest.reserve(text.size() + 1);
    if (endsALine(before)) {
        before.remove_suffix(trailingBlankLine(before));
        after.remove_prefix(leadingLineEnd(after));
        rest.append(before);
    } else {
        // The user's own text stands ahead of the marker on its line and needs a line end; the one behind the block
        // does.
        rest.append(before);
        if (isMultiline && !after.empty() && leadingLineEnd(after) == 0) rest += '\n';
    }
    return rest.append(after);
}

std::string MarkedBlock::appended(std::string_view text, std::string_view block) {
    std::string result{text};
    if (!endsALine(result)) result += '\n';
    if (!result.empty()) result += '\n';
    return result.append(block).append("\n");
}

}  // namespace quorvane
