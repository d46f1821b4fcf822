#include "QuorvaneCore/providers/detail/OpenCodeStorePaths.h"

#include <utility>

#include "QuorvaneCore/platform/FilePath.h"
#include "QuorvaneCore/platform/FileStatus.h"
#include "QuorvaneCore/platform/UserFolders.h"

namespace quorvane {
namespace {

std::optional<std::string> ifThere(std::string path) {
    if (!FileStatus::of(path)) return std::nullopt;
    return path;
}

}  // namespace

std::string OpenCodeStorePaths::defaultRoot() {
    return FilePath::joining(UserFolders::home(), ".local/share/opencode");
}

std::vector<std::string> OpenCodeStorePaths::dataFiles(const std::string& root) {
    if (std::optional<std::string> file = database(root)) return {*std::move(file)};
    if (std::optional<std::string> file = log(root)) return {*std::move(file)};
    return {};
}

std::optional<std::string> OpenCodeStorePaths::database(const std::string& root) {
    return ifThere(isDatabase(root) ? root : FilePath::joining(root, "opencode.db"));
}

std::optional<std::string> OpenCodeStorePaths::log(const std::string& root) {
    return ifThere(FilePath::extension(root) == "log" ? root : FilePath::joining(root, "log/opencode.log"));
}

bool OpenCodeStorePaths::isDatabase(const std::string& file) noexcept {
    return FilePath::extension(file) == "db";
}

}  // namespace quorvane
