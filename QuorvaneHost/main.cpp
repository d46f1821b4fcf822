#include <algorithm>
#include <csignal>
#include <cstdio>
#include <exception>
#include <string>
#include <vector>

#include "QuorvaneCore/platform/Clock.h"
#include "QuorvaneCore/platform/ISODate.h"
#include "QuorvaneHost/commands/Command.h"

namespace quorvane::host {
namespace {

/// Pins the present moment. Returns the text of a usage error, or nothing.
std::string pinNow(const std::string& text) {
    const std::optional<Date> moment = ISODate::parse(text);
    if (!moment) return "not a time like 2026-03-01T09:30:00Z: " + text;
    Clock::pin(*moment);
    return {};
}

/// Options without a command belong to `summary`: its name is put in front of the first of them. Throws for a word that
/// is no command.
void insertDefaultCommand(const CLI::App& parser, std::vector<std::string>& arguments) {
    auto at = arguments.begin();
    while (at != arguments.end() && at->starts_with("--now")) {
        const bool hasValueBehind = *at == "--now" && at + 1 != arguments.end();
        at += hasValueBehind ? 2 : 1;
    }
    const bool isForTheProgram = at != arguments.end() && (*at == "--help" || *at == "-h" || *at == "--version");
    if (isForTheProgram) return;
    if (at != arguments.end() && !at->starts_with('-')) {
        const std::vector<const CLI::App*> commands = parser.get_subcommands([](const CLI::App*) { return true; });
        const bool isKnown = std::any_of(commands.begin(), commands.end(),
                                         [&](const CLI::App* command) { return command->get_name() == *at; });
        if (isKnown) return;
        throw CLI::ParseError{"no command is called " + *at + "; see quorvane --help", CLI::ExitCodes::ExtrasError};
    }
    arguments.insert(at, "summary");
}

int run(std::vector<std::string> arguments) {
    CLI::App parser{"Quorvane: what AI coding agents cost, metered on this machine", "quorvane"};
    parser.set_version_flag("--version", "quorvane " QUORVANE_VERSION, "Print the version and leave");
    parser.add_option("--now", "The present moment, as 2026-03-01T09:30:00Z")->check(pinNow)->type_name("TIME");
    parser.footer("Without a command it is summary: quorvane --days 7");
    parser.require_subcommand(1);
    parser.fallthrough();

    ChosenCommand chosen;
    addSummaryCommand(parser, chosen);
    addRefreshCommand(parser, chosen);
    addProjectsCommand(parser, chosen);
    addModelsCommand(parser, chosen);
    addActivityCommand(parser, chosen);
    addExportCommand(parser, chosen);
    addPricesCommand(parser, chosen);
    addSnapshotCommand(parser, chosen);
    addLimitsCommand(parser, chosen);
    addCaptureCommand(parser, chosen);
    addLabelCommand(parser, chosen);
    addMaintainCommand(parser, chosen);

    try {
        insertDefaultCommand(parser, arguments);
        std::reverse(arguments.begin(), arguments.end());  // as the parser takes them
        parser.parse(arguments);
    } catch (const CLI::Success& help) {
        return parser.exit(help);
    } catch (const CLI::ParseError& error) {
        std::fprintf(stderr, "quorvane: %s\n", error.what());
        return 2;
    }
    return chosen();
}

}  // namespace
}  // namespace quorvane::host

int main(int count, char** arguments) {
    std::signal(SIGPIPE, SIG_IGN);  // NOLINT: a pager that is closed early is no reason to die half-way
    try {
        return quorvane::host::run({arguments + 1, arguments + count});
    } catch (const std::exception& error) {
        std::fprintf(stderr, "quorvane: %s\n", error.what());
        return 1;
    }
}
