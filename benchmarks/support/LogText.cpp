#include "benchmarks/support/LogText.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <system_error>

#include <fmt/format.h>

namespace quorvane::benchmarks {
namespace {

[[noreturn]] void fail(const std::string& path) {
    throw std::system_error{errno, std::generic_category(), path};
}

}  // namespace

void appendText(std::string& to, std::span<const std::string_view> pieces, std::int64_t bytes, Random& random) {
    const std::size_t wanted = to.size() + static_cast<std::size_t>(std::max<std::int64_t>(bytes, 0));
    while (to.size() < wanted)
        to += pieces[random.next() % pieces.size()];
}

void appendBase64(std::string& to, std::int64_t bytes) {
    static const std::string pool = [] {
        constexpr std::string_view alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
        Random random{64};
        std::string text(400'009, '\0');
        std::generate(text.begin(), text.end(), [&] { return alphabet[random.next() % alphabet.size()]; });
        return text;
    }();
    for (std::int64_t left = bytes; left > 0; left -= static_cast<std::int64_t>(pool.size()))
        to.append(pool, 0, static_cast<std::size_t>(left));
}

std::string uuid(Random& random) {
    const std::uint64_t high = random.next();
    const std::uint64_t low = random.next();
    return fmt::format("{:08x}-{:04x}-4{:03x}-a{:03x}-{:012x}", high >> 32, (high >> 16) & 0xffff, high & 0xfff,
                       (low >> 48) & 0xfff, low & 0xffffffffffff);
}

std::string timestampText(double secondsSince1970) {
    namespace chrono = std::chrono;
    const auto milliseconds = static_cast<std::int64_t>(secondsSince1970 * 1000);
    const std::int64_t whole = milliseconds / 1000;
    const chrono::sys_days day{chrono::days{whole / 86400}};
    const chrono::year_month_day date{day};
    const std::int64_t second = whole % 86400;
    return fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}.{:03}Z", static_cast<int>(date.year()),
                       static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()), second / 3600,
                       second / 60 % 60, second % 60, milliseconds % 1000);
}

LogOutput::LogOutput(const std::string& path) : path_{path}, file_{std::fopen(path.c_str(), "wb")} {
    if (!file_) fail(path_);
}

void LogOutput::write() {
    if (std::fwrite(text.data(), 1, text.size(), file_.get()) != text.size()) fail(path_);
    written_ += static_cast<std::int64_t>(text.size());
    text.clear();
    if (std::fflush(file_.get()) != 0) fail(path_);
}

}  // namespace quorvane::benchmarks
