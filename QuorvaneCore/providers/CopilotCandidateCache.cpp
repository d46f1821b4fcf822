#include "QuorvaneCore/providers/CopilotCandidateCache.h"

#include <optional>
#include <string_view>
#include <unordered_set>
#include <utility>

namespace quorvane {
namespace {

CopilotCandidateCache::Candidates parsed(const std::string& file, const JSONLStreamReader& reader) {
    return std::make_shared<const std::vector<CopilotOTelParser::Candidate>>(
        CopilotOTelParser::candidates(file, reader));
}

}  // namespace

CopilotCandidateCache& CopilotCandidateCache::shared() {
    static CopilotCandidateCache cache;
    return cache;
}

CopilotCandidateCache::Candidates CopilotCandidateCache::candidates(const std::string& file,
                                                                    const JSONLStreamReader& reader) {
    const std::optional<FileCursor::Status> status = FileCursor::state(file);
    if (!status) return parsed(file, reader);
    if (Candidates kept = known(file, *status)) return kept;
    Candidates fresh = parsed(file, reader);
    store(file, {.status = *status, .candidates = fresh});
    return fresh;
}

CopilotCandidateCache::Candidates CopilotCandidateCache::known(const std::string& file,
                                                               const FileCursor::Status& status) {
    const std::lock_guard guard{lock_};
    const auto found = entries_.find(file);
    if (found != entries_.end() && found->second.status == status) return found->second.candidates;
    ++traversals_;
    return nullptr;
}

void CopilotCandidateCache::store(const std::string& file, Entry entry) {
    const std::lock_guard guard{lock_};
    entries_.insert_or_assign(file, std::move(entry));
}

void CopilotCandidateCache::prune(const std::vector<std::string>& files) {
    const std::lock_guard guard{lock_};
    if (entries_.size() <= files.size()) return;
    const std::unordered_set<std::string_view> kept{files.begin(), files.end()};
    std::erase_if(entries_, [&](const auto& known) { return !kept.contains(known.first); });
}

std::size_t CopilotCandidateCache::count() const {
    const std::lock_guard guard{lock_};
    return entries_.size();
}

std::int64_t CopilotCandidateCache::traversalCount() const {
    const std::lock_guard guard{lock_};
    return traversals_;
}

}  // namespace quorvane
