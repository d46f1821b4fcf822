#include "tests/opencode/OpenCodeTestSupport.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

#include <fmt/format.h>

#include "QuorvaneCore/index/SQLiteStatement.h"

namespace quorvane::testing {
namespace {

std::string jsonText(const std::optional<std::string>& text) {
    return text ? "\"" + *text + "\"" : "null";
}

}  // namespace

Agent::Agent(const std::string& path, Journal journal) : database_{SQLiteDatabase::open(path)} {
    if (journal == Journal::Rollback) execute("PRAGMA journal_mode=DELETE;");
    execute("PRAGMA synchronous=OFF;");  // no test cuts the power
    execute(
        "CREATE TABLE IF NOT EXISTS session (id TEXT, project_id TEXT, model TEXT, time_created INTEGER, "
        "tokens_input INTEGER, tokens_output INTEGER, tokens_reasoning INTEGER, tokens_cache_read INTEGER, "
        "tokens_cache_write INTEGER);"
        "CREATE TABLE IF NOT EXISTS message (id TEXT, session_id TEXT, time_created INTEGER, data TEXT);");
}

const Agent& Agent::add(const Session& session) const {
    const auto insert = database_->prepare("INSERT INTO session VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9);");
    insert->bind(1, session.id);
    insert->bind(2, session.project);
    insert->bind(3, session.model);
    insert->bind(4, session.created);
    insert->bind(5, session.input);
    insert->bind(6, session.output);
    insert->bind(7, session.reasoning);
    insert->bind(8, session.cacheRead);
    insert->bind(9, session.cacheWrite);
    insert->run();
    return *this;
}

const Agent& Agent::add(const Message& message) const {
    const auto insert = database_->prepare("INSERT INTO message VALUES (?1, ?2, ?3, ?4);");
    insert->bind(1, message.id);
    insert->bind(2, message.session);
    insert->bind(3, message.created);
    insert->bind(4,
                 fmt::format("{{\"role\":\"{}\",\"time\":{{\"created\":{}}},\"modelID\":{},\"providerID\":{},"
                             "\"tokens\":{{\"input\":{},\"output\":{},\"reasoning\":{},"
                             "\"cache\":{{\"read\":{},\"write\":{}}}}}}}",
                             message.role, message.created, jsonText(message.model), jsonText(message.provider),
                             message.input, message.output, message.reasoning, message.cacheRead, message.cacheWrite));
    insert->run();
    return *this;
}

const Agent& Agent::addMessageData(const std::string& id, const std::string& data) const {
    const auto insert = database_->prepare("INSERT INTO message VALUES (?1, 's1', 0, ?2);");
    insert->bind(1, id);
    insert->bind(2, data);
    insert->run();
    return *this;
}

const Agent& Agent::execute(const std::string& sql) const {
    database_->execute(sql);
    return *this;
}

std::string agentLogLine(std::string_view session, std::string_view model, std::int64_t input, std::int64_t output,
                         std::string_view more) {
    return fmt::format(
        "INFO timestamp=2026-09-14T10:00:00.000Z id={} model={} tokens.input={} tokens.output={} {} done\n", session,
        model, input, output, more);
}

std::vector<std::string> told(const std::vector<UsageEvent>& events) {
    std::vector<std::string> lines;
    for (const UsageEvent& event : events) {
        const TokenUsage& usage = event.usage;
        lines.push_back(fmt::format("{} {} {} {}/{}/{}/{}", event.messageId, event.requestId, event.model, usage.input,
                                    usage.output, usage.cacheCreate5m, usage.cacheRead));
    }
    std::ranges::sort(lines);
    return lines;
}

std::map<std::string, std::string> filesOf(const std::string& folder) {
    std::map<std::string, std::string> files;
    for (const auto& entry : std::filesystem::directory_iterator{folder}) {
        if (!entry.is_regular_file()) continue;
        std::ifstream file{entry.path(), std::ios::binary};
        files[entry.path().filename()] = std::string{std::istreambuf_iterator<char>{file}, {}};
    }
    return files;
}

}  // namespace quorvane::testing
