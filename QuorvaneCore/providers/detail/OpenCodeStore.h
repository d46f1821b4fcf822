#pragma once
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>

#include "QuorvaneCore/index/SQLiteDatabase.h"
#include "QuorvaneCore/model/TokenUsage.h"
#include "QuorvaneCore/platform/FunctionView.h"

namespace quorvane {

/// One row of OpenCode's sessions: the account that the agent keeps itself, the sum of all messages of the session.
struct OpenCodeSessionRow {
    std::string id;
    std::optional<std::string> rawModel;  ///< a name, or a JSON object with "id" and "providerID"
    TokenUsage usage;
    std::int64_t timeCreatedMillis = 0;  ///< milliseconds since 1970
    std::optional<std::string> projectID;
};

/// One answer of a model.
struct OpenCodeMessageRow {
    std::string sessionID;
    std::string messageID;
    std::int64_t createdMillis = 0;  ///< milliseconds since 1970
    std::optional<std::string> modelID;
    std::optional<std::string> providerID;
    TokenUsage usage;
};

/// OpenCode's database as it was at one moment: all statements of one `OpenCodeStore` see the same rows, however much
/// the agent writes meanwhile. The database is never changed.
class OpenCodeStore {
public:
    /// Opens the database and hands it to `body`, which is called again, with a new store, if the file was written to
    /// in a way that can have torn what it saw: it must make its result anew each time. `body` may throw `SQLiteError`,
    /// which is passed on. Throws it too if there is no database at `path`, or none that can be read: another process
    /// may hold its lock for more than five seconds, or has left a transaction half-written.
    ///
    /// No file is made beside the database, with one exception: where its write-ahead log lies there with content and
    /// without its shared memory (a copy of the two files, or a log whose owner is closing it at this moment), SQLite
    /// reads it only after making a "-shm", and leaves that there. Files that are there SQLite uses as for any reader:
    /// it writes its mark into the "-shm", and if the agent goes during the reading, both files stay until it comes
    /// again, as only one that may write to the database may take them away.
    static void read(const std::string& path, FunctionView<void(OpenCodeStore&)> body);

    /// Whether any message, or any session, names Muse Spark as its model. False also if that cannot be read.
    [[nodiscard]] bool containsSparkMessage();
    [[nodiscard]] bool containsSparkSession();

    /// The project of each session; empty if that cannot be read.
    [[nodiscard]] std::unordered_map<std::string, std::optional<std::string>> projectIDsBySession();

    /// What Muse Spark used in each session, by its messages; empty if that cannot be read, as without that table.
    [[nodiscard]] std::unordered_map<std::string, TokenUsage> museSparkMessageTotals();

    /// Visits each session that has an id. Throws `SQLiteError`.
    void forEachSession(FunctionView<void(const OpenCodeSessionRow&)> visit);

    /// Visits each answer of a model that was created at `createdAtOrAfterMillis` or later. Throws `SQLiteError`; the
    /// rows before the failure have been visited.
    void forEachAssistantMessage(std::int64_t createdAtOrAfterMillis,
                                 FunctionView<void(const OpenCodeMessageRow&)> visit);

private:
    explicit OpenCodeStore(std::shared_ptr<SQLiteDatabase> database);
    [[nodiscard]] bool hasRow(const char* sql);

    std::shared_ptr<SQLiteDatabase> database_;
};

}  // namespace quorvane
