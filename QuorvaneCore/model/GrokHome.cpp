#include "QuorvaneCore/model/GrokHome.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <string_view>
#include <utility>

#include "QuorvaneCore/model/ProviderExecutableDetection.h"
#include "QuorvaneCore/platform/DirectoryWalk.h"
#include "QuorvaneCore/platform/FilePath.h"
#include "QuorvaneCore/platform/UserFolders.h"

namespace quorvane {
namespace {

/// Offers the session logs below `home`, in the order of the file system, until `goOn` says no.
void visitUpdatesFiles(const std::string& home, FunctionView<bool(std::string)> goOn) {
    DirectoryWalk::visit(GrokHome::sessions(home), "jsonl", [&](std::string file) {
        return FilePath::lastComponent(file) != "updates.jsonl" || goOn(std::move(file));
    });
}

bool containsProgram(std::vector<std::string> folders) {
    const std::array<std::string, 1> program{"grok"};
    return ProviderExecutableDetection::containsExecutable(program, folders);
}

}  // namespace

std::string GrokHome::path(const std::optional<std::string>& given) {
    if (given) return *given;
    if (const char* set = std::getenv("GROK_HOME"); set != nullptr && *set != '\0') return set;
    return FilePath::joining(UserFolders::home(), ".grok");
}

std::string GrokHome::sessions(const std::string& home) {
    return FilePath::joining(home, "sessions");
}

std::vector<std::string> GrokHome::updatesFiles(const std::string& home) {
    std::vector<std::string> files;
    visitUpdatesFiles(home, [&](std::string file) {
        files.push_back(std::move(file));
        return true;
    });
    std::sort(files.begin(), files.end());
    return files;
}

bool GrokHome::hasSessionLogs(const std::string& home) {
    bool found = false;
    visitUpdatesFiles(home, [&](const std::string& /*file*/) {
        found = true;
        return false;
    });
    return found;
}

bool GrokHome::isDetected(const std::optional<std::string>& given) {
    const std::string home = path(given);
    if (containsProgram({FilePath::joining(home, "bin")})) return true;
    if (!given && containsProgram(
                      {"/opt/homebrew/bin", "/usr/local/bin", FilePath::joining(UserFolders::home(), ".local/bin")})) {
        return true;
    }
    return hasSessionLogs(home);
}

}  // namespace quorvane
