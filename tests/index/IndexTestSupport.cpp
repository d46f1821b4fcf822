#include "tests/index/IndexTestSupport.h"

#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <utility>

namespace quorvane::testing {

Date at(std::string_view text) {
    std::optional<Date> date = ISODate::parsePlain(text);
    if (!date) date = ISODate::parseFractional(text);
    if (!date) std::abort();
    return *date;
}

UsageEvent event(EventFields fields) {
    UsageEvent made;
    made.messageId = std::move(fields.message);
    made.requestId = std::move(fields.request);
    made.provider = fields.provider;
    made.model = std::move(fields.model);
    made.timestamp = fields.when;
    made.usage = fields.usage;
    made.project = std::move(fields.project);
    return made;
}

std::vector<std::string> column(SQLiteDatabase& database, const std::string& sql) {
    const auto statement = database.prepare(sql);
    std::vector<std::string> texts;
    while (statement->step())
        texts.push_back(statement->text(0).value_or("NULL"));
    return texts;
}

std::vector<std::string> column(const std::string& path, const std::string& sql) {
    return column(*SQLiteDatabase::openReadOnly(path), sql);
}

std::int64_t number(const std::string& path, const std::string& sql) {
    const auto statement = SQLiteDatabase::openReadOnly(path)->prepare(sql);
    if (!statement->step()) std::abort();
    return statement->integer(0);
}

void execute(const std::string& path, const std::string& script) {
    SQLiteDatabase::open(path)->execute(script);
}

namespace {

const std::string eventColumns =
    "provider || ' ' || quote(msg_id) || ' ' || quote(req_id) || ' ' || quote(model) || ' ' || quote(ts) || ' ' || "
    "quote(project) || ' ' || input || ' ' || output || ' ' || cache5m || ' ' || cache1h || ' ' || cache_read || ' ' "
    "|| quote((SELECT path FROM paths WHERE id = path_id))";

}  // namespace

std::vector<std::string> storedEvents(const std::string& path) {
    return column(path, "SELECT " + eventColumns + " FROM events ORDER BY provider, msg_id, req_id;");
}

std::vector<std::string> storedLegacyEvents(const std::string& path) {
    return column(path, "SELECT " + eventColumns +
                            " || ' ' || quote(source_path) FROM events ORDER BY provider, msg_id, req_id;");
}

std::vector<std::string> schema(const std::string& path) {
    return column(path, "SELECT sql FROM sqlite_master WHERE sql IS NOT NULL ORDER BY name;");
}

std::string integrity(const std::string& path) {
    return column(path, "PRAGMA integrity_check;").front();
}

std::size_t openDescriptors() {
    const std::filesystem::directory_iterator entries{"/proc/self/fd"};
    return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
}

std::string legacyRow(std::string_view message, double when, std::string_view path) {
    return "INSERT INTO events (provider, msg_id, req_id, model, ts, project, input, output, cache5m, cache1h, "
           "cache_read, source_path) VALUES ('claude', '" +
           std::string{message} + "', 'r', 'model', " + std::to_string(when) + ", NULL, 1, 2, 3, 4, 5, " +
           std::string{path} + ");\n";
}

CostCalculator testCalculator() {
    PricingTable::Models models;
    models["plain"] = ModelPrice{.inputCostPerToken = 1, .outputCostPerToken = 2};
    models["tiered"] = ModelPrice{.inputCostPerToken = 1,
                                  .outputCostPerToken = 2,
                                  .inputCostPerTokenAbove200k = 10,
                                  .outputCostPerTokenAbove200k = 20};
    models["cached"] = ModelPrice{.inputCostPerToken = 0.000003,
                                  .outputCostPerToken = 0.000015,
                                  .cacheCreationInputTokenCost = 0.00000375,
                                  .cacheCreationInputTokenCostAbove1hr = 0.000006,
                                  .cacheReadInputTokenCost = 0.0000003,
                                  .inputCostPerTokenAbove200k = 0.000006};
    models["tenth"] = ModelPrice{.inputCostPerToken = 0.1, .outputCostPerToken = 0};
    models["free"] = ModelPrice{};
    return CostCalculator{PricingTable{std::move(models)}};
}

void breakScans(const std::string& path) {
    execute(path,
            "ALTER TABLE events RENAME TO hidden;"
            "CREATE VIEW events AS SELECT provider, msg_id, req_id, abs(-9223372036854775807 - 1 + 0 * input) AS model,"
            " ts, project, input, output, cache5m, cache1h, cache_read, path_id FROM hidden;");
}

FileSizeLimit::FileSizeLimit(std::uint64_t bytes) : oldHandler_{std::signal(SIGXFSZ, SIG_IGN)} {
    ::getrlimit(RLIMIT_FSIZE, &old_);
    rlimit lower = old_;
    lower.rlim_cur = bytes;
    ::setrlimit(RLIMIT_FSIZE, &lower);
}

FileSizeLimit::~FileSizeLimit() {
    ::setrlimit(RLIMIT_FSIZE, &old_);
    std::signal(SIGXFSZ, oldHandler_);
}

}  // namespace quorvane::testing
