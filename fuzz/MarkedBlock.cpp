// Blocks between markers in a text of the user's: whatever the text is, taking a block out takes nothing else, and what
// was put in comes out again.

#include "QuorvaneCore/ratelimits/MarkedBlock.h"

#include <string>
#include <string_view>

#include "fuzz/FuzzTarget.h"

using quorvane::MarkedBlock;
using quorvane::fuzz::require;

namespace {

constexpr std::size_t largestText = 2048;
// Short ones, so that the fuzzer comes upon them.
constexpr std::string_view beginMarker = "#<";
constexpr std::string_view endMarker = "#>";
constexpr std::string_view block = "#<\nline\n#>";

/// A whole block, and around it nothing but line ends.
bool isBlock(std::string_view text) {
    const auto isLineEnd = [](char character) { return character == '\n' || character == '\r'; };
    while (!text.empty() && isLineEnd(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isLineEnd(text.back()))
        text.remove_suffix(1);
    return text.size() >= beginMarker.size() + endMarker.size() && text.starts_with(beginMarker) &&
           text.ends_with(endMarker) && text.find(beginMarker, 1) == std::string_view::npos;
}

/// Whether `rest` is `text` without a block, which a line end may stand in for.
bool isWithoutABlock(std::string_view rest, std::string_view text) {
    for (std::size_t begin = 0; begin <= rest.size(); ++begin) {
        if (begin > 0 && text[begin - 1] != rest[begin - 1]) return false;
        for (const std::string_view between : {"", "\n"}) {
            if (!rest.substr(begin).starts_with(between)) continue;
            const std::string_view after = rest.substr(begin + between.size());
            if (begin + after.size() > text.size() || !text.ends_with(after)) continue;
            if (isBlock(text.substr(begin, text.size() - begin - after.size()))) return true;
        }
    }
    return false;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size > largestText) return 0;
    const std::string_view text{reinterpret_cast<const char*>(data), size};
    const MarkedBlock marked{beginMarker, endMarker};
    const std::string removed = marked.removedFrom(text);
    if (removed != text) {
        require(marked.isIn(text), "there was a block to take out");
        require(isWithoutABlock(removed, text), "nothing goes but one block");
        return 0;
    }
    const std::string appended = MarkedBlock::appended(text, block);
    require(marked.isIn(appended), "what was put in is there");
    const bool isEnded = text.empty() || text.ends_with('\n');
    require(marked.removedFrom(appended) == std::string{text} + (isEnded ? "" : "\n"), "what was put in comes out");
    return 0;
}
