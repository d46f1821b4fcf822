#include "QuorvaneCore/model/QuorvaneResourceBundle.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <mutex>
#include <system_error>
#include <unordered_set>
#include <vector>

#include "QuorvaneCore/platform/FilePath.h"
#include "QuorvaneCore/platform/FileStatus.h"
#include "QuorvaneCore/platform/ProgramImages.h"

namespace quorvane {
namespace {

/// What was found, and how often it was looked for. `lock` guards both and is not held while candidates are opened:
/// two threads may look for the same bundle at once, and the later one's answer stays.
struct Cache {
    std::mutex lock;
    std::map<std::string, std::string, std::less<>> resolvedBundles;
    std::int64_t walkCount = 0;
};

Cache& cache() {
    static Cache shared;
    return shared;
}

bool isFolder(const std::string& path) {
    const std::optional<FileStatus> status = FileStatus::of(path);
    return status && status->isDirectory;
}

/// The folder of the file at `path`, or `path` itself if it is a folder.
std::string startingFolder(const std::string& path) {
    return isFolder(path) ? path : FilePath::parent(path);
}

/// The folder that an installed prefix keeps this project's resources in, seen from its bin or lib folder.
std::string resourceFolder(const std::string& imagePath) {
    return FilePath::joining(FilePath::parent(FilePath::parent(imagePath)), "share/quorvane");
}

void appendCandidates(const std::string& path, const std::string& bundleName, std::vector<std::string>& candidates) {
    constexpr int levels = 8;
    std::string folder = startingFolder(path);
    for (int level = 0; level < levels; ++level) {
        for (const char* below : {"", "Resources", "Contents/Resources"}) {
            const std::string place = *below == '\0' ? folder : FilePath::joining(folder, below);
            candidates.push_back(FilePath::joining(place, bundleName));
        }
        const std::string parent = FilePath::parent(folder);
        if (parent == folder) break;
        folder = parent;
    }
}

std::vector<std::string> candidates(const std::string& bundleName) {
    std::vector<std::string> all;
    if (const std::string program = ProgramImages::executable(); !program.empty()) {
        all.push_back(FilePath::joining(resourceFolder(program), bundleName));
        appendCandidates(program, bundleName, all);
    }
    for (const std::string& library : ProgramImages::libraries()) {
        appendCandidates(library, bundleName, all);
        all.push_back(FilePath::joining(resourceFolder(library), bundleName));
    }
    for (const std::string& argument : ProgramImages::arguments()) {
        if (argument.find('/') == std::string::npos) continue;
        std::error_code failure;
        const std::filesystem::path path = std::filesystem::absolute(argument, failure);
        if (!failure) appendCandidates(path.string(), bundleName, all);
    }
    std::unordered_set<std::string> seen;
    std::erase_if(all, [&](const std::string& path) { return !seen.insert(FilePath::standardised(path)).second; });
    return all;
}

}  // namespace

std::optional<std::string> QuorvaneResourceBundle::bundle(std::string_view name) {
    {
        const std::lock_guard guard{cache().lock};
        const auto known = cache().resolvedBundles.find(name);
        if (known != cache().resolvedBundles.end()) return known->second;
        ++cache().walkCount;
    }
    const std::string bundleName = "Quorvane_" + std::string{name} + ".bundle";
    for (const std::string& candidate : candidates(bundleName)) {
        if (!isFolder(candidate)) continue;
        const std::lock_guard guard{cache().lock};
        cache().resolvedBundles.insert_or_assign(std::string{name}, candidate);
        return candidate;
    }
    return std::nullopt;
}

std::optional<std::string> QuorvaneResourceBundle::url(std::string_view resource,
                                                       std::optional<std::string_view> extension,
                                                       std::string_view bundleName) {
    const std::optional<std::string> folder = bundle(bundleName);
    if (!folder) return std::nullopt;
    std::string path = FilePath::joining(*folder, resource);
    if (extension && !extension->empty()) path.append(".").append(*extension);
    if (!FileStatus::of(path)) return std::nullopt;
    return path;
}

std::int64_t QuorvaneResourceBundle::candidateWalkCount() {
    const std::lock_guard guard{cache().lock};
    return cache().walkCount;
}

}  // namespace quorvane
