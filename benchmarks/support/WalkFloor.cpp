#include "benchmarks/support/WalkFloor.h"

#include <cstring>
#include <memory>

#include <benchmark/benchmark.h>
#include <dirent.h>
#include <sys/stat.h>

namespace quorvane::benchmarks {
namespace {

struct CloseDirectory {
    void operator()(DIR* directory) const noexcept { ::closedir(directory); }
};

/// `path` is of the folder, and is that again on return.
std::int64_t walk(std::string& path) {
    const std::unique_ptr<DIR, CloseDirectory> directory{::opendir(path.c_str())};
    if (!directory) return 0;
    std::int64_t files = 0;
    const std::size_t length = path.size();
    while (const dirent* entry = ::readdir(directory.get())) {
        if (entry->d_name[0] == '.') continue;
        path += '/';
        path += entry->d_name;
        if (entry->d_type == DT_DIR) {
            files += walk(path);
        } else {
            struct stat status {};
            if (::stat(path.c_str(), &status) == 0) ++files;
            ::benchmark::DoNotOptimize(status);
        }
        path.resize(length);
    }
    return files;
}

}  // namespace

std::int64_t WalkFloor::run(const std::string& root) {
    std::string path = root;
    return walk(path);
}

}  // namespace quorvane::benchmarks
