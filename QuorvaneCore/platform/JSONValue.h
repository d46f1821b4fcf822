#pragma once
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <variant>

#include "QuorvaneCore/platform/FunctionView.h"
#include "QuorvaneCore/platform/JSONTree.h"

namespace quorvane {

/// A JSON number as its text has it: an integer stays one, in the unsigned form only above 2^63 - 1.
using JSONNumberValue = std::variant<std::int64_t, std::uint64_t, double>;

/// A view of one value of a parsed JSON document, or of nothing ("absent"). Cheap to copy.
/// Valid as long as what it was taken from: the next `parse` of its `JSONParser`, or the life of its `JSONTree`; texts
/// that it gives out live as long. Where an object has a key twice, the first one counts and the others do not exist.
/// Every question may be asked of every value; what does not fit gives the neutral answer named here.
class JSONValue {
public:
    JSONValue() noexcept = default;
    /// A view of `tree`, which must outlive it.
    explicit JSONValue(const JSONTree& tree) noexcept : kind_{Kind::Tree}, tree_{&tree} {}

    [[nodiscard]] bool isPresent() const noexcept { return kind_ != Kind::Absent; }
    [[nodiscard]] bool isNull() const noexcept;
    [[nodiscard]] bool isObject() const noexcept;
    [[nodiscard]] bool isArray() const noexcept;

    /// Absent for anything but a string, a boolean, a number.
    [[nodiscard]] std::optional<std::string_view> string() const noexcept;
    [[nodiscard]] std::optional<bool> boolean() const noexcept;
    [[nodiscard]] std::optional<JSONNumberValue> number() const noexcept;

    /// The number if it is an integer of 64 bits with sign; the short way to what nearly every number is.
    [[nodiscard]] std::optional<std::int64_t> integer() const noexcept;

    /// True for an object with no key, an array with no element, and anything that is neither.
    [[nodiscard]] bool isEmpty() const noexcept;

    /// The member of that key; absent for a missing key and for anything but an object.
    [[nodiscard]] JSONValue operator[](std::string_view key) const noexcept;

    /// The members of several keys, no two of them equal, in one pass over the object; `found[i]` belongs to `keys[i]`.
    /// Fastest with the keys in the order in which the text mostly has them.
    template <std::size_t Count>
    [[nodiscard]] std::array<JSONValue, Count> members(const std::array<std::string_view, Count>& keys) const noexcept {
        std::array<JSONValue, Count> found;
        findMembers(keys.data(), found.data(), Count);
        return found;
    }

    /// The same for a number of keys that is not constant. `found` has room for all of them, and holds absent values.
    void members(std::span<const std::string_view> keys, std::span<JSONValue> found) const noexcept {
        findMembers(keys.data(), found.data(), keys.size());
    }

    /// Calls `visit` for each element of an array, in order; never for anything else.
    void forEachElement(FunctionView<void(JSONValue)> visit) const;

    /// Calls `visit` for each member of an object in the order of the text, doubled keys with their first value only;
    /// never for anything else.
    void forEachMember(FunctionView<void(std::string_view, JSONValue)> visit) const;

private:
    friend class JSONParser;
    enum class Kind : std::uint8_t { Absent, Element, Tree };

    /// Words rather than bytes, since those stay in registers on their way.
    struct Words {
        std::uintptr_t first;
        std::uintptr_t second;
    };

    struct Access;  // the parser's side, in JSONValue.cpp
    void findMembers(const std::string_view* keys, JSONValue* found, std::size_t count) const noexcept;

    Kind kind_ = Kind::Absent;
    union {
        const JSONTree* tree_ = nullptr;
        Words element_;  ///< the parser library's element, which this header does not name
    };
};

}  // namespace quorvane
