#pragma once
#include <cstdint>
#include <optional>
#include <string_view>

#include "QuorvaneCore/platform/JSONValue.h"

namespace quorvane {

/// Numbers of loosely typed JSON. Pure; any thread.
class JSONNumber {
public:
    JSONNumber() = delete;

    /// Absent for anything but a number, texts included.
    [[nodiscard]] static std::optional<double> asDouble(JSONValue value) noexcept;

    /// A float is truncated toward zero; 0 for anything but a number, texts included.
    /// A number that 64 bits cannot hold ends the process.
    [[nodiscard]] static std::int64_t asInt(const JSONValue& value) noexcept {
        const std::optional<std::int64_t> integer = value.integer();
        return integer ? *integer : otherAsInt(value);
    }

    /// For numbers that a log carries as texts. The whole text must be a floating-point number of the C locale, with no
    /// white space; truncated toward zero, and 0 when negative. 0 for any other text and for an absent one.
    /// A number that 64 bits cannot hold ends the process, infinity and "nan" included.
    [[nodiscard]] static std::int64_t intFromString(std::optional<std::string_view> text);

private:
    /// For all but an integer of 64 bits, which nearly every number is; that one is not worth a call.
    static std::int64_t otherAsInt(const JSONValue& value) noexcept;
};

}  // namespace quorvane
