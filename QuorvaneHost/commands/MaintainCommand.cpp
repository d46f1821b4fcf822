#include <string>

#include "QuorvaneHost/Failure.h"
#include "QuorvaneHost/Output.h"
#include "QuorvaneHost/Session.h"
#include "QuorvaneHost/commands/Command.h"

namespace quorvane::host {
namespace {

/// Rewriting the file costs time in proportion to its size; below a tenth of free pages it is not worth it.
constexpr std::int64_t worthwhileFreePercent = 10;

int runMaintain() {
    const std::shared_ptr<UsageIndex> index = openIndex();
    try {
        std::string done;
        if (index->migrateScanIndexIfNeeded()) done += "Built the index that summaries scan.\n";
        if (index->migrateSourcePathIndexIfNeeded()) done += "Replaced the events' file names by references.\n";
        if (index->compactIfNeeded(worthwhileFreePercent)) done += "Gave free space back to the disk.\n";
        print(done.empty() ? "Nothing to do." : done);
    } catch (const SQLiteError& error) {
        throw Failure{index->path() + ": " + error.what()};
    }
    return 0;
}

}  // namespace

void addMaintainCommand(CLI::App& parser, ChosenCommand& chosen) {
    CLI::App* command = parser.add_subcommand("maintain", "Upgrade the index's format and give free space back");
    command->callback([&chosen] { chosen = [] { return runMaintain(); }; });
}

}  // namespace quorvane::host
