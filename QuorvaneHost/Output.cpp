#include "QuorvaneHost/Output.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>

#include "QuorvaneHost/Failure.h"

namespace quorvane::host {

void print(std::string_view text) {
    printExactly(text.ends_with('\n') ? std::string{text} : std::string{text} + "\n");
}

void printExactly(std::string_view text) {
    errno = 0;
    const bool isWritten = std::fwrite(text.data(), 1, text.size(), stdout) == text.size() && std::fflush(stdout) == 0;
    if (!isWritten && errno != EPIPE) throw Failure{std::string{"standard output: "} + std::strerror(errno)};
}

}  // namespace quorvane::host
