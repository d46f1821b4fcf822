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
    explicit JSONValue(const JSONTree& tree) noexcept;

    [[nodiscard]] bool isPresent() const noexcept { return kind_ != Kind::Absent; }
    [[nodiscard]] bool isNull() const noexcept { return kind_ == Kind::Null; }
    [[nodiscard]] bool isObject() const noexcept { return kind_ == Kind::Object || kind_ == Kind::TreeObject; }
    [[nodiscard]] bool isArray() const noexcept { return kind_ == Kind::Array || kind_ == Kind::TreeArray; }

    /// Absent for anything but a string, a boolean, a number.
    [[nodiscard]] std::optional<std::string_view> string() const noexcept {
        return kind_ == Kind::String ? std::optional{std::string_view{text_.bytes, text_.size}} : std::nullopt;
    }
    [[nodiscard]] std::optional<bool> boolean() const noexcept {
        return kind_ == Kind::Boolean ? std::optional{boolean_} : std::nullopt;
    }
    [[nodiscard]] std::optional<JSONNumberValue> number() const noexcept;

    /// The number if it is an integer of 64 bits with sign; the short way to what nearly every number is.
    [[nodiscard]] std::optional<std::int64_t> integer() const noexcept {
        return kind_ == Kind::Integer ? std::optional{integer_} : std::nullopt;
    }

    /// True for an object with no key, an array with no element, and anything that is neither.
    [[nodiscard]] bool isEmpty() const noexcept;

    /// The member of that key; absent for a missing key and for anything but an object.
    [[nodiscard]] JSONValue operator[](std::string_view key) const noexcept;

    /// The members of several keys, no two of them equal, in one pass over the object; `found[i]` belongs to `keys[i]`.
    /// Fastest with constant keys in the order in which the text mostly has them.
    template <std::size_t Count>
    [[nodiscard]] std::array<JSONValue, Count> members(const std::array<std::string_view, Count>& keys) const noexcept {
        std::array<JSONValue, Count> found;
        findMembers(keys.data(), keyBits(keys.data(), Count), found.data(), Count);
        return found;
    }

    /// The same for a number of keys that is not constant. `found` has room for all of them, and holds absent values.
    void members(std::span<const std::string_view> keys, std::span<JSONValue> found) const noexcept {
        findMembers(keys.data(), keyBits(keys.data(), keys.size()), found.data(), keys.size());
    }

    /// Calls `visit` for each element of an array, in order; never for anything else.
    void forEachElement(FunctionView<void(JSONValue)> visit) const;

    /// Calls `visit` for each member of an object in the order of the text, doubled keys with their first value only;
    /// never for anything else.
    void forEachMember(FunctionView<void(std::string_view, JSONValue)> visit) const;

private:
    friend class JSONParser;

    /// A value without parts is taken out of its document at once, so that most questions are answered in this header.
    enum class Kind : std::uint8_t {
        Absent,
        Null,
        Boolean,
        Integer,
        Unsigned,
        Real,
        String,
        Object,
        Array,
        TreeObject,
        TreeArray,
    };

    struct Text {
        const char* bytes;
        std::size_t size;
    };

    /// Words rather than bytes, since those stay in registers on their way.
    struct Words {
        std::uintptr_t first;
        std::uintptr_t second;
    };

    /// A bit for a key's length and last character; few keys of an object share theirs.
    static constexpr std::uint64_t keyBit(std::string_view key) noexcept {
        const unsigned last = key.empty() ? 0 : static_cast<unsigned char>(key.back());
        return std::uint64_t{1} << ((key.size() * 5 + last) % 64);
    }
    /// Of all keys. Here rather than beside its use, so that the compiler works it out for constant keys.
    static constexpr std::uint64_t keyBits(const std::string_view* keys, std::size_t count) noexcept {
        std::uint64_t bits = 0;
        for (std::size_t index = 0; index < count; ++index)
            bits |= keyBit(keys[index]);
        return bits;
    }

    struct Access;  // the parser's side, in detail/SimdjsonElement.h
    /// `bits` are `keyBits` of the keys. Leaves alone what is not found.
    void findMembers(const std::string_view* keys, std::uint64_t bits, JSONValue* found,
                     std::size_t count) const noexcept;

    Kind kind_ = Kind::Absent;  // nothing else is initialised then: arrays of absent values are made for every log line
    union {
        const JSONTree* tree_;  ///< of an object or array that a `JSONTree` holds
        Words element_;         ///< of any other object or array: the parser library's, which this header does not name
        Text text_;
        std::int64_t integer_;
        std::uint64_t unsigned_;
        double real_;
        bool boolean_;
    };
};

}  // namespace quorvane
