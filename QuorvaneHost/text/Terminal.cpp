#include "QuorvaneHost/text/Terminal.h"

#include <charconv>
#include <cstdlib>
#include <string_view>

#include <sys/ioctl.h>
#include <unistd.h>

namespace quorvane::host {
namespace {

std::string_view environment(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? std::string_view{} : std::string_view{value};
}

std::size_t widthOf(int descriptor) {
    winsize size{};
    if (::ioctl(descriptor, TIOCGWINSZ, &size) == 0 && size.ws_col > 0) return size.ws_col;
    const std::string_view columns = environment("COLUMNS");
    std::size_t width = 0;
    const auto [end, failure] = std::from_chars(columns.data(), columns.data() + columns.size(), width);
    return failure == std::errc{} && width > 0 ? width : 80;
}

}  // namespace

Terminal::Terminal(Stream stream) {
    const int descriptor = stream == Stream::Output ? STDOUT_FILENO : STDERR_FILENO;
    isTerminal_ = ::isatty(descriptor) == 1;
    hasColour_ = isTerminal_ && environment("NO_COLOR").empty() && environment("TERM") != "dumb";
    width_ = widthOf(descriptor);
}

}  // namespace quorvane::host
