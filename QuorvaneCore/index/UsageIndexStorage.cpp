// The write side of the index, and its cursors.

#include <unordered_map>

#include "QuorvaneCore/index/SQLiteStatement.h"
#include "QuorvaneCore/index/UsageIndex.h"

namespace quorvane {
namespace {

/// The statement that stores one event unless a better one is there. A full tie leaves the stored row with all its
/// columns; a row without a file keeps the file of the row that it replaces.
std::string insertSQL(bool legacyColumn) {
    std::string sql =
        "INSERT INTO events (provider, msg_id, req_id, model, ts, project, input, output, cache5m, cache1h, "
        "cache_read, path_id";
    sql += legacyColumn ? ", source_path)\n" : ")\n";
    sql += "VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10, ?11, ?12";
    sql += legacyColumn ? ", ?13)\n" : ")\n";
    sql +=
        "ON CONFLICT(provider, msg_id, req_id) DO UPDATE SET\n"
        "  model=excluded.model, ts=excluded.ts, project=excluded.project,\n"
        "  input=excluded.input, output=excluded.output,\n"
        "  cache5m=excluded.cache5m, cache1h=excluded.cache1h, cache_read=excluded.cache_read,\n"
        "  path_id=coalesce(excluded.path_id, events.path_id)";
    if (legacyColumn) sql += ",\n  source_path=coalesce(excluded.source_path, events.source_path)";
    sql +=
        "\nWHERE excluded.output > events.output\n"
        "   OR (excluded.output = events.output\n"
        "       AND (excluded.input + excluded.output + excluded.cache5m + excluded.cache1h + excluded.cache_read)\n"
        "         > (events.input + events.output + events.cache5m + events.cache1h + events.cache_read));";
    return sql;
}

std::string deleteEventsSQL(bool legacyColumn, bool ranged) {
    std::string sql = "DELETE FROM events WHERE ";
    sql += legacyColumn ? "substr(source_path, -24) = substr(?1, -24) AND source_path = ?1"
                        : "path_id = (SELECT id FROM paths WHERE path = ?1)";
    if (ranged) sql += " AND ts >= ?2";
    return sql + ";";
}

/// What SQLite takes as an event's key: texts are bound up to their first NUL byte.
struct EventKey {
    explicit EventKey(const UsageEvent& event) noexcept
        : provider{event.provider}, messageId{event.messageId.c_str()}, requestId{event.requestId.c_str()} {}

    ProviderID provider;
    std::string_view messageId;
    std::string_view requestId;
    friend bool operator==(const EventKey&, const EventKey&) = default;
};

struct EventKeyHash {
    std::size_t operator()(const EventKey& key) const noexcept {
        const std::hash<std::string_view> hash;
        return (hash(key.messageId) * 31 + hash(key.requestId)) * 31 + static_cast<std::size_t>(key.provider);
    }
};

/// The rule of the statement above. The totals are exact in the wider type, so that a strange log cannot end the
/// process here where SQLite would have gone on.
bool isBetter(const TokenUsage& offered, const TokenUsage& kept) noexcept {
    __extension__ using Wide = __int128;
    const auto total = [](const TokenUsage& usage) noexcept {
        return Wide{usage.input} + usage.output + usage.cacheCreate5m + usage.cacheCreate1h + usage.cacheRead;
    };
    if (offered.output != kept.output) return offered.output > kept.output;
    return total(offered) > total(kept);
}

/// The events that can still win against what is stored: of each key the best, in order of first appearance. Logs have
/// a call on several lines, and each row that reaches SQLite touches four trees.
std::vector<const UsageEvent*> bestOfEachKey(std::span<const UsageEvent> events) {
    std::vector<const UsageEvent*> best;
    best.reserve(events.size());
    std::unordered_map<EventKey, std::size_t, EventKeyHash> places;
    places.reserve(events.size());
    for (const UsageEvent& event : events) {
        const auto [place, isNew] = places.try_emplace(EventKey{event}, best.size());
        if (isNew) {
            best.push_back(&event);
        } else if (isBetter(event.usage, best[place->second]->usage)) {
            best[place->second] = &event;
        }
    }
    return best;
}

void bindEvent(SQLiteStatement& insert, const UsageEvent& event) {
    insert.bind(1, std::string{rawName(event.provider)});
    insert.bind(2, event.messageId);
    insert.bind(3, event.requestId);
    insert.bind(4, event.model);
    insert.bind(5, event.timestamp.secondsSince1970);
    insert.bind(6, event.project);
    insert.bind(7, event.usage.input);
    insert.bind(8, event.usage.output);
    insert.bind(9, event.usage.cacheCreate5m);
    insert.bind(10, event.usage.cacheCreate1h);
    insert.bind(11, event.usage.cacheRead);
}

/// A statement for one use; ready for the next one at the end, whatever happens.
class Use {
public:
    explicit Use(std::shared_ptr<SQLiteStatement> statement) noexcept : statement_{std::move(statement)} {}
    Use(const Use&) = delete;
    Use& operator=(const Use&) = delete;
    ~Use() { statement_->reset(); }

    SQLiteStatement& operator*() const noexcept { return *statement_; }
    SQLiteStatement* operator->() const noexcept { return statement_.get(); }

private:
    std::shared_ptr<SQLiteStatement> statement_;
};

FileState readFileState(SQLiteStatement& row) {
    return FileState{.size = row.integer(0),
                     .mtime = row.real(1),
                     .offset = row.integer(2),
                     .fingerprint = std::string{row.textView(3)},
                     .ctime = row.real(4),
                     .provider = std::string{row.textView(5)},
                     .parserRevision = row.integer(6)};
}

}  // namespace

void UsageIndex::ingest(std::span<const UsageEvent> events, const std::optional<std::string>& sourcePath) {
    if (events.empty()) return;
    const std::vector<const UsageEvent*> best = bestOfEachKey(events);
    const std::lock_guard guard{connectionLock_};
    const bool legacyColumn = legacySourcePathColumn_;
    static const std::string currentSQL = insertSQL(false);
    const Use insert{legacyColumn ? database_->prepare(insertSQL(true)) : kept(kept_.eventUpsert, currentSQL)};
    database_->transaction([&] {
        const std::optional<std::int64_t> pathID = sourcePath ? internedPathID(*sourcePath) : std::nullopt;
        for (const UsageEvent* event : best) {
            bindEvent(*insert, *event);
            if (pathID) insert->bind(12, *pathID);
            if (legacyColumn) insert->bind(13, sourcePath);
            insert->run();
            insert->reset();
        }
    });
    raiseGeneration();
}

std::optional<std::int64_t> UsageIndex::internedPathID(const std::string& path) {
    const Use insert{kept(kept_.pathInsertion, "INSERT OR IGNORE INTO paths (path) VALUES (?1);")};
    insert->bind(1, path);
    insert->run();
    const Use select{kept(kept_.pathLookup, "SELECT id FROM paths WHERE path = ?1;")};
    select->bind(1, path);
    return select->step() ? std::optional{select->integer(0)} : std::nullopt;
}

std::shared_ptr<SQLiteStatement> UsageIndex::kept(std::shared_ptr<SQLiteStatement>& place,
                                                  const std::string& sql) const {
    if (!place) place = database_->prepare(sql);
    return place;
}

void UsageIndex::deleteEvents(const std::string& sourcePath, std::optional<Date> timestampAtOrAfter) {
    const std::lock_guard guard{connectionLock_};
    static const std::string currentSQL = deleteEventsSQL(false, false);
    const bool isCommon = !legacySourcePathColumn_ && !timestampAtOrAfter;
    const Use statement{
        isCommon ? kept(kept_.eventDeletion, currentSQL)
                 : database_->prepare(deleteEventsSQL(legacySourcePathColumn_, timestampAtOrAfter.has_value()))};
    statement->bind(1, sourcePath);
    if (timestampAtOrAfter) statement->bind(2, timestampAtOrAfter->secondsSince1970);
    statement->run();
    raiseGeneration();
}

std::set<std::string> UsageIndex::sourcePaths(ProviderID provider) const {
    const std::lock_guard guard{connectionLock_};
    return collectPaths(
        legacySourcePathColumn_
            ? "SELECT DISTINCT source_path\nFROM events\nWHERE provider = ?1 AND source_path IS NOT NULL;"
            : "SELECT DISTINCT paths.path\nFROM events JOIN paths ON paths.id = events.path_id\n"
              "WHERE events.provider = ?1;",
        provider);
}

std::set<std::string> UsageIndex::collectPaths(const std::string& sql, ProviderID provider) const {
    const std::lock_guard guard{connectionLock_};
    const auto statement = database_->prepare(sql);
    statement->bind(1, std::string{rawName(provider)});
    std::set<std::string> paths;
    while (statement->step()) {
        // Rows mostly come in the order of the key, so the end is the right hint.
        if (std::optional<std::string> path = statement->text(0)) paths.insert(paths.end(), *std::move(path));
    }
    return paths;
}

std::optional<FileState> UsageIndex::cursor(const std::string& path) const {
    static const std::string sql =
        "SELECT size, mtime, offset, fingerprint, ctime, provider, parser_revision FROM cursors WHERE path = ?1;";
    const std::lock_guard guard{connectionLock_};
    try {
        const Use lookup{kept(kept_.cursorLookup, sql)};
        lookup->bind(1, path);
        return lookup->step() ? std::optional{readFileState(*lookup)} : std::nullopt;
    } catch (const SQLiteError&) {
        // A cursor that cannot be read counts as missing, so that the file is read again.
        return std::nullopt;
    }
}

void UsageIndex::setCursor(const std::string& path, std::int64_t size, double mtime, std::int64_t offset,
                           const std::string& fingerprint, double ctime, std::optional<ProviderID> provider,
                           std::int64_t parserRevision) {
    static const std::string sql =
        "INSERT INTO cursors (path, size, mtime, offset, fingerprint, ctime, provider, parser_revision) VALUES (?1, "
        "?2, ?3, ?4, ?5, ?6, ?7, ?8)\n"
        "ON CONFLICT(path) DO UPDATE SET\n"
        "  size=excluded.size, mtime=excluded.mtime, offset=excluded.offset,\n"
        "  fingerprint=excluded.fingerprint, ctime=excluded.ctime,\n"
        "  provider=CASE WHEN excluded.provider != '' THEN excluded.provider ELSE cursors.provider END,\n"
        "  parser_revision=excluded.parser_revision;";
    const std::lock_guard guard{connectionLock_};
    const Use statement{kept(kept_.cursorUpsert, sql)};
    statement->bind(1, path);
    statement->bind(2, size);
    statement->bind(3, mtime);
    statement->bind(4, offset);
    statement->bind(5, fingerprint);
    statement->bind(6, ctime);
    statement->bind(7, provider ? std::string{rawName(*provider)} : std::string{});
    statement->bind(8, parserRevision);
    statement->run();
}

void UsageIndex::setCursorProvider(const std::string& path, ProviderID provider) {
    const std::lock_guard guard{connectionLock_};
    const auto statement = database_->prepare("UPDATE cursors SET provider = ?1 WHERE path = ?2 AND provider = '';");
    statement->bind(1, std::string{rawName(provider)});
    statement->bind(2, path);
    statement->run();
}

std::set<std::string> UsageIndex::cursorPaths(ProviderID provider) const {
    return collectPaths("SELECT path FROM cursors WHERE provider = ?1;", provider);
}

void UsageIndex::deleteCursor(const std::string& path) {
    const std::lock_guard guard{connectionLock_};
    const auto statement = database_->prepare("DELETE FROM cursors WHERE path = ?1;");
    statement->bind(1, path);
    statement->run();
}

}  // namespace quorvane
