#pragma once
#include <string>
#include <string_view>

#include "QuorvaneCore/snapshots/LocalAutomationSnapshot.h"

namespace quorvane {

/// Writes the file that local scripts read. It is replaced whole: a reader sees the old one or the new one.
/// Holds nothing but the directory; any thread may call any operation.
class LocalAutomationSnapshotStore {
public:
    static constexpr std::string_view fileName = "latest-snapshot.json";

    /// The system's folder in the application support directory. Nothing is created.
    [[nodiscard]] static std::string defaultRootURL();

    explicit LocalAutomationSnapshotStore(std::string rootURL = defaultRootURL());

    [[nodiscard]] const std::string& rootURL() const noexcept { return rootURL_; }
    [[nodiscard]] std::string snapshotURL() const;

    /// Creates the directory with all above it and replaces the file. Throws `SnapshotCodingError` for a number that
    /// is not finite and `std::system_error` with the path; the old file is then as it was.
    void write(const LocalAutomationSnapshot& snapshot) const;

private:
    std::string rootURL_;
};

}  // namespace quorvane
