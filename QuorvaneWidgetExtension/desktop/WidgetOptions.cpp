#include "QuorvaneWidgetExtension/desktop/WidgetOptions.h"

#include <algorithm>
#include <cstdio>
#include <map>
#include <optional>

#include <CLI/CLI.hpp>

#include "QuorvaneCore/platform/Clock.h"
#include "QuorvaneCore/platform/ISODate.h"

namespace quorvane::desktop {
namespace {

/// Pins the present moment. Returns the text of a usage error, or nothing.
std::string pinNow(const std::string& text) {
    const std::optional<Date> moment = ISODate::parse(text);
    if (!moment) return "not a time like 2026-03-01T09:30:00Z: " + text;
    Clock::pin(*moment);
    return {};
}

/// An option whose values are the raw names of choices.
template <typename Choices, typename Choice>
CLI::Option* addChoice(CLI::App& parser, const char* name, Choice& choice, const Choices& choices, const char* what) {
    std::map<std::string, Choice> byName;
    std::string names;
    for (const Choice known : choices) {
        byName.emplace(rawName(known), known);
        names.append(names.empty() ? "" : "|").append(rawName(known));
    }
    return parser
        .add_option_function<std::string>(
            name, [&choice, byName](const std::string& word) { choice = byName.at(word); }, what)
        ->check([byName, names](const std::string& word) {
            return byName.contains(word) ? std::string{} : word + " is none of " + names;
        })
        ->type_name(names);
}

}  // namespace

std::variant<WidgetOptions, int> WidgetOptions::parse(std::vector<std::string> arguments) {
    WidgetOptions options;
    bool describes = false;
    bool withoutLimits = false;
    std::string scheme = "light";
    CLI::App parser{"Quorvane's desktop widget: spend and limits of AI coding agents at a glance", "quorvane-widget"};
    parser.set_version_flag("--version", "quorvane-widget " QUORVANE_VERSION, "Print the version and leave");
    parser.add_option("--now", "The present moment, as 2026-03-01T09:30:00Z")->check(pinNow)->type_name("TIME");
    CLI::Option* const render =
        parser.add_option("--render", options.picture, "Draw to a picture, without a display")->type_name("FILE.png");
    CLI::Option* const describe =
        parser.add_flag("--describe", describes, "Print what a screen reader says of the widget")->excludes(render);
    const std::vector<CLI::Option*> ofOneEntry{
        addChoice(parser, "--family", options.family, allQuorvaneWidgetFamilies, "Its size (medium)"),
        addChoice(parser, "--provider", options.configuration.provider, allQuorvaneWidgetProviderChoices,
                  "Whose figures (all)"),
        addChoice(parser, "--timeframe", options.configuration.timeframe, allQuorvaneWidgetTimeframeChoices,
                  "Over how many days (fourteenDays)"),
        parser.add_option("--scheme", scheme, "Colours")
            ->check(CLI::IsMember({"light", "dark"}))
            ->type_name("light|dark"),
        parser.add_flag("--no-limits", withoutLimits, "Leave the gauges of the limits out"),
        parser.add_option("--scale", options.scale, "Pixels a point")->check(CLI::Range(0.5, 8.0))->type_name("N")};
    parser.footer("Without --render and --describe it opens the widgets on the desktop.");
    try {
        std::reverse(arguments.begin(), arguments.end());  // as the parser takes them
        parser.parse(arguments);
        const bool isOfOneEntry = render->count() > 0 || describe->count() > 0;
        for (const CLI::Option* option : ofOneEntry) {
            if (option->count() > 0 && !isOfOneEntry) {
                throw CLI::RequiresError{option->get_name(), "--render or --describe"};
            }
        }
    } catch (const CLI::Success& help) {
        return parser.exit(help);
    } catch (const CLI::ParseError& error) {
        std::fprintf(stderr, "quorvane-widget: %s\n", error.what());
        return 2;
    }
    if (render->count() > 0) options.task = Task::render;
    if (describes) options.task = Task::describe;
    options.configuration.showLimits = !withoutLimits;
    if (scheme == "dark") options.colorScheme = WidgetColorScheme::Dark;
    return options;
}

}  // namespace quorvane::desktop
