#include "QuorvaneCore/index/SQLiteStatement.h"

#include <utility>

#include <sqlite3.h>

namespace quorvane {

SQLiteStatement::SQLiteStatement(sqlite3_stmt* statement, std::shared_ptr<SQLiteDatabase> database) noexcept
    : statement_{statement}, database_{std::move(database)} {}

SQLiteStatement::~SQLiteStatement() {
    ::sqlite3_finalize(statement_);
}

void SQLiteStatement::bind(std::int32_t index, std::int64_t value) noexcept {
    ::sqlite3_bind_int64(statement_, index, value);
}

void SQLiteStatement::bind(std::int32_t index, double value) noexcept {
    ::sqlite3_bind_double(statement_, index, value);
}

void SQLiteStatement::bind(std::int32_t index, const std::optional<std::string>& value) noexcept {
    if (value) {
        bind(index, *value);
    } else {
        ::sqlite3_bind_null(statement_, index);
    }
}

void SQLiteStatement::bind(std::int32_t index, const std::string& value) noexcept {
    ::sqlite3_bind_text(statement_, index, value.c_str(), -1, SQLITE_TRANSIENT);  // NOLINT: SQLite's own macro
}

bool SQLiteStatement::step() {
    switch (::sqlite3_step(statement_)) {
        case SQLITE_ROW: return true;
        case SQLITE_DONE: return false;
        default: throw SQLiteError{SQLiteError::Kind::Step, database_->lastMessage()};
    }
}

void SQLiteStatement::reset() noexcept {
    ::sqlite3_reset(statement_);
    ::sqlite3_clear_bindings(statement_);
}

std::int64_t SQLiteStatement::integer(std::int32_t column) noexcept {
    return ::sqlite3_column_int64(statement_, column);
}

double SQLiteStatement::real(std::int32_t column) noexcept {
    return ::sqlite3_column_double(statement_, column);
}

std::string_view SQLiteStatement::textView(std::int32_t column) noexcept {
    const unsigned char* bytes = ::sqlite3_column_text(statement_, column);
    return bytes == nullptr ? std::string_view{} : std::string_view{reinterpret_cast<const char*>(bytes)};
}

std::optional<std::string> SQLiteStatement::text(std::int32_t column) {
    const unsigned char* bytes = ::sqlite3_column_text(statement_, column);
    if (bytes == nullptr) return std::nullopt;
    return std::string{reinterpret_cast<const char*>(bytes)};
}

}  // namespace quorvane
