#pragma once
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "QuorvaneCore/platform/Locale.h"

namespace quorvane {

/// Writes numbers as people of a locale do, with grouped digits, in UTF-8. Numbers that lie halfway between two texts
/// go to the one with the even last digit. One thread at a time.
class NumberFormat {
public:
    /// Amounts of the currency with the ISO code `code`. Without `decimals` the fraction digits are those usual for
    /// the currency; else exactly so many, and at least 0. Absent where `code` is not three letters.
    [[nodiscard]] static std::optional<NumberFormat> currency(const Locale& locale, std::string_view code,
                                                              std::optional<std::int64_t> decimals);

    /// Plain numbers. Without `decimals` up to three fraction digits; else exactly so many, and at least 0.
    [[nodiscard]] static std::optional<NumberFormat> decimal(const Locale& locale,
                                                             std::optional<std::int64_t> decimals);

    NumberFormat(NumberFormat&&) noexcept;
    NumberFormat& operator=(NumberFormat&&) noexcept;
    ~NumberFormat();

    /// Absent if the number has no text.
    [[nodiscard]] std::optional<std::string> format(double value) const;

    /// The locale's name for a currency ("US Dollar"); absent for a code that it does not know.
    [[nodiscard]] static std::optional<std::string> currencyName(const Locale& locale, std::string_view code);

private:
    struct State;
    explicit NumberFormat(std::unique_ptr<State> state) noexcept;

    std::unique_ptr<State> state_;
};

}  // namespace quorvane
