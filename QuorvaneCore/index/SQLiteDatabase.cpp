#include "QuorvaneCore/index/SQLiteDatabase.h"

#include <chrono>
#include <cstdlib>
#include <string_view>
#include <thread>

#include <sqlite3.h>

#include "QuorvaneCore/index/SQLiteStatement.h"

namespace quorvane {
namespace {

std::string messageOf(sqlite3* handle) {
    const char* message = ::sqlite3_errmsg(handle);
    if (message == nullptr) std::abort();
    return message;
}

/// Sets the write-ahead mode, which the file keeps from then on. Where several programs open a new file at once, SQLite
/// gives up at the first sight of another one's lock, without the wait that it grants every other statement.
void useWriteAheadLog(SQLiteDatabase& database) {
    using std::chrono::steady_clock;
    const steady_clock::time_point end = steady_clock::now() + std::chrono::milliseconds{5000};
    for (;;) {
        try {
            database.execute("PRAGMA journal_mode=WAL;");
            return;
        } catch (const SQLiteError& error) {
            if (error.message() != "database is locked" || steady_clock::now() >= end) throw;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds{1});
    }
}

/// `path` in the form of SQLite's own file names with options.
std::string fileURI(const std::string& path, std::string_view options) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string uri = "file:";
    for (const char letter : path) {
        // These three have a meaning of their own there, and a name that begins with two slashes has a host.
        if (letter == '%' || letter == '?' || letter == '#' || (letter == '/' && uri == "file:/")) {
            const auto byte = static_cast<unsigned char>(letter);
            uri += '%';
            uri += digits[byte >> 4];
            uri += digits[byte & 15];
        } else {
            uri += letter;
        }
    }
    return uri.append("?").append(options);
}

}  // namespace

std::shared_ptr<SQLiteDatabase> SQLiteDatabase::open(const std::string& path, int flags) {
    sqlite3* handle = nullptr;
    const int result = ::sqlite3_open_v2(path.c_str(), &handle, flags | SQLITE_OPEN_FULLMUTEX, nullptr);
    if (result != SQLITE_OK) {
        const std::string message = handle == nullptr ? "unknown" : messageOf(handle);
        ::sqlite3_close_v2(handle);
        throw SQLiteError{SQLiteError::Kind::Open, message};
    }
    return std::shared_ptr<SQLiteDatabase>{new SQLiteDatabase{handle}};
}

std::shared_ptr<SQLiteDatabase> SQLiteDatabase::open(const std::string& path) {
    std::shared_ptr<SQLiteDatabase> database = open(path, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
    // Waiting comes first: several processes may open the file at once, and the first look at a write-ahead log can
    // meet another one's recovery of it.
    database->execute("PRAGMA busy_timeout=5000;");
    useWriteAheadLog(*database);
    database->execute("PRAGMA synchronous=NORMAL;");
    // The first ingest of a large history touches pages all over the file. With more of them in memory (8 MB instead of
    // 2) and fewer moves from the log into the file (each 32 MB instead of 4) it takes half the time.
    database->execute("PRAGMA cache_size=-8000;");
    database->execute("PRAGMA wal_autocheckpoint=8000;");
    return database;
}

std::shared_ptr<SQLiteDatabase> SQLiteDatabase::openReadOnly(const std::string& path) {
    std::shared_ptr<SQLiteDatabase> database = open(path, SQLITE_OPEN_READONLY);
    database->execute("PRAGMA busy_timeout=5000;");
    return database;
}

std::shared_ptr<SQLiteDatabase> SQLiteDatabase::openImmutable(const std::string& path) {
    return open(fileURI(path, "immutable=1"), SQLITE_OPEN_READONLY | SQLITE_OPEN_URI);
}

SQLiteDatabase::~SQLiteDatabase() {
    ::sqlite3_close_v2(handle_);
}

void SQLiteDatabase::execute(const std::string& sql) {
    char* text = nullptr;
    if (::sqlite3_exec(handle_, sql.c_str(), nullptr, nullptr, &text) == SQLITE_OK) return;
    const std::string message = text == nullptr ? "unknown" : text;
    ::sqlite3_free(text);
    throw SQLiteError{SQLiteError::Kind::Step, message};
}

std::shared_ptr<SQLiteStatement> SQLiteDatabase::prepare(const std::string& sql) {
    sqlite3_stmt* statement = nullptr;
    if (::sqlite3_prepare_v2(handle_, sql.c_str(), -1, &statement, nullptr) != SQLITE_OK) {
        throw SQLiteError{SQLiteError::Kind::Prepare, lastMessage()};
    }
    return std::shared_ptr<SQLiteStatement>{new SQLiteStatement{statement, shared_from_this()}};
}

void SQLiteDatabase::transaction(FunctionView<void()> body) {
    execute("BEGIN;");
    try {
        body();
        execute("COMMIT;");
    } catch (...) {
        try {
            execute("ROLLBACK;");
        } catch (const SQLiteError&) {  // NOLINT(bugprone-empty-catch): the first failure is the one to tell
        }
        throw;
    }
}

std::string SQLiteDatabase::lastMessage() const {
    return messageOf(handle_);
}

}  // namespace quorvane
