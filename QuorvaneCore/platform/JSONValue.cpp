#include "QuorvaneCore/platform/JSONValue.h"

#include <algorithm>
#include <cassert>
#include <vector>

#include "QuorvaneCore/platform/detail/SameKey.h"
#include "QuorvaneCore/platform/detail/SimdjsonElement.h"

namespace quorvane {
namespace {

template <typename Wanted>
const Wanted* held(const JSONTree* tree) noexcept {
    return std::get_if<Wanted>(&tree->content);
}

template <typename Parts>
bool isWithoutParts(const Parts& parts) noexcept {
    return parts.begin() == parts.end();
}

/// Which of the keys it is, the one at `expected` being tried first; `count` if it is none.
std::size_t indexOf(std::string_view key, const std::string_view* keys, std::size_t count,
                    std::size_t expected) noexcept {
    if (expected < count && detail::isSameKey(keys[expected], key)) return expected;
    for (std::size_t index = 0; index < count; ++index) {
        if (detail::isSameKey(keys[index], key)) return index;
    }
    return count;
}

}  // namespace

JSONValue::JSONValue(const JSONTree& tree) noexcept {
    if (held<std::nullptr_t>(&tree) != nullptr) {
        kind_ = Kind::Null;
    } else if (const auto* boolean = held<bool>(&tree)) {
        kind_ = Kind::Boolean;
        boolean_ = *boolean;
    } else if (const auto* integer = held<std::int64_t>(&tree)) {
        kind_ = Kind::Integer;
        integer_ = *integer;
    } else if (const auto* large = held<std::uint64_t>(&tree)) {
        kind_ = Kind::Unsigned;
        unsigned_ = *large;
    } else if (const auto* real = held<double>(&tree)) {
        kind_ = Kind::Real;
        real_ = *real;
    } else if (const auto* text = held<std::string>(&tree)) {
        kind_ = Kind::String;
        text_ = {text->data(), text->size()};
    } else {
        kind_ = held<JSONTree::Object>(&tree) != nullptr ? Kind::TreeObject : Kind::TreeArray;
        tree_ = &tree;
    }
}

std::optional<JSONNumberValue> JSONValue::number() const noexcept {
    switch (kind_) {
        case Kind::Integer: return integer_;
        case Kind::Unsigned: return unsigned_;
        case Kind::Real: return real_;
        case Kind::Absent:
        case Kind::Null:
        case Kind::Boolean:
        case Kind::String:
        case Kind::Object:
        case Kind::Array:
        case Kind::TreeObject:
        case Kind::TreeArray: return std::nullopt;
    }
    return std::nullopt;
}

bool JSONValue::isEmpty() const noexcept {
    switch (kind_) {
        case Kind::Object: return isWithoutParts(Access::object(*this));
        case Kind::Array: return isWithoutParts(Access::array(*this));
        case Kind::TreeObject: return held<JSONTree::Object>(tree_)->empty();
        case Kind::TreeArray: return held<JSONTree::Array>(tree_)->empty();
        case Kind::Absent:
        case Kind::Null:
        case Kind::Boolean:
        case Kind::Integer:
        case Kind::Unsigned:
        case Kind::Real:
        case Kind::String: return true;
    }
    return true;
}

JSONValue JSONValue::operator[](std::string_view key) const noexcept {
    JSONValue found;
    findMembers(&key, keyBit(key), &found, 1);
    return found;
}

void JSONValue::findMembers(const std::string_view* keys, std::uint64_t bits, JSONValue* found,
                            std::size_t count) const noexcept {
    if (kind_ == Kind::TreeObject) {
        const auto& object = *held<JSONTree::Object>(tree_);
        for (std::size_t index = 0; index < count; ++index) {
            const auto member = object.find(keys[index]);
            if (member != object.end()) found[index] = JSONValue{member->second};
        }
        return;
    }
    if (kind_ != Kind::Object) return;
    const auto object = Access::object(*this);
    std::size_t missing = count;
    std::size_t expected = 0;  // callers name the keys in the order of the text as far as they know it
    for (auto member = object.begin(), end = object.end(); missing > 0 && member != end; ++member) {
        const std::string_view key = member.key();
        if ((bits & keyBit(key)) == 0) continue;  // most members are not asked for, and a look at their keys tells
        const std::size_t index = indexOf(key, keys, count, expected);
        if (index == count || found[index].isPresent()) continue;
        Access::set(found[index], member.value());  // in place, field by field, which is faster than a copy
        expected = index + 1;
        --missing;
    }
}

void JSONValue::forEachElement(FunctionView<void(JSONValue)> visit) const {
    if (kind_ == Kind::TreeArray) {
        for (const JSONTree& element : *held<JSONTree::Array>(tree_))
            visit(JSONValue{element});
    } else if (kind_ == Kind::Array) {
        for (const Access::Element element : Access::array(*this))
            visit(Access::wrap(element));
    }
}

void JSONValue::forEachMember(FunctionView<void(std::string_view, JSONValue)> visit) const {
    if (kind_ == Kind::TreeObject) {
        for (const auto& [key, value] : *held<JSONTree::Object>(tree_))
            visit(key, JSONValue{value});
    } else if (kind_ == Kind::Object) {
        std::vector<std::string_view> seen;
        for (const simdjson::dom::key_value_pair member : Access::object(*this)) {
            if (std::find(seen.begin(), seen.end(), member.key) != seen.end()) continue;
            seen.push_back(member.key);
            visit(member.key, Access::wrap(member.value));
        }
    }
}

}  // namespace quorvane
