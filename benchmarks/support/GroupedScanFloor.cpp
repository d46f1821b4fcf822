#include "benchmarks/support/GroupedScanFloor.h"

#include <stdexcept>

#include <sqlite3.h>

#include "QuorvaneCore/index/UsageIndex.h"

namespace quorvane::benchmarks {

void GroupedScanFloor::Close::operator()(sqlite3* handle) const noexcept {
    ::sqlite3_close_v2(handle);
}

GroupedScanFloor::GroupedScanFloor(const std::string& database, const std::string& dayExpression, Date from, Date to,
                                   std::span<const ProviderID> providers)
    : from_{from}, to_{to}, providers_{providers} {
    sqlite3* opened = nullptr;
    const int result = ::sqlite3_open(database.c_str(), &opened);
    handle_.reset(opened);
    if (result != SQLITE_OK) throw std::runtime_error{"cannot open " + database};
    std::string placeholders;
    for (std::size_t index = 0; index < providers.size(); ++index) {
        placeholders += index == 0 ? "?" : ", ?";
        placeholders += std::to_string(index + 3);
    }
    sql_ = UsageIndex::groupedScanSQL(dayExpression, placeholders);
}

std::int64_t GroupedScanFloor::run() const {
    sqlite3_stmt* statement = nullptr;
    if (::sqlite3_prepare_v2(handle_.get(), sql_.c_str(), -1, &statement, nullptr) != SQLITE_OK) {
        throw std::runtime_error{::sqlite3_errmsg(handle_.get())};
    }
    ::sqlite3_bind_double(statement, 1, from_.secondsSince1970);
    ::sqlite3_bind_double(statement, 2, to_.secondsSince1970);
    int parameter = 3;
    for (const ProviderID provider : providers_) {
        const std::string_view name = rawName(provider);
        ::sqlite3_bind_text(statement, parameter++, name.data(), static_cast<int>(name.size()), SQLITE_STATIC);
    }
    constexpr int countColumn = 9;
    std::int64_t events = 0;
    while (::sqlite3_step(statement) == SQLITE_ROW)
        events += ::sqlite3_column_int64(statement, countColumn);
    ::sqlite3_finalize(statement);
    return events;
}

}  // namespace quorvane::benchmarks
