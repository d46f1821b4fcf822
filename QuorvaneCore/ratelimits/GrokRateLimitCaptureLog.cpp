#include <algorithm>
#include <cmath>
#include <system_error>
#include <utility>
#include <variant>

#include "QuorvaneCore/ingest/JSONLStreamReader.h"
#include "QuorvaneCore/model/JSONNumber.h"
#include "QuorvaneCore/platform/AtomicFile.h"
#include "QuorvaneCore/platform/ByteSearch.h"
#include "QuorvaneCore/platform/FilePath.h"
#include "QuorvaneCore/platform/FileStatus.h"
#include "QuorvaneCore/platform/FolderCreation.h"
#include "QuorvaneCore/platform/ISODate.h"
#include "QuorvaneCore/platform/JSONParser.h"
#include "QuorvaneCore/platform/JSONWriter.h"
#include "QuorvaneCore/platform/NumberText.h"
#include "QuorvaneCore/platform/UTF8.h"
#include "QuorvaneCore/ratelimits/GrokBillingScrapeCache.h"
#include "QuorvaneCore/ratelimits/GrokRateLimitCapture.h"
#include "QuorvaneCore/ratelimits/GrokRateLimitStore.h"

namespace quorvane {
namespace {

/// The text of a string; empty for an empty one and for anything else.
std::string_view textOf(JSONValue value) noexcept {
    return value.string().value_or(std::string_view{});
}

bool mentionsBilling(std::string_view line) noexcept {
    return findBytes(line, GrokRateLimitCapture::billingLogMessage) != std::string_view::npos;
}

std::optional<Date> dateOf(JSONValue value) noexcept {
    return ISODate::parse(textOf(value));
}

/// A number, or a string that is one.
std::optional<double> percentOf(JSONValue value) {
    if (const std::optional<std::string_view> text = value.string()) return parseFloat(*text);
    return JSONNumber::asDouble(value);
}

bool hasFiniteNumbers(const JSONTree& tree) {
    const auto isFinite = [](const JSONTree& part) { return hasFiniteNumbers(part); };
    if (const auto* number = std::get_if<double>(&tree.content)) return std::isfinite(*number);
    if (const auto* array = std::get_if<JSONTree::Array>(&tree.content))
        return std::all_of(array->begin(), array->end(), isFinite);
    if (const auto* object = std::get_if<JSONTree::Object>(&tree.content))
        return std::all_of(object->begin(), object->end(), [&](const auto& member) { return isFinite(member.second); });
    return true;
}

/// Absent for a log that is not there.
std::optional<GrokBillingScrapeCache::Entry> presentState(const std::string& log) noexcept {
    const std::optional<FileStatus> status = FileStatus::of(log);
    if (!status) return std::nullopt;
    const double fraction = static_cast<double>(status->modified.nanoseconds) / 1e9;
    return GrokBillingScrapeCache::Entry{.size = status->size,
                                         .mtime = static_cast<double>(status->modified.seconds) + fraction};
}

}  // namespace

bool GrokRateLimitCapture::refreshFromLogs(const std::optional<std::string>& grokHome,
                                           const std::optional<std::string>& logURL,
                                           const std::optional<std::string>& outputURL, Date now) {
    const std::string log = logURL ? *logURL : defaultLogURL(grokHome);
    const std::optional<std::string> output = outputURL ? outputURL : GrokRateLimitStore::defaultURL();
    if (!output) return false;
    // Asked before the read: what the agent adds meanwhile is a change that the next call sees.
    const std::optional<GrokBillingScrapeCache::Entry> state = presentState(log);
    if (state && GrokBillingScrapeCache::shared().entry(log) == state) return false;
    const std::optional<JSONTree::Object> record = scrapeLatestBilling(log, now);
    const bool isWritten = record && write(*record, *output);
    if (state) GrokBillingScrapeCache::shared().store(log, *state);
    return isWritten;
}

std::optional<JSONTree::Object> GrokRateLimitCapture::scrapeLatestBilling(const std::string& log, Date now,
                                                                          std::uint64_t maxBytes) {
    return JSONLStreamReader::firstMatchingTail(log, maxBytes,
                                                [&](std::string_view line) -> std::optional<JSONTree::Object> {
                                                    if (!mentionsBilling(line)) return std::nullopt;
                                                    return parseBillingLogLine(repairedUTF8(line), now);
                                                });
}

std::optional<JSONTree::Object> GrokRateLimitCapture::parseBillingLogLine(std::string_view line, Date now) {
    if (!mentionsBilling(line)) return std::nullopt;
    JSONParser parser;
    const auto [message, time, context] = parser.parse(line).members<3>({"msg", "ts", "ctx"});
    if (message.string() != billingLogMessage) return std::nullopt;
    const JSONValue config = context["config"];
    const std::optional<double> used = percentOf(config["creditUsagePercent"]);
    if (!used) return std::nullopt;

    // Held in the order of the script's comparisons, so that both roads make the same of everything.
    JSONTree::Object weekly{{"used_percentage", std::max(0.0, std::min(100.0, *used))}};
    const JSONValue period = config["currentPeriod"];
    if (const std::optional<Date> end = dateOf(period["end"])) weekly["resets_at"] = end->secondsSince1970;
    JSONTree::Object record{{"capturedAt", dateOf(time).value_or(now).secondsSince1970},
                            {"source", "unified.jsonl"},
                            {"weekly", std::move(weekly)}};
    const std::string_view ownPlan = textOf(context["subscriptionTier"]);
    const std::string_view plan = ownPlan.empty() ? textOf(config["subscriptionTier"]) : ownPlan;
    if (!plan.empty()) record["plan_type"] = std::string{plan};
    if (const std::string_view kind = textOf(period["type"]); !kind.empty()) record["period_type"] = std::string{kind};
    return record;
}

bool GrokRateLimitCapture::write(const JSONTree::Object& record, const std::string& url) {
    const JSONTree tree{record};
    if (!hasFiniteNumbers(tree)) return false;
    try {
        createFolders(FilePath::parent(url));
        replaceFile(url, JSONWriter::pretty(tree));
        return true;
    } catch (const std::system_error&) {
        return false;
    }
}

}  // namespace quorvane
