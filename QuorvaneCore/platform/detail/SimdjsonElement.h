#pragma once
// Not installed: what JSONParser.cpp and JSONValue.cpp share of the parser library.
#include <bit>
#include <cassert>
#include <type_traits>

#include <simdjson.h>

#include "QuorvaneCore/platform/JSONValue.h"

namespace quorvane {

struct JSONValue::Access {
    using Element = simdjson::dom::element;
    static_assert(sizeof(Element) == sizeof(Words) && std::is_trivially_copyable_v<Element>);

    [[gnu::always_inline]] static void set(JSONValue& value, const Element& element) noexcept {
        using Type = simdjson::dom::element_type;
        // The commonest kinds first, since a jump to one of many is hard to foretell.
        const Type type = element.type();
        if (type == Type::STRING) {
            const auto text = as<std::string_view>(element);
            value.kind_ = Kind::String;
            value.text_ = {text.data(), text.size()};
        } else if (type == Type::INT64) {
            value.kind_ = Kind::Integer;
            value.integer_ = as<std::int64_t>(element);
        } else if (type == Type::OBJECT) {
            value.kind_ = Kind::Object;
            value.element_ = std::bit_cast<Words>(element);
        } else {
            setOther(value, element, type);
        }
    }

    static JSONValue wrap(const Element& element) noexcept {
        JSONValue value;
        set(value, element);
        return value;
    }

    /// For values of that kind only.
    static simdjson::dom::object object(const JSONValue& value) noexcept {
        assert(value.kind_ == Kind::Object);
        return as<simdjson::dom::object>(std::bit_cast<Element>(value.element_));
    }
    static simdjson::dom::array array(const JSONValue& value) noexcept {
        assert(value.kind_ == Kind::Array);
        return as<simdjson::dom::array>(std::bit_cast<Element>(value.element_));
    }

private:
    static void setOther(JSONValue& value, const Element& element, simdjson::dom::element_type type) noexcept {
        using Type = simdjson::dom::element_type;
        switch (type) {
            case Type::NULL_VALUE: value.kind_ = Kind::Null; return;
            case Type::BOOL:
                value.kind_ = Kind::Boolean;
                value.boolean_ = as<bool>(element);
                return;
            case Type::UINT64:
                value.kind_ = Kind::Unsigned;
                value.unsigned_ = as<std::uint64_t>(element);
                return;
            case Type::DOUBLE:
                value.kind_ = Kind::Real;
                value.real_ = as<double>(element);
                return;
            case Type::ARRAY:
                value.kind_ = Kind::Array;
                value.element_ = std::bit_cast<Words>(element);
                return;
            case Type::STRING:
            case Type::INT64:
            case Type::OBJECT: assert(false); return;
        }
    }

    /// The element as what it is known to be.
    template <typename Known>
    static Known as(const Element& element) noexcept {
        Known known{};
        const simdjson::error_code failure = element.get(known);
        assert(failure == simdjson::SUCCESS);
        static_cast<void>(failure);
        return known;
    }
};

}  // namespace quorvane
