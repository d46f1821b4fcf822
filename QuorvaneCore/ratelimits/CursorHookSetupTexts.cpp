#include <array>

#include "QuorvaneCore/platform/FilePath.h"
#include "QuorvaneCore/ratelimits/CursorHookSetup.h"

namespace quorvane {
namespace {

/// A line of the script, which prints the member "$1" of the payload: a text without quotes, a number in decimal,
/// nothing if there is no such member. Nothing follows it, not even a line feed.
#if defined(__APPLE__)
constexpr std::string_view readFieldLine =
    R"sh(  printf '%s' "$payload" | /usr/bin/plutil -extract "$1" raw -n -o - - 2>/dev/null)sh";
#else
// Two values one behind the other are no payload. A count may come as a text of digits, but the shell would take "010"
// for an octal number and end with an error at "08"; and one that a float cannot hold exactly is no count.
constexpr std::string_view readFieldLine =
    R"sh(  printf '%s' "$payload" | /usr/bin/jq -js --arg key "$1" )sh"
    R"sh('select(length == 1) | .[0][$key] | values)sh"
    R"sh( | if $key | endswith("_tokens") then tonumber? // . else . end)sh"
    R"sh( | if type == "number" and . > 9007199254740991 then "beyond" else . end' 2>/dev/null)sh";
#endif

/// A template: what stands in braces is filled in.
constexpr std::string_view scriptLines = R"sh(#!/bin/sh
{marker}
{revision}
# Fail open: usage capture must never affect Cursor's agent loop.
payload=$(/bin/cat) || exit 0
raw_field() {
{readField}
}
encoded_field() {
  raw_field "$1" | /usr/bin/base64 | /usr/bin/tr -d '\n'
}
generation_id=$(encoded_field generation_id)
[ -n "$generation_id" ] || exit 0
conversation_id=$(encoded_field conversation_id)
model=$(encoded_field model)
input_tokens=$(raw_field input_tokens); input_tokens=${input_tokens:-0}
output_tokens=$(raw_field output_tokens); output_tokens=${output_tokens:-0}
cache_read_tokens=$(raw_field cache_read_tokens); cache_read_tokens=${cache_read_tokens:-0}
cache_write_tokens=$(raw_field cache_write_tokens); cache_write_tokens=${cache_write_tokens:-0}
for count in "$input_tokens" "$output_tokens" "$cache_read_tokens" "$cache_write_tokens"; do
  case "$count" in ''|*[!0-9]*) exit 0 ;; esac
done
[ $((input_tokens + output_tokens + cache_read_tokens + cache_write_tokens)) -gt 0 ] || exit 0
captured_at=$(/bin/date +%s) || exit 0
/bin/mkdir -p {dir} 2>/dev/null || exit 0
/bin/chmod 700 {dir} 2>/dev/null || true
/usr/bin/printf '{"captured_at":%s,"conversation_id_b64":"%s","generation_id_b64":"%s","model_b64":"%s",)sh"
                                         R"sh("input_tokens":%s,"output_tokens":%s,"cache_read_tokens":%s,)sh"
                                         R"sh("cache_write_tokens":%s}\n'   "$captured_at" "$conversation_id" )sh"
                                         R"sh("$generation_id" "$model" "$input_tokens" "$output_tokens" )sh"
                                         R"sh("$cache_read_tokens" "$cache_write_tokens"   >> {out} 2>/dev/null || true
# Cap Quorvane's own capture file. Nothing else ever trims it, so without this it grows for as long as
# the hook stays installed. Line-granular (`tail -n`) so the trimmed file never starts mid-record,
# and idempotent: below the cap this is one `wc -c` and nothing else. Only ever touches Quorvane's own
# marked output file — never Cursor's config, never any other path.
size=$(/usr/bin/wc -c < {out} 2>/dev/null | /usr/bin/tr -d '[:space:]')
case "$size" in ''|*[!0-9]*) exit 0 ;; esac
[ "$size" -gt {maxBytes} ] || exit 0
trimmed={out}.trim.$$
if /usr/bin/tail -n {keepLines} {out} > "$trimmed" 2>/dev/null; then
  /bin/mv -f "$trimmed" {out} 2>/dev/null || /bin/rm -f "$trimmed" 2>/dev/null
else
  /bin/rm -f "$trimmed" 2>/dev/null
fi
exit 0)sh";

/// One word of a shell, whatever it holds: a quote ends the quoted text, stands between quotes of the other kind, and
/// begins it anew.
std::string shellQuoted(std::string_view text) {
    std::string quoted{"'"};
    for (const char character : text) {
        if (character == '\'') {
            quoted += R"('"'"')";
        } else {
            quoted += character;
        }
    }
    return quoted += '\'';
}

/// Something that the template leaves open.
struct Place {
    std::string_view name;  ///< with its braces
    std::string value;
};

const Place* placeAtStart(std::string_view lines, std::span<const Place> places) noexcept {
    for (const Place& place : places) {
        if (lines.starts_with(place.name)) return &place;
    }
    return nullptr;
}

/// In one pass, so that nothing inside a value is taken for a place.
std::string filled(std::string_view lines, std::span<const Place> places) {
    std::string text;
    while (!lines.empty()) {
        const Place* place = placeAtStart(lines, places);
        text += place != nullptr ? std::string_view{place->value} : lines.substr(0, 1);
        lines.remove_prefix(place != nullptr ? place->name.size() : 1);
    }
    return text;
}

}  // namespace

std::string CursorHookSetup::hookCommand(const std::optional<std::string>& appSupport) {
    return "/bin/sh " + shellQuoted(scriptURL(appSupport));
}

std::string CursorHookSetup::captureScript(std::string_view outputURL) {
    const std::array<Place, 7> places{{{"{marker}", std::string{scriptMarker}},
                                       {"{revision}", std::string{scriptRevisionMarker}},
                                       {"{readField}", std::string{readFieldLine}},
                                       {"{dir}", shellQuoted(FilePath::parent(outputURL))},
                                       {"{out}", shellQuoted(outputURL)},
                                       {"{maxBytes}", std::to_string(captureMaxBytes)},
                                       {"{keepLines}", std::to_string(captureKeepLines)}}};
    return filled(scriptLines, places);
}

}  // namespace quorvane
