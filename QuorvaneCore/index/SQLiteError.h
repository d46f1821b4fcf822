#pragma once
#include <cstdint>
#include <stdexcept>
#include <string>

namespace quorvane {

/// A failure of the database, with the text that SQLite gives for it.
class SQLiteError : public std::runtime_error {
public:
    enum class Kind : std::uint8_t { Open, Prepare, Step };

    SQLiteError(Kind kind, const std::string& message);

    [[nodiscard]] Kind kind() const noexcept { return kind_; }
    /// SQLite's text alone; `what()` has the operation in front: "sqlite open: ", "sqlite prepare: ", "sqlite step: ".
    [[nodiscard]] const std::string& message() const noexcept { return message_; }

private:
    Kind kind_;
    std::string message_;
};

}  // namespace quorvane
