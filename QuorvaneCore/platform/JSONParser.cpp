#include "QuorvaneCore/platform/JSONParser.h"

#include <algorithm>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

#include "QuorvaneCore/platform/detail/SimdjsonElement.h"

namespace quorvane {
namespace {

static_assert(JSONParser::padding >= simdjson::SIMDJSON_PADDING);

/// A container this deep must be empty; the fast parser counts in this way.
constexpr std::size_t deepestNesting = 1024;

/// Builds a `JSONTree` from the events of the slower parser, which reads integers of any length as floats.
class TreeBuilder final : public nlohmann::json_sax<nlohmann::json> {
public:
    JSONTree root;

    bool null() override { return add(nullptr); }
    bool boolean(bool value) override { return add(value); }
    bool number_integer(number_integer_t value) override { return add(std::int64_t{value}); }
    bool number_unsigned(number_unsigned_t value) override {
        return std::in_range<std::int64_t>(value) ? add(static_cast<std::int64_t>(value)) : add(std::uint64_t{value});
    }
    bool number_float(number_float_t value, const string_t&) override { return add(value); }
    bool string(string_t& value) override { return add(std::move(value)); }
    bool binary(binary_t&) override { return false; }
    bool start_object(std::size_t) override { return open(JSONTree::Object{}); }
    bool key(string_t& name) override {
        open_.back().key = std::move(name);
        return true;
    }
    bool end_object() override { return close(); }
    bool start_array(std::size_t) override { return open(JSONTree::Array{}); }
    bool end_array() override { return close(); }
    bool parse_error(std::size_t, const std::string&, const nlohmann::detail::exception&) override { return false; }

private:
    struct Level {
        JSONTree value;
        std::string key;  ///< in an object, of the member that comes next
    };

    bool open(JSONTree container) {
        if (open_.size() == deepestNesting) return false;
        open_.push_back({std::move(container), {}});
        return true;
    }

    bool close() {
        JSONTree finished = std::move(open_.back().value);
        open_.pop_back();
        return add(std::move(finished));
    }

    bool add(JSONTree value) {
        if (open_.size() == deepestNesting) return false;
        if (open_.empty()) {
            root = std::move(value);
        } else if (auto* array = std::get_if<JSONTree::Array>(&open_.back().value.content)) {
            array->push_back(std::move(value));
        } else {
            // try_emplace keeps the first of two equal keys.
            std::get<JSONTree::Object>(open_.back().value.content)
                .try_emplace(std::move(open_.back().key), std::move(value));
        }
        return true;
    }

    std::vector<Level> open_;
};

std::optional<JSONTree> parseSlowly(std::string_view text) {
    // The slower parser passes over a byte order mark, and takes a NUL byte for the end of the text.
    if (text.starts_with("\xef\xbb\xbf") || text.find('\0') != std::string_view::npos) return std::nullopt;
    TreeBuilder builder;
    if (!nlohmann::json::sax_parse(text.begin(), text.end(), &builder)) return std::nullopt;
    return std::move(builder.root);
}

/// The four hexadecimal digits of a \u escape that begins at `at`; absent if there is none.
std::optional<unsigned> escapedUnit(std::string_view text, std::size_t at) noexcept {
    if (at + 6 > text.size() || text[at] != '\\' || text[at + 1] != 'u') return std::nullopt;
    unsigned unit = 0;
    for (std::size_t index = at + 2; index < at + 6; ++index) {
        const char digit = text[index];
        unsigned value = 0;
        if (digit >= '0' && digit <= '9') {
            value = static_cast<unsigned>(digit - '0');
        } else if (digit >= 'a' && digit <= 'f') {
            value = static_cast<unsigned>(digit - 'a' + 10);
        } else if (digit >= 'A' && digit <= 'F') {
            value = static_cast<unsigned>(digit - 'A' + 10);
        } else {
            return std::nullopt;
        }
        unit = unit * 16 + value;
    }
    return unit;
}

bool isHighSurrogate(unsigned unit) noexcept {
    return unit >= 0xd800 && unit < 0xdc00;
}
bool isLowSurrogate(unsigned unit) noexcept {
    return unit >= 0xdc00 && unit < 0xe000;
}

/// `text` with each escape of half a surrogate pair replaced by the escape of U+FFFD, which is as long.
/// Absent if there is no such escape.
std::optional<std::string> withLoneSurrogatesReplaced(std::string_view text) {
    std::optional<std::string> mended;
    for (std::size_t at = text.find('\\'); at != std::string_view::npos && at + 1 < text.size();
         at = text.find('\\', at)) {
        const std::optional<unsigned> unit = escapedUnit(text, at);
        if (!unit) {
            at += 2;
            continue;
        }
        const std::optional<unsigned> next = escapedUnit(text, at + 6);
        if (isHighSurrogate(*unit) && next && isLowSurrogate(*next)) {
            at += 12;
            continue;
        }
        if (isHighSurrogate(*unit) || isLowSurrogate(*unit)) {
            if (!mended) mended.emplace(text);
            mended->replace(at, 6, "\\ufffd");
        }
        at += 6;
    }
    return mended;
}

}  // namespace

struct JSONParser::State {
    simdjson::dom::parser parser;
    std::string scratch;  ///< a padded copy of an unpadded text
    JSONTree tree;        ///< the result of the slower parser

    /// The parser itself grows to just the size of the text, which a log with ever longer lines would make it do again
    /// and again. A failure shows at the parse.
    void makeRoom(std::size_t size) {
        constexpr std::size_t atLeast = 16384;
        if (size <= parser.capacity() || size > parser.max_capacity()) return;
        const std::size_t doubled = std::min(2 * parser.capacity(), parser.max_capacity());
        const simdjson::error_code failure = parser.allocate(std::max({size, doubled, atLeast}));
        static_cast<void>(failure);
    }
};

JSONParser::JSONParser() : state_{std::make_unique<State>()} {}
JSONParser::JSONParser(JSONParser&&) noexcept = default;
JSONParser& JSONParser::operator=(JSONParser&&) noexcept = default;
JSONParser::~JSONParser() = default;

JSONValue JSONParser::parse(std::string_view text) {
    state_->scratch.reserve(text.size() + padding);
    state_->scratch.assign(text);
    state_->scratch.append(padding, '\0');
    return parsePadded(std::string_view{state_->scratch}.substr(0, text.size()));
}

JSONValue JSONParser::parsePadded(std::string_view text) {
    constexpr bool copyFirst = false;
    simdjson::dom::element element;
    state_->makeRoom(text.size());
    const simdjson::error_code failure = state_->parser.parse(text.data(), text.size(), copyFirst).get(element);
    if (failure == simdjson::SUCCESS) return JSONValue::Access::wrap(element);
    // Long integers and halves of surrogate pairs are what the fast parser refuses in valid JSON.
    if (failure != simdjson::NUMBER_ERROR && failure != simdjson::STRING_ERROR) return {};
    std::optional<JSONTree> tree = parseTree(text);
    if (!tree) return {};
    state_->tree = std::move(*tree);
    return JSONValue{state_->tree};
}

std::optional<JSONTree> JSONParser::parseTree(std::string_view text) {
    std::optional<JSONTree> tree = parseSlowly(text);
    if (!tree) {
        if (const std::optional<std::string> mended = withLoneSurrogatesReplaced(text)) tree = parseSlowly(*mended);
    }
    return tree;
}

}  // namespace quorvane
