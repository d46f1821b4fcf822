#include <cstdlib>
#include <optional>
#include <string_view>
#include <variant>

#include "QuorvaneCore/ratelimits/CopilotOtelSetup.h"
#include "QuorvaneHost/Failure.h"
#include "QuorvaneHost/captures/AgentCaptures.h"

namespace quorvane::host {
namespace {

class CopilotCapture final : public Capture {
public:
    [[nodiscard]] std::string agent() const override { return "copilot"; }

    [[nodiscard]] std::string state() const override {
        const CopilotOtelSetup::State state = CopilotOtelSetup::state();
        if (std::holds_alternative<CopilotOtelSetup::Active>(state)) return "active";
        return std::holds_alternative<CopilotOtelSetup::Installable>(state) ? "installable" : "unavailable";
    }

    [[nodiscard]] std::string path() const override { return CopilotOtelSetup::shellRCURL(shell()).value_or(""); }

    [[nodiscard]] std::string hint() const override { return state() == "unavailable" ? noShell : ""; }

    void install() const override {
        try {
            CopilotOtelSetup::install();
        } catch (const CopilotOtelSetup::SetupError& error) {
            switch (error.kind()) {
                case CopilotOtelSetup::SetupError::Kind::NoShellRC: throw Failure{std::string{"copilot: "} + noShell};
            }
        }
    }

    void uninstall() const override { CopilotOtelSetup::uninstall(); }

private:
    static constexpr const char* noShell = "SHELL names neither zsh nor bash, so no start-up file is known";

    static std::optional<std::string_view> shell() {
        const char* value = std::getenv("SHELL");
        return value == nullptr ? std::nullopt : std::optional<std::string_view>{value};
    }
};

}  // namespace

std::unique_ptr<Capture> makeCopilotCapture() {
    return std::make_unique<CopilotCapture>();
}

}  // namespace quorvane::host
