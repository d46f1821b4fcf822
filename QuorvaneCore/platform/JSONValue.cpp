#include "QuorvaneCore/platform/JSONValue.h"

#include <algorithm>
#include <cassert>
#include <cstring>
#include <vector>

#include "QuorvaneCore/platform/detail/SimdjsonElement.h"

namespace quorvane {
namespace {

namespace dom = simdjson::dom;

template <typename Wanted>
const Wanted* held(const JSONTree* tree) noexcept {
    return std::get_if<Wanted>(&tree->content);
}

template <typename Wanted>
std::optional<Wanted> copied(const JSONTree* tree) noexcept {
    const Wanted* value = held<Wanted>(tree);
    return value == nullptr ? std::nullopt : std::optional<Wanted>{*value};
}

/// The parser library's "value or error" as an optional.
template <typename Wanted>
std::optional<Wanted> taken(simdjson::simdjson_result<Wanted> result) noexcept {
    Wanted value{};
    return std::move(result).get(value) == simdjson::SUCCESS ? std::optional<Wanted>{value} : std::nullopt;
}

/// A bit for a key's length and last character; few keys of an object share theirs.
std::uint64_t keyBit(std::string_view key) noexcept {
    const unsigned last = key.empty() ? 0 : static_cast<unsigned char>(key.back());
    return std::uint64_t{1} << ((key.size() * 5 + last) % 64);
}

/// For keys, which are too short to be worth a call.
bool isSameKey(std::string_view left, std::string_view right) noexcept {
    if (left.size() != right.size()) return false;
    const std::size_t size = left.size();
    if (size < sizeof(std::uint64_t)) {
        for (std::size_t index = 0; index < size; ++index) {
            if (left[index] != right[index]) return false;
        }
        return true;
    }
    const auto word = [](std::string_view text, std::size_t at) noexcept {
        std::uint64_t bytes = 0;
        std::memcpy(&bytes, text.data() + at, sizeof bytes);
        return bytes;
    };
    for (std::size_t at = 0; at + sizeof(std::uint64_t) < size; at += sizeof(std::uint64_t)) {
        if (word(left, at) != word(right, at)) return false;
    }
    const std::size_t last = size - sizeof(std::uint64_t);
    return word(left, last) == word(right, last);
}

/// The element as what it is known to be.
template <typename Known>
Known as(const dom::element& element) noexcept {
    Known value{};
    const simdjson::error_code failure = element.get(value);
    assert(failure == simdjson::SUCCESS);
    static_cast<void>(failure);
    return value;
}

}  // namespace

bool JSONValue::isNull() const noexcept {
    switch (kind_) {
        case Kind::Absent: return false;
        case Kind::Element: return Access::unwrap(*this).is_null();
        case Kind::Tree: return held<std::nullptr_t>(tree_) != nullptr;
    }
    return false;
}

bool JSONValue::isObject() const noexcept {
    switch (kind_) {
        case Kind::Absent: return false;
        case Kind::Element: return Access::unwrap(*this).is_object();
        case Kind::Tree: return held<JSONTree::Object>(tree_) != nullptr;
    }
    return false;
}

bool JSONValue::isArray() const noexcept {
    switch (kind_) {
        case Kind::Absent: return false;
        case Kind::Element: return Access::unwrap(*this).is_array();
        case Kind::Tree: return held<JSONTree::Array>(tree_) != nullptr;
    }
    return false;
}

std::optional<std::string_view> JSONValue::string() const noexcept {
    switch (kind_) {
        case Kind::Absent: return std::nullopt;
        case Kind::Element: return taken(Access::unwrap(*this).get_string());
        case Kind::Tree:
            if (const std::string* text = held<std::string>(tree_)) return *text;
            return std::nullopt;
    }
    return std::nullopt;
}

std::optional<bool> JSONValue::boolean() const noexcept {
    switch (kind_) {
        case Kind::Absent: return std::nullopt;
        case Kind::Element: return taken(Access::unwrap(*this).get_bool());
        case Kind::Tree: return copied<bool>(tree_);
    }
    return std::nullopt;
}

std::optional<JSONNumberValue> JSONValue::number() const noexcept {
    if (kind_ == Kind::Element) {
        const Access::Element element = Access::unwrap(*this);
        switch (element.type()) {
            case dom::element_type::INT64: return as<std::int64_t>(element);
            case dom::element_type::UINT64: return as<std::uint64_t>(element);
            case dom::element_type::DOUBLE: return as<double>(element);
            case dom::element_type::ARRAY:
            case dom::element_type::OBJECT:
            case dom::element_type::STRING:
            case dom::element_type::BOOL:
            case dom::element_type::NULL_VALUE: return std::nullopt;
        }
    } else if (kind_ == Kind::Tree) {
        if (const auto* integer = held<std::int64_t>(tree_)) return *integer;
        if (const auto* large = held<std::uint64_t>(tree_)) return *large;
        if (const auto* real = held<double>(tree_)) return *real;
    }
    return std::nullopt;
}

std::optional<std::int64_t> JSONValue::integer() const noexcept {
    switch (kind_) {
        case Kind::Absent: return std::nullopt;
        case Kind::Element: {
            // The library would also convert a larger type whose value happens to fit.
            const Access::Element element = Access::unwrap(*this);
            if (element.type() != dom::element_type::INT64) return std::nullopt;
            return as<std::int64_t>(element);
        }
        case Kind::Tree: return copied<std::int64_t>(tree_);
    }
    return std::nullopt;
}

bool JSONValue::isEmpty() const noexcept {
    if (kind_ == Kind::Element) {
        const Access::Element element = Access::unwrap(*this);
        if (element.is_object()) {
            const auto object = as<dom::object>(element);
            return object.begin() == object.end();
        }
        if (element.is_array()) {
            const auto array = as<dom::array>(element);
            return array.begin() == array.end();
        }
    } else if (kind_ == Kind::Tree) {
        if (const auto* object = held<JSONTree::Object>(tree_)) return object->empty();
        if (const auto* array = held<JSONTree::Array>(tree_)) return array->empty();
    }
    return true;
}

JSONValue JSONValue::operator[](std::string_view key) const noexcept {
    JSONValue found;
    findMembers(&key, &found, 1);
    return found;
}

void JSONValue::findMembers(const std::string_view* keys, JSONValue* found, std::size_t count) const noexcept {
    if (kind_ == Kind::Tree) {
        const auto* object = held<JSONTree::Object>(tree_);
        if (object == nullptr) return;
        for (std::size_t index = 0; index < count; ++index) {
            const auto member = object->find(keys[index]);
            if (member != object->end()) found[index] = JSONValue{member->second};
        }
        return;
    }
    if (kind_ == Kind::Absent) return;
    const Access::Element element = Access::unwrap(*this);
    if (!element.is_object()) return;
    const auto object = as<dom::object>(element);
    // Most members are not asked for, and a look at their keys tells.
    std::uint64_t wanted = 0;
    for (std::size_t index = 0; index < count; ++index)
        wanted |= keyBit(keys[index]);
    std::size_t missing = count;
    std::size_t expected = 0;  // callers name the keys in the order of the text as far as they know it
    const auto end = object.end();
    for (auto member = object.begin(); missing > 0 && member != end; ++member) {
        const std::string_view key = member.key();
        if ((wanted & keyBit(key)) == 0) continue;
        std::size_t index = expected;
        for (std::size_t tried = 0; tried < count; ++tried, ++index) {
            if (index == count) index = 0;
            if (!isSameKey(keys[index], key)) continue;
            if (found[index].isPresent()) break;
            Access::set(found[index], member.value());  // in place, field by field, which is faster than a copy
            --missing;
            expected = index + 1;
            break;
        }
    }
}

void JSONValue::forEachElement(FunctionView<void(JSONValue)> visit) const {
    if (kind_ == Kind::Tree) {
        if (const auto* array = held<JSONTree::Array>(tree_)) {
            for (const JSONTree& element : *array)
                visit(JSONValue{element});
        }
    } else if (kind_ == Kind::Element) {
        const Access::Element element = Access::unwrap(*this);
        if (!element.is_array()) return;
        const auto array = as<dom::array>(element);
        for (const Access::Element child : array)
            visit(Access::wrap(child));
    }
}

void JSONValue::forEachMember(FunctionView<void(std::string_view, JSONValue)> visit) const {
    if (kind_ == Kind::Tree) {
        if (const auto* object = held<JSONTree::Object>(tree_)) {
            for (const auto& [key, value] : *object)
                visit(key, JSONValue{value});
        }
    } else if (kind_ == Kind::Element) {
        const Access::Element element = Access::unwrap(*this);
        if (!element.is_object()) return;
        std::vector<std::string_view> seen;
        const auto object = as<dom::object>(element);
        for (const dom::key_value_pair member : object) {
            if (std::find(seen.begin(), seen.end(), member.key) != seen.end()) continue;
            seen.push_back(member.key);
            visit(member.key, Access::wrap(member.value));
        }
    }
}

}  // namespace quorvane
