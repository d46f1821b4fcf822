#include <memory>
#include <string>

#include "QuorvaneHost/ActivityReport.h"
#include "QuorvaneHost/Output.h"
#include "QuorvaneHost/commands/Command.h"
#include "QuorvaneHost/text/Terminal.h"

namespace quorvane::host {
namespace {

struct Options {
    std::int64_t days = 30;
    std::string measure = "cost";
    bool json = false;
};

int runActivity(const Options& options) {
    const AnalyticsMeasure measure = analyticsMeasureFromRawName(options.measure).value_or(AnalyticsMeasure::cost);
    const ActivityReport report = ActivityReport::collect(AnalyticsData::refreshed(options.days), measure);
    const Terminal terminal{Terminal::Stream::Output};
    print(options.json ? report.json()
                       : report.text(Ink{terminal.hasColour()}, HeatCells::forOutput(), terminal.width()));
    return 0;
}

}  // namespace

void addActivityCommand(CLI::App& parser, ChosenCommand& chosen) {
    CLI::App* command = parser.add_subcommand("activity", "When the work was done: by day, and by weekday and hour");
    const auto options = std::make_shared<Options>();
    addDaysOption(*command, options->days);
    command->add_option("--measure", options->measure, "What is counted")
        ->check(CLI::IsMember({"events", "tokens", "cost"}))
        ->capture_default_str();
    addJSONOption(*command, options->json);
    command->callback([options, &chosen] { chosen = [options] { return runActivity(*options); }; });
}

}  // namespace quorvane::host
