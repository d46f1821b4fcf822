#include "QuorvaneCore/ratelimits/GrokRateLimitCapture.h"

#include <system_error>

#include "QuorvaneCore/model/GrokHome.h"
#include "QuorvaneCore/platform/AtomicFile.h"
#include "QuorvaneCore/platform/Clock.h"
#include "QuorvaneCore/platform/FileContents.h"
#include "QuorvaneCore/platform/FileMode.h"
#include "QuorvaneCore/platform/FilePath.h"
#include "QuorvaneCore/platform/FolderCreation.h"
#include "QuorvaneCore/platform/UserFolders.h"

namespace quorvane {
namespace {

constexpr unsigned scriptMode = 0755;

/// Absent for a file that cannot be read or is no UTF-8.
std::optional<std::string> readableText(const std::string& path) {
    try {
        return readText(path);
    } catch (const std::system_error&) {
        return std::nullopt;
    }
}

bool contains(std::string_view text, std::string_view part) noexcept {
    return text.find(part) != std::string_view::npos;
}

}  // namespace

const char* GrokRateLimitCapture::CaptureError::what() const noexcept {
    switch (kind_) {
        case Kind::GrokNotDetected: return "grokNotDetected";
        case Kind::NoAppSupport: return "noAppSupport";
    }
    return "";
}

std::string GrokRateLimitCapture::grokHome(const std::optional<std::string>& home) {
    return GrokHome::path(home);
}

std::string GrokRateLimitCapture::hooksDirectory(const std::optional<std::string>& grokHome) {
    return FilePath::joining(GrokHome::path(grokHome), "hooks");
}

std::string GrokRateLimitCapture::hookURL(const std::optional<std::string>& grokHome) {
    return FilePath::joining(hooksDirectory(grokHome), hookFileName);
}

std::string GrokRateLimitCapture::defaultLogURL(const std::optional<std::string>& grokHome) {
    return FilePath::joining(GrokHome::path(grokHome), "logs/unified.jsonl");
}

std::optional<std::string> GrokRateLimitCapture::appSupportDirectory() {
    return UserFolders::quorvaneSupport();
}

std::optional<std::string> GrokRateLimitCapture::scriptURL() {
    const std::optional<std::string> folder = appSupportDirectory();
    return folder ? std::optional{FilePath::joining(*folder, scriptFileName)} : std::nullopt;
}

GrokRateLimitCapture::State GrokRateLimitCapture::state(const std::optional<std::string>& grokHome,
                                                        std::optional<bool> detected) {
    if (!(detected ? *detected : GrokHome::isDetected(grokHome))) return State::Unavailable;
    return isInstalled(grokHome) ? State::Active : State::Installable;
}

bool GrokRateLimitCapture::toggleIsOn(State state) noexcept {
    return state == State::Active;
}

bool GrokRateLimitCapture::isInstalled(const std::optional<std::string>& grokHome) {
    constexpr std::string_view hookName = "quorvane-rate-limit-capture";
    const std::optional<std::string> hook = readableText(hookURL(grokHome));
    if (!hook || !(contains(*hook, hookName) || contains(*hook, scriptFileName))) return false;
    const std::optional<std::string> path = scriptURL();
    const std::optional<std::string> script = path ? readableText(*path) : std::nullopt;
    return script && isInstalledInScript(*script);
}

bool GrokRateLimitCapture::isInstalledInScript(std::string_view script) noexcept {
    return contains(script, beginMarker);
}

void GrokRateLimitCapture::install(const std::optional<std::string>& grokHome) {
    if (!GrokHome::isDetected(grokHome)) throw CaptureError{CaptureError::Kind::GrokNotDetected};
    const std::optional<std::string> script = scriptURL();
    if (!script) throw CaptureError{CaptureError::Kind::NoAppSupport};
    createFolders(FilePath::parent(*script));
    replaceFile(*script, captureScript(), scriptMode);
    setFileMode(*script, scriptMode);
    createFolders(hooksDirectory(grokHome));
    replaceFile(hookURL(grokHome), hookJSON(*script));
    // So that figures are there before the next prompt; without a log there are none yet.
    static_cast<void>(refreshFromLogs(grokHome, std::nullopt, std::nullopt, Clock::now()));
}

void GrokRateLimitCapture::uninstall(const std::optional<std::string>& grokHome) noexcept {
    removeFile(hookURL(grokHome));
    if (const std::optional<std::string> script = scriptURL()) removeFile(*script);
}

}  // namespace quorvane
