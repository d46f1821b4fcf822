#include <memory>
#include <string>
#include <vector>

#include "QuorvaneCore/platform/Clock.h"
#include "QuorvaneCore/snapshots/LocalAutomationSnapshotEncoder.h"
#include "QuorvaneHost/LimitsReport.h"
#include "QuorvaneHost/Output.h"
#include "QuorvaneHost/RefreshRun.h"
#include "QuorvaneHost/Session.h"
#include "QuorvaneHost/SnapshotFiles.h"
#include "QuorvaneHost/commands/Command.h"

namespace quorvane::host {
namespace {

struct Options {
    std::int64_t days = 30;
    std::string format = "json";
    bool force = false;
};

int runSnapshot(const Options& options) {
    const std::vector<Reader> readers = allReaders();
    const std::shared_ptr<UsageIndex> index = openIndex();
    static_cast<void>(refreshAll(index, readers));
    const Date now = Clock::now();
    const SnapshotFiles files = SnapshotFiles::build(*index, readers, LimitsReport::collect(readers, now), options.days,
                                                     currentPrices(), now, Calendar::current());
    files.write(options.force);
    if (options.format == "markdown") {
        print(LocalAutomationSnapshotEncoder::decode(writtenAutomationText()).markdownReport());
    } else {
        printExactly(writtenAutomationText());
    }
    return 0;
}

}  // namespace

void addSnapshotCommand(CLI::App& parser, ChosenCommand& chosen) {
    CLI::App* command = parser.add_subcommand("snapshot", "Write the files that scripts and the widget read");
    const auto options = std::make_shared<Options>();
    addDaysOption(*command, options->days);
    command->add_option("--format", options->format, "What to print: the record as written, or a report")
        ->check(CLI::IsMember({"json", "markdown"}))
        ->capture_default_str();
    command->add_flag("--force", options->force, "Write the files even if nothing in them changes");
    command->callback([options, &chosen] { chosen = [options] { return runSnapshot(*options); }; });
}

}  // namespace quorvane::host
