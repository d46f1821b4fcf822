#pragma once
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "QuorvaneCore/index/HourWeekdayMatrix.h"
#include "QuorvaneCore/index/ModelDaySummary.h"
#include "QuorvaneCore/index/ProjectCostSummary.h"
#include "QuorvaneCore/index/SQLiteDatabase.h"
#include "QuorvaneCore/index/SQLiteError.h"
#include "QuorvaneCore/index/UsageWindowSummary.h"
#include "QuorvaneCore/ingest/FileState.h"
#include "QuorvaneCore/model/ProviderID.h"
#include "QuorvaneCore/model/UsageEvent.h"
#include "QuorvaneCore/model/UsageRollup.h"
#include "QuorvaneCore/platform/Calendar.h"
#include "QuorvaneCore/platform/Date.h"
#include "QuorvaneCore/pricing/CostCalculator.h"

namespace quorvane {

/// The system's own store, one SQLite file: the events that the agents' data yielded, and a cursor for each data file.
/// It holds tokens and no money; every summary prices what it reads. docs/formats.md tells the file format.
///
/// Any thread may call any operation: each takes the connection's lock for its whole length. Several processes may have
/// the file open; one waits up to five seconds for another. Operations throw `SQLiteError` unless they say otherwise.
///
/// Windows: `days` days are the local day of `now` and the days before it, up to `now`, both ends inclusive. An event
/// later than `now` is in no window. The calendar's time zone decides what a day is.
class UsageIndex {
public:
    /// Opens the file, creates what is missing, and upgrades what costs no time in proportion to the rows.
    explicit UsageIndex(const std::string& path);
    UsageIndex(const UsageIndex&) = delete;
    UsageIndex& operator=(const UsageIndex&) = delete;
    ~UsageIndex();

    /// "usage.sqlite" in the system's folder, which is created. Throws `std::system_error`.
    [[nodiscard]] static std::string defaultURL();

    [[nodiscard]] const std::string& path() const noexcept { return path_; }

    // Maintenance

    /// Counts the committed changes to the events in this process; tells a host whether to look again. Never throws.
    [[nodiscard]] std::int64_t generation() const;

    /// Whether the file still has the column of an old version that names each event's file in full.
    [[nodiscard]] bool hasLegacySourcePathColumn() const;

    /// Builds the index that the summaries scan, and drops its predecessor. Does nothing where that is done.
    /// Returns whether it changed the file.
    bool migrateScanIndexIfNeeded();

    /// Replaces the old column by references to `paths`, then gives its space back to the disk if there is room to.
    /// Does nothing where that is done. Returns whether it changed the file. After a failure the file is as it was.
    bool migrateSourcePathIndexIfNeeded();

    /// Whether either migration has something to do.
    [[nodiscard]] bool needsMigration() const;

    /// Rewrites the file without its free pages, if these are at least so many percent of it and the disk has room for
    /// more than twice the file. Returns whether it did.
    bool compactIfNeeded(std::int64_t minFreelistPercent);

    /// The stored events of one provider, or of all. 0 on any failure; never throws.
    [[nodiscard]] std::int64_t eventCount(std::optional<ProviderID> provider) const;

    // Events and cursors

    /// Stores events in one transaction. Of two events of one provider, message and request the better one stays: the
    /// larger output, then the larger total, then the one that was there. `sourcePath` is the file they came from.
    void ingest(std::span<const UsageEvent> events, const std::optional<std::string>& sourcePath);

    /// Removes the events of a file; with a date only those at or after it.
    void deleteEvents(const std::string& sourcePath, std::optional<Date> timestampAtOrAfter);

    /// The files that a provider's stored events came from.
    [[nodiscard]] std::set<std::string> sourcePaths(ProviderID provider) const;

    /// The cursor of a file; absent if there is none or it cannot be read. Never throws.
    [[nodiscard]] std::optional<FileState> cursor(const std::string& path) const;

    /// Writes a file's cursor. An absent provider leaves the stored one.
    void setCursor(const std::string& path, std::int64_t size, double mtime, std::int64_t offset,
                   const std::string& fingerprint, double ctime, std::optional<ProviderID> provider,
                   std::int64_t parserRevision);

    /// Names the provider of a cursor that has none.
    void setCursorProvider(const std::string& path, ProviderID provider);

    /// The files that a provider has cursors of.
    [[nodiscard]] std::set<std::string> cursorPaths(ProviderID provider) const;

    /// Forgets a file's cursor. Its events stay.
    void deleteCursor(const std::string& path);

    // Summaries

    /// Today and the last `days` days (at least 1) of one provider, or of all.
    [[nodiscard]] UsageRollup rollup(std::optional<ProviderID> provider, std::int64_t days,
                                     const CostCalculator& calculator, Date now, const Calendar& calendar) const;

    /// US dollars per day, the oldest first; empty for less than one day.
    [[nodiscard]] std::vector<double> dailyCostSeries(std::optional<ProviderID> provider, std::int64_t days,
                                                      const CostCalculator& calculator, Date now,
                                                      const Calendar& calendar) const;

    /// One window for a set of providers. Less than one day is today alone, without a series.
    [[nodiscard]] UsageWindowSummaries windowSummaries(std::span<const ProviderID> providers, std::int64_t days,
                                                       const CostCalculator& calculator, Date now,
                                                       const Calendar& calendar) const;

    /// Several windows in one pass over the events. SQLite groups the events where it can tell the calendar's days
    /// itself; otherwise they are added up one by one, to the same result but for the rounding of the costs.
    [[nodiscard]] UsageMultiWindowSummaries multiWindowSummaries(std::span<const ProviderID> providers,
                                                                 std::span<const std::int64_t> windows,
                                                                 const CostCalculator& calculator, Date now,
                                                                 const Calendar& calendar) const;

    /// The two roads of `multiWindowSummaries`, for those who compare them. `dayExpression` is a
    /// `sqlLocalDayExpression` of `calendar`.
    [[nodiscard]] UsageMultiWindowSummaries multiWindowSummariesGrouped(std::span<const ProviderID> providers,
                                                                        std::span<const std::int64_t> windows,
                                                                        const CostCalculator& calculator, Date now,
                                                                        const Calendar& calendar,
                                                                        const std::string& dayExpression) const;
    [[nodiscard]] UsageMultiWindowSummaries multiWindowSummariesPerEvent(std::span<const ProviderID> providers,
                                                                         std::span<const std::int64_t> windows,
                                                                         const CostCalculator& calculator, Date now,
                                                                         const Calendar& calendar) const;

    // Analytics. An unpriced call counts in all but the cost. Less than one day is one.

    /// What each model used on each local day of the window: the oldest day first, then by the provider's raw name and
    /// by the model.
    [[nodiscard]] std::vector<ModelDaySummary> modelDaySummaries(std::span<const ProviderID> providers,
                                                                 std::int64_t days, const CostCalculator& calculator,
                                                                 Date now, const Calendar& calendar) const;

    /// What each project used in the window: the most expensive first, then the one with more tokens, then by name.
    [[nodiscard]] std::vector<ProjectCostSummary> projectCostSummaries(std::span<const ProviderID> providers,
                                                                       std::int64_t days,
                                                                       const CostCalculator& calculator, Date now,
                                                                       const Calendar& calendar) const;

    /// When the calls of the window were made, for each of the providers.
    [[nodiscard]] std::map<ProviderID, HourWeekdayMatrix> hourWeekdayBins(std::span<const ProviderID> providers,
                                                                          std::int64_t days,
                                                                          const CostCalculator& calculator, Date now,
                                                                          const Calendar& calendar) const;

    /// The SQL that gives the local day of `ts` as "yyyy-MM-dd". SQLite knows the system's own time zone and UTC;
    /// absent for a calendar in any other, and for one that is not Gregorian.
    [[nodiscard]] static std::optional<std::string> sqlLocalDayExpression(const Calendar& calendar);

    /// The statement that groups the events of a range by provider, model, local day and long-context tier.
    [[nodiscard]] static std::string groupedScanSQL(std::string_view dayExpression, std::string_view placeholders);

private:
    void createSchema();
    [[nodiscard]] bool eventsCarriesSourcePathColumn() const;
    [[nodiscard]] bool isEventsTableEmpty() const;
    [[nodiscard]] bool isScanIndexMissing() const;
    bool internSourcePathsIfNeeded();
    [[nodiscard]] static bool hasRoomToVacuum(std::int64_t fileBytes, const std::string& path);

    std::optional<std::int64_t> internedPathID(const std::string& path);
    void raiseGeneration();
    [[nodiscard]] std::set<std::string> collectPaths(const std::string& sql, ProviderID provider) const;
    [[nodiscard]] std::shared_ptr<SQLiteStatement> kept(std::shared_ptr<SQLiteStatement>& place,
                                                        const std::string& sql) const;

    std::string path_;

    /// What a refresh runs for every file, prepared at the first use; to prepare these takes longer than to run them.
    /// Reset between two uses. What only an old version's file needs is not among them.
    struct KeptStatements {
        std::shared_ptr<SQLiteStatement> eventUpsert;
        std::shared_ptr<SQLiteStatement> eventDeletion;
        std::shared_ptr<SQLiteStatement> pathInsertion;
        std::shared_ptr<SQLiteStatement> pathLookup;
        std::shared_ptr<SQLiteStatement> cursorUpsert;
        std::shared_ptr<SQLiteStatement> cursorLookup;
    };

    /// Covers every use of the connection and of the kept statements, from the first bind to the last reset. Recursive,
    /// since operations call one another. Taken before `generationLock_`.
    mutable std::recursive_mutex connectionLock_;
    std::shared_ptr<SQLiteDatabase> database_;
    bool legacySourcePathColumn_ = false;
    mutable KeptStatements kept_;

    /// Guards `generationValue_`; a leaf.
    mutable std::mutex generationLock_;
    std::int64_t generationValue_ = 0;
};

}  // namespace quorvane
