#pragma once
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

#include "QuorvaneCore/ingest/FileCursor.h"
#include "QuorvaneCore/providers/CopilotOTelParser.h"

namespace quorvane {

/// The candidates of each telemetry file as it was when it was last parsed, so that a file which has not changed is not
/// read again. It lives as long as the process and nothing of it is stored. Any thread may call any operation.
class CopilotCandidateCache {
public:
    /// Shared by all who ask for the same file; never null, unless an operation says so.
    using Candidates = std::shared_ptr<const std::vector<CopilotOTelParser::Candidate>>;

    CopilotCandidateCache() = default;
    CopilotCandidateCache(const CopilotCandidateCache&) = delete;
    CopilotCandidateCache& operator=(const CopilotCandidateCache&) = delete;

    /// The one that all readers of this process share.
    [[nodiscard]] static CopilotCandidateCache& shared();

    /// The file's candidates, parsed with `reader` unless size, modification time and change time all are those of the
    /// last parse. A file that cannot be queried is parsed each time and not kept. Of two threads that parse the same
    /// file at once, the last one counts.
    [[nodiscard]] Candidates candidates(const std::string& file, const JSONLStreamReader& reader);

    /// Forgets all files but `files`. Does nothing as long as it knows no more files than these are.
    void prune(const std::vector<std::string>& files);

    [[nodiscard]] std::size_t count() const;

    /// How often a file was parsed in order to be kept.
    [[nodiscard]] std::int64_t traversalCount() const;

private:
    struct Entry {
        FileCursor::Status status;
        Candidates candidates;
    };

    /// Null if the file is not known as it is now, and counts the parse that then follows.
    [[nodiscard]] Candidates known(const std::string& file, const FileCursor::Status& status);
    void store(const std::string& file, Entry entry);

    mutable std::mutex lock_;  ///< guards all below; a leaf, never held while a file is read
    std::unordered_map<std::string, Entry> entries_;
    std::int64_t traversals_ = 0;
};

}  // namespace quorvane
