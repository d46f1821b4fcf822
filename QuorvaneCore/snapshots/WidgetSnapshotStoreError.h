#pragma once
#include <cstdint>
#include <exception>
#include <string>

namespace quorvane {

/// A snapshot file is of a version that is not read.
class WidgetSnapshotStoreError : public std::exception {
public:
    enum class Kind : std::uint8_t { UnsupportedSchemaVersion };

    WidgetSnapshotStoreError(Kind kind, std::int64_t found, std::int64_t expected) noexcept
        : kind_{kind}, found_{found}, expected_{expected} {}

    [[nodiscard]] Kind kind() const noexcept { return kind_; }
    [[nodiscard]] std::int64_t found() const noexcept { return found_; }
    [[nodiscard]] std::int64_t expected() const noexcept { return expected_; }
    /// For logs of a program that words nothing better.
    [[nodiscard]] const char* what() const noexcept override { return "unsupported schema version"; }

private:
    Kind kind_;
    std::int64_t found_;
    std::int64_t expected_;
};

}  // namespace quorvane
