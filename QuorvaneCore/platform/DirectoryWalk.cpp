#include "QuorvaneCore/platform/DirectoryWalk.h"

#include <algorithm>
#include <memory>
#include <utility>

#include <dirent.h>
#include <sys/stat.h>

#include "QuorvaneCore/platform/FilePath.h"

namespace quorvane {
namespace {

struct CloseDirectory {
    void operator()(DIR* directory) const noexcept { ::closedir(directory); }
};

bool isFolder(const dirent& entry, const std::string& path) noexcept {
    if (entry.d_type != DT_UNKNOWN) return entry.d_type == DT_DIR;
    struct stat status {};
    return ::lstat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

}  // namespace

std::vector<std::string> DirectoryWalk::entries(const std::string& root, std::string_view extension) {
    std::vector<std::string> found;
    visit(root, extension, [&](std::string path) {
        found.push_back(std::move(path));
        return true;
    });
    return found;
}

void DirectoryWalk::visit(const std::string& root, std::string_view extension, FunctionView<bool(std::string)> goOn) {
    // Folders wait on a list instead of the call stack, so that depth costs neither stack nor open descriptors.
    std::vector<std::string> waiting{root};
    while (!waiting.empty()) {
        const std::string folder = std::move(waiting.back());
        waiting.pop_back();
        const std::unique_ptr<DIR, CloseDirectory> directory{::opendir(folder.c_str())};
        if (!directory) continue;
        const std::size_t firstChild = waiting.size();
        while (const dirent* entry = ::readdir(directory.get())) {
            const std::string_view name{entry->d_name};
            if (name.starts_with('.')) continue;
            const bool matches = FilePath::extension(name) == extension;
            if (!matches && entry->d_type != DT_DIR && entry->d_type != DT_UNKNOWN) continue;
            std::string path = FilePath::joining(folder, name);
            if (isFolder(*entry, path)) waiting.push_back(path);
            if (matches && !goOn(std::move(path))) return;
        }
        // The first sub-folder of the listing is entered first.
        std::reverse(waiting.begin() + static_cast<std::ptrdiff_t>(firstChild), waiting.end());
    }
}

std::vector<std::string> DirectoryWalk::children(const std::string& folder, std::string_view extension) {
    std::vector<std::string> found;
    const std::unique_ptr<DIR, CloseDirectory> directory{::opendir(folder.c_str())};
    if (!directory) return found;
    while (const dirent* entry = ::readdir(directory.get())) {
        const std::string_view name{entry->d_name};
        if (name == "." || name == "..") continue;
        if (FilePath::extension(name) == extension) found.push_back(FilePath::joining(folder, name));
    }
    return found;
}

}  // namespace quorvane
