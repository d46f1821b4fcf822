#include "QuorvaneCore/platform/TextOrder.h"

#include <memory>
#include <optional>

#include <unicode/coll.h>
#include <unicode/stringpiece.h>

#include "QuorvaneCore/platform/Locale.h"
#include "QuorvaneCore/platform/detail/ICULocale.h"

namespace quorvane {
namespace {

std::unique_ptr<icu::Collator> makeCollator(const Locale& locale) {
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::Collator> collator{icu::Collator::createInstance(detail::icuLocale(locale), status)};
    if (U_FAILURE(status)) return nullptr;
    collator->setStrength(icu::Collator::SECONDARY);
    collator->setAttribute(UCOL_NUMERIC_COLLATION, UCOL_ON, status);
    return collator;
}

/// To make one takes longer than thousands of comparisons; one for each thread needs no lock.
const icu::Collator* collatorOf(const Locale& locale) {
    thread_local std::optional<Locale> madeFor;
    thread_local std::unique_ptr<icu::Collator> collator;
    if (madeFor != locale) {
        collator = makeCollator(locale);
        madeFor = locale;
    }
    return collator.get();
}

}  // namespace

int compareNaturally(std::string_view left, std::string_view right) {
    const icu::Collator* const collator = collatorOf(Locale::current());
    UErrorCode status = U_ZERO_ERROR;
    const auto piece = [](std::string_view text) {
        return icu::StringPiece{text.data(), static_cast<std::int32_t>(text.size())};
    };
    if (collator != nullptr) {
        const UCollationResult order = collator->compareUTF8(piece(left), piece(right), status);
        if (U_SUCCESS(status)) return static_cast<int>(order);
    }
    return left.compare(right);
}

}  // namespace quorvane
