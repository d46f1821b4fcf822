#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "QuorvaneCore/platform/JSONTree.h"

namespace quorvane {

/// A JSON text that someone else owns, taken apart to be changed in places and written back. What is not changed keeps
/// its own text, so that nothing of it is lost: a number of any length, "1.0", "-0", the escapes of a string. Objects
/// keep their members in order, doubled keys included. Of a doubled key the last one counts, as for the JavaScript
/// programs that read such files. (`JSONTree` is for what is the system's own.)
class JSONDocument {
public:
    struct Member;
    using Array = std::vector<JSONDocument>;
    using Object = std::vector<Member>;

    /// In which order `pretty` writes the members of each object. Members of one key keep theirs in both.
    enum class KeyOrder : std::uint8_t {
        Kept,
        Sorted,  ///< by the bytes of the keys
    };

    /// Absent for all that `JSONParser` refuses.
    [[nodiscard]] static std::optional<JSONDocument> parse(std::string_view text);

    /// A new value.
    [[nodiscard]] static JSONDocument of(const JSONTree& tree);

    /// Null for a value of another kind. The pointer is valid until the value that holds it changes.
    [[nodiscard]] Array* array() noexcept { return std::get_if<Array>(&content_); }
    [[nodiscard]] const Array* array() const noexcept { return std::get_if<Array>(&content_); }
    [[nodiscard]] Object* object() noexcept { return std::get_if<Object>(&content_); }
    [[nodiscard]] const Object* object() const noexcept { return std::get_if<Object>(&content_); }

    /// The text of a string, absent for anything else.
    [[nodiscard]] std::optional<std::string> string() const;

    /// The member of that key; null for a missing key and for anything but an object. Valid as `object()` is.
    [[nodiscard]] JSONDocument* member(std::string_view key) noexcept;
    [[nodiscard]] const JSONDocument* member(std::string_view key) const noexcept;

    /// Replaces the member of that key where it stands, or adds one at the end. This value must be an object.
    void set(std::string_view key, JSONDocument value);

    /// Takes out all members of that key. This value must be an object.
    void remove(std::string_view key);

    /// Two blanks an indentation level, one member or element a line, no line feed at the end.
    [[nodiscard]] std::string pretty(KeyOrder order) const;

private:
    class Reader;
    class Writer;

    explicit JSONDocument(std::string text);
    explicit JSONDocument(Array elements);
    explicit JSONDocument(Object members);

    /// A text is the own text of a string, a number, true, false or null.
    std::variant<std::string, Array, Object> content_;
};

struct JSONDocument::Member {
    std::string key;      ///< without its escapes
    std::string keyText;  ///< as it stands, with quotes and escapes
    JSONDocument value;
};

}  // namespace quorvane
