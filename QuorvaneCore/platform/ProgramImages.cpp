#include "QuorvaneCore/platform/ProgramImages.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

#include <link.h>

#include "QuorvaneCore/platform/FileContents.h"

namespace quorvane {

std::string ProgramImages::executable() {
    std::error_code failure;
    const std::filesystem::path path = std::filesystem::read_symlink("/proc/self/exe", failure);
    return failure ? std::string{} : path.string();
}

std::vector<std::string> ProgramImages::libraries() {
    std::vector<std::string> paths;
    ::dl_iterate_phdr(
        [](dl_phdr_info* image, std::size_t, void* collected) {
            // The executable itself and the kernel's own image come without a path.
            if (image->dlpi_name != nullptr && image->dlpi_name[0] == '/') {
                static_cast<std::vector<std::string>*>(collected)->emplace_back(image->dlpi_name);
            }
            return 0;
        },
        &paths);
    return paths;
}

std::vector<std::string> ProgramImages::arguments() {
    const std::string line = readFile("/proc/self/cmdline").value_or("");
    std::vector<std::string> arguments;
    for (std::size_t begin = 0; begin < line.size();) {
        const std::size_t end = std::min(line.find('\0', begin), line.size());
        arguments.push_back(line.substr(begin, end - begin));
        begin = end + 1;
    }
    return arguments;
}

}  // namespace quorvane
