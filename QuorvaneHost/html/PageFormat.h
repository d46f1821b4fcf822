#pragma once
#include <cstdint>
#include <string>
#include <string_view>

#include "QuorvaneCore/index/AnalyticsMeasure.h"
#include "QuorvaneCore/platform/DateFormat.h"
#include "QuorvaneCore/platform/LocalDay.h"
#include "QuorvaneCore/platform/Locale.h"
#include "QuorvaneHost/html/UsageFigures.h"

namespace quorvane::host {

/// Writes figures and days as a locale does. All texts are plain and have yet to be escaped, unless it says otherwise.
/// One thread at a time.
class PageFormat {
public:
    explicit PageFormat(Locale locale);

    /// Of the page as a whole, which is in English, with the region that the figures follow: "en-DE".
    [[nodiscard]] std::string pageLanguage() const;

    [[nodiscard]] std::string money(double dollars) const;
    [[nodiscard]] std::string tokens(std::int64_t count) const;
    [[nodiscard]] std::string count(std::int64_t number) const;
    /// "1 model", "12 models"
    [[nodiscard]] std::string counted(std::int64_t number, std::string_view noun) const;
    /// Whole percent; "<1%" for a small share that is not nothing, an empty text for a share of nothing.
    [[nodiscard]] std::string percent(double part, double whole) const;

    /// "$4.20", "1.2M tokens", "34 calls"
    [[nodiscard]] std::string amount(double value, AnalyticsMeasure measure) const;
    /// The same without the noun.
    [[nodiscard]] std::string figure(double value, AnalyticsMeasure measure) const;
    /// The same as briefly as it goes, for an axis.
    [[nodiscard]] std::string tick(double value, AnalyticsMeasure measure) const;
    /// "$4.20, 1.2M tokens, 34 calls", or "nothing".
    [[nodiscard]] std::string all(const UsageFigures& figures) const;

    [[nodiscard]] std::string day(LocalDay day) const;           ///< "Tue, Nov 3"
    [[nodiscard]] std::string dayOfMonth(LocalDay day) const;    ///< "Nov 3"
    [[nodiscard]] std::string fullDay(LocalDay day) const;       ///< "Nov 3, 2026"
    [[nodiscard]] std::string month(LocalDay day) const;         ///< "Nov"
    [[nodiscard]] std::string monthAndYear(LocalDay day) const;  ///< "Nov 2026"
    [[nodiscard]] std::string year(LocalDay day) const;          ///< "2026"
    [[nodiscard]] std::string weekday(int number) const;         ///< "Tuesday"; 1 is Sunday
    [[nodiscard]] std::string shortWeekday(int number) const;    ///< "Tue"
    [[nodiscard]] std::string narrowWeekday(int number) const;   ///< "T"

    /// Names of days and months, escaped, marked as the language that they are in where it is not the page's.
    [[nodiscard]] std::string localized(const std::string& text) const;
    /// The attribute that marks an element so, with a blank in front; empty where there is nothing to mark.
    [[nodiscard]] const std::string& languageAttribute() const noexcept { return languageAttribute_; }

private:
    [[nodiscard]] DateFormat dates(std::string_view fields) const;

    Locale locale_;
    std::string languageAttribute_;
    Calendar utc_{"UTC"};
    DateFormat day_;
    DateFormat dayOfMonth_;
    DateFormat fullDay_;
    DateFormat month_;
    DateFormat monthAndYear_;
    DateFormat year_;
    DateFormat weekday_;
    DateFormat shortWeekday_;
    DateFormat narrowWeekday_;
};

}  // namespace quorvane::host
