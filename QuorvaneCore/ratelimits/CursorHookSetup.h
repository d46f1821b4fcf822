#pragma once
#include <cstdint>
#include <exception>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace quorvane {

/// Gets hold of Cursor's token counts, which its agent keeps nowhere but tells to hooks: one hook for the end of a
/// generation, registered in the user's `hooks.json`, runs a small script that appends one line to a capture file.
/// `CursorProvider` reads that file. Whatever goes wrong in the script, it ends well and says nothing, so that the
/// agent is neither held up nor changed.
///
/// `cursorHome` is the agent's folder, absent for ".cursor" under the user's home directory; `appSupport` is the folder
/// of script and capture file, absent for the system's own. `detected` tells whether the agent is there; absent means
/// that its commands are looked for. Environment and disk are looked at anew at each call. Installing and uninstalling
/// are one user's action at a time; any thread may call everything else.
class CursorHookSetup {
public:
    CursorHookSetup() = delete;

    enum class State : std::uint8_t {
        Active,       ///< the hook is registered and the script is the system's own
        Installable,  ///< the agent is there, and the hook or the script is missing or cannot be read
        Unavailable,  ///< the agent is not there
    };

    /// Why the hook cannot be installed. It has no text for users; the host words it.
    class SetupError : public std::exception {
    public:
        enum class Kind : std::uint8_t {
            CursorNotDetected,  ///< there is no agent to install it into
            MalformedHooks,     ///< `hooks.json` cannot be read, or is not of the expected shape
            NoAppSupport,       ///< never thrown: the folder follows from the home directory
        };

        explicit SetupError(Kind kind) noexcept : kind_{kind} {}
        [[nodiscard]] Kind kind() const noexcept { return kind_; }
        /// The kind's name.
        [[nodiscard]] const char* what() const noexcept override;

    private:
        Kind kind_;
    };

    static constexpr std::string_view scriptFileName = "cursor-usage-capture.sh";
    static constexpr std::string_view captureFileName = "cursor-usage.jsonl";
    static constexpr std::string_view scriptMarker = "# QUORVANE-CURSOR-USAGE-CAPTURE";
    /// Changes with the script, so that `state` replaces older ones.
    static constexpr std::string_view scriptRevisionMarker = "# QUORVANE-CURSOR-CAPTURE-REV 2";
    /// A capture file of more bytes is cut to its last `captureKeepLines` lines, by the script.
    static constexpr std::int64_t captureMaxBytes = 0x200000;
    static constexpr std::int64_t captureKeepLines = 5000;
    /// The program by which the script reads the hook's input. Without it the hook captures nothing.
#if defined(__APPLE__)
    static constexpr std::string_view fieldReader = "/usr/bin/plutil";
#else
    static constexpr std::string_view fieldReader = "/usr/bin/jq";
#endif

    // Where things lie. Nothing is created.

    [[nodiscard]] static std::string cursorHome(const std::optional<std::string>& home = std::nullopt);
    [[nodiscard]] static std::string hooksURL(const std::optional<std::string>& cursorHome = std::nullopt);
    /// The folder "Quorvane" of the application support under `home`, absent for the user's home directory.
    [[nodiscard]] static std::string appSupportDirectory(const std::optional<std::string>& home = std::nullopt);
    [[nodiscard]] static std::string scriptURL(const std::optional<std::string>& appSupport = std::nullopt);
    [[nodiscard]] static std::string captureURL(const std::optional<std::string>& appSupport = std::nullopt);

    // The hook and its script.

    /// A script of another revision is replaced on the way, once per process and folder; failures of that are
    /// swallowed, and the state is `Active` in any case. Never throws for what files hold or lack.
    [[nodiscard]] static State state(const std::optional<std::string>& cursorHome = std::nullopt,
                                     const std::optional<std::string>& appSupport = std::nullopt,
                                     std::optional<bool> detected = std::nullopt);

    /// Writes the script and adds the hook behind the others of its list; a hook that is there already leaves
    /// `hooks.json` untouched. Everything else in that file keeps its value and each number its own text; layout and
    /// order of keys are the system's. Throws `SetupError`, with nothing written, or `std::system_error` with the path
    /// of what cannot be written; `hooks.json` is then as it was.
    static void install(const std::optional<std::string>& cursorHome = std::nullopt,
                        const std::optional<std::string>& appSupport = std::nullopt,
                        std::optional<bool> detected = std::nullopt);

    /// Takes the hook out, and removes the script and the captured data. A `hooks.json` that is missing, cannot be read
    /// or is not of the expected shape is left alone. Throws `std::system_error` with the path of what cannot be
    /// written or removed; what comes after that in the order above is as it was.
    static void uninstall(const std::optional<std::string>& cursorHome = std::nullopt,
                          const std::optional<std::string>& appSupport = std::nullopt);

    /// The hook's command, by which the system knows its own.
    [[nodiscard]] static std::string hookCommand(const std::optional<std::string>& appSupport = std::nullopt);

    /// The script's lines, without a line feed at the end; `outputURL` is the path of the capture file.
    [[nodiscard]] static std::string captureScript(std::string_view outputURL);

    /// Whether one of the folders holds the agent's command.
    [[nodiscard]] static bool isCursorCLIDetected(std::span<const std::string> searchDirectories);

    /// Whether `fieldReader` is installed, for a host that tells why nothing is captured. State and installation do not
    /// depend on it: it may come later.
    [[nodiscard]] static bool isFieldReaderInstalled();
};

}  // namespace quorvane
