#pragma once
#include <cstdint>
#include <string>

#include "QuorvaneCore/model/TokenUsage.h"

namespace quorvane::benchmarks {

/// A database of OpenCode as a heavy user has it: 3000 sessions and 64000 messages, shrunk by the scale. Half of the
/// messages are the user's; of the models' answers one in six is Muse Spark's.
class OpenCodeHistory {
public:
    OpenCodeHistory() = delete;

    struct Totals {
        std::int64_t sessions = 0;       ///< that used another model than Muse Spark
        std::int64_t sparkMessages = 0;  ///< answers of Muse Spark
        std::int64_t messages = 0;       ///< all rows
        TokenUsage others;               ///< what the other models used
        TokenUsage spark;                ///< what Muse Spark used
    };

    struct OnDisk {
        std::string database;
        Totals totals;
    };

    /// Made once a run, in the data folder.
    [[nodiscard]] static const OnDisk& typical();

    /// Adds one answer of Muse Spark to a database, made at that time in milliseconds since 1970.
    static void addSparkMessage(const std::string& database, std::int64_t created);
};

/// The least that a reader of this database can do: the same statements, each row and each column of
/// it, of which nothing is kept.
class OpenCodeFloor {
public:
    OpenCodeFloor() = delete;

    /// What OpenCode's reader asks, and what Muse Spark's does. Each opens the file and returns the number of rows.
    [[nodiscard]] static std::int64_t sessions(const std::string& database);
    [[nodiscard]] static std::int64_t messages(const std::string& database, std::int64_t createdAtOrAfterMillis = 0);
};

}  // namespace quorvane::benchmarks
