#include <exception>
#include <memory>
#include <string>
#include <vector>

#include "QuorvaneCore/platform/Clock.h"
#include "QuorvaneCore/platform/JSONTree.h"
#include "QuorvaneCore/platform/JSONWriter.h"
#include "QuorvaneHost/AggregableSummaries.h"
#include "QuorvaneHost/LabelText.h"
#include "QuorvaneHost/Output.h"
#include "QuorvaneHost/RefreshRun.h"
#include "QuorvaneHost/Session.h"
#include "QuorvaneHost/commands/Command.h"

namespace quorvane::host {
namespace {

/// The window that a tooltip tells beside today. A week, since bars ask every few seconds, and longer windows cost more
/// than the refresh itself; a title alone needs no more than today.
constexpr std::int64_t tooltipDays = 7;
constexpr std::int64_t titleDays = 1;

struct Options {
    std::string format;
    std::string style = "plain";
};

LabelText makeLabel(const Options& options) {
    const std::vector<Reader> readers = allReaders();
    const std::shared_ptr<UsageIndex> index = openIndex();
    static_cast<void>(refreshAll(index, readers));
    const Date now = Clock::now();
    const LimitsReport limits = LimitsReport::collect(readers, now);
    std::vector<ProviderID> ids;
    for (const LimitsReport::Row& row : limits.rows)
        ids.push_back(row.id);
    const std::int64_t days = options.style == "waybar" ? tooltipDays : titleDays;
    const UsageWindowSummaries summaries =
        aggregableSummaries(*index, ids, days, currentPrices(), now, Calendar::current());
    return LabelText::make(summaries, limits, MenuBarDisplayFormat::normalized(options.format), Locale::current());
}

/// A bar hides a module that fails, so a failure is told as a label too.
int runWaybar(const Options& options) {
    try {
        print(makeLabel(options).waybar());
    } catch (const std::exception& error) {
        print(JSONWriter::compact(JSONTree::Object{{"text", "—"},
                                                   {"tooltip", escapedForPango(error.what())},
                                                   {"class", JSONTree::Array{JSONTree{"error"}}},
                                                   {"percentage", 0}}));
    }
    return 0;
}

int runLabel(const Options& options) {
    if (options.style == "waybar") return runWaybar(options);
    print(makeLabel(options).title);
    return 0;
}

}  // namespace

void addLabelCommand(CLI::App& parser, ChosenCommand& chosen) {
    CLI::App* command = parser.add_subcommand("label", "One line for a status bar");
    const auto options = std::make_shared<Options>();
    command->add_option("--format", options->format, "What to show: total, limit:claude:fiveHour, totalAndLimit, …")
        ->type_name("RAW");
    command->add_option("--style", options->style, "plain or waybar")
        ->check(CLI::IsMember({"plain", "waybar"}))
        ->capture_default_str();
    command->callback([options, &chosen] { chosen = [options] { return runLabel(*options); }; });
}

}  // namespace quorvane::host
