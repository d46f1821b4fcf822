#pragma once
#include <algorithm>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "QuorvaneCore/index/SQLiteDatabase.h"
#include "QuorvaneCore/index/SQLiteError.h"
#include "QuorvaneCore/index/SQLiteStatement.h"
#include "QuorvaneCore/model/ProviderID.h"
#include "QuorvaneCore/platform/Date.h"

namespace quorvane::detail {

/// A statement that cannot be prepared is not an error of a summary: it gives empty sums.
[[nodiscard]] inline std::shared_ptr<SQLiteStatement> prepareOrNothing(SQLiteDatabase& database,
                                                                       const std::string& sql) {
    try {
        return database.prepare(sql);
    } catch (const SQLiteError&) {
        return nullptr;
    }
}

/// Each provider once, by raw name.
[[nodiscard]] inline std::vector<ProviderID> distinctProviders(std::span<const ProviderID> providers) {
    std::vector<ProviderID> ids{providers.begin(), providers.end()};
    std::sort(ids.begin(), ids.end(), [](ProviderID left, ProviderID right) { return rawName(left) < rawName(right); });
    ids.erase(std::unique(ids.begin(), ids.end()), ids.end());
    return ids;
}

/// "?3, ?4, …", one for each provider; the first two are the bounds of the range.
[[nodiscard]] inline std::string placeholders(std::span<const ProviderID> providers) {
    std::string list;
    for (std::size_t index = 0; index < providers.size(); ++index) {
        list += index == 0 ? "?" : ", ?";
        list += std::to_string(index + 3);
    }
    return list;
}

/// The statement that gives `columns` of the events of a range and of some providers.
[[nodiscard]] inline std::string rangeScanSQL(std::string_view columns, std::span<const ProviderID> providers) {
    std::string sql = "SELECT ";
    sql += columns;
    sql += "\nFROM events\nWHERE ts >= ?1 AND ts <= ?2 AND provider IN (";
    sql += placeholders(providers);
    sql += ");";
    return sql;
}

inline void bindRange(SQLiteStatement& scan, Date from, Date to, std::span<const ProviderID> providers) {
    scan.bind(1, from.secondsSince1970);
    scan.bind(2, to.secondsSince1970);
    for (std::size_t index = 0; index < providers.size(); ++index)
        scan.bind(static_cast<std::int32_t>(index) + 3, std::string{rawName(providers[index])});
}

}  // namespace quorvane::detail
