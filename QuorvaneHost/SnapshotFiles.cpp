#include "QuorvaneHost/SnapshotFiles.h"

#include <algorithm>
#include <optional>
#include <utility>

#include <fmt/format.h>

#include "QuorvaneCore/model/ProviderCatalog.h"
#include "QuorvaneCore/platform/FileContents.h"
#include "QuorvaneCore/snapshots/LocalAutomationSnapshotBuilder.h"
#include "QuorvaneCore/snapshots/LocalAutomationSnapshotEncoder.h"
#include "QuorvaneCore/snapshots/LocalAutomationSnapshotStore.h"
#include "QuorvaneCore/snapshots/MoneyFormatter.h"
#include "QuorvaneCore/snapshots/SnapshotCodingError.h"
#include "QuorvaneCore/snapshots/WidgetSnapshotStore.h"
#include "QuorvaneHost/ProviderTints.h"

namespace quorvane::host {
namespace {

constexpr auto timeframes = LocalAutomationSnapshotBuilder::supportedTimeframes;

/// The ids of the readers that are available, in catalog order.
std::vector<ProviderID> availableInCatalogOrder(const std::vector<Reader>& readers) {
    std::vector<ProviderID> ids;
    for (const ProviderDescriptor& descriptor : ProviderCatalog::all()) {
        const bool isAvailable = std::any_of(readers.begin(), readers.end(), [&](const Reader& reader) {
            return reader->id() == descriptor.id && reader->isAvailable();
        });
        if (isAvailable) ids.push_back(descriptor.id);
    }
    return ids;
}

WidgetCostBasis widgetBasis(LocalAutomationCostBasis basis) {
    switch (basis) {
        case LocalAutomationCostBasis::NotionalListPrice: return WidgetCostBasis::NotionalListPrice;
        case LocalAutomationCostBasis::RealAndNotionalListPrice: return WidgetCostBasis::RealAndNotionalListPrice;
        case LocalAutomationCostBasis::RealSpend:
        case LocalAutomationCostBasis::TokenEstimate: break;
    }
    return WidgetCostBasis::RealSpend;
}

/// Each provider's value over a window, and its days, in the metric that its row has.
WidgetProviderWindow providerWindow(const UsageWindowSummary& summary, WidgetValueMetric metric) {
    if (metric == WidgetValueMetric::Tokens) {
        return {.window = static_cast<double>(summary.rollup.last7d.usage.total())};
    }
    return {.window = summary.rollup.last7d.cost, .series = summary.dailyCostSeries};
}

double todayOf(const UsageWindowSummary& summary, WidgetValueMetric metric) {
    return metric == WidgetValueMetric::Tokens ? static_cast<double>(summary.rollup.today.usage.total())
                                               : summary.rollup.today.cost;
}

WidgetProviderSnapshot widgetRow(const LocalAutomationProvider& row, const UsageWindowSummary& summary, ProviderID id,
                                 const std::optional<RateLimitSnapshot>& limits) {
    WidgetProviderWindow window = providerWindow(summary, row.valueMetric);
    return {
        .id = row.id,
        .name = row.name,
        .tintHex = std::string{providerTint(id)},
        .today = todayOf(summary, row.valueMetric),
        .window = window.window,
        .currencyCode = row.currencyCode,
        .metric = row.valueMetric,
        .basis = widgetBasis(row.costBasis),
        .usedPercent = limits && limits->primary ? std::optional{limits->primary->usedPercent} : std::nullopt,
        .weeklyUsedPercent = limits && limits->secondary ? std::optional{limits->secondary->usedPercent} : std::nullopt,
        .usageOfficial = limits.has_value(),
        .series = std::move(window.series)};
}

/// What the widget should say about models without a price.
std::optional<std::string> unpricedNotice(const CostBucket& window) {
    if (window.unpricedModels.empty()) return std::nullopt;
    const std::size_t others = window.unpricedModels.size() - 1;
    return "No price for " + *window.unpricedModels.begin() + (others == 0 ? "" : fmt::format(" and {} more", others));
}

/// The sum of the rows where all are told in tokens, else the aggregate's money.
struct Totals {
    WidgetValueMetric metric;
    const UsageMultiWindowSummaries& summaries;

    [[nodiscard]] double today(std::int64_t days) const { return todayOf(aggregate(days), metric); }
    [[nodiscard]] WidgetProviderWindow over(std::int64_t days) const { return providerWindow(aggregate(days), metric); }
    [[nodiscard]] const UsageWindowSummary& aggregate(std::int64_t days) const {
        return summaries.byDays.at(days).aggregate;
    }
};

WidgetSnapshot widgetSnapshot(const LocalAutomationSnapshot& automation, const UsageMultiWindowSummaries& summaries,
                              const std::vector<ProviderID>& ids, const std::map<ProviderID, RateLimitSnapshot>& limits,
                              std::int64_t days, Date now) {
    const Totals totals{automation.valueMetric, summaries};
    WidgetProviderWindow current = totals.over(days);
    WidgetSnapshot widget{.generatedAt = now,
                          .title = "All providers",
                          .totalToday = totals.today(days),
                          .totalWindow = current.window,
                          .currencyCode = std::string{MoneyFormatter::baseCurrencyCode},
                          .metric = automation.valueMetric,
                          .windowDays = days,
                          .basis = widgetBasis(automation.costBasis),
                          .series = std::move(current.series),
                          .staleAfter = now + SnapshotFiles::freshSeconds,
                          .availabilityNotice = unpricedNotice(totals.aggregate(days).rollup.last7d)};
    for (std::size_t place = 0; place < ids.size(); ++place) {
        const auto known = limits.find(ids[place]);
        widget.providers.push_back(widgetRow(automation.providers[place],
                                             summaries.byDays.at(days).providers.at(ids[place]), ids[place],
                                             known == limits.end() ? std::nullopt : std::optional{known->second}));
    }
    for (const std::int64_t length : timeframes) {
        WidgetProviderWindow whole = totals.over(length);
        WidgetWindowSnapshot& entry = widget.windows[length];
        entry = {.days = length, .totalWindow = whole.window, .series = std::move(whole.series)};
        for (const WidgetProviderSnapshot& row : widget.providers) {
            const ProviderID id = providerFromRawName(row.id).value();
            entry.providerWindows[row.id] = providerWindow(summaries.byDays.at(length).providers.at(id), row.metric);
        }
    }
    return widget;
}

/// The automation file as it is; absent if it is missing or damaged.
std::optional<LocalAutomationSnapshot> readAutomation() {
    const std::optional<std::string> text = readFile(LocalAutomationSnapshotStore{}.snapshotURL());
    if (!text) return std::nullopt;
    try {
        return LocalAutomationSnapshotEncoder::decode(*text);
    } catch (const SnapshotCodingError&) {
        return std::nullopt;
    }
}

/// What a reader of the file would get: dates have whole seconds there.
LocalAutomationSnapshot asWritten(const LocalAutomationSnapshot& snapshot) {
    return LocalAutomationSnapshotEncoder::decode(LocalAutomationSnapshotEncoder::encode(snapshot));
}

}  // namespace

SnapshotFiles SnapshotFiles::build(const UsageIndex& index, const std::vector<Reader>& readers,
                                   const LimitsReport& limits, std::int64_t days, const CostCalculator& calculator,
                                   Date now, const Calendar& calendar) {
    const std::int64_t length = LocalAutomationSnapshotBuilder::normalizedDays(days);
    const std::vector<ProviderID> ids = availableInCatalogOrder(readers);
    const UsageMultiWindowSummaries summaries = index.multiWindowSummaries(ids, timeframes, calculator, now, calendar);
    const std::map<ProviderID, RateLimitSnapshot> known = limits.byProvider();
    SnapshotFiles files;
    files.automation =
        LocalAutomationSnapshotBuilder::build(summaries.byDays.at(length), ids, known, "quorvane-cli", now);
    files.widget = widgetSnapshot(files.automation, summaries, ids, known, length, now);
    return files;
}

bool SnapshotFiles::write(bool force) const {
    const std::optional<LocalAutomationSnapshot> oldAutomation = readAutomation();
    const bool keepsAutomation =
        !force && oldAutomation && oldAutomation->schemaVersion == LocalAutomationSnapshot::currentSchemaVersion &&
        automation.generatedAt - oldAutomation->generatedAt < freshSeconds &&
        automation.generatedAt >= oldAutomation->generatedAt && oldAutomation->hasSameContent(asWritten(automation));
    if (!keepsAutomation) LocalAutomationSnapshotStore{}.write(automation);

    const WidgetSnapshotStore store;
    const std::optional<WidgetSnapshot> oldWidget = store.readIfAvailable();
    const bool keepsWidget = !force && oldWidget && !oldWidget->isStale(widget.generatedAt) &&
                             widget.generatedAt >= oldWidget->generatedAt && oldWidget->hasSameContent(widget);
    if (!keepsWidget) store.write(widget);
    return !keepsAutomation || !keepsWidget;
}

std::string writtenAutomationText() {
    return readText(LocalAutomationSnapshotStore{}.snapshotURL());
}

}  // namespace quorvane::host
