#include "tests/cursor/CursorTestSupport.h"

#include <algorithm>
#include <filesystem>
#include <sstream>

#include <fmt/format.h>

#include "QuorvaneCore/ratelimits/CursorHookSetup.h"

namespace quorvane::testing {

void CursorScratchHome::install() const {
    CursorHookSetup::install(std::nullopt, std::nullopt, true);
}

std::vector<std::string> CursorScratchHome::captured() const {
    std::vector<std::string> lines;
    if (!exists(captureFile)) return lines;
    std::istringstream content{read(captureFile)};
    for (std::string line; std::getline(content, line);)
        lines.push_back(line);
    return lines;
}

std::vector<std::string> CursorScratchHome::filesInFolder() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator{path(folder)})
        names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

std::string CursorScratchHome::writeIrreplaceable(std::string_view file, std::string_view content) const {
    // The name leaves no room for that of a temporary file beside it.
    constexpr std::size_t longestName = 255;
    std::string target = write("held/" + std::string(longestName, 'n'), content);
    write(file, "");
    remove(file);
    std::filesystem::create_symlink(target, path(file));
    return target;
}

ProgramRun runHook(const std::string& command, const std::string& input) {
    ProgramRun::Options options;
    options.input = input;
    return ProgramRun::of({"/bin/sh", "-c", command}, options);
}

ProgramRun runHook(const std::string& input) {
    return runHook(CursorHookSetup::hookCommand(), input);
}

std::string hookInput(std::string_view generation, std::string_view counters) {
    return fmt::format(R"({{"conversation_id":"668f2c1e-conversation","generation_id":"{}","model":"composer-2.5",)"
                       R"("status":"completed","loop_count":0,{},"hook_event_name":"stop","cursor_version":"2.9.1",)"
                       R"("workspace_roots":["/home/ana/shop"],"user_email":null}})",
                       generation, counters);
}

std::string captureLine(std::string_view generation, int output, double when) {
    return fmt::format(R"({{"captured_at":{:.0f},"conversation_id_b64":"Yw==","generation_id":"{}",)"
                       R"("model_b64":"Y29tcG9zZXItMi41","input_tokens":23756,"output_tokens":{},)"
                       R"("cache_read_tokens":23617,"cache_write_tokens":47}})",
                       when, generation, output);
}

std::string told(const UsageEvent& event) {
    return fmt::format("{} {} {} {} {:.3f} {}/{}/{}/{}/{} {}", rawName(event.provider), event.messageId,
                       event.requestId, event.model, event.timestamp.secondsSince1970, event.usage.input,
                       event.usage.output, event.usage.cacheCreate5m, event.usage.cacheCreate1h, event.usage.cacheRead,
                       event.project.value_or("(none)"));
}

std::vector<std::string> told(const std::vector<UsageEvent>& events) {
    std::vector<std::string> texts;
    for (const UsageEvent& event : events)
        texts.push_back(told(event));
    return texts;
}

}  // namespace quorvane::testing
