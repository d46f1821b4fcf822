#pragma once
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "QuorvaneCore/platform/JSONTree.h"
#include "QuorvaneCore/platform/JSONValue.h"

namespace quorvane {

/// Parses one JSON text after another, with memory that is kept between them.
/// Strict RFC 8259: invalid UTF-8, a byte order mark, trailing text, a number that no float can hold (1e400) and more
/// than 1024 levels of nesting are refused; 1000 levels are read. An integer beyond 64 bits is read as a float. The
/// escape of half a surrogate pair, which JavaScript programs leave behind when they cut a text, is read as U+FFFD.
/// One thread at a time.
class JSONParser {
public:
    /// So many bytes behind a text must be readable for `parsePadded`; their content does not matter.
    static constexpr std::size_t padding = 64;

    JSONParser();
    JSONParser(JSONParser&&) noexcept;
    JSONParser& operator=(JSONParser&&) noexcept;
    ~JSONParser();

    /// The value of the whole text, absent if it is no JSON. Valid until the next parse, or until the parser goes.
    [[nodiscard]] JSONValue parse(std::string_view text);

    /// The same without a copy, for a text with `padding` readable bytes behind it. `text` may go after the call.
    [[nodiscard]] JSONValue parsePadded(std::string_view text);

    /// The value of the whole text as a tree of its own; absent if it is no JSON.
    [[nodiscard]] static std::optional<JSONTree> parseTree(std::string_view text);

private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace quorvane
