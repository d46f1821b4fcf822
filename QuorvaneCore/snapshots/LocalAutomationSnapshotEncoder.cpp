#include "QuorvaneCore/snapshots/LocalAutomationSnapshotEncoder.h"

#include <optional>
#include <utility>

#include "QuorvaneCore/platform/ISODate.h"
#include "QuorvaneCore/platform/JSONParser.h"
#include "QuorvaneCore/platform/JSONWriter.h"
#include "QuorvaneCore/snapshots/detail/RecordReader.h"
#include "QuorvaneCore/snapshots/detail/RecordWriter.h"

namespace quorvane {
namespace {

using detail::RecordReader;
using detail::RecordWriter;

JSONTree word(std::string_view text) {
    return JSONTree{std::string{text}};
}

std::optional<JSONTree> optionalText(const std::optional<std::string>& text) {
    return text ? std::optional{JSONTree{*text}} : std::nullopt;
}

JSONTree encoded(const LocalAutomationRateLimitWindow& window) {
    RecordWriter record;
    record.put("used_percent", window.usedPercent);
    record.put("window_minutes", JSONTree{window.windowMinutes});
    record.put("resets_at", window.resetsAt);
    record.put("official", JSONTree{window.official});
    return record.take();
}

JSONTree encoded(const LocalAutomationRateLimits& limits) {
    RecordWriter record;
    record.put("plan_type", optionalText(limits.planType));
    if (limits.primary5h) record.put("primary_5h", encoded(*limits.primary5h));
    if (limits.secondaryWeekly) record.put("secondary_weekly", encoded(*limits.secondaryWeekly));
    return record.take();
}

JSONTree encoded(const LocalAutomationHeadroom& headroom) {
    RecordWriter record;
    record.put("state", JSONTree{headroom.state});
    record.put("remaining_percent", headroom.remainingPercent);
    if (headroom.windowMinutes) record.put("window_minutes", JSONTree{*headroom.windowMinutes});
    record.put("resets_at", headroom.resetsAt);
    return record.take();
}

JSONTree encoded(const LocalAutomationProvider& row) {
    JSONTree::Array unpriced{row.unpricedModels.begin(), row.unpricedModels.end()};
    RecordWriter record;
    record.put("id", JSONTree{row.id});
    record.put("name", JSONTree{row.name});
    record.put("currency_code", JSONTree{row.currencyCode});
    record.put("today", row.today);
    record.put("window", row.window);
    record.put("cost_basis", word(rawName(row.costBasis)));
    record.put("value_metric", word(rawName(row.valueMetric)));
    record.put("series", row.series);
    record.put("events_today", JSONTree{row.eventsToday});
    record.put("events_window", JSONTree{row.eventsWindow});
    record.put("unpriced_models", JSONTree{std::move(unpriced)});
    record.put("headroom", encoded(row.headroom));
    record.put("aiu_window", row.aiuWindow);
    return record.take();
}

JSONTree encoded(const LocalAutomationSnapshot& snapshot) {
    JSONTree::Array providers;
    for (const LocalAutomationProvider& row : snapshot.providers)
        providers.push_back(encoded(row));
    JSONTree::Object rateLimits;
    for (const auto& [id, limits] : snapshot.rateLimits)
        rateLimits[id] = encoded(limits);
    RecordWriter record;
    record.put("schema_version", JSONTree{snapshot.schemaVersion});
    record.put("generated_at", snapshot.generatedAt);
    record.put("source", JSONTree{snapshot.source});
    record.put("window_days", JSONTree{snapshot.windowDays});
    record.put("currency_code", JSONTree{snapshot.currencyCode});
    record.put("total_today", snapshot.totalToday);
    record.put("total_window", snapshot.totalWindow);
    record.put("cost_basis", word(rawName(snapshot.costBasis)));
    record.put("value_metric", word(rawName(snapshot.valueMetric)));
    record.put("series", snapshot.series);
    record.put("providers", JSONTree{std::move(providers)});
    record.put("rate_limits", JSONTree{std::move(rateLimits)});
    record.put("status", JSONTree{snapshot.status});
    record.put("notice", optionalText(snapshot.notice));
    return record.take();
}

LocalAutomationRateLimitWindow decodedWindow(JSONValue json) {
    const RecordReader record{json};
    return {.usedPercent = record.number("used_percent"),
            .windowMinutes = record.integer("window_minutes"),
            .resetsAt = record.optionalDate("resets_at"),
            .official = record.boolean("official")};
}

std::optional<LocalAutomationRateLimitWindow> decodedOptionalWindow(JSONValue json) {
    return json.isPresent() ? std::optional{decodedWindow(json)} : std::nullopt;
}

LocalAutomationRateLimits decodedLimits(JSONValue json) {
    const RecordReader record{json};
    return {.planType = record.optionalText("plan_type"),
            .primary5h = decodedOptionalWindow(record.optionalObject("primary_5h")),
            .secondaryWeekly = decodedOptionalWindow(record.optionalObject("secondary_weekly"))};
}

LocalAutomationHeadroom decodedHeadroom(JSONValue json) {
    const RecordReader record{json};
    return {.state = record.text("state"),
            .remainingPercent = record.optionalNumber("remaining_percent"),
            .windowMinutes = record.optionalInteger("window_minutes"),
            .resetsAt = record.optionalDate("resets_at")};
}

LocalAutomationProvider decodedRow(JSONValue json) {
    const RecordReader record{json};
    return {.id = record.text("id"),
            .name = record.text("name"),
            .currencyCode = record.text("currency_code"),
            .today = record.number("today"),
            .window = record.number("window"),
            .costBasis = record.word("cost_basis", localAutomationCostBasisFromRawName),
            .valueMetric = record.word("value_metric", widgetValueMetricFromRawName),
            .series = record.numbers("series"),
            .eventsToday = record.integer("events_today"),
            .eventsWindow = record.integer("events_window"),
            .unpricedModels = record.texts("unpriced_models"),
            .headroom = decodedHeadroom(record.object("headroom")),
            .aiuWindow = record.optionalNumber("aiu_window")};
}

}  // namespace

std::string LocalAutomationSnapshotEncoder::encode(const LocalAutomationSnapshot& snapshot) {
    return JSONWriter::pretty(encoded(snapshot));
}

LocalAutomationSnapshot LocalAutomationSnapshotEncoder::decode(std::string_view text) {
    JSONParser parser;
    const RecordReader record{parser.parse(text)};
    LocalAutomationSnapshot snapshot{.schemaVersion = record.integer("schema_version"),
                                     .generatedAt = record.date("generated_at"),
                                     .source = record.text("source"),
                                     .windowDays = record.integer("window_days"),
                                     .currencyCode = record.text("currency_code"),
                                     .totalToday = record.number("total_today"),
                                     .totalWindow = record.number("total_window"),
                                     .costBasis = record.word("cost_basis", localAutomationCostBasisFromRawName),
                                     .valueMetric = record.word("value_metric", widgetValueMetricFromRawName),
                                     .series = record.numbers("series"),
                                     .status = record.text("status"),
                                     .notice = record.optionalText("notice")};
    record.array("providers").forEachElement([&](JSONValue row) { snapshot.providers.push_back(decodedRow(row)); });
    record.object("rate_limits").forEachMember([&](std::string_view id, JSONValue limits) {
        snapshot.rateLimits.emplace(id, decodedLimits(limits));
    });
    return snapshot;
}

std::string LocalAutomationSnapshotEncoder::string(Date date) {
    return ISODate::text(date);
}

}  // namespace quorvane
