#pragma once
#include <optional>
#include <string_view>

#include "QuorvaneCore/index/SQLiteStatement.h"
#include "QuorvaneCore/model/ProviderID.h"
#include "QuorvaneCore/model/TokenUsage.h"
#include "QuorvaneCore/platform/Date.h"

namespace quorvane::detail {

/// The five counters from `firstColumn` on, in the order of the table.
[[nodiscard]] inline TokenUsage readUsage(SQLiteStatement& row, std::int32_t firstColumn) {
    return TokenUsage{.input = row.integer(firstColumn),
                      .output = row.integer(firstColumn + 1),
                      .cacheCreate5m = row.integer(firstColumn + 2),
                      .cacheCreate1h = row.integer(firstColumn + 3),
                      .cacheRead = row.integer(firstColumn + 4)};
}

/// A row of "SELECT provider, model, ts, input, output, cache5m, cache1h, cache_read FROM events …".
struct EventRow {
    static constexpr std::string_view columns = "provider, model, ts, input, output, cache5m, cache1h, cache_read";

    ProviderID provider{};
    std::string_view model;  ///< valid until the statement's next step; NULL reads as the empty text
    Date timestamp;
    TokenUsage usage;

    /// Absent for a row of a provider that this version does not know.
    [[nodiscard]] static std::optional<EventRow> read(SQLiteStatement& row) {
        const std::optional<ProviderID> provider = providerFromRawName(row.textView(0));
        if (!provider) return std::nullopt;
        return EventRow{.provider = *provider,
                        .model = row.textView(1),
                        .timestamp = Date{row.real(2)},
                        .usage = readUsage(row, 3)};
    }
};

}  // namespace quorvane::detail
