#pragma once
#include <cstdint>
#include <exception>
#include <optional>
#include <string>
#include <string_view>

#include "QuorvaneCore/platform/Date.h"
#include "QuorvaneCore/platform/JSONTree.h"

namespace quorvane {

/// Gets hold of Grok's credit usage, which Grok Build tells in one kind of line of its own log and nowhere else. Two
/// roads lead to the same file, which `GrokRateLimitStore` reads: a hook makes the agent run a small script at the
/// start of a session, at each prompt and at each stop; and `refreshFromLogs` looks at the end of the log itself. Only
/// figures that the agent has already written are copied; no network, credentials or prompts are touched.
/// The hook has a file of its own among the agent's, and nothing inside any other one is changed.
///
/// `grokHome` is always the agent's home; absent means as in `GrokHome::path`. Environment and disk are looked at anew
/// at each call. Installing and uninstalling are one user's action at a time; any thread may call everything else.
class GrokRateLimitCapture {
public:
    GrokRateLimitCapture() = delete;

    enum class State : std::uint8_t {
        Active,       ///< hook and script are in place
        Installable,  ///< the agent is there and the capture is not in place
        Unavailable,  ///< the agent is not there
    };

    /// Why the capture cannot be installed. It has no text for users; the host words it.
    class CaptureError : public std::exception {
    public:
        enum class Kind : std::uint8_t {
            GrokNotDetected,  ///< there is no agent to install it into
            NoAppSupport,     ///< the folder for the script cannot be determined
        };

        explicit CaptureError(Kind kind) noexcept : kind_{kind} {}
        [[nodiscard]] Kind kind() const noexcept { return kind_; }
        /// The kind's name.
        [[nodiscard]] const char* what() const noexcept override;

    private:
        Kind kind_;
    };

    static constexpr std::string_view beginMarker = "# BEGIN QUORVANE-GROK-RATE-LIMIT-CAPTURE";
    static constexpr std::string_view endMarker = "# END QUORVANE-GROK-RATE-LIMIT-CAPTURE";
    static constexpr std::string_view hookFileName = "quorvane-rate-limit-capture.json";
    static constexpr std::string_view scriptFileName = "grok-rate-limit-capture.sh";
    static constexpr std::string_view billingLogMessage = "billing: fetched credits config";
    /// So much of the log's end, in bytes, is looked at.
    static constexpr std::uint64_t tailBytes = 0x100000;

    // Where things lie. Nothing is created.

    [[nodiscard]] static std::string grokHome(const std::optional<std::string>& home = std::nullopt);
    [[nodiscard]] static std::string hooksDirectory(const std::optional<std::string>& grokHome = std::nullopt);
    [[nodiscard]] static std::string hookURL(const std::optional<std::string>& grokHome = std::nullopt);
    /// The agent's log.
    [[nodiscard]] static std::string defaultLogURL(const std::optional<std::string>& grokHome = std::nullopt);
    /// The folder "Quorvane" of the user's application support, and the script in it; absent if it cannot be
    /// determined.
    [[nodiscard]] static std::optional<std::string> appSupportDirectory();
    [[nodiscard]] static std::optional<std::string> scriptURL();

    // The hook and its script.

    /// `detected` tells whether the agent is there; absent means as in `GrokHome::isDetected`.
    [[nodiscard]] static State state(const std::optional<std::string>& grokHome = std::nullopt,
                                     std::optional<bool> detected = std::nullopt);

    /// Whether a switch for the capture is on in that state.
    [[nodiscard]] static bool toggleIsOn(State state) noexcept;

    /// Whether the hook's file names the script, under whatever home, and the script holds the begin marker. False for
    /// files that cannot be read or are no UTF-8.
    [[nodiscard]] static bool isInstalled(const std::optional<std::string>& grokHome = std::nullopt);

    /// Whether the text contains the begin marker.
    [[nodiscard]] static bool isInstalledInScript(std::string_view script) noexcept;

    /// Writes script and hook, replacing what is there, and looks at the log once. A second time makes no difference,
    /// but for bringing both to their present texts. Throws `CaptureError`, with nothing written, or
    /// `std::system_error` with the path of what cannot be written; what was written by then stays, and a repetition
    /// completes it.
    static void install(const std::optional<std::string>& grokHome = std::nullopt);

    /// Removes hook and script, whatever they hold. What cannot be removed stays, without a word. The captured file
    /// stays too: see `GrokRateLimitStore::clear`.
    static void uninstall(const std::optional<std::string>& grokHome = std::nullopt) noexcept;

    /// The script's lines, without a line feed at the end. It needs bash and `/usr/bin/python3`, and always ends well,
    /// whether there is a log with figures or not.
    [[nodiscard]] static std::string captureScript();

    /// The hook's lines, without a line feed at the end: JSON, by which the agent runs the script at `scriptPath`.
    [[nodiscard]] static std::string hookJSON(std::string_view scriptPath);

    // The agent's log.

    /// Writes the newest figures of the log to a file, if the log has changed since this process last did so, whatever
    /// came of it then. `logURL` is the log's path, absent for `defaultLogURL`; `outputURL` that of the file, absent
    /// for `GrokRateLimitStore::defaultURL`. True if a record was written. An unchanged log is not read. Never throws
    /// for what files hold or lack.
    static bool refreshFromLogs(const std::optional<std::string>& grokHome, const std::optional<std::string>& logURL,
                                const std::optional<std::string>& outputURL, Date now);

    /// The record of the newest line within the last `maxBytes` bytes of `log` that gives one. Absent without one, and
    /// for a log that cannot be read.
    [[nodiscard]] static std::optional<JSONTree::Object> scrapeLatestBilling(const std::string& log, Date now,
                                                                             std::uint64_t maxBytes = tailBytes);

    /// The record that a line of the log tells: "capturedAt", the line's time or else `now`, and "resets_at" in
    /// seconds since 1970; a percentage held between 0 and 100. Absent for any other line, and without a percentage.
    [[nodiscard]] static std::optional<JSONTree::Object> parseBillingLogLine(std::string_view line, Date now);

    /// Writes a record to the file `url`, with the folders above it. False if that fails, and for a record with a
    /// number that is not finite, which JSON cannot hold; the file is then as it was.
    static bool write(const JSONTree::Object& record, const std::string& url);
};

}  // namespace quorvane
