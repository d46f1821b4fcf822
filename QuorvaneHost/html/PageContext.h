#pragma once
#include <cstddef>
#include <cstdint>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "QuorvaneCore/analytics/HeatmapDay.h"
#include "QuorvaneHost/html/AnalyticsPageData.h"
#include "QuorvaneHost/html/PageFormat.h"
#include "QuorvaneHost/html/PagePeriods.h"
#include "QuorvaneHost/html/UsageFigures.h"

namespace quorvane::host {

/// What several sections of the page need, worked out once. `data` must outlive it.
struct PageContext {
    explicit PageContext(const AnalyticsPageData& pageData);

    struct Provider {
        ProviderID id{};
        UsageFigures window;
        UsageFigures today;
        std::vector<UsageFigures> periods;  ///< as many as the chart's
    };

    const AnalyticsPageData& data;
    PageFormat format;
    std::vector<ModelDaySummary> rows;  ///< those of the window
    LocalDay windowStart;
    LocalDay lastDay;
    LocalDay firstDay;  ///< that is drawn: of a window of years, empty ones ahead of the data are not
    std::int64_t drawnDays = 1;
    PagePeriods periods;              ///< the chart's: days, months where days would be too many
    std::vector<HeatmapDay> heatmap;  ///< the drawn days by cost
    std::vector<UsageFigures> days;   ///< the same by all measures
    std::vector<UsageFigures> byPeriod;
    UsageFigures total;
    std::vector<Provider> providers;  ///< the most expensive first, then the one with more tokens
    std::vector<Provider> estimates;  ///< in the same order; in no sum

    /// The largest of a run of figures, for each measure by itself.
    [[nodiscard]] static UsageFigures peaksOf(const std::vector<UsageFigures>& figures);

    [[nodiscard]] const UsageFigures& today() const { return days.back(); }
    [[nodiscard]] bool isEmpty() const noexcept { return total.events == 0; }

    /// "30 days"
    [[nodiscard]] std::string span() const;
    /// Days by their name, longer periods by theirs; plain text.
    [[nodiscard]] std::string periodName(std::size_t index) const;

    /// Short where no other model of the provider has the same short name; plain text, as the log has it.
    [[nodiscard]] std::string modelName(ProviderID provider, const std::string& model) const;

private:
    std::set<std::pair<ProviderID, std::string>> sharedNames_;  ///< short names of several models
};

/// A text that differs between the measures: one element for each, of which the page shows that of its switch.
template <typename Text>
[[nodiscard]] std::string perMeasure(const Text& textOf) {
    std::string html;
    for (const AnalyticsMeasure measure : pageMeasures)
        html += std::string{"<span class=\"m"} + letterOf(measure) + "\">" + textOf(measure) + "</span>";
    return html;
}

/// The classes that give an element a provider's colour.
[[nodiscard]] std::string providerClass(ProviderID provider);

/// A patch of that colour.
[[nodiscard]] std::string providerSwatch(ProviderID provider);

}  // namespace quorvane::host
