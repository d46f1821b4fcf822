#pragma once
#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <string>

namespace quorvane {

/// Which state of each billing log has been looked at, so that a log which has not changed is not read again. It lives
/// as long as the process and nothing of it is stored. Any thread may call any operation.
class GrokBillingScrapeCache {
public:
    struct Entry {
        std::int64_t size = 0;  ///< of the log, in bytes, before it was read
        double mtime = 0;       ///< its modification time then, in seconds since 1970

        friend bool operator==(const Entry&, const Entry&) = default;
    };

    GrokBillingScrapeCache() = default;
    GrokBillingScrapeCache(const GrokBillingScrapeCache&) = delete;
    GrokBillingScrapeCache& operator=(const GrokBillingScrapeCache&) = delete;

    /// The one that the whole process shares.
    [[nodiscard]] static GrokBillingScrapeCache& shared();

    /// Absent for a log that was never looked at.
    [[nodiscard]] std::optional<Entry> entry(const std::string& log) const;

    /// Replaces what was there.
    void store(const std::string& log, Entry entry);

private:
    mutable std::mutex lock_;  ///< guards `entries_`; a leaf, never held while a file is read or written
    std::map<std::string, Entry> entries_;
};

}  // namespace quorvane
