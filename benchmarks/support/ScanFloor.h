#pragma once
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "QuorvaneCore/model/ProviderID.h"
#include "QuorvaneCore/platform/Date.h"

struct sqlite3;

namespace quorvane::benchmarks {

/// The statement of a summary or a query through the C interface of SQLite: all rows are stepped over, nothing is
/// priced.
class ScanFloor {
public:
    /// The summaries' statement, which groups.
    ScanFloor(const std::string& database, const std::string& dayExpression, Date from, Date to,
              std::span<const ProviderID> providers);

    /// The analytic queries' statement, a row for each event; every column is fetched.
    [[nodiscard]] static ScanFloor ofRows(const std::string& database, std::string_view columns, Date from, Date to,
                                          std::span<const ProviderID> providers);

    /// Prepares and runs the statement. Returns the number of events seen. Throws `std::runtime_error`.
    [[nodiscard]] std::int64_t run() const;

private:
    struct Close {
        void operator()(sqlite3* handle) const noexcept;
    };

    ScanFloor(const std::string& database, std::string sql, std::optional<int> countColumn, Date from, Date to,
              std::span<const ProviderID> providers);

    std::unique_ptr<sqlite3, Close> handle_;
    std::string sql_;
    std::optional<int> countColumn_;  ///< absent where a row is an event
    Date from_;
    Date to_;
    std::span<const ProviderID> providers_;
};

}  // namespace quorvane::benchmarks
