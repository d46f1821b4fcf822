#include "QuorvaneHost/html/PageFormat.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include <fmt/format.h>

#include "QuorvaneCore/snapshots/MoneyFormatter.h"
#include "QuorvaneCore/snapshots/TokenFormatter.h"
#include "QuorvaneHost/html/HTMLText.h"

namespace quorvane::host {
namespace {

Date noonOf(LocalDay day) {
    constexpr double secondsADay = 86400;
    return Date{(static_cast<double>(day.number) + 0.5) * secondsADay};
}

constexpr LocalDay aSunday{3};  // 1970-01-04

/// The language's part of "de_DE", "zh_Hant_TW"; and the region's, empty where there is none.
std::string_view languageOf(std::string_view identifier) {
    return identifier.substr(0, identifier.find('_'));
}

std::string_view regionOf(std::string_view identifier) {
    const std::size_t bar = identifier.rfind('_');
    if (bar == std::string_view::npos) return {};
    const std::string_view last = identifier.substr(bar + 1);
    return last.size() == 2 || last.size() == 3 ? last : std::string_view{};
}

}  // namespace

PageFormat::PageFormat(Locale locale)
    : locale_{std::move(locale)},
      day_{dates("EEEMMMd")},
      dayOfMonth_{dates("MMMd")},
      fullDay_{dates("yMMMd")},
      month_{dates("LLL")},
      monthAndYear_{dates("yMMM")},
      year_{dates("y")},
      weekday_{dates("cccc")},
      shortWeekday_{dates("ccc")},
      narrowWeekday_{dates("ccccc")} {
    if (languageOf(locale_.identifier()) == "en") return;
    std::string tag = locale_.identifier();
    std::replace(tag.begin(), tag.end(), '_', '-');
    languageAttribute_ = " lang=\"" + HTMLText::escaped(tag) + "\"";
}

DateFormat PageFormat::dates(std::string_view fields) const {
    return DateFormat::localized(locale_, fields);
}

std::string PageFormat::pageLanguage() const {
    const std::string_view region = regionOf(locale_.identifier());
    return region.empty() ? "en" : "en-" + HTMLText::escaped(region);
}

std::string PageFormat::money(double dollars) const {
    return MoneyFormatter::dollars(dollars, 2, MoneyFormatter::baseCurrencyCode, locale_);
}

std::string PageFormat::tokens(std::int64_t count) const {
    return TokenFormatter::compact(count, "");
}

std::string PageFormat::count(std::int64_t number) const {
    return MoneyFormatter::amount(static_cast<double>(number), 0, locale_);
}

std::string PageFormat::counted(std::int64_t number, std::string_view noun) const {
    return fmt::format("{} {}{}", count(number), noun, number == 1 ? "" : "s");
}

std::string PageFormat::percent(double part, double whole) const {
    if (!(whole > 0)) return {};
    const double share = part / whole * 100;
    return share > 0 && share < 1 ? "<1%" : fmt::format("{:.0f}%", std::round(share));
}

std::string PageFormat::figure(double value, AnalyticsMeasure measure) const {
    switch (measure) {
        case AnalyticsMeasure::events: return count(std::llround(value));
        case AnalyticsMeasure::tokens: return tokens(std::llround(value));
        case AnalyticsMeasure::cost: return money(value);
    }
    return {};
}

std::string PageFormat::amount(double value, AnalyticsMeasure measure) const {
    switch (measure) {
        case AnalyticsMeasure::events: return counted(std::llround(value), "call");
        case AnalyticsMeasure::tokens: return figure(value, measure) + " tokens";
        case AnalyticsMeasure::cost: return figure(value, measure);
    }
    return {};
}

std::string PageFormat::tick(double value, AnalyticsMeasure measure) const {
    if (measure == AnalyticsMeasure::cost) {
        constexpr double thousand = 1000;
        if (value >= thousand) return MoneyFormatter::compactDollars(value, MoneyFormatter::baseCurrencyCode, locale_);
        const bool isWhole = std::floor(value) == value;
        return MoneyFormatter::dollars(value, isWhole ? 0 : 2, MoneyFormatter::baseCurrencyCode, locale_);
    }
    std::string text = figure(value, measure);
    const std::size_t fraction = text.find(".0");
    if (measure == AnalyticsMeasure::tokens && fraction != std::string::npos) text.erase(fraction, 2);
    return text;
}

std::string PageFormat::all(const UsageFigures& figures) const {
    if (figures.events == 0) return "nothing";
    return fmt::format("{}, {} tokens, {}", money(figures.cost), tokens(figures.tokens),
                       counted(figures.events, "call"));
}

std::string PageFormat::day(LocalDay day) const {
    return day_.text(noonOf(day), utc_);
}

std::string PageFormat::dayOfMonth(LocalDay day) const {
    return dayOfMonth_.text(noonOf(day), utc_);
}

std::string PageFormat::fullDay(LocalDay day) const {
    return fullDay_.text(noonOf(day), utc_);
}

std::string PageFormat::month(LocalDay day) const {
    return month_.text(noonOf(day), utc_);
}

std::string PageFormat::monthAndYear(LocalDay day) const {
    return monthAndYear_.text(noonOf(day), utc_);
}

std::string PageFormat::year(LocalDay day) const {
    return year_.text(noonOf(day), utc_);
}

std::string PageFormat::weekday(int number) const {
    return weekday_.text(noonOf(aSunday + (number - 1)), utc_);
}

std::string PageFormat::shortWeekday(int number) const {
    return shortWeekday_.text(noonOf(aSunday + (number - 1)), utc_);
}

std::string PageFormat::narrowWeekday(int number) const {
    return narrowWeekday_.text(noonOf(aSunday + (number - 1)), utc_);
}

std::string PageFormat::localized(const std::string& text) const {
    if (languageAttribute_.empty()) return HTMLText::escaped(text);
    return "<span" + languageAttribute_ + ">" + HTMLText::escaped(text) + "</span>";
}

}  // namespace quorvane::host
