#pragma once
#include <cstdint>
#include <string>
#include <vector>

#include "QuorvaneCore/model/UsageEvent.h"

namespace quorvane::benchmarks {

/// The least that storing events in the index's file format can cost: its tables, its upsert, prepared once, and a
/// transaction for each log, through the C interface of SQLite.
class UpsertFloor {
public:
    UpsertFloor() = delete;

    /// The events of each log, of each call the best one, in the order of the logs.
    using EventsByFile = std::vector<std::vector<UsageEvent>>;

    /// Writes a new database. Throws `std::runtime_error`.
    static void run(const std::string& database, const EventsByFile& events);
};

}  // namespace quorvane::benchmarks
