#include "QuorvaneCore/ingest/UsageIndexer.h"

#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

#include "QuorvaneCore/ingest/FileCursor.h"
#include "QuorvaneCore/ingest/detail/VerifiedFileStateCache.h"
#include "QuorvaneCore/platform/CheckedArithmetic.h"

namespace quorvane {
namespace {

using detail::VerifiedFileStateCache;

void count(std::int64_t& counter, std::int64_t more = 1) {
    counter = checkedAdd(counter, more);
}

/// What a reset deletes of a file's events.
enum class ResetDeletion : std::uint8_t { None, WholeSourcePath, AtOrAfterWatermark };

ResetDeletion deletionOf(ResetPolicy policy, std::int64_t start) noexcept {
    switch (policy) {
        case ResetPolicy::RereadWhole: return ResetDeletion::WholeSourcePath;
        case ResetPolicy::RereadWholeRetainingIndexedEvents: return ResetDeletion::None;
        case ResetPolicy::Watermark:
            return start == 0 ? ResetDeletion::WholeSourcePath : ResetDeletion::AtOrAfterWatermark;
    }
    return ResetDeletion::None;
}

/// One refresh of one reader.
class Refresh {
public:
    Refresh(UsageIndex& index, const IndexableProvider& provider)
        : index_{index}, provider_{provider}, id_{provider.id()}, revision_{provider.parserRevision()} {}

    UsageIndexer::Stats run() {
        std::vector<File> files;
        for (std::string& path : provider_.dataFiles()) {
            std::string key = provider_.storeKey(path);
            files.push_back({.path = std::move(path), .key = std::move(key)});
        }
        forgetMissing(files);
        for (const File& file : files)
            visit(file);
        return stats_;
    }

private:
    /// The disk is asked by the path, and so is the reader; the store and what this process remembers go by the key.
    struct File {
        std::string path;
        std::string key;
    };

    void forgetMissing(const std::vector<File>& files) {
        std::unordered_set<std::string_view> present;
        present.reserve(files.size());
        for (const File& file : files)
            present.insert(file.key);
        for (const std::string& key : index_.cursorPaths(id_)) {
            if (present.contains(key)) continue;
            index_.deleteCursor(key);
            VerifiedFileStateCache::shared().remove(key);
        }
    }

    void visit(const File& file) {
        const std::optional<FileCursor::Status> status = FileCursor::state(file.path);
        if (!status) return;
        std::optional<FileState> stored = index_.cursor(file.key);
        if (isKnownUnchanged(file, *status, stored)) {
            count(stats_.filesSkipped);
            VerifiedFileStateCache::shared().store(file.key, *status);
            if (stored->provider != rawName(id_)) index_.setCursorProvider(file.key, id_);
            return;
        }
        inspect(file, *status, std::move(stored));
    }

    /// Whether the stored cursor, or what this process saw before, answers for the file without a look into it.
    /// A cursor of an old version has no change time and does not count once.
    [[nodiscard]] bool isKnownUnchanged(const File& file, const FileCursor::Status& status,
                                        const std::optional<FileState>& stored) const {
        if (!stored || stored->parserRevision != revision_) return false;
        const FileCursor::Status then{.size = stored->size, .mtime = stored->mtime, .ctime = stored->ctime};
        if (stored->ctime > 0 && then == status) return true;
        return VerifiedFileStateCache::shared().holds(file.key, status);
    }

    void inspect(const File& file, const FileCursor::Status& status, std::optional<FileState> stored) {
        const std::string fingerprint = FileCursor::fingerprint(file.path, status.size);
        count(stats_.fingerprintReads);
        if (stored && stored->parserRevision != revision_) stored.reset();
        const FileChange change =
            FileCursor::classify(status.size, status.mtime, fingerprint, stored, provider_.canTailAppend());
        // Before the read, by design: a file that fails to be stored is not read again and again by one process.
        VerifiedFileStateCache::shared().store(file.key, status);
        if (std::holds_alternative<Unchanged>(change)) {
            count(stats_.filesSkipped);
            if (stored) refreshCursor(file, status, *stored);
        } else if (const auto* appended = std::get_if<Appended>(&change)) {
            read(file, status, fingerprint, appended->from, std::nullopt);
        } else {
            const bool fromWatermark = provider_.resetPolicy() == ResetPolicy::Watermark && stored;
            const std::int64_t start = fromWatermark ? stored->offset : 0;
            read(file, status, fingerprint, start, deletionOf(provider_.resetPolicy(), start));
        }
    }

    /// The content is as it was, only the change time moved: the next refresh takes the fast path again.
    void refreshCursor(const File& file, const FileCursor::Status& status, const FileState& stored) {
        try {
            index_.setCursor(file.key, stored.size, stored.mtime, stored.offset, stored.fingerprint, status.ctime, id_,
                             revision_);
        } catch (const SQLiteError&) {  // NOLINT(bugprone-empty-catch): the file is looked at again next time
        }
    }

    /// Decodes before it deletes, and in three steps rather than one transaction: if the process ends in between, the
    /// old cursor makes the next refresh do it all again, which the upsert makes harmless.
    void read(const File& file, const FileCursor::Status& status, const std::string& fingerprint, std::int64_t start,
              std::optional<ResetDeletion> deletion) {
        const DecodedFile decoded = provider_.decodeFile(file.path, start);
        if (deletion) deleteEvents(file, start, *deletion);
        index_.ingest(decoded.events, file.key);
        index_.setCursor(file.key, status.size, status.mtime, decoded.consumed, fingerprint, status.ctime, id_,
                         revision_);
        count(stats_.filesRead);
        count(stats_.eventsIngested, static_cast<std::int64_t>(decoded.events.size()));
    }

    void deleteEvents(const File& file, std::int64_t start, ResetDeletion deletion) {
        switch (deletion) {
            case ResetDeletion::None: return;
            case ResetDeletion::WholeSourcePath: index_.deleteEvents(file.key, std::nullopt); return;
            case ResetDeletion::AtOrAfterWatermark:
                if (const std::optional<Date> date = provider_.watermarkTimestamp(start)) {
                    index_.deleteEvents(file.key, date);
                }
                return;
        }
    }

    UsageIndex& index_;
    const IndexableProvider& provider_;
    ProviderID id_;
    std::int64_t revision_;
    UsageIndexer::Stats stats_;
};

}  // namespace

UsageIndexer::Stats UsageIndexer::refresh(const IndexableProvider& provider) const {
    return Refresh{*index, provider}.run();
}

}  // namespace quorvane
