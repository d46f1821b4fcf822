#include "QuorvaneCore/providers/MuseSparkScope.h"

#include <optional>

#include <fmt/format.h>

#include "QuorvaneCore/platform/FileContents.h"
#include "QuorvaneCore/platform/FilePath.h"
#include "QuorvaneCore/platform/JSONParser.h"

namespace quorvane {
namespace {

bool isFilled(const JSONValue& value) noexcept {
    const std::optional<std::string_view> text = value.string();
    return text && !text->empty();
}

}  // namespace

bool MuseSparkScope::hasMetaAPIKeyConfigured(const std::string& opencodeRoot) {
    const std::optional<std::string> content = readFile(FilePath::joining(opencodeRoot, "auth.json"));
    if (!content) return false;
    JSONParser parser;
    const JSONValue meta = parser.parse(*content)["meta"];
    return isFilled(meta["key"]) || isFilled(meta["apiKey"]);
}

std::string MuseSparkScope::detailNote(std::int64_t weekEvents, const std::string& opencodeRoot) {
    constexpr std::int64_t fewEvents = 5;
    if (weekEvents >= fewEvents || !hasMetaAPIKeyConfigured(opencodeRoot)) return std::string{baseNote};
    return fmt::format(
        "Meta API key is configured but OpenCode logged only {} {} here — usage from other clients won't appear. {}",
        weekEvents, weekEvents == 1 ? "turn" : "turns", baseNote);
}

}  // namespace quorvane
