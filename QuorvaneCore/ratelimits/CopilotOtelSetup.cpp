#include "QuorvaneCore/ratelimits/CopilotOtelSetup.h"

#include <array>
#include <cstdlib>
#include <system_error>

#include "QuorvaneCore/model/ProviderExecutableDetection.h"
#include "QuorvaneCore/platform/AtomicFile.h"
#include "QuorvaneCore/platform/FileContents.h"
#include "QuorvaneCore/platform/FilePath.h"
#include "QuorvaneCore/platform/FileStatus.h"
#include "QuorvaneCore/platform/FolderCreation.h"
#include "QuorvaneCore/platform/UserFolders.h"
#include "QuorvaneCore/ratelimits/MarkedBlock.h"

namespace quorvane {
namespace {

constexpr MarkedBlock otelMarks{CopilotOtelSetup::beginMarker, CopilotOtelSetup::endMarker};

std::optional<std::string> presentShellRC() {
    const char* shell = std::getenv("SHELL");
    return CopilotOtelSetup::shellRCURL(shell == nullptr ? std::nullopt : std::optional<std::string_view>{shell});
}

std::optional<std::string> readableText(const std::string& path) {
    try {
        return readText(path);
    } catch (const std::system_error&) {
        return std::nullopt;
    }
}

/// Empty for a file that is not there. One that is there and cannot be read must not be overwritten.
std::string textOrNone(const std::string& path) {
    try {
        return readText(path);
    } catch (const std::system_error& failure) {
        if (failure.code() == std::errc::no_such_file_or_directory) return {};
        throw;
    }
}

std::string presentExporterPath() {
    return CopilotOtelSetup::otelFileExporterPath(UserFolders::home());
}

}  // namespace

const char* CopilotOtelSetup::SetupError::what() const noexcept {
    switch (kind_) {
        case Kind::NoShellRC: return "noShellRC";
    }
    return "";
}

std::optional<std::string> CopilotOtelSetup::shellRCURL(std::optional<std::string_view> shellEnv) {
    if (!shellEnv) return std::nullopt;
    const std::string home = UserFolders::home();
    if (shellEnv->ends_with("/zsh")) return FilePath::joining(home, ".zshrc");
    if (!shellEnv->ends_with("/bash")) return std::nullopt;
    std::string profile = FilePath::joining(home, ".bash_profile");
    if (FileStatus::of(profile)) return profile;
    return FilePath::joining(home, ".bashrc");
}

CopilotOtelSetup::State CopilotOtelSetup::state() {
    std::optional<std::string> path = presentShellRC();
    if (!path) return Unavailable{};
    const std::optional<std::string> script = readableText(*path);
    if (script && isInstalled(*script)) return Active{};
    return Installable{*std::move(path)};
}

void CopilotOtelSetup::install() {
    const std::optional<std::string> path = presentShellRC();
    if (!path) throw SetupError{SetupError::Kind::NoShellRC};
    std::string script = textOrNone(*path);
    if (isInstalled(script)) {
        if (isCurrent(script)) return;
        script = removingBlock(script);
    }
    replaceFile(*path, MarkedBlock::appended(script, enablementBlock()));
    createFolders(FilePath::parent(presentExporterPath()));
}

void CopilotOtelSetup::uninstall() {
    const std::optional<std::string> path = presentShellRC();
    if (!path) return;
    const std::optional<std::string> script = readableText(*path);
    if (!script) return;
    const std::string rest = removingBlock(*script);
    if (rest != *script) replaceFile(*path, rest);
}

bool CopilotOtelSetup::isInstalled(std::string_view script) noexcept {
    return otelMarks.isIn(script);
}

bool CopilotOtelSetup::isCurrent(std::string_view script) {
    return script.find(presentExporterPath()) != std::string_view::npos;
}

std::string CopilotOtelSetup::otelFileExporterPath(std::string_view home) {
    return FilePath::joining(home, ".copilot/otel/otel.jsonl");
}

std::string CopilotOtelSetup::enablementBlock() {
    std::string block{beginMarker};
    block += R"( (added by Quorvane — safe to delete this block to remove)
# Enables GitHub Copilot CLI's local OpenTelemetry export so Quorvane can audit token usage.
# Only affects NEW shell sessions/Copilot CLI runs — never touches Copilot's own config.
# Setting the file path (not just COPILOT_OTEL_ENABLED) is required: it both auto-enables OTel
# AND selects the local file exporter backend instead of the default network otlp-http one.
export COPILOT_OTEL_FILE_EXPORTER_PATH=")" +
             presentExporterPath() + "\"\n";
    return block.append(endMarker);
}

std::string CopilotOtelSetup::removingBlock(std::string_view script) {
    return otelMarks.removedFrom(script);
}

std::vector<std::string> CopilotOtelSetup::defaultCopilotSearchDirectories() {
    return ProviderExecutableDetection::defaultSearchDirectories(UserFolders::home());
}

bool CopilotOtelSetup::isCopilotCLIDetected(std::span<const std::string> searchDirectories) {
    static const std::array<std::string, 1> names{"copilot"};
    return ProviderExecutableDetection::containsExecutable(names, searchDirectories);
}

}  // namespace quorvane
