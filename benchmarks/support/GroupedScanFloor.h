#pragma once
#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "QuorvaneCore/model/ProviderID.h"
#include "QuorvaneCore/platform/Date.h"

struct sqlite3;

namespace quorvane::benchmarks {

/// The summaries' statement through the C interface of SQLite: all rows are stepped over, nothing is priced.
class GroupedScanFloor {
public:
    GroupedScanFloor(const std::string& database, const std::string& dayExpression, Date from, Date to,
                     std::span<const ProviderID> providers);

    /// Prepares and runs the statement. Returns the number of events in its groups. Throws `std::runtime_error`.
    [[nodiscard]] std::int64_t run() const;

private:
    struct Close {
        void operator()(sqlite3* handle) const noexcept;
    };

    std::unique_ptr<sqlite3, Close> handle_;
    std::string sql_;
    Date from_;
    Date to_;
    std::span<const ProviderID> providers_;
};

}  // namespace quorvane::benchmarks
