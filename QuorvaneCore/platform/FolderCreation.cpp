#include "QuorvaneCore/platform/FolderCreation.h"

#include <filesystem>
#include <system_error>

#include "QuorvaneCore/platform/UserFolders.h"

namespace quorvane {

void createFolders(const std::string& folder) {
    const std::string support = UserFolders::quorvaneSupport();
    const bool isOurs = folder == support || folder.starts_with(support + "/");
    if (isOurs) static_cast<void>(UserFolders::createQuorvaneSupport());
    std::error_code failure;
    std::filesystem::create_directories(folder, failure);
    if (failure) throw std::system_error{failure, folder};
}

}  // namespace quorvane
