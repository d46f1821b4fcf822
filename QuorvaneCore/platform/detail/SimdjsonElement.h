#pragma once
// Not installed: what JSONParser.cpp and JSONValue.cpp share of the parser library.
#include <cstring>
#include <type_traits>

#include <simdjson.h>

#include "QuorvaneCore/platform/JSONValue.h"

namespace quorvane {

struct JSONValue::Access {
    using Element = simdjson::dom::element;
    static_assert(sizeof(Element) == sizeof(JSONValue::element_) && std::is_trivially_copyable_v<Element>);

    static JSONValue wrap(const Element& element) noexcept {
        JSONValue value;
        value.kind_ = Kind::Element;
        std::memcpy(value.element_, &element, sizeof element);
        return value;
    }

    static Element unwrap(const JSONValue& value) noexcept {
        Element element;
        std::memcpy(&element, value.element_, sizeof element);
        return element;
    }
};

}  // namespace quorvane
