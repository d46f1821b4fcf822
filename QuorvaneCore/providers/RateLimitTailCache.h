#pragma once
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "QuorvaneCore/providers/CodexRateLimitRecord.h"

namespace quorvane {

/// What the last look at each rollout found of quotas, so that a file which has not changed is not read again. It lives
/// as long as the process and nothing of it is stored. Any thread may call any operation.
class RateLimitTailCache {
public:
    struct Entry {
        std::int64_t size = 0;                       ///< of the file, in bytes, when it was read
        double mtime = 0;                            ///< its modification time then, in seconds since 1970
        std::optional<CodexRateLimitRecord> result;  ///< absent is an answer too

        friend bool operator==(const Entry&, const Entry&) = default;
    };

    RateLimitTailCache() = default;
    RateLimitTailCache(const RateLimitTailCache&) = delete;
    RateLimitTailCache& operator=(const RateLimitTailCache&) = delete;

    /// The one that all readers of this process share.
    [[nodiscard]] static RateLimitTailCache& shared();

    /// Absent for a file that was never read.
    [[nodiscard]] std::optional<Entry> entry(const std::string& file) const;

    /// Replaces what was there. Of two threads that read the same file, the last one counts.
    void store(const std::string& file, Entry entry);

    /// Forgets all files but `files`. Does nothing as long as it knows no more files than these are.
    void prune(const std::vector<std::string>& files);

    [[nodiscard]] std::size_t count() const;

private:
    mutable std::mutex lock_;  ///< guards `entries_`; a leaf, never held while a file is read
    std::unordered_map<std::string, Entry> entries_;
};

}  // namespace quorvane
