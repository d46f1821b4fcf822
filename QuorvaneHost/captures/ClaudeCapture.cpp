#include <optional>
#include <variant>

#include "QuorvaneCore/platform/FileContents.h"
#include "QuorvaneCore/platform/FilePath.h"
#include "QuorvaneCore/platform/UserFolders.h"
#include "QuorvaneCore/ratelimits/StatuslineCapture.h"
#include "QuorvaneHost/Failure.h"
#include "QuorvaneHost/captures/AgentCaptures.h"

namespace quorvane::host {
namespace {

class ClaudeCapture final : public Capture {
public:
    [[nodiscard]] std::string agent() const override { return "claude"; }

    [[nodiscard]] std::string state() const override {
        const StatuslineCapture::State state = StatuslineCapture::state();
        if (std::holds_alternative<StatuslineCapture::Active>(state)) return "active";
        return std::holds_alternative<StatuslineCapture::Installable>(state) ? "installable" : "unavailable";
    }

    [[nodiscard]] std::string path() const override {
        const std::optional<std::string> settings = readFile(settingsPath());
        return settings ? StatuslineCapture::statuslineScriptPath(*settings).value_or("") : "";
    }

    [[nodiscard]] std::string hint() const override {
        if (state() != "unavailable") return {};
        const std::string script = path();
        if (script.empty()) return "no status-line script is set in " + settingsPath();
        if (!readFile(script)) return script + " cannot be read";
        return "the script has no line that reads standard input into a variable: input=$(cat)";
    }

    void install() const override {
        try {
            StatuslineCapture::install();
        } catch (const StatuslineCapture::CaptureError& error) {
            if (error.kind() == StatuslineCapture::CaptureError::Kind::NoStatusline) {
                throw Failure{"claude: no status-line script is set in " + settingsPath()};
            }
            throw Failure{"claude: " + path() + " has no line that reads standard input into a variable: input=$(cat)"};
        }
    }

    void uninstall() const override { StatuslineCapture::uninstall(); }

private:
    static std::string settingsPath() { return FilePath::joining(UserFolders::home(), ".claude/settings.json"); }
};

}  // namespace

std::unique_ptr<Capture> makeClaudeCapture() {
    return std::make_unique<ClaudeCapture>();
}

}  // namespace quorvane::host
