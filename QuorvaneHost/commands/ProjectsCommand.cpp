#include <memory>

#include "QuorvaneHost/Output.h"
#include "QuorvaneHost/ProjectsReport.h"
#include "QuorvaneHost/commands/Command.h"
#include "QuorvaneHost/text/Terminal.h"

namespace quorvane::host {
namespace {

struct Options {
    std::int64_t days = 30;
    bool json = false;
};

int runProjects(const Options& options) {
    const ProjectsReport report = ProjectsReport::collect(AnalyticsData::refreshed(options.days));
    const Terminal terminal{Terminal::Stream::Output};
    print(options.json ? report.json() : report.text(Ink{terminal.hasColour()}, terminal.width()));
    return 0;
}

}  // namespace

void addProjectsCommand(CLI::App& parser, ChosenCommand& chosen) {
    CLI::App* command = parser.add_subcommand("projects", "What each project cost");
    const auto options = std::make_shared<Options>();
    addDaysOption(*command, options->days);
    addJSONOption(*command, options->json);
    command->callback([options, &chosen] { chosen = [options] { return runProjects(*options); }; });
}

}  // namespace quorvane::host
