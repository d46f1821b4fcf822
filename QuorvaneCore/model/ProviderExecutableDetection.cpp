#include "QuorvaneCore/model/ProviderExecutableDetection.h"

#include <algorithm>
#include <cstdlib>
#include <string_view>

#include "QuorvaneCore/platform/FilePath.h"
#include "QuorvaneCore/platform/FileStatus.h"

namespace quorvane {

bool ProviderExecutableDetection::containsExecutable(std::span<const std::string> names,
                                                     std::span<const std::string> searchDirectories) {
    for (const std::string& directory : searchDirectories) {
        for (const std::string& name : names) {
            if (FileStatus::isExecutableFile(FilePath::joining(directory, name))) return true;
        }
    }
    return false;
}

std::vector<std::string> ProviderExecutableDetection::defaultSearchDirectories(const std::string& home) {
    std::vector<std::string> directories{"/opt/homebrew/bin", "/usr/local/bin",
                                         FilePath::joining(home, ".npm-global/bin"),
                                         FilePath::joining(home, ".local/bin")};
    const char* path = std::getenv("PATH");
    std::string_view rest = path == nullptr ? std::string_view{} : std::string_view{path};
    while (!rest.empty()) {
        const std::size_t end = std::min(rest.find(':'), rest.size());
        if (end > 0) directories.emplace_back(rest.substr(0, end));
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    return directories;
}

}  // namespace quorvane
