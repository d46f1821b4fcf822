#include "QuorvaneCore/snapshots/detail/WidgetSnapshotJSON.h"

#include <charconv>
#include <system_error>
#include <utility>

#include "QuorvaneCore/platform/JSONParser.h"
#include "QuorvaneCore/platform/JSONTree.h"
#include "QuorvaneCore/platform/JSONWriter.h"
#include "QuorvaneCore/snapshots/detail/RecordReader.h"
#include "QuorvaneCore/snapshots/detail/RecordWriter.h"

namespace quorvane::detail {
namespace {

JSONTree encoded(const WidgetProviderWindow& figures) {
    RecordWriter members;
    members.put("window", figures.window);
    members.put("series", figures.series);
    return members.take();
}

JSONTree encoded(const WidgetWindowSnapshot& window) {
    JSONTree::Object providerWindows;
    for (const auto& [id, figures] : window.providerWindows)
        providerWindows[id] = encoded(figures);
    RecordWriter members;
    members.put("days", JSONTree{window.days});
    members.put("totalWindow", window.totalWindow);
    members.put("series", window.series);
    members.put("providerWindows", JSONTree{std::move(providerWindows)});
    return members.take();
}

JSONTree encoded(const WidgetProviderSnapshot& row) {
    RecordWriter members;
    members.put("id", JSONTree{row.id});
    members.put("name", JSONTree{row.name});
    members.put("tintHex", JSONTree{row.tintHex});
    members.put("today", row.today);
    members.put("window", row.window);
    members.put("currencyCode", JSONTree{row.currencyCode});
    members.put("metric", JSONTree{std::string{rawName(row.metric)}});
    members.put("basis", JSONTree{std::string{rawName(row.basis)}});
    members.put("usedPercent", row.usedPercent);
    members.put("weeklyUsedPercent", row.weeklyUsedPercent);
    members.put("usageOfficial", JSONTree{row.usageOfficial});
    members.put("series", row.series);
    return members.take();
}

JSONTree encoded(const WidgetSnapshot& snapshot) {
    JSONTree::Array providers;
    for (const WidgetProviderSnapshot& row : snapshot.providers)
        providers.push_back(encoded(row));
    JSONTree::Object windows;
    for (const auto& [days, window] : snapshot.windows)
        windows[std::to_string(days)] = encoded(window);
    RecordWriter members;
    members.put("schemaVersion", JSONTree{snapshot.schemaVersion});
    members.put("generatedAt", snapshot.generatedAt);
    members.put("title", JSONTree{snapshot.title});
    members.put("totalToday", snapshot.totalToday);
    members.put("totalWindow", snapshot.totalWindow);
    members.put("currencyCode", JSONTree{snapshot.currencyCode});
    members.put("metric", JSONTree{std::string{rawName(snapshot.metric)}});
    members.put("windowDays", JSONTree{snapshot.windowDays});
    members.put("basis", JSONTree{std::string{rawName(snapshot.basis)}});
    members.put("series", snapshot.series);
    members.put("providers", JSONTree{std::move(providers)});
    members.put("staleAfter", snapshot.staleAfter);
    if (snapshot.errorMessage) members.put("errorMessage", JSONTree{*snapshot.errorMessage});
    if (snapshot.availabilityNotice) members.put("availabilityNotice", JSONTree{*snapshot.availabilityNotice});
    members.put("windows", JSONTree{std::move(windows)});
    return members.take();
}

WidgetProviderWindow decodedProviderWindow(JSONValue json) {
    const RecordReader record{json};
    return {.window = record.number("window"), .series = record.numbers("series")};
}

WidgetWindowSnapshot decodedWindow(JSONValue json) {
    const RecordReader record{json};
    WidgetWindowSnapshot window{.days = record.integer("days"),
                                .totalWindow = record.number("totalWindow"),
                                .series = record.numbers("series")};
    record.object("providerWindows").forEachMember([&window](std::string_view id, JSONValue figures) {
        window.providerWindows.emplace(id, decodedProviderWindow(figures));
    });
    return window;
}

WidgetProviderSnapshot decodedRow(JSONValue json) {
    const RecordReader record{json};
    return {
        .id = record.text("id"),
        .name = record.text("name"),
        .tintHex = record.text("tintHex"),
        .today = record.number("today"),
        .window = record.number("window"),
        .currencyCode = record.text("currencyCode"),
        .metric = record.word("metric", widgetValueMetricFromRawName),
        .basis = record.word("basis", widgetCostBasisFromRawName),
        .usedPercent = record.optionalNumber("usedPercent"),
        .weeklyUsedPercent = record.optionalNumber("weeklyUsedPercent"),
        .usageOfficial = record.boolean("usageOfficial"),
        .series = record.numbers("series"),
    };
}

std::int64_t daysOfKey(std::string_view key) {
    std::int64_t days = 0;
    const auto [end, failure] = std::from_chars(key.data(), key.data() + key.size(), days);
    if (failure != std::errc{} || end != key.data() + key.size()) RecordReader::refuse("windows");
    return days;
}

}  // namespace

std::string encodeWidgetSnapshot(const WidgetSnapshot& snapshot) {
    return JSONWriter::pretty(encoded(snapshot));
}

WidgetSnapshot decodeWidgetSnapshot(std::string_view text) {
    JSONParser parser;
    const RecordReader record{parser.parse(text)};
    WidgetSnapshot snapshot{
        .schemaVersion = record.integer("schemaVersion"),
        .generatedAt = record.date("generatedAt"),
        .title = record.text("title"),
        .totalToday = record.number("totalToday"),
        .totalWindow = record.number("totalWindow"),
        .currencyCode = record.text("currencyCode"),
        .metric = record.word("metric", widgetValueMetricFromRawName),
        .windowDays = record.integer("windowDays"),
        .basis = record.word("basis", widgetCostBasisFromRawName),
        .series = record.numbers("series"),
        .staleAfter = record.date("staleAfter"),
        .errorMessage = record.optionalText("errorMessage"),
        .availabilityNotice = record.optionalText("availabilityNotice"),
    };
    record.array("providers").forEachElement([&snapshot](JSONValue row) {
        snapshot.providers.push_back(decodedRow(row));
    });
    record.object("windows").forEachMember([&snapshot](std::string_view key, JSONValue window) {
        snapshot.windows.emplace(daysOfKey(key), decodedWindow(window));
    });
    return snapshot;
}

}  // namespace quorvane::detail
