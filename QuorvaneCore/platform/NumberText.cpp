#include "QuorvaneCore/platform/NumberText.h"

#include <clocale>
#include <cstdlib>
#include <string>

namespace quorvane {
namespace {

/// Made once and kept for the life of the process.
::locale_t cLocale() {
    static const ::locale_t locale = ::newlocale(LC_ALL_MASK, "C", nullptr);
    return locale;
}

}  // namespace

std::optional<double> parseFloat(std::string_view text) {
    constexpr std::string_view whiteSpace = "\t\n\v\f\r ";
    if (text.empty() || whiteSpace.find(text.front()) != std::string_view::npos) return std::nullopt;
    const std::string terminated{text};
    char* end = nullptr;
    const double value = ::strtod_l(terminated.c_str(), &end, cLocale());
    if (end != terminated.c_str() + terminated.size()) return std::nullopt;
    return value;
}

}  // namespace quorvane
