#include "tests/support/ScratchHome.h"

#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace quorvane::testing {
namespace {

namespace fs = std::filesystem;

void restore(const char* variable, bool had, const std::string& value) {
    if (had) {
        ::setenv(variable, value.c_str(), 1);
    } else {
        ::unsetenv(variable);
    }
}

void put(const std::string& path, std::string_view content, std::ios::openmode mode) {
    fs::create_directories(fs::path{path}.parent_path());
    std::ofstream file{path, std::ios::binary | mode};
    file.write(content.data(), static_cast<std::streamsize>(content.size()));
    if (!file.flush()) throw std::runtime_error{"cannot write " + path};
}

}  // namespace

ScratchHome::ScratchHome(const std::string& timeZone) {
    std::string pattern = (fs::temp_directory_path() / "quorvane-test-XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr) throw std::runtime_error{"cannot make " + pattern};
    path_ = fs::canonical(pattern).string();
    if (const char* home = std::getenv("HOME")) {
        hadHome_ = true;
        oldHome_ = home;
    }
    if (const char* zone = std::getenv("TZ")) {
        hadTimeZone_ = true;
        oldTimeZone_ = zone;
    }
    ::setenv("HOME", path_.c_str(), 1);
    setTimeZone(timeZone);
}

ScratchHome::~ScratchHome() {
    restore("HOME", hadHome_, oldHome_);
    restore("TZ", hadTimeZone_, oldTimeZone_);
    ::tzset();
    std::error_code ignored;
    fs::remove_all(path_, ignored);
}

void ScratchHome::setTimeZone(const std::string& timeZone) {
    ::setenv("TZ", timeZone.c_str(), 1);
    ::tzset();
}

std::string ScratchHome::path(std::string_view relative) const {
    return (fs::path{path_} / relative).string();
}

std::string ScratchHome::write(std::string_view file, std::string_view content) const {
    put(path(file), content, std::ios::trunc);
    return path(file);
}

std::string ScratchHome::append(std::string_view file, std::string_view content) const {
    put(path(file), content, std::ios::app);
    return path(file);
}

std::string ScratchHome::read(std::string_view file) const {
    std::ifstream stream{path(file), std::ios::binary};
    if (!stream) throw std::runtime_error{"cannot read " + path(file)};
    return {std::istreambuf_iterator<char>{stream}, {}};
}

void ScratchHome::truncate(std::string_view file, std::int64_t size) const {
    fs::resize_file(path(file), static_cast<std::uintmax_t>(size));
}

void ScratchHome::touch(std::string_view file, double seconds) const {
    const fs::path target = path(file);
    const auto shift = std::chrono::duration_cast<fs::file_time_type::duration>(std::chrono::duration<double>{seconds});
    fs::last_write_time(target, fs::last_write_time(target) + shift);
}

void ScratchHome::makeFolder(std::string_view folder) const {
    fs::create_directories(path(folder));
}

void ScratchHome::remove(std::string_view fileOrFolder) const {
    fs::remove_all(path(fileOrFolder));
}

bool ScratchHome::exists(std::string_view fileOrFolder) const {
    return fs::exists(fs::symlink_status(path(fileOrFolder)));
}

}  // namespace quorvane::testing
