#include "QuorvaneCore/ratelimits/CursorHookSetup.h"
#include "QuorvaneHost/Failure.h"
#include "QuorvaneHost/captures/AgentCaptures.h"

namespace quorvane::host {
namespace {

class CursorCapture final : public Capture {
public:
    [[nodiscard]] std::string agent() const override { return "cursor"; }

    [[nodiscard]] std::string state() const override {
        switch (CursorHookSetup::state()) {
            case CursorHookSetup::State::Active: return "active";
            case CursorHookSetup::State::Installable: return "installable";
            case CursorHookSetup::State::Unavailable: return "unavailable";
        }
        return {};
    }

    [[nodiscard]] std::string path() const override { return CursorHookSetup::hooksURL(); }

    [[nodiscard]] std::string hint() const override {
        if (state() == "unavailable") return notThere;
        if (CursorHookSetup::isFieldReaderInstalled()) return {};
        return "captures nothing until " + std::string{CursorHookSetup::fieldReader} + " is installed";
    }

    void install() const override {
        try {
            CursorHookSetup::install();
        } catch (const CursorHookSetup::SetupError& error) {
            switch (error.kind()) {
                case CursorHookSetup::SetupError::Kind::CursorNotDetected:
                    throw Failure{std::string{"cursor: "} + notThere};
                case CursorHookSetup::SetupError::Kind::MalformedHooks:
                    throw Failure{"cursor: " + path() + " cannot be read, or is not a list of hooks"};
                case CursorHookSetup::SetupError::Kind::NoAppSupport:
                    throw Failure{"cursor: there is no place for the hook's script"};
            }
        }
    }

    void uninstall() const override { CursorHookSetup::uninstall(); }

private:
    static constexpr const char* notThere = "the agent's command is not on this machine";
};

}  // namespace

std::unique_ptr<Capture> makeCursorCapture() {
    return std::make_unique<CursorCapture>();
}

}  // namespace quorvane::host
