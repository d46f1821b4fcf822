#include "QuorvaneCore/platform/FileMode.h"

#include <cerrno>
#include <system_error>

#include <sys/stat.h>

namespace quorvane {

void setFileMode(const std::string& path, unsigned mode) {
    if (::chmod(path.c_str(), mode) != 0) throw std::system_error{errno, std::generic_category(), path};
}

}  // namespace quorvane
