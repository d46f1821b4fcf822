#pragma once
// Not installed: what JSONParser.cpp and JSONValue.cpp share of the parser library.
#include <bit>
#include <type_traits>

#include <simdjson.h>

#include "QuorvaneCore/platform/JSONValue.h"

namespace quorvane {

struct JSONValue::Access {
    using Element = simdjson::dom::element;
    static_assert(sizeof(Element) == sizeof(Words) && std::is_trivially_copyable_v<Element>);

    static void set(JSONValue& value, const Element& element) noexcept {
        value.kind_ = Kind::Element;
        value.element_ = std::bit_cast<Words>(element);
    }

    static JSONValue wrap(const Element& element) noexcept {
        JSONValue value;
        set(value, element);
        return value;
    }

    static Element unwrap(const JSONValue& value) noexcept { return std::bit_cast<Element>(value.element_); }
};

}  // namespace quorvane
