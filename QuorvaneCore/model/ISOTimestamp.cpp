#include "QuorvaneCore/model/ISOTimestamp.h"

#include "QuorvaneCore/platform/ISODate.h"

namespace quorvane {

Date ISOTimestamp::parse(std::optional<std::string_view> text, Date fallback) noexcept {
    return text ? ISODate::parse(*text).value_or(fallback) : fallback;
}

}  // namespace quorvane
