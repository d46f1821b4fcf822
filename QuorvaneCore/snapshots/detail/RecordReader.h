#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "QuorvaneCore/platform/Date.h"
#include "QuorvaneCore/platform/JSONValue.h"

namespace quorvane::detail {

/// Reads one JSON object of a snapshot file: every member must be there with its type, but for the optional ones, which
/// may be missing or null; other members are ignored. Throws `SnapshotCodingError` naming the member at fault.
class RecordReader {
public:
    /// Throws for anything but an object.
    explicit RecordReader(JSONValue object);

    [[nodiscard]] std::string text(std::string_view key) const;
    [[nodiscard]] std::optional<std::string> optionalText(std::string_view key) const;
    [[nodiscard]] double number(std::string_view key) const;
    [[nodiscard]] std::optional<double> optionalNumber(std::string_view key) const;
    /// A float that is a whole number is one of JSON's ways to write an integer.
    [[nodiscard]] std::int64_t integer(std::string_view key) const;
    [[nodiscard]] std::optional<std::int64_t> optionalInteger(std::string_view key) const;
    [[nodiscard]] bool boolean(std::string_view key) const;
    [[nodiscard]] Date date(std::string_view key) const;
    [[nodiscard]] std::optional<Date> optionalDate(std::string_view key) const;
    [[nodiscard]] std::vector<double> numbers(std::string_view key) const;
    [[nodiscard]] std::vector<std::string> texts(std::string_view key) const;
    [[nodiscard]] JSONValue array(std::string_view key) const;
    [[nodiscard]] JSONValue object(std::string_view key) const;
    /// Absent for a missing key.
    [[nodiscard]] JSONValue optionalObject(std::string_view key) const;

    /// A word of a fixed list, by the list's own `fromRawName`.
    template <typename FromRawName>
    [[nodiscard]] auto word(std::string_view key, FromRawName fromRawName) const {
        const auto value = fromRawName(text(key));
        if (!value) refuse(key);
        return *value;
    }

    [[noreturn]] static void refuse(std::string_view key);

private:
    [[nodiscard]] bool isMissing(std::string_view key) const;

    JSONValue object_;
};

}  // namespace quorvane::detail
