#pragma once
#include <cstdint>
#include <string>
#include <string_view>

namespace quorvane {

/// The words by which a host explains that the provider's own account can show more than this machine does.
/// Any thread.
class MuseSparkScope {
public:
    MuseSparkScope() = delete;

    static constexpr std::string_view baseNote =
        "Counts OpenCode sessions on this Mac. Meta account totals can be higher when Muse Spark runs outside "
        "OpenCode.";

    /// Whether "auth.json" in `opencodeRoot` has a key for the vendor. The key is neither kept nor shown. False if the
    /// file cannot be read or understood.
    [[nodiscard]] static bool hasMetaAPIKeyConfigured(const std::string& opencodeRoot);

    /// `baseNote`, and before it a remark where there is a key and hardly any of the week's usage went through
    /// OpenCode. `weekEvents` is the number of events of the last week.
    [[nodiscard]] static std::string detailNote(std::int64_t weekEvents, const std::string& opencodeRoot);
};

}  // namespace quorvane
