#include "QuorvaneCore/model/JSONNumber.h"

#include <algorithm>

#include "QuorvaneCore/platform/CheckedArithmetic.h"
#include "QuorvaneCore/platform/NumberText.h"

namespace quorvane {
namespace {

struct ToDouble {
    template <typename Number>
    double operator()(Number number) const noexcept {
        return static_cast<double>(number);
    }
};

struct ToInt {
    std::int64_t operator()(std::int64_t number) const noexcept { return number; }
    template <typename Number>
    std::int64_t operator()(Number number) const noexcept {
        return checkedInt64(number);
    }
};

}  // namespace

std::optional<double> JSONNumber::asDouble(JSONValue value) noexcept {
    const std::optional<JSONNumberValue> number = value.number();
    if (!number) return std::nullopt;
    return std::visit(ToDouble{}, *number);
}

std::int64_t JSONNumber::otherAsInt(const JSONValue& value) noexcept {
    const std::optional<JSONNumberValue> number = value.number();
    return number ? std::visit(ToInt{}, *number) : 0;
}

std::int64_t JSONNumber::intFromString(std::optional<std::string_view> text) {
    if (!text) return 0;
    const std::optional<double> number = parseFloat(*text);
    return number ? std::max<std::int64_t>(checkedInt64(*number), 0) : 0;
}

}  // namespace quorvane
