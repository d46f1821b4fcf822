#include <memory>
#include <string>
#include <vector>

#include "QuorvaneCore/model/ProviderCatalog.h"
#include "QuorvaneCore/platform/JSONTree.h"
#include "QuorvaneCore/platform/JSONWriter.h"
#include "QuorvaneHost/Output.h"
#include "QuorvaneHost/RefreshRun.h"
#include "QuorvaneHost/Session.h"
#include "QuorvaneHost/commands/Command.h"
#include "QuorvaneHost/text/Amounts.h"
#include "QuorvaneHost/text/Table.h"
#include "QuorvaneHost/text/Terminal.h"

namespace quorvane::host {
namespace {

struct Options {
    std::vector<std::string> providers;
    bool json = false;
};

std::string asJSON(const std::vector<RefreshedReader>& readers) {
    JSONTree::Object providers;
    for (const RefreshedReader& reader : readers) {
        providers.emplace(rawName(reader.id), JSONTree::Object{{"available", reader.isAvailable},
                                                               {"files_read", reader.stats.filesRead},
                                                               {"files_skipped", reader.stats.filesSkipped},
                                                               {"events_ingested", reader.stats.eventsIngested},
                                                               {"fingerprint_reads", reader.stats.fingerprintReads}});
    }
    return JSONWriter::pretty(JSONTree::Object{{"providers", std::move(providers)}});
}

std::string asTable(const std::vector<RefreshedReader>& readers) {
    Table table{{"Provider", "On this machine", "Files read", "Unchanged", "Records"}};
    for (const RefreshedReader& reader : readers) {
        table.add({ProviderCatalog::descriptor(reader.id)->name, reader.isAvailable ? "yes" : "no",
                   grouped(reader.stats.filesRead), grouped(reader.stats.filesSkipped),
                   grouped(reader.stats.eventsIngested)});
    }
    const Terminal terminal{Terminal::Stream::Output};
    return table.text(Ink{terminal.hasColour()}, terminal.width(), 0);
}

int runRefresh(const Options& options) {
    const std::vector<RefreshedReader> readers = refreshAll(openIndex(), readersNamed(options.providers));
    print(options.json ? asJSON(readers) : asTable(readers));
    return 0;
}

}  // namespace

void addRefreshCommand(CLI::App& parser, ChosenCommand& chosen) {
    CLI::App* command = parser.add_subcommand("refresh", "Bring the index up to date with the agents' files");
    const auto options = std::make_shared<Options>();
    addProviderOption(*command, options->providers);
    addJSONOption(*command, options->json);
    command->callback([options, &chosen] { chosen = [options] { return runRefresh(*options); }; });
}

}  // namespace quorvane::host
