#include "QuorvaneCore/model/ISOTimestamp.h"

#include "QuorvaneCore/platform/ISODate.h"

namespace quorvane {

Date ISOTimestamp::parse(std::optional<std::string_view> text, Date fallback) noexcept {
    if (!text) return fallback;
    if (const std::optional<Date> date = ISODate::parseFractional(*text)) return *date;
    return ISODate::parsePlain(*text).value_or(fallback);
}

}  // namespace quorvane
