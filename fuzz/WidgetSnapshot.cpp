// The widget's file: any bytes give a whole snapshot or none, what was read is written and read again as it is, and the
// widget has something to show and to say of every snapshot, in each of its sizes and settings.

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "QuorvaneCore/snapshots/SnapshotCodingError.h"
#include "QuorvaneCore/snapshots/detail/WidgetSnapshotJSON.h"
#include "QuorvaneWidgetExtension/QuorvaneWidget/QuorvaneWidgetEntryView.h"
#include "QuorvaneWidgetExtension/QuorvaneWidget/QuorvaneWidgetProviderChoice.h"
#include "QuorvaneWidgetExtension/QuorvaneWidget/QuorvaneWidgetTimeframeChoice.h"
#include "fuzz/FuzzTarget.h"

using namespace quorvane;
using fuzz::require;

namespace {

constexpr std::size_t largestText = 16384;

std::optional<WidgetSnapshot> read(std::string_view text) {
    try {
        return detail::decodeWidgetSnapshot(text);
    } catch (const SnapshotCodingError&) {
        return std::nullopt;
    }
}

void check(const ProviderGaugeList& list, std::size_t rows) {
    const std::size_t shown = std::visit([](const auto& providers) { return providers.size(); }, list.providers);
    require(shown == rows || (shown < rows && !list.more.empty()), "rows that are not shown are counted");
    if (const auto* stack = std::get_if<std::vector<ProviderGaugeRow>>(&list.providers)) {
        for (const ProviderGaugeRow& row : *stack)
            require(!row.limit || (row.limit->fraction() >= 0 && row.limit->fraction() <= 1),
                    "a gauge is within its track");
    }
}

void check(const QuorvaneWidgetEntryView& view, const WidgetEnvironment& environment) {
    const WidgetSnapshot& snapshot = view.entry.snapshot;
    require(view.accessibilitySummary(environment).starts_with(snapshot.title + ", today "), "the total is spoken");
    const auto body = view.body(environment);
    if (const auto* medium = std::get_if<MediumSpendWidget>(&body)) check(medium->gauges, snapshot.providers.size());
    if (const auto* large = std::get_if<LargeSpendWidget>(&body)) {
        check(large->gauges, snapshot.providers.size());
        const std::size_t points = large->sparkline.normalizedPoints({.width = 100, .height = 60}).size();
        require(points == std::max<std::size_t>(1, snapshot.series.size()), "a point a day");
    }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size > largestText) return 0;
    const std::optional<WidgetSnapshot> snapshot = read({reinterpret_cast<const char*>(data), size});
    if (!snapshot) return 0;

    const std::string text = detail::encodeWidgetSnapshot(*snapshot);
    const std::optional<WidgetSnapshot> again = read(text);
    require(again && detail::encodeWidgetSnapshot(*again) == text, "what is written is read as it is");

    const WidgetEnvironment environment{
        .colorScheme = WidgetColorScheme::Dark, .locale = Locale{"de_DE"}, .now = snapshot->staleAfter};
    for (const QuorvaneWidgetFamily family : allQuorvaneWidgetFamilies) {
        check({.entry = {.snapshot = *snapshot}, .family = family}, environment);
        for (const QuorvaneWidgetTimeframeChoice timeframe : allQuorvaneWidgetTimeframeChoices) {
            const WidgetSnapshot selected = snapshot->selectingWindow(days(timeframe));
            for (const QuorvaneWidgetProviderChoice provider : allQuorvaneWidgetProviderChoices) {
                check({.entry = {.snapshot = selected.focused(providerID(provider))}, .family = family}, environment);
            }
        }
    }
    return 0;
}
