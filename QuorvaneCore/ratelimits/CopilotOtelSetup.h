#pragma once
#include <cstdint>
#include <exception>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace quorvane {

/// Makes GitHub Copilot CLI, which keeps no usage log of its own, export its telemetry to a local file, which
/// `CopilotProvider` reads: a marked block in the user's shell start-up file sets one environment variable. Copilot's
/// own configuration is not touched, and nothing goes to the network. The block counts for shells that start behind it.
/// Environment and disk are looked at anew at each call. There is no lock: installing and taking out are one user's
/// action at a time.
class CopilotOtelSetup {
public:
    CopilotOtelSetup() = delete;

    /// The shell is known, and its start-up file has no block, is not there, or cannot be read as UTF-8.
    struct Installable {
        std::string shellRC;  ///< path of the start-up file
        friend bool operator==(const Installable&, const Installable&) = default;
    };
    /// The start-up file holds the block, for whatever home directory.
    struct Active {
        friend bool operator==(const Active&, const Active&) = default;
    };
    /// The shell is none that is served.
    struct Unavailable {
        friend bool operator==(const Unavailable&, const Unavailable&) = default;
    };
    using State = std::variant<Installable, Active, Unavailable>;

    /// Why the block cannot be installed. It has no text for users; the host words it.
    class SetupError : public std::exception {
    public:
        enum class Kind : std::uint8_t {
            NoShellRC,  ///< the shell is none whose start-up file is known
        };

        explicit SetupError(Kind kind) noexcept : kind_{kind} {}
        [[nodiscard]] Kind kind() const noexcept { return kind_; }
        /// The kind's name.
        [[nodiscard]] const char* what() const noexcept override;

    private:
        Kind kind_;
    };

    static constexpr std::string_view beginMarker = "# BEGIN QUORVANE-COPILOT-OTEL";
    static constexpr std::string_view endMarker = "# END QUORVANE-COPILOT-OTEL";

    /// The start-up file of the shell that `shellEnv`, the value of `SHELL`, names by its path: ".zshrc" of a zsh, and
    /// of a bash ".bash_profile" if that exists, else ".bashrc". Absent for any other shell and without a value.
    [[nodiscard]] static std::optional<std::string> shellRCURL(std::optional<std::string_view> shellEnv);

    /// Never throws for what the start-up file holds or lacks.
    [[nodiscard]] static State state();

    /// Adds the block to the end of the start-up file, behind one blank line, and creates the folder of the exported
    /// file, which the exporter does not do. A file that is not there is created; a block for another home directory is
    /// replaced in the same write; with the present block in place nothing is done at all. The file keeps its mode;
    /// where its path is a link, the file behind it is rewritten.
    /// Throws `SetupError`, or `std::system_error` with the path: of a start-up file that cannot be read (one that is
    /// not UTF-8 included) or written, which is then as it was; or of the folder, with the block written already.
    static void install();

    /// Takes the block out of the start-up file and leaves the rest, and the exported file too. Nothing is done if
    /// there is none or the file cannot be read as UTF-8. Throws `std::system_error` with the path if it cannot be
    /// written; it is then as it was.
    static void uninstall();

    /// Whether the text contains the begin marker.
    [[nodiscard]] static bool isInstalled(std::string_view script) noexcept;

    /// Whether the text contains the path of the exported file under the present home directory.
    [[nodiscard]] static bool isCurrent(std::string_view script);

    /// The exported file under a home directory.
    [[nodiscard]] static std::string otelFileExporterPath(std::string_view home);

    /// The block's lines for the present home directory, without a line feed at the end. The path stands between double
    /// quotes as it is.
    [[nodiscard]] static std::string enablementBlock();

    /// The text without the block, as `MarkedBlock::removedFrom`.
    [[nodiscard]] static std::string removingBlock(std::string_view script);

    /// Where the agent's command may lie: `ProviderExecutableDetection::defaultSearchDirectories` for the present home.
    [[nodiscard]] static std::vector<std::string> defaultCopilotSearchDirectories();

    /// Whether one of the folders holds the agent's command.
    [[nodiscard]] static bool isCopilotCLIDetected(std::span<const std::string> searchDirectories);
};

}  // namespace quorvane
