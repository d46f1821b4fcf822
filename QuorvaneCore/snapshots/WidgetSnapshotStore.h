#pragma once
#include <optional>
#include <string>
#include <string_view>

#include "QuorvaneCore/platform/SharedContainer.h"
#include "QuorvaneCore/snapshots/WidgetSnapshot.h"

namespace quorvane {

/// Reads and writes the one file that host and widget share. They need no lock: the file is replaced whole, and a
/// reader sees the old one or the new one. Holds nothing but the directory; any thread may call any operation.
class WidgetSnapshotStore {
public:
    /// The group under which host and widget share a directory, where the platform has such directories.
    static constexpr std::string_view appGroupID = "QZ7RT41KWM.com.orlanmere.quorvane";
    static constexpr std::string_view fileName = "widget-snapshot.json";

    /// "Widget" in the group's shared directory, else "Quorvane/Widget" in the application support directory. Nothing
    /// is created.
    [[nodiscard]] static std::string defaultRootURL(const SharedContainerLookup& containers = sharedContainer);

    /// Whether the group's shared directory is there.
    [[nodiscard]] static bool resolvedRootIsAppGroup(const SharedContainerLookup& containers = sharedContainer);

    explicit WidgetSnapshotStore(std::string rootURL = defaultRootURL());

    [[nodiscard]] const std::string& rootURL() const noexcept { return rootURL_; }
    [[nodiscard]] std::string snapshotURL() const;

    /// Replaces the file, creating the directory with all above it. What was there is not looked at.
    /// Throws `SnapshotCodingError` for a number that is not finite and `std::system_error` with the path; the
    /// old file is then as it was.
    void write(const WidgetSnapshot& snapshot) const;

    /// Throws `std::system_error` with the path for a file that cannot be read or is no UTF-8,
    /// `SnapshotCodingError` for one that is no snapshot, and `WidgetSnapshotStoreError` for a snapshot of
    /// another version, older or newer.
    [[nodiscard]] WidgetSnapshot read() const;

    /// The same, absent on any failure.
    [[nodiscard]] std::optional<WidgetSnapshot> readIfAvailable() const;

private:
    std::string rootURL_;
};

}  // namespace quorvane
