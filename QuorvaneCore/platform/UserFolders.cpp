#include "QuorvaneCore/platform/UserFolders.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <system_error>
#include <vector>

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include "QuorvaneCore/platform/FilePath.h"

namespace quorvane {

std::string UserFolders::home() {
    if (const char* fromEnvironment = std::getenv("HOME"); fromEnvironment != nullptr && *fromEnvironment != '\0') {
        return fromEnvironment;
    }
    std::vector<char> buffer(16384);
    passwd entry{};
    passwd* found = nullptr;
    const int failure = ::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found);
    if (failure == 0 && found != nullptr && found->pw_dir != nullptr && *found->pw_dir != '\0') return found->pw_dir;
    return "/";
}

std::string UserFolders::applicationSupport() {
    return FilePath::joining(home(), "Library/Application Support");
}

std::string UserFolders::quorvaneSupport() {
    return FilePath::joining(applicationSupport(), "Quorvane");
}

std::string UserFolders::createQuorvaneSupport() {
    const std::string above = applicationSupport();
    std::error_code failure;
    std::filesystem::create_directories(above, failure);
    if (failure) throw std::system_error{failure, above};
    std::string folder = quorvaneSupport();
    if (::mkdir(folder.c_str(), 0700) == 0) return folder;
    const int reason = errno;
    if (reason == EEXIST && std::filesystem::is_directory(folder, failure)) return folder;
    throw std::system_error{reason, std::generic_category(), folder};
}

}  // namespace quorvane
