#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "QuorvaneCore/model/ProviderCatalog.h"
#include "QuorvaneCore/platform/Clock.h"
#include "QuorvaneCore/platform/UserFolders.h"
#include "QuorvaneHost/Output.h"
#include "QuorvaneHost/Readers.h"
#include "QuorvaneHost/RefreshRun.h"
#include "QuorvaneHost/Session.h"
#include "QuorvaneHost/SummaryReport.h"
#include "QuorvaneHost/SummaryText.h"
#include "QuorvaneHost/commands/Command.h"
#include "QuorvaneHost/text/Terminal.h"

namespace quorvane::host {
namespace {

struct Options {
    std::int64_t days = 30;
    std::vector<std::string> providers;
    bool json = false;
};

/// The path as its owner would type it.
std::string shortPath(const std::string& path) {
    const std::string home = UserFolders::home();
    return path.starts_with(home + "/") ? "~" + path.substr(home.size()) : path;
}

std::string nothingFound(const std::vector<Reader>& readers) {
    std::string text = "No coding agent has left data on this machine yet. Quorvane looked for:\n\n";
    for (const Reader& reader : readers) {
        const std::string& name = ProviderCatalog::descriptor(reader->id())->name;
        for (const std::string& path : reader->watchPaths())
            text += "  " + name + ": " + shortPath(path) + "\n";
    }
    return text + "\nTo see it at work on invented data, run this in its source folder: ./run --sample\n";
}

int runSummary(const Options& options) {
    const std::vector<Reader> readers = readersNamed(options.providers);
    const std::shared_ptr<UsageIndex> index = openIndex();
    const std::vector<RefreshedReader> refreshed = refreshAll(index, readers);
    const SummaryReport report =
        SummaryReport::collect(*index, readers, options.days, currentPrices(), Clock::now(), Calendar::current());
    if (options.json) {
        print(summaryJSON(report));
        return 0;
    }
    const bool isAnyThere = std::any_of(refreshed.begin(), refreshed.end(),
                                        [](const RefreshedReader& reader) { return reader.isAvailable; });
    if (!isAnyThere && index->eventCount(std::nullopt) == 0) {
        print(nothingFound(readers));
        return 0;
    }
    const Terminal terminal{Terminal::Stream::Output};
    print(summaryText(report, Ink{terminal.hasColour()}, terminal.width()));
    return 0;
}

}  // namespace

void addSummaryCommand(CLI::App& parser, ChosenCommand& chosen) {
    CLI::App* command = parser.add_subcommand("summary", "What today and the last days cost (the default)");
    const auto options = std::make_shared<Options>();
    addDaysOption(*command, options->days);
    addProviderOption(*command, options->providers);
    addJSONOption(*command, options->json);
    command->callback([options, &chosen] { chosen = [options] { return runSummary(*options); }; });
}

}  // namespace quorvane::host
