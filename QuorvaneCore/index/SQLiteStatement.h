#pragma once
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "QuorvaneCore/index/SQLiteDatabase.h"

struct sqlite3_stmt;

namespace quorvane {

/// A prepared statement, finalised when its last reference goes. It keeps its connection open.
/// Parameters count from 1, columns from 0. One thread at a time, see `SQLiteDatabase`.
class SQLiteStatement {
public:
    SQLiteStatement(const SQLiteStatement&) = delete;
    SQLiteStatement& operator=(const SQLiteStatement&) = delete;
    ~SQLiteStatement();

    void bind(std::int32_t index, std::int64_t value) noexcept;
    void bind(std::int32_t index, double value) noexcept;
    /// SQLite takes its own copy of the text, up to its first NUL byte. Absent binds NULL.
    void bind(std::int32_t index, const std::optional<std::string>& value) noexcept;
    void bind(std::int32_t index, const std::string& value) noexcept;

    /// True when a row is there to be read, false when the statement is done. Throws `SQLiteError`.
    [[nodiscard]] bool step();

    /// Steps without a look at rows, to the first row or the end. Throws `SQLiteError`.
    void run() { static_cast<void>(step()); }

    /// Makes the statement ready to run again, with all parameters NULL.
    void reset() noexcept;

    /// Columns of the current row, in SQLite's own conversions. Absent is SQL NULL.
    [[nodiscard]] std::int64_t integer(std::int32_t column) noexcept;
    [[nodiscard]] double real(std::int32_t column) noexcept;
    [[nodiscard]] std::optional<std::string> text(std::int32_t column);

    /// The same without a copy: valid until the next step, reset or destruction. NULL gives the empty view.
    [[nodiscard]] std::string_view textView(std::int32_t column) noexcept;

private:
    friend class SQLiteDatabase;
    SQLiteStatement(sqlite3_stmt* statement, std::shared_ptr<SQLiteDatabase> database) noexcept;

    sqlite3_stmt* statement_ = nullptr;
    std::shared_ptr<SQLiteDatabase> database_;
};

}  // namespace quorvane
