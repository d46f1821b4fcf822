#include "benchmarks/support/ScanFloor.h"

#include <stdexcept>
#include <utility>
#include <vector>

#include <benchmark/benchmark.h>
#include <sqlite3.h>

#include "QuorvaneCore/index/UsageIndex.h"
#include "QuorvaneCore/index/detail/RangeScan.h"

namespace quorvane::benchmarks {
namespace {

/// The kinds of a row's columns, which are those of all rows.
std::vector<int> kindsOf(sqlite3_stmt* row) {
    std::vector<int> kinds;
    for (int column = 0; column < ::sqlite3_column_count(row); ++column)
        kinds.push_back(::sqlite3_column_type(row, column));
    return kinds;
}

/// Takes every column as what it is.
void fetchRow(sqlite3_stmt* row, const std::vector<int>& kinds) {
    for (int column = 0; std::cmp_less(column, kinds.size()); ++column) {
        switch (kinds[static_cast<std::size_t>(column)]) {
            case SQLITE_INTEGER: ::benchmark::DoNotOptimize(::sqlite3_column_int64(row, column)); break;
            case SQLITE_FLOAT: ::benchmark::DoNotOptimize(::sqlite3_column_double(row, column)); break;
            default: ::benchmark::DoNotOptimize(::sqlite3_column_text(row, column)); break;
        }
    }
}

}  // namespace

void ScanFloor::Close::operator()(sqlite3* handle) const noexcept {
    ::sqlite3_close_v2(handle);
}

ScanFloor::ScanFloor(const std::string& database, const std::string& dayExpression, Date from, Date to,
                     std::span<const ProviderID> providers)
    : ScanFloor{database, UsageIndex::groupedScanSQL(dayExpression, detail::placeholders(providers)), 9, from, to,
                providers} {}

ScanFloor ScanFloor::ofRows(const std::string& database, std::string_view columns, Date from, Date to,
                            std::span<const ProviderID> providers) {
    return {database, detail::rangeScanSQL(columns, providers), std::nullopt, from, to, providers};
}

ScanFloor::ScanFloor(const std::string& database, std::string sql, std::optional<int> countColumn, Date from, Date to,
                     std::span<const ProviderID> providers)
    : sql_{std::move(sql)}, countColumn_{countColumn}, from_{from}, to_{to}, providers_{providers} {
    sqlite3* opened = nullptr;
    const int result = ::sqlite3_open(database.c_str(), &opened);
    handle_.reset(opened);
    if (result != SQLITE_OK) throw std::runtime_error{"cannot open " + database};
}

std::int64_t ScanFloor::run() const {
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
    std::vector<int> kinds;
    std::int64_t events = 0;
    while (::sqlite3_step(statement) == SQLITE_ROW) {
        if (countColumn_) {
            events += ::sqlite3_column_int64(statement, *countColumn_);
        } else {
            if (kinds.empty()) kinds = kindsOf(statement);
            fetchRow(statement, kinds);
            ++events;
        }
    }
    ::sqlite3_finalize(statement);
    return events;
}

}  // namespace quorvane::benchmarks
