#include "QuorvaneCore/ratelimits/GrokRateLimitCapture.h"
#include "QuorvaneHost/Failure.h"
#include "QuorvaneHost/captures/AgentCaptures.h"

namespace quorvane::host {
namespace {

class GrokCapture final : public Capture {
public:
    [[nodiscard]] std::string agent() const override { return "grok"; }

    [[nodiscard]] std::string state() const override {
        switch (GrokRateLimitCapture::state()) {
            case GrokRateLimitCapture::State::Active: return "active";
            case GrokRateLimitCapture::State::Installable: return "installable";
            case GrokRateLimitCapture::State::Unavailable: return "unavailable";
        }
        return {};
    }

    [[nodiscard]] std::string path() const override { return GrokRateLimitCapture::hookURL(); }

    [[nodiscard]] std::string hint() const override {
        return state() == "unavailable" ? "no trace of the agent in " + GrokRateLimitCapture::grokHome() : "";
    }

    void install() const override {
        try {
            GrokRateLimitCapture::install();
        } catch (const GrokRateLimitCapture::CaptureError& error) {
            switch (error.kind()) {
                case GrokRateLimitCapture::CaptureError::Kind::GrokNotDetected: throw Failure{"grok: " + hint()};
                case GrokRateLimitCapture::CaptureError::Kind::NoAppSupport:
                    throw Failure{"grok: there is no place for the hook's script"};
            }
        }
    }

    void uninstall() const override { GrokRateLimitCapture::uninstall(); }
};

}  // namespace

std::unique_ptr<Capture> makeGrokCapture() {
    return std::make_unique<GrokCapture>();
}

}  // namespace quorvane::host
