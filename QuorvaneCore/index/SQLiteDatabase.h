#pragma once
#include <memory>
#include <string>

#include "QuorvaneCore/index/SQLiteError.h"
#include "QuorvaneCore/platform/FunctionView.h"

struct sqlite3;

namespace quorvane {

class SQLiteStatement;

/// One connection to an SQLite database, closed when its last reference goes; statements hold such a reference.
/// A single call is safe from any thread. A sequence of calls is not atomic: whoever shares a connection holds a lock
/// around bind, step, read and reset. A lock of another process is waited for up to five seconds.
class SQLiteDatabase : public std::enable_shared_from_this<SQLiteDatabase> {
public:
    /// Opens read-write, with write-ahead logging; creates the file if it is not there. Throws `SQLiteError`.
    [[nodiscard]] static std::shared_ptr<SQLiteDatabase> open(const std::string& path);

    /// Opens an existing file, often another program's, without ever writing to it. Throws `SQLiteError`.
    [[nodiscard]] static std::shared_ptr<SQLiteDatabase> openReadOnly(const std::string& path);

    /// Opens an existing file without a lock, without a look at its write-ahead log, and without making any file beside
    /// it, as even a reader otherwise does in that mode. It sees what is in the file alone; if another process writes
    /// to the file meanwhile, what it sees is undefined, and only then. Throws `SQLiteError`.
    [[nodiscard]] static std::shared_ptr<SQLiteDatabase> openImmutable(const std::string& path);

    SQLiteDatabase(const SQLiteDatabase&) = delete;
    SQLiteDatabase& operator=(const SQLiteDatabase&) = delete;
    ~SQLiteDatabase();

    /// Runs one or more statements that return no rows. Throws `SQLiteError` of the kind `Step`, whatever failed.
    void execute(const std::string& sql);

    /// Throws `SQLiteError` of the kind `Prepare`.
    [[nodiscard]] std::shared_ptr<SQLiteStatement> prepare(const std::string& sql);

    /// Runs `body` between BEGIN and COMMIT; if either throws, rolls back and rethrows. Not nested.
    void transaction(FunctionView<void()> body);

private:
    friend class SQLiteStatement;
    explicit SQLiteDatabase(sqlite3* handle) noexcept : handle_{handle} {}
    static std::shared_ptr<SQLiteDatabase> open(const std::string& path, int flags);
    [[nodiscard]] std::string lastMessage() const;

    sqlite3* handle_ = nullptr;
};

}  // namespace quorvane
