#include "QuorvaneCore/platform/NumberFormat.h"

#include <algorithm>
#include <utility>

#include <unicode/locid.h>
#include <unicode/numfmt.h>
#include <unicode/ucurr.h>
#include <unicode/unistr.h>

#include "QuorvaneCore/platform/detail/ICULocale.h"

namespace quorvane {
namespace {

using detail::icuLocale;

constexpr std::int64_t mostDecimals = 100;

std::string utf8(const icu::UnicodeString& text) {
    std::string result;
    text.toUTF8String(result);
    return result;
}

/// Any three letters could be a code; the library knows which ones are in use, and shows the others as they are.
std::optional<icu::UnicodeString> currencyCode(std::string_view code) {
    const auto isLetter = [](char character) {
        return (character >= 'A' && character <= 'Z') || (character >= 'a' && character <= 'z');
    };
    if (code.size() != 3 || !std::ranges::all_of(code, isLetter)) return std::nullopt;
    return icu::UnicodeString::fromUTF8(icu::StringPiece{code.data(), 3});
}

std::unique_ptr<icu::NumberFormat> make(const Locale& locale, UNumberFormatStyle style,
                                        std::optional<icu::UnicodeString> code, std::optional<std::int64_t> decimals) {
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::NumberFormat> format{icu::NumberFormat::createInstance(icuLocale(locale), style, status)};
    if (U_FAILURE(status) || !format) return nullptr;
    if (code) format->setCurrency(code->getTerminatedBuffer(), status);
    if (U_FAILURE(status)) return nullptr;
    format->setGroupingUsed(true);
    if (decimals) {
        const auto digits = static_cast<std::int32_t>(std::clamp<std::int64_t>(*decimals, 0, mostDecimals));
        format->setMinimumFractionDigits(digits);
        format->setMaximumFractionDigits(digits);
    }
    return format;
}

}  // namespace

struct NumberFormat::State {
    std::unique_ptr<icu::NumberFormat> format;
};

NumberFormat::NumberFormat(std::unique_ptr<State> state) noexcept : state_{std::move(state)} {}
NumberFormat::NumberFormat(NumberFormat&&) noexcept = default;
NumberFormat& NumberFormat::operator=(NumberFormat&&) noexcept = default;
NumberFormat::~NumberFormat() = default;

std::optional<NumberFormat> NumberFormat::currency(const Locale& locale, std::string_view code,
                                                   std::optional<std::int64_t> decimals) {
    std::optional<icu::UnicodeString> currency = currencyCode(code);
    if (!currency) return std::nullopt;
    auto format = make(locale, UNUM_CURRENCY, std::move(currency), decimals);
    if (!format) return std::nullopt;
    return NumberFormat{std::make_unique<State>(State{std::move(format)})};
}

std::optional<NumberFormat> NumberFormat::decimal(const Locale& locale, std::optional<std::int64_t> decimals) {
    auto format = make(locale, UNUM_DECIMAL, std::nullopt, decimals);
    if (!format) return std::nullopt;
    return NumberFormat{std::make_unique<State>(State{std::move(format)})};
}

std::optional<std::string> NumberFormat::format(double value) const {
    UErrorCode status = U_ZERO_ERROR;
    icu::UnicodeString text;
    state_->format->format(value, text, nullptr, status);
    if (U_FAILURE(status) || text.isEmpty()) return std::nullopt;
    return utf8(text);
}

std::optional<std::string> NumberFormat::currencyName(const Locale& locale, std::string_view code) {
    std::optional<icu::UnicodeString> currency = currencyCode(code);
    if (!currency) return std::nullopt;
    currency->toUpper(icu::Locale::getRoot());
    UErrorCode status = U_ZERO_ERROR;
    std::int32_t length = 0;
    const char16_t* name = ucurr_getName(currency->getTerminatedBuffer(), icuLocale(locale).getName(), UCURR_LONG_NAME,
                                         nullptr, &length, &status);
    // For a code that it does not know the library hands the code back and says so.
    if (U_FAILURE(status) || status == U_USING_DEFAULT_WARNING || name == nullptr) return std::nullopt;
    return utf8(icu::UnicodeString{name, length});
}

}  // namespace quorvane
