#pragma once
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

#include "QuorvaneCore/model/UsageEvent.h"
#include "QuorvaneCore/pricing/CostCalculator.h"
#include "QuorvaneHost/html/AnalyticsPageData.h"

namespace quorvane::testing {

/// An invented history, the same at each call: eight agents, fifty models, forty projects; little at first, more later,
/// less on weekends, a holiday.
class GeneratedYear {
public:
    static constexpr std::int64_t end = 1801227600;  // 2027-01-29T13:00:00Z

    [[nodiscard]] static std::vector<UsageEvent> events(std::int64_t days) {
        GeneratedYear generator;
        std::vector<UsageEvent> all;
        for (std::int64_t ago = days - 1; ago >= 0; --ago)
            generator.addDay(all, ago, days);
        return all;
    }

    [[nodiscard]] static host::AnalyticsPageData page(std::int64_t days, const std::string& zone = "Europe/Berlin",
                                                      const std::string& locale = "en_US") {
        return of(events(days), days, Calendar{zone, "gregorian", 2}, locale);
    }

    /// The page of some events, by the library's sums in memory.
    [[nodiscard]] static host::AnalyticsPageData of(const std::vector<UsageEvent>& events, std::int64_t days,
                                                    const Calendar& calendar, const std::string& locale = "en_US") {
        const CostCalculator calculator;
        std::vector<UsageEvent> summed;
        std::vector<UsageEvent> estimated;
        for (const UsageEvent& event : events) {
            const bool isEstimate = event.provider == ProviderID::Copilot || event.provider == ProviderID::Cursor;
            (isEstimate ? estimated : summed).push_back(event);
        }
        host::AnalyticsPageData page{
            .days = days, .now = Date{static_cast<double>(end)}, .calendar = calendar, .locale = Locale{locale}};
        page.rows = ModelDaySummary::bucketed(summed, calculator, calendar);
        page.estimates = ModelDaySummary::bucketed(estimated, calculator, calendar);
        page.projects = ProjectCostSummary::bucketed(summed, calculator);
        page.hours = HourWeekdayMatrix::bucketed(summed, calculator, calendar);
        for (const UsageEvent& event : summed) {
            if (!calculator.pricing().price(event.model)) page.unpricedModels.insert(event.model);
        }
        page.cacheSavings = 1234.5;
        return page;
    }

private:
    struct Model {
        ProviderID provider;
        const char* name;
        int weight;
    };
    static constexpr std::array<Model, 20> models{{{ProviderID::Claude, "claude-opus-4-8", 30},
                                                   {ProviderID::Claude, "claude-sonnet-5", 20},
                                                   {ProviderID::Claude, "claude-haiku-4-5-20251001", 14},
                                                   {ProviderID::Claude, "claude-sonnet-4-6", 10},
                                                   {ProviderID::Claude, "claude-opus-4-5", 6},
                                                   {ProviderID::Codex, "gpt-5.6-sol", 14},
                                                   {ProviderID::Codex, "gpt-5.6-terra", 5},
                                                   {ProviderID::Codex, "gpt-5.3-codex", 8},
                                                   {ProviderID::Codex, "gpt-5-mini", 6},
                                                   {ProviderID::Gemini, "gemini-3-pro-preview", 9},
                                                   {ProviderID::Gemini, "gemini-3-flash-preview", 9},
                                                   {ProviderID::Grok, "grok-4.5", 6},
                                                   {ProviderID::Grok, "grok-build-0.1", 3},
                                                   {ProviderID::Opencode, "claude-sonnet-5", 5},
                                                   {ProviderID::Opencode, "gpt-5.1", 4},
                                                   {ProviderID::MuseSpark, "muse-spark-1.1", 5},
                                                   {ProviderID::Copilot, "gpt-5.4", 5},
                                                   {ProviderID::Copilot, "claude-sonnet-4.6", 3},
                                                   {ProviderID::Cursor, "claude-sonnet-4-6", 5},
                                                   {ProviderID::Cursor, "composer-2.5", 4}}};

    std::uint64_t next() {
        state_ ^= state_ << 13;
        state_ ^= state_ >> 7;
        state_ ^= state_ << 17;
        return state_;
    }
    std::int64_t below(std::int64_t bound) {
        return static_cast<std::int64_t>(next() % static_cast<std::uint64_t>(bound));
    }

    void addDay(std::vector<UsageEvent>& all, std::int64_t ago, std::int64_t days) {
        constexpr std::int64_t week = 7;
        const bool isWeekend = (ago + 2) % week < 2;
        const bool isHoliday = ago > 35 && ago < 44;
        const double growth = 0.35 + 0.65 * static_cast<double>(days - ago) / static_cast<double>(days);
        const double season = 1 + 0.4 * std::sin(static_cast<double>(ago) / 19);
        auto calls = static_cast<std::int64_t>(46 * growth * season * (isWeekend ? 0.25 : 1)) + below(20) - 4;
        if (isHoliday) calls = 0;
        if (below(40) == 0) calls *= 3;
        for (std::int64_t at = 0; at < calls; ++at)
            add(all, ago);
    }

    void add(std::vector<UsageEvent>& all, std::int64_t ago) {
        constexpr std::int64_t day = 86400;
        constexpr std::int64_t hour = 3600;
        const std::int64_t hours = below(10) == 0 ? below(12) : (below(6) + below(6));
        // Nothing of the day before, since what is older than the window would be in the projects alone.
        const std::int64_t time = end - ago * day - hours * hour - below(hour);
        const Model& model = pick();
        std::string name = model.name;
        if (model.provider == ProviderID::Codex && below(4) == 0)
            name = "gpt-5.1-" + std::to_string(20260101 + below(26));
        if (model.provider == ProviderID::Opencode && below(9) == 0)
            name = "local-experiment-" + std::to_string(below(6));
        all.push_back(UsageEvent{.messageId = "m" + std::to_string(all.size()),
                                 .requestId = "r",
                                 .provider = model.provider,
                                 .model = std::move(name),
                                 .timestamp = Date{static_cast<double>(time)},
                                 .usage = {.input = below(9000),
                                           .output = below(6000),
                                           .cacheCreate5m = below(9000),
                                           .cacheCreate1h = below(5000),
                                           .cacheRead = below(180000)},
                                 .project = project()});
    }

    const Model& pick() {
        std::int64_t sum = 0;
        for (const Model& model : models)
            sum += model.weight;
        std::int64_t at = below(sum);
        for (const Model& model : models) {
            at -= model.weight;
            if (at < 0) return model;
        }
        return models.front();
    }

    std::optional<std::string> project() {
        constexpr std::int64_t count = 40;
        const std::int64_t at = below(count) * below(count) * below(count) / (count * count);
        if (at == 7) return std::nullopt;
        if (at == 9) return "/home/ana/work/clients/a-company-with-a-long-name/services/checkout-gateway-and-ledger";
        return "project-" + std::to_string(at);
    }

    std::uint64_t state_ = 88172645463325252;
};

}  // namespace quorvane::testing
