#pragma once
#include <cstdint>
#include <exception>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace quorvane {

/// Gets hold of the official rate limits that Claude Code passes to the user's status-line script and tells nowhere
/// else: a marked block at the end of that script copies them into a file, which `ClaudeRateLimitStore` reads. A script
/// is never created and the agent's settings are never changed; the block is added only to a script that already reads
/// its standard input into a variable, and prints nothing to standard output. Home and settings are looked up at each
/// call. There is no lock: installing and taking out are one user's action at a time.
class StatuslineCapture {
public:
    StatuslineCapture() = delete;

    /// The script exists, has no block, and reads its standard input into a variable.
    struct Installable {
        std::string script;  ///< path
        friend bool operator==(const Installable&, const Installable&) = default;
    };
    /// The script holds the block, of whatever revision.
    struct Active {
        friend bool operator==(const Active&, const Active&) = default;
    };
    /// No settings, no status line, a script that cannot be read, or none that captures its standard input.
    struct Unavailable {
        friend bool operator==(const Unavailable&, const Unavailable&) = default;
    };
    using State = std::variant<Installable, Active, Unavailable>;

    /// Why the block cannot be installed. It has no text for users; the host words it.
    class CaptureError : public std::exception {
    public:
        enum class Kind : std::uint8_t {
            NoStatusline,    ///< the settings cannot be read, or name no status-line script
            NoStdinCapture,  ///< no line of the script reads standard input into a variable
        };

        explicit CaptureError(Kind kind) noexcept : kind_{kind} {}
        [[nodiscard]] Kind kind() const noexcept { return kind_; }
        /// The kind's name.
        [[nodiscard]] const char* what() const noexcept override;

    private:
        Kind kind_;
    };

    static constexpr std::string_view beginMarker = "# BEGIN QUORVANE-RATE-LIMIT-CAPTURE";
    static constexpr std::string_view endMarker = "# END QUORVANE-RATE-LIMIT-CAPTURE";
    /// Counts up with each change of the block's lines, so that `migrateIfNeeded` replaces older ones.
    static constexpr int blockRevision = 2;

    /// Never throws for what the files hold or lack.
    [[nodiscard]] static State state();

    /// Appends the block to the script, behind one blank line; a block of another revision is replaced in the same
    /// write. With the current block in place nothing is written. The script keeps its mode and, where the file system
    /// lets it, its owner; where its path is a link, the file behind it is rewritten. Throws `CaptureError`, or
    /// `std::system_error` with the path for a script that cannot be read (one that is not UTF-8 included) or written.
    /// The script is then as it was.
    static void install();

    /// Takes the block out of the script and leaves the rest; nothing is written if there is none, or if the settings
    /// name no script. Throws `std::system_error` as `install` does. The captured file stays: see
    /// `ClaudeRateLimitStore::clear`.
    static void uninstall();

    /// Installs anew where the script holds a block of another revision. Failures are swallowed.
    static void migrateIfNeeded() noexcept;

    /// The script that the settings' status-line command runs: its last word that ends in ".sh", else its last word,
    /// with the home directory put in. Words end at blanks and tabs, quotes mean nothing. Absent without such a
    /// command.
    [[nodiscard]] static std::optional<std::string> statuslineScriptPath(std::string_view settingsJSON);

    /// Whether the text contains the begin marker.
    [[nodiscard]] static bool isInstalled(std::string_view script) noexcept;

    /// The variable of the first line `NAME=$(cat)`, which may go on behind it and be indented. A name is made of ASCII
    /// letters, digits and "_", as the shell's are: no blank, so "export NAME=$(cat)" is not such a line. Absent if
    /// there is none. (A carriage return at the end of the line is no obstacle: the shell puts it behind the JSON text,
    /// where it is white space, and the block's own lines end in plain line feeds.)
    [[nodiscard]] static std::optional<std::string> stdinVarName(std::string_view script);

    /// Whether the text contains the begin marker, but not the line of the current revision.
    [[nodiscard]] static bool needsMigration(std::string_view script);

    /// The block's lines for that variable, without a line feed at the end.
    [[nodiscard]] static std::string captureBlock(std::string_view varName);

    /// The text without the block, as `MarkedBlock::removedFrom`.
    [[nodiscard]] static std::string removingBlock(std::string_view script);

    /// Puts the home directory in for "~" alone, a leading "~/" and a leading "$HOME/"; any other text stays as it is.
    [[nodiscard]] static std::string expandHome(std::string_view path);
};

}  // namespace quorvane
