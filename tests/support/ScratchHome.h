#pragma once
#include <cstdint>
#include <string>
#include <string_view>

namespace quorvane::testing {

/// A home directory of a test's own, in a new temporary folder, with `HOME` pointing at it and `TZ` fixed; both are
/// restored and the folder is removed at the end. Paths are relative to the home, or absolute.
class ScratchHome {
public:
    explicit ScratchHome(const std::string& timeZone = "UTC");
    ScratchHome(const ScratchHome&) = delete;
    ScratchHome& operator=(const ScratchHome&) = delete;
    ~ScratchHome();

    /// The absolute path, without a slash at its end.
    [[nodiscard]] const std::string& path() const noexcept { return path_; }
    [[nodiscard]] std::string path(std::string_view relative) const;

    /// Writes a file whole, with the folders above it. Returns its absolute path.
    std::string write(std::string_view file, std::string_view content) const;
    /// Adds to the end of a file, making it if need be. Returns its absolute path.
    std::string append(std::string_view file, std::string_view content) const;
    [[nodiscard]] std::string read(std::string_view file) const;
    void truncate(std::string_view file, std::int64_t size) const;
    /// Moves the modification time by so many seconds, leaving the content alone.
    void touch(std::string_view file, double seconds) const;
    void makeFolder(std::string_view folder) const;
    void remove(std::string_view fileOrFolder) const;
    [[nodiscard]] bool exists(std::string_view fileOrFolder) const;

    /// From here on the process is in this time zone.
    static void setTimeZone(const std::string& timeZone);

private:
    std::string path_;
    std::string oldHome_;
    std::string oldTimeZone_;
    bool hadHome_ = false;
    bool hadTimeZone_ = false;
};

}  // namespace quorvane::testing
