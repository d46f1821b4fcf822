#pragma once
#include <cstddef>
#include <string>
#include <vector>

#include "QuorvaneHost/text/Ink.h"

namespace quorvane::host {

/// Rows of aligned text. The first column stands left and gives way where the table would be wider than the terminal;
/// the others stand right.
class Table {
public:
    explicit Table(std::vector<std::string> header) : header_{std::move(header)} {}

    /// One text a column, printable.
    void add(std::vector<std::string> row) { rows_.push_back(std::move(row)); }

    [[nodiscard]] bool isEmpty() const noexcept { return rows_.empty(); }

    /// The lines of the table, each with a line feed and `indent` blanks in front, at most `width` cells wide where the
    /// first column can give way that far.
    [[nodiscard]] std::string text(const Ink& ink, std::size_t width, std::size_t indent) const;

private:
    std::vector<std::string> header_;
    std::vector<std::vector<std::string>> rows_;
};

}  // namespace quorvane::host
