#include "benchmarks/support/OpenCodeHistory.h"

#include <array>
#include <memory>
#include <stdexcept>
#include <string_view>
#include <vector>

#include <fmt/format.h>
#include <sqlite3.h>

#include "QuorvaneCore/index/SQLiteDatabase.h"
#include "QuorvaneCore/index/SQLiteStatement.h"
#include "benchmarks/support/BenchmarkData.h"
#include "benchmarks/support/Random.h"

namespace quorvane::benchmarks {
namespace {

constexpr std::int64_t sessionCount = 3000;
constexpr std::int64_t messageCount = 64000;
constexpr std::int64_t endMillis = 1789387200000;
constexpr std::int64_t dayMillis = 86400000;

constexpr const char* schema =
    "CREATE TABLE session (id TEXT PRIMARY KEY, project_id TEXT NOT NULL, title TEXT NOT NULL, model TEXT, "
    "tokens_input INTEGER NOT NULL, tokens_output INTEGER NOT NULL, tokens_reasoning INTEGER NOT NULL, "
    "tokens_cache_read INTEGER NOT NULL, tokens_cache_write INTEGER NOT NULL, time_created INTEGER NOT NULL);"
    "CREATE TABLE message (id TEXT PRIMARY KEY, session_id TEXT NOT NULL, time_created INTEGER NOT NULL, "
    "data TEXT NOT NULL);";

struct Model {
    std::string_view provider;
    std::string_view name;
};
constexpr std::array<Model, 6> models{{{"anthropic", "claude-sonnet-5"},
                                       {"anthropic", "claude-opus-5"},
                                       {"openai", "gpt-5.1-codex"},
                                       {"openai", "gpt-5-mini"},
                                       {"google", "gemini-3-pro-preview"},
                                       {"meta", "muse-spark-1.1"}}};
constexpr std::int64_t sparkModel = 5;

std::string userMessage(std::int64_t created) {
    return fmt::format(R"({{"role":"user","time":{{"created":{}}},"agent":"build","summary":{{"diffs":[]}}}})",
                       created);
}

std::string answer(std::int64_t parent, std::int64_t created, const Model& model, const TokenUsage& usage,
                   std::int64_t reasoning) {
    return fmt::format(
        R"({{"role":"assistant","parentID":"msg_{:08}","time":{{"created":{},"completed":{}}},"modelID":"{}",)"
        R"("providerID":"{}","mode":"build","agent":"build","path":{{"cwd":"/home/ana/work/shop","root":)"
        R"("/home/ana/work/shop"}},"cost":0,"tokens":{{"input":{},"output":{},"reasoning":{},"cache":{{"read":{},)"
        R"("write":{}}}}},"finish":"tool-calls"}})",
        parent, created, created + 4200, model.name, model.provider, usage.input, usage.output - reasoning, reasoning,
        usage.cacheRead, usage.cacheCreate5m);
}

/// Sums up what its messages used, as the agent does.
struct SessionSums {
    TokenUsage all;
    TokenUsage spark;
    std::int64_t reasoning = 0;
};

class Writer {
public:
    explicit Writer(const std::string& path) : database_{SQLiteDatabase::open(path)} { database_->execute(schema); }

    OpenCodeHistory::Totals write() {
        sums_.resize(static_cast<std::size_t>(BenchmarkData::scaled(sessionCount)));
        database_->transaction([&] {
            writeMessages();
            writeSessions();
        });
        database_->execute("PRAGMA wal_checkpoint(TRUNCATE);");
        return totals_;
    }

private:
    void writeMessages() {
        const auto insert = database_->prepare("INSERT INTO message VALUES (?1, ?2, ?3, ?4);");
        totals_.messages = BenchmarkData::scaled(messageCount);
        const auto sessions = static_cast<std::int64_t>(sums_.size());
        for (std::int64_t number = 0; number < totals_.messages; ++number) {
            const std::int64_t session = number * sessions / totals_.messages;
            const std::int64_t created = endMillis - 200 * dayMillis + number * 200 * dayMillis / totals_.messages;
            insert->bind(1, fmt::format("msg_{:08}", number));
            insert->bind(2, fmt::format("ses_{:08}", session));
            insert->bind(3, created);
            const bool isUsers = number % 2 == 0;
            insert->bind(4, isUsers ? userMessage(created)
                                    : nextAnswer(number, created, sums_[static_cast<std::size_t>(session)]));
            insert->run();
            insert->reset();
        }
    }

    std::string nextAnswer(std::int64_t number, std::int64_t created, SessionSums& sums) {
        const std::int64_t model = random_.below(static_cast<std::int64_t>(models.size()));
        const std::int64_t reasoning = random_.below(900);
        const TokenUsage usage{.input = random_.between(1, 9000),
                               .output = reasoning + random_.between(1, 2500),
                               .cacheCreate5m = random_.below(12000),
                               .cacheRead = random_.below(150000)};
        sums.all += usage;
        sums.reasoning += reasoning;
        if (model == sparkModel) {
            sums.spark += usage;
            totals_.spark += usage;
            ++totals_.sparkMessages;
        } else {
            totals_.others += usage;
        }
        return answer(number - 1, created, models.at(static_cast<std::size_t>(model)), usage, reasoning);
    }

    void writeSessions() {
        const auto insert =
            database_->prepare("INSERT INTO session VALUES (?1, 'prj_shop', 'Fix it', ?2, ?3, ?4, ?5, ?6, ?7, ?8);");
        for (std::size_t number = 0; number < sums_.size(); ++number) {
            const SessionSums& sums = sums_[number];
            if (sums.all != sums.spark) ++totals_.sessions;
            insert->bind(1, fmt::format("ses_{:08}", number));
            insert->bind(2, std::string{R"({"id":"claude-sonnet-5","providerID":"anthropic"})"});
            insert->bind(3, sums.all.input);
            insert->bind(4, sums.all.output - sums.reasoning);
            insert->bind(5, sums.reasoning);
            insert->bind(6, sums.all.cacheRead);
            insert->bind(7, sums.all.cacheCreate5m);
            insert->bind(8, endMillis - 200 * dayMillis);
            insert->run();
            insert->reset();
        }
    }

    std::shared_ptr<SQLiteDatabase> database_;
    std::vector<SessionSums> sums_;
    OpenCodeHistory::Totals totals_;
    Random random_{20260914};
};

struct Close {
    void operator()(sqlite3* handle) const noexcept { ::sqlite3_close_v2(handle); }
};

constexpr const char* totalsSQL =
    "SELECT session_id,\n"
    "       coalesce(sum(json_extract(data, '$.tokens.input')), 0),\n"
    "       coalesce(sum(json_extract(data, '$.tokens.output')), 0)\n"
    "         + coalesce(sum(json_extract(data, '$.tokens.reasoning')), 0),\n"
    "       coalesce(sum(json_extract(data, '$.tokens.cache.write')), 0),\n"
    "       coalesce(sum(json_extract(data, '$.tokens.cache.read')), 0)\n"
    "FROM message\n"
    "WHERE json_extract(data, '$.role') = 'assistant'\n"
    "  AND lower(coalesce(json_extract(data, '$.modelID'), '')) LIKE '%muse-spark%'\n"
    "GROUP BY session_id";

constexpr const char* sessionsSQL =
    "SELECT id, tokens_input, tokens_output, tokens_reasoning, tokens_cache_read,\n"
    "       tokens_cache_write, model, time_created, project_id\n"
    "FROM session";

constexpr const char* messagesSQL =
    "SELECT session_id, id,\n"
    "       json_extract(data, '$.time.created'),\n"
    "       json_extract(data, '$.modelID'),\n"
    "       json_extract(data, '$.providerID'),\n"
    "       json_extract(data, '$.tokens.input'),\n"
    "       json_extract(data, '$.tokens.output'),\n"
    "       json_extract(data, '$.tokens.reasoning'),\n"
    "       json_extract(data, '$.tokens.cache.read'),\n"
    "       json_extract(data, '$.tokens.cache.write')\n"
    "FROM message\n"
    "WHERE json_extract(data, '$.role') = 'assistant'\n"
    "  AND json_extract(data, '$.time.created') >= ?1";

std::int64_t rowsOf(sqlite3* handle, const char* sql, std::int64_t bound) {
    sqlite3_stmt* statement = nullptr;
    if (::sqlite3_prepare_v2(handle, sql, -1, &statement, nullptr) != SQLITE_OK) {
        throw std::runtime_error{::sqlite3_errmsg(handle)};
    }
    if (::sqlite3_bind_parameter_count(statement) > 0) ::sqlite3_bind_int64(statement, 1, bound);
    std::int64_t rows = 0;
    const int columns = ::sqlite3_column_count(statement);
    while (::sqlite3_step(statement) == SQLITE_ROW) {
        ++rows;
        // SQLite makes a column when it is asked for it.
        for (int column = 0; column < columns; ++column) {
            if (::sqlite3_column_type(statement, column) == SQLITE_INTEGER) {
                static_cast<void>(::sqlite3_column_int64(statement, column));
            } else {
                static_cast<void>(::sqlite3_column_text(statement, column));
            }
        }
    }
    ::sqlite3_finalize(statement);
    return rows;
}

std::int64_t rowsOf(const std::string& database, const char* first, const char* second, std::int64_t bound) {
    sqlite3* opened = nullptr;
    const int result = ::sqlite3_open_v2(database.c_str(), &opened, SQLITE_OPEN_READONLY, nullptr);
    const std::unique_ptr<sqlite3, Close> handle{opened};
    if (result != SQLITE_OK) throw std::runtime_error{"cannot open " + database};
    return rowsOf(handle.get(), first, bound) + rowsOf(handle.get(), second, bound);
}

}  // namespace

const OpenCodeHistory::OnDisk& OpenCodeHistory::typical() {
    static const ScratchFolder folder;
    static const OnDisk history = [] {
        OnDisk made{.database = folder.path("opencode.db"), .totals = {}};
        made.totals = Writer{made.database}.write();
        return made;
    }();
    return history;
}

void OpenCodeHistory::addSparkMessage(const std::string& database, std::int64_t created) {
    const std::shared_ptr<SQLiteDatabase> opened = SQLiteDatabase::open(database);
    const auto insert = opened->prepare("INSERT INTO message VALUES ('msg_new', 'ses_00000000', ?1, ?2);");
    insert->bind(1, created);
    insert->bind(2, answer(0, created, models.at(sparkModel), {.input = 1, .output = 1}, 0));
    insert->run();
    opened->execute("PRAGMA wal_checkpoint(TRUNCATE);");
}

std::int64_t OpenCodeFloor::sessions(const std::string& database) {
    return rowsOf(database, totalsSQL, sessionsSQL, 0);
}

std::int64_t OpenCodeFloor::messages(const std::string& database, std::int64_t createdAtOrAfterMillis) {
    return rowsOf(database, "SELECT id, project_id FROM session", messagesSQL, createdAtOrAfterMillis);
}

}  // namespace quorvane::benchmarks
