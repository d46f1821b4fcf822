#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "QuorvaneCore/platform/JSONTree.h"
#include "QuorvaneCore/platform/JSONWriter.h"
#include "QuorvaneHost/Captures.h"
#include "QuorvaneHost/Output.h"
#include "QuorvaneHost/commands/Command.h"

namespace quorvane::host {
namespace {

struct Options {
    bool json = false;
    std::string agent;
};

std::unique_ptr<Capture> captureOf(const std::string& agent) {
    std::vector<std::unique_ptr<Capture>> captures = allCaptures();
    const auto found =
        std::find_if(captures.begin(), captures.end(), [&](const auto& capture) { return capture->agent() == agent; });
    return found == captures.end() ? nullptr : std::move(*found);
}

std::string checkAgent(const std::string& agent) {
    if (captureOf(agent)) return {};
    std::string known;
    for (const auto& capture : allCaptures())
        known += (known.empty() ? "" : ", ") + capture->agent();
    return "nothing can be installed into " + agent + "; there are: " + known;
}

std::string asJSON() {
    JSONTree::Object agents;
    for (const auto& capture : allCaptures()) {
        JSONTree::Object agent{{"state", capture->state()}};
        if (const std::string path = capture->path(); !path.empty()) agent.emplace("path", path);
        agents.emplace(capture->agent(), std::move(agent));
    }
    return JSONWriter::pretty(JSONTree::Object{{"agents", std::move(agents)}});
}

/// "claude: installable (/home/ana/.claude/statusline.sh)"
std::string line(const Capture& capture) {
    const std::string hint = capture.hint();
    const std::string detail = hint.empty() ? capture.path() : hint;
    return capture.agent() + ": " + capture.state() + (detail.empty() ? "" : " (" + detail + ")") + "\n";
}

int runStatus(bool json) {
    std::string text;
    if (json) {
        text = asJSON();
    } else {
        for (const auto& capture : allCaptures())
            text += line(*capture);
    }
    print(text);
    return 0;
}

int runChange(const std::string& agent, void (Capture::*change)() const) {
    const std::unique_ptr<Capture> capture = captureOf(agent);
    (capture.get()->*change)();
    print(line(*capture));
    return 0;
}

}  // namespace

void addCaptureCommand(CLI::App& parser, ChosenCommand& chosen) {
    CLI::App* command =
        parser.add_subcommand("capture", "What agents tell of their limits and usage, and switching it on");
    const auto options = std::make_shared<Options>();
    addJSONOption(*command, options->json);
    command->require_subcommand(0, 1);
    command->callback([command, options, &chosen] {
        if (command->get_subcommands().empty()) chosen = [options] { return runStatus(options->json); };
    });

    CLI::App* status = command->add_subcommand("status", "The state of every agent's capture (the default)");
    addJSONOption(*status, options->json);
    status->callback([options, &chosen] { chosen = [options] { return runStatus(options->json); }; });

    const auto addChange = [&](const char* name, const char* help, void (Capture::*change)() const) {
        CLI::App* subcommand = command->add_subcommand(name, help);
        subcommand->add_option("AGENT", options->agent, "The agent")->required()->check(checkAgent)->type_name("");
        subcommand->callback(
            [options, change, &chosen] { chosen = [options, change] { return runChange(options->agent, change); }; });
    };
    addChange("install", "Add the capture to the agent's own configuration", &Capture::install);
    addChange("uninstall", "Take it out again", &Capture::uninstall);
}

}  // namespace quorvane::host
