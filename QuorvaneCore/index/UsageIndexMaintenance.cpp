// The file format of the index and its upgrades. Existing files are upgraded in place, so every statement here is part
// of the format and stays as it is.

#include "QuorvaneCore/index/SQLiteStatement.h"
#include "QuorvaneCore/index/UsageIndex.h"
#include "QuorvaneCore/platform/CheckedArithmetic.h"
#include "QuorvaneCore/platform/FilePath.h"
#include "QuorvaneCore/platform/UserFolders.h"
#include "QuorvaneCore/platform/VolumeCapacity.h"

namespace quorvane {
namespace {

constexpr const char* baseScript =
    "CREATE TABLE IF NOT EXISTS events (\n"
    "  provider TEXT NOT NULL, msg_id TEXT NOT NULL, req_id TEXT NOT NULL,\n"
    "  model TEXT NOT NULL, ts REAL NOT NULL, project TEXT,\n"
    "  input INTEGER NOT NULL, output INTEGER NOT NULL,\n"
    "  cache5m INTEGER NOT NULL, cache1h INTEGER NOT NULL, cache_read INTEGER NOT NULL,\n"
    "  path_id INTEGER,\n"
    "  PRIMARY KEY (provider, msg_id, req_id)\n"
    ") WITHOUT ROWID;\n"
    "CREATE INDEX IF NOT EXISTS idx_events_ts ON events(ts);\n"
    "CREATE TABLE IF NOT EXISTS paths (id INTEGER PRIMARY KEY, path TEXT NOT NULL UNIQUE);\n"
    "CREATE TABLE IF NOT EXISTS cursors (\n"
    "  path TEXT PRIMARY KEY, size INTEGER NOT NULL, mtime REAL NOT NULL, offset INTEGER NOT NULL,\n"
    "  fingerprint TEXT NOT NULL DEFAULT '', ctime REAL NOT NULL DEFAULT 0,\n"
    "  provider TEXT NOT NULL DEFAULT '', parser_revision INTEGER NOT NULL DEFAULT 1\n"
    ") WITHOUT ROWID;";

constexpr const char* addedColumns[] = {
    "ALTER TABLE events ADD COLUMN path_id INTEGER;",
    "ALTER TABLE cursors ADD COLUMN fingerprint TEXT NOT NULL DEFAULT '';",
    "ALTER TABLE cursors ADD COLUMN ctime REAL NOT NULL DEFAULT 0;",
    "ALTER TABLE cursors ADD COLUMN provider TEXT NOT NULL DEFAULT '';",
    "ALTER TABLE cursors ADD COLUMN parser_revision INTEGER NOT NULL DEFAULT 1;",
};

constexpr const char* cursorsProviderIndex = "CREATE INDEX IF NOT EXISTS idx_cursors_provider ON cursors(provider);";

// All columns of the grouped scan, which is thus answered from this index alone.
const std::string scanIndex =
    "CREATE INDEX IF NOT EXISTS idx_events_scan\n"
    "  ON events(provider, ts, model, input, output, cache5m, cache1h, cache_read);";

const std::string pathIndex = "CREATE INDEX IF NOT EXISTS idx_events_path_id ON events(path_id);";

/// Runs a script that begins a transaction of its own; after a failure everything is as it was.
void executeOrRollBack(SQLiteDatabase& database, const std::string& script) {
    try {
        database.execute(script);
    } catch (const SQLiteError&) {
        try {
            database.execute("ROLLBACK;");
        } catch (const SQLiteError&) {  // NOLINT(bugprone-empty-catch): the first failure is the one to tell
        }
        throw;
    }
}

}  // namespace

UsageIndex::UsageIndex(const std::string& path) : path_{path}, database_{SQLiteDatabase::open(path)} {
    createSchema();
}

UsageIndex::~UsageIndex() = default;

std::string UsageIndex::defaultURL() {
    return FilePath::joining(UserFolders::createQuorvaneSupport(), "usage.sqlite");
}

void UsageIndex::createSchema() {
    database_->execute(baseScript);
    for (const char* column : addedColumns) {
        try {
            database_->execute(column);
        } catch (const SQLiteError&) {  // NOLINT(bugprone-empty-catch): the column is there, in all but old files
        }
    }
    database_->execute(cursorsProviderIndex);
    database_->execute("DROP INDEX IF EXISTS idx_events_project_ts;");
    database_->execute("DROP TABLE IF EXISTS daily;");
    legacySourcePathColumn_ = eventsCarriesSourcePathColumn();
    if (!isEventsTableEmpty()) return;
    // With no rows the final shape costs nothing; with rows the host chooses the moment of the migrations.
    database_->execute(scanIndex);
    database_->execute(pathIndex);
    if (legacySourcePathColumn_) {
        const std::lock_guard guard{connectionLock_};
        internSourcePathsIfNeeded();
    }
}

bool UsageIndex::eventsCarriesSourcePathColumn() const {
    return database_->prepare("SELECT 1 FROM pragma_table_info('events') WHERE name = 'source_path';")->step();
}

bool UsageIndex::isEventsTableEmpty() const {
    return !database_->prepare("SELECT 1 FROM events LIMIT 1;")->step();
}

bool UsageIndex::isScanIndexMissing() const {
    const auto statement = database_->prepare(
        "SELECT name FROM sqlite_master WHERE type='index' AND name IN ('idx_events_scan', 'idx_events_provider_ts');");
    bool hasScanIndex = false;
    bool hasPredecessor = false;
    while (statement->step()) {
        const std::string_view name = statement->textView(0);
        hasScanIndex = hasScanIndex || name == "idx_events_scan";
        hasPredecessor = hasPredecessor || name == "idx_events_provider_ts";
    }
    return !hasScanIndex || hasPredecessor;
}

bool UsageIndex::migrateScanIndexIfNeeded() {
    const std::lock_guard guard{connectionLock_};
    if (!isScanIndexMissing()) return false;
    executeOrRollBack(*database_,
                      "BEGIN IMMEDIATE;\nDROP INDEX IF EXISTS idx_events_provider_ts;\n" + scanIndex + "\nCOMMIT;");
    return true;
}

bool UsageIndex::internSourcePathsIfNeeded() {
    if (!eventsCarriesSourcePathColumn()) {
        legacySourcePathColumn_ = false;
        return false;
    }
    executeOrRollBack(*database_,
                      "BEGIN IMMEDIATE;\n"
                      "INSERT OR IGNORE INTO paths (path)\n"
                      "  SELECT DISTINCT source_path FROM events WHERE source_path IS NOT NULL;\n"
                      "UPDATE events SET path_id = (SELECT id FROM paths WHERE paths.path = events.source_path)\n"
                      "  WHERE path_id IS NULL AND source_path IS NOT NULL;\n"
                      "DROP INDEX IF EXISTS idx_events_source_path;\n"
                      "DROP INDEX IF EXISTS idx_events_source_tail;\n"
                      "ALTER TABLE events DROP COLUMN source_path;\n" +
                          pathIndex + "\nCOMMIT;");
    legacySourcePathColumn_ = false;
    return true;
}

bool UsageIndex::migrateSourcePathIndexIfNeeded() {
    {
        const std::lock_guard guard{connectionLock_};
        if (!internSourcePathsIfNeeded()) return false;
    }
    try {
        compactIfNeeded(0);
    } catch (const SQLiteError&) {  // NOLINT(bugprone-empty-catch): the migration itself has succeeded
    }
    return true;
}

bool UsageIndex::needsMigration() const {
    const std::lock_guard guard{connectionLock_};
    return isScanIndexMissing() || eventsCarriesSourcePathColumn();
}

bool UsageIndex::hasLegacySourcePathColumn() const {
    const std::lock_guard guard{connectionLock_};
    return legacySourcePathColumn_;
}

bool UsageIndex::compactIfNeeded(std::int64_t minFreelistPercent) {
    const std::lock_guard guard{connectionLock_};
    std::int64_t pageCount = 0;
    std::int64_t freePages = 0;
    std::int64_t pageSize = 0;
    {
        const auto statement = database_->prepare(
            "SELECT (SELECT freelist_count FROM pragma_freelist_count), (SELECT page_count FROM pragma_page_count), "
            "(SELECT page_size FROM pragma_page_size);");
        if (!statement->step()) return false;
        freePages = statement->integer(0);
        pageCount = statement->integer(1);
        pageSize = statement->integer(2);
    }
    if (pageCount < 1 || checkedMultiply(freePages, 100) / pageCount < minFreelistPercent) return false;
    if (!hasRoomToVacuum(checkedMultiply(pageCount, pageSize), path_)) return false;
    database_->execute("VACUUM;");
    return true;
}

bool UsageIndex::hasRoomToVacuum(std::int64_t fileBytes, const std::string& path) {
    const std::optional<std::int64_t> capacity = availableVolumeCapacity(path);
    return capacity && *capacity > checkedMultiply(fileBytes, 2);
}

std::int64_t UsageIndex::eventCount(std::optional<ProviderID> provider) const {
    const std::lock_guard guard{connectionLock_};
    try {
        const auto statement = database_->prepare(provider ? "SELECT count(*) FROM events WHERE provider = ?1;"
                                                           : "SELECT count(*) FROM events;");
        if (provider) statement->bind(1, std::string{rawName(*provider)});
        return statement->step() ? statement->integer(0) : 0;
    } catch (const SQLiteError&) {
        return 0;
    }
}

std::int64_t UsageIndex::generation() const {
    const std::lock_guard guard{generationLock_};
    return generationValue_;
}

void UsageIndex::raiseGeneration() {
    const std::lock_guard guard{generationLock_};
    generationValue_ = checkedAdd(generationValue_, 1);
}

}  // namespace quorvane
