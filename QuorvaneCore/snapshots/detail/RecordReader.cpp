#include "QuorvaneCore/snapshots/detail/RecordReader.h"

#include <cmath>
#include <variant>

#include "QuorvaneCore/platform/ISODate.h"
#include "QuorvaneCore/snapshots/SnapshotCodingError.h"

namespace quorvane::detail {
namespace {

double asDouble(JSONValue value, std::string_view key) {
    const std::optional<JSONNumberValue> number = value.number();
    if (!number) RecordReader::refuse(key);
    return std::visit([](auto digits) { return static_cast<double>(digits); }, *number);
}

}  // namespace

RecordReader::RecordReader(JSONValue object) : object_{object} {
    if (!object.isObject()) throw SnapshotCodingError{"the text is no JSON object where one should be"};
}

void RecordReader::refuse(std::string_view key) {
    throw SnapshotCodingError{"\"" + std::string{key} + "\" is missing or has an unsuitable value"};
}

bool RecordReader::isMissing(std::string_view key) const {
    const JSONValue value = object_[key];
    return !value.isPresent() || value.isNull();
}

std::string RecordReader::text(std::string_view key) const {
    const std::optional<std::string_view> value = object_[key].string();
    if (!value) refuse(key);
    return std::string{*value};
}

std::optional<std::string> RecordReader::optionalText(std::string_view key) const {
    return isMissing(key) ? std::nullopt : std::optional{text(key)};
}

double RecordReader::number(std::string_view key) const {
    return asDouble(object_[key], key);
}

std::optional<double> RecordReader::optionalNumber(std::string_view key) const {
    return isMissing(key) ? std::nullopt : std::optional{number(key)};
}

std::int64_t RecordReader::integer(std::string_view key) const {
    const std::optional<JSONNumberValue> number = object_[key].number();
    if (!number) refuse(key);
    if (const auto* whole = std::get_if<std::int64_t>(&*number)) return *whole;
    constexpr double limit = 9223372036854775808.0;  // 2^63
    const auto* value = std::get_if<double>(&*number);
    if (value == nullptr || std::trunc(*value) != *value || !(std::fabs(*value) < limit)) refuse(key);
    return static_cast<std::int64_t>(*value);
}

std::optional<std::int64_t> RecordReader::optionalInteger(std::string_view key) const {
    return isMissing(key) ? std::nullopt : std::optional{integer(key)};
}

bool RecordReader::boolean(std::string_view key) const {
    const std::optional<bool> value = object_[key].boolean();
    if (!value) refuse(key);
    return *value;
}

Date RecordReader::date(std::string_view key) const {
    const std::optional<Date> value = ISODate::parsePlain(text(key));
    if (!value) refuse(key);
    return *value;
}

std::optional<Date> RecordReader::optionalDate(std::string_view key) const {
    return isMissing(key) ? std::nullopt : std::optional{date(key)};
}

JSONValue RecordReader::array(std::string_view key) const {
    const JSONValue value = object_[key];
    if (!value.isArray()) refuse(key);
    return value;
}

JSONValue RecordReader::object(std::string_view key) const {
    const JSONValue value = object_[key];
    if (!value.isObject()) refuse(key);
    return value;
}

JSONValue RecordReader::optionalObject(std::string_view key) const {
    return isMissing(key) ? JSONValue{} : object(key);
}

std::vector<double> RecordReader::numbers(std::string_view key) const {
    std::vector<double> values;
    array(key).forEachElement([&](JSONValue value) { values.push_back(asDouble(value, key)); });
    return values;
}

std::vector<std::string> RecordReader::texts(std::string_view key) const {
    std::vector<std::string> values;
    array(key).forEachElement([&](JSONValue value) {
        const std::optional<std::string_view> element = value.string();
        if (!element) refuse(key);
        values.emplace_back(*element);
    });
    return values;
}

}  // namespace quorvane::detail
