#include "QuorvaneCore/platform/JSONRecordReader.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cstdint>
#include <cstring>
#include <optional>
#include <variant>

#include <simdjson.h>

#include "QuorvaneCore/platform/JSONParser.h"
#include "QuorvaneCore/platform/detail/PlainNumber.h"
#include "QuorvaneCore/platform/detail/SameKey.h"

namespace quorvane {
namespace {

using Implementation = simdjson::internal::dom_parser_implementation;

bool isBlank(char character) noexcept {
    return character == ' ' || character == '\t' || character == '\r' || character == '\n';
}

void setPair(const JSONField& first, const JSONField& second, JSONField& into) noexcept {
    const std::optional<double> left = first.number();
    const std::optional<double> right = second.number();
    if (left && right) into.set(JSONField::Pair{*left, *right});
}

void set(JSONField& into, JSONValue value) {
    into.setAbsent();
    if (!value.isPresent()) return;
    into.setOther();
    if (const auto text = value.string()) return into.set(*text);
    if (const auto integer = value.integer()) return into.set(*integer);
    if (const auto number = value.number()) {
        return into.set(std::visit([](auto held) { return static_cast<double>(held); }, *number));
    }
    std::array<JSONField, 2> parts;
    std::size_t count = 0;
    value.forEachElement([&](JSONValue element) {
        if (count < parts.size() && element.number()) set(parts[count], element);
        ++count;
    });
    if (count == parts.size()) setPair(parts[0], parts[1], into);
}

void fill(std::span<JSONField> fields, JSONValue object, const JSONKeys& keys) {
    std::array<JSONValue, JSONKeys::slotCount> found;
    object.members(keys.all(), found);
    for (std::size_t index = 0; index < fields.size(); ++index)
        set(fields[index], found[index]);
}

}  // namespace

/// Goes once through a text without escapes whose strings are known to be sound, along the places where its values,
/// braces, brackets, colons and commas stand. It gives up at whatever it is not sure of: anything that is no JSON, and
/// much that is but hardly ever stands in a log.
/// What takes something gets the place where that begins and returns the one behind it, or null to give up.
class JSONRecordReader::Walk {
public:
    Walk(const char* text, std::span<const std::uint32_t> places) noexcept
        : text_{text}, begin_{places.data()}, end_{places.data() + places.size()} {}

    /// True if the whole text is an object, whose fields then are filled. The fields must be absent before.
    [[nodiscard]] bool read(JSONRecordReader& into) const {
        if (begin_ == end_ || character(begin_) != '{') return false;
        const JSONKeys keys = into.keys_;
        JSONField* const fields = into.members_.data();
        const JSONField* const inner = fields + into.inner_;
        const Place behind = members(begin_ + 1, [&](std::string_view key, Place at) {
            JSONField* const field = wanted(key, keys, fields);
            if (field == nullptr) return skip(at, 0);
            if (field != inner || character(at) != '{') return take(at, *field, 0);
            field->setOther();
            return innerMembers(at + 1, into);
        });
        return behind == end_;
    }

private:
    using Place = const std::uint32_t*;

    static constexpr int mostNesting = 64;

    [[nodiscard]] const char* position(Place at) const noexcept { return text_ + *at; }
    [[nodiscard]] char character(Place at) const noexcept { return text_[*at]; }

    /// Where the value of that key belongs; null if it was not asked for or is there already.
    static JSONField* wanted(std::string_view key, const JSONKeys& keys, JSONField* fields) noexcept {
        const std::uint8_t index = keys.candidate(key);
        if (index == JSONKeys::noKey || !detail::isSameKey(keys.all()[index], key) || fields[index].isPresent())
            return nullptr;
        return &fields[index];
    }

    [[nodiscard]] Place innerMembers(Place at, JSONRecordReader& into) const {
        const JSONKeys keys = into.innerKeys_;
        JSONField* const fields = into.innerMembers_.data();
        return members(at, [&](std::string_view key, Place value) {
            JSONField* const field = wanted(key, keys, fields);
            return field != nullptr ? take(value, *field, 0) : skip(value, 0);
        });
    }

    /// Takes members and the brace behind them. `takeValue` gets a key and the place of its value, behind which there
    /// is another place.
    template <typename TakeValue>
    [[nodiscard]] Place members(Place at, TakeValue&& takeValue) const {
        constexpr std::ptrdiff_t placesOfMember = 4;  // key, colon, value, and what is behind it
        if (at < end_ && character(at) == '}') return at + 1;
        while (end_ - at >= placesOfMember) {
            const char* const key = position(at);
            const char* const colon = position(at + 1);
            if (*key != '"' || *colon != ':' || colon[-1] != '"') return nullptr;
            at = takeValue(std::string_view{key + 1, static_cast<std::size_t>(colon - key - 2)}, at + 2);
            if (at == nullptr || at == end_) return nullptr;
            const char behind = character(at++);
            if (behind == '}') return at;
            if (behind != ',') return nullptr;
        }
        return nullptr;
    }

    [[nodiscard]] Place skip(Place at, int nesting) const {
        JSONField unwanted;
        return take(at, unwanted, nesting);
    }

    /// Takes a value, behind which there is another place.
    [[nodiscard]] Place take(Place at, JSONField& into, int nesting) const {
        const char* const begin = position(at);
        if (*begin == '"') {
            const char* const end = endOfValue(at);
            into.set(std::string_view{begin + 1, static_cast<std::size_t>(end - begin - 2)});
            return end - begin >= 2 && end[-1] == '"' ? at + 1 : nullptr;
        }
        if (detail::isDigit(*begin) && detail::takeInteger(begin, endOfValue(at), into)) return at + 1;
        return takeRarer(at, into, nesting);
    }

    [[nodiscard]] const char* endOfValue(Place at) const noexcept {
        const char* end = position(at + 1);
        while (isBlank(end[-1]))
            --end;
        return end;
    }

    /// Apart, so that the others fit into each other.
    [[nodiscard, gnu::noinline]] Place takeRarer(Place at, JSONField& into, int nesting) const {
        into.setOther();
        const char* const begin = position(at);
        if (*begin == '{' || *begin == '[') {
            if (nesting == mostNesting) return nullptr;
            if (*begin == '[') return takePair(at, into) ? at + pairPlaces : elements(at + 1, into, nesting + 1);
            return members(at + 1, [&](std::string_view, Place value) { return skip(value, nesting + 1); });
        }
        const char* const end = endOfValue(at);
        const std::string_view text{begin, static_cast<std::size_t>(end - begin)};
        const bool isWord = text == "true" || text == "false" || text == "null";
        return isWord || detail::takeLongInteger(begin, end, into) || detail::takeFraction(begin, end, into) ? at + 1
                                                                                                             : nullptr;
    }

    static constexpr std::ptrdiff_t pairPlaces = 5;  // two numbers, a comma, and the brackets

    /// The usual array, in which most exporters write their times.
    [[nodiscard]] bool takePair(Place at, JSONField& into) const noexcept {
        if (end_ - at < pairPlaces || character(at + 2) != ',' || character(at + 4) != ']') return false;
        JSONField first;
        JSONField second;
        if (!detail::takeInteger(position(at + 1), endOfValue(at + 1), first)) return false;
        if (!detail::takeInteger(position(at + 3), endOfValue(at + 3), second)) return false;
        setPair(first, second, into);
        return true;
    }

    /// Takes elements and the bracket behind them.
    [[nodiscard]] Place elements(Place at, JSONField& into, int nesting) const {
        constexpr std::ptrdiff_t placesOfElement = 2;  // value, and what is behind it
        if (at < end_ && character(at) == ']') return at + 1;
        std::array<JSONField, 3> parts;
        for (std::size_t count = 0; end_ - at >= placesOfElement;) {
            at = take(at, parts[count], nesting);
            if (count + 1 < parts.size()) ++count;
            if (at == nullptr || at == end_) return nullptr;
            const char behind = character(at++);
            if (behind == ',') continue;
            if (count == 2 && !parts[2].isPresent()) setPair(parts[0], parts[1], into);
            return behind == ']' ? at : nullptr;
        }
        return nullptr;
    }

    const char* text_;
    Place begin_;
    Place end_;
};

struct JSONRecordReader::State {
    std::unique_ptr<Implementation> scanner;  ///< finds the places; absent until the first text
    std::optional<JSONParser> parser;         ///< for what the walk gives up at

    /// The scanner's memory grows to just what it is told, which a log with ever longer lines would do again and again.
    bool makeRoom(std::size_t size) {
        constexpr std::size_t atLeast = 16384;
        if (scanner && size <= scanner->capacity()) return true;
        if (size > simdjson::SIMDJSON_MAXSIZE_BYTES) return false;
        const std::size_t doubled = scanner ? 2 * scanner->capacity() : atLeast;
        const std::size_t larger = std::max(size, std::min<std::size_t>(doubled, simdjson::SIMDJSON_MAXSIZE_BYTES));
        if (scanner) return scanner->set_capacity(larger) == simdjson::SUCCESS;
        return simdjson::get_active_implementation()->create_dom_parser_implementation(larger, 1, scanner) ==
               simdjson::SUCCESS;
    }

    /// Absent for a text that is no JSON for sure, or too long.
    std::optional<std::span<const std::uint32_t>> places(std::string_view text) {
        if (!makeRoom(text.size())) return std::nullopt;
        const auto* const bytes = reinterpret_cast<const std::uint8_t*>(text.data());
        const simdjson::error_code failure = scanner->stage1(bytes, text.size(), simdjson::stage1_mode::regular);
        if (failure != simdjson::SUCCESS) return std::nullopt;
        return std::span{scanner->structural_indexes.get(), scanner->n_structural_indexes};
    }
};

JSONRecordReader::JSONRecordReader(JSONKeys keys, std::size_t inner, JSONKeys innerKeys)
    : keys_{keys},
      inner_{inner},
      innerKeys_{innerKeys},
      members_(keys.all().size()),
      innerMembers_(innerKeys.all().size()),
      state_{std::make_unique<State>()} {
    assert(inner < members_.size());
}

JSONRecordReader::~JSONRecordReader() = default;

bool JSONRecordReader::readPadded(std::string_view text) {
    return readPlain(text) || readParsed(text);
}

bool JSONRecordReader::readPlain(std::string_view text) {
    if (text.empty() || std::memchr(text.data(), '\\', text.size()) != nullptr) return false;
    const auto places = state_->places(text);
    if (!places) return false;
    for (std::vector<JSONField>* fields : {&members_, &innerMembers_}) {
        for (JSONField& field : *fields)
            field.setAbsent();
    }
    return Walk{text.data(), *places}.read(*this);
}

bool JSONRecordReader::readParsed(std::string_view text) {
    if (!state_->parser) state_->parser.emplace();
    const JSONValue record = state_->parser->parsePadded(text);
    if (!record.isObject()) return false;
    fill(members_, record, keys_);
    fill(innerMembers_, record[keys_.all()[inner_]], innerKeys_);
    return true;
}

}  // namespace quorvane
