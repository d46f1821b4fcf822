#include "QuorvaneCore/pricing/ModelEffort.h"

#include "QuorvaneCore/pricing/detail/ModelIdentifier.h"

namespace quorvane {

std::string_view rawName(ModelEffortLevel level) noexcept {
    switch (level) {
        case ModelEffortLevel::low: return "low";
        case ModelEffortLevel::medium: return "medium";
        case ModelEffortLevel::high: return "high";
    }
    return {};
}

std::string_view label(ModelEffortLevel level) noexcept {
    switch (level) {
        case ModelEffortLevel::low: return "Low";
        case ModelEffortLevel::medium: return "Medium";
        case ModelEffortLevel::high: return "High";
    }
    return {};
}

std::optional<ModelEffortLevel> modelEffortLevelFromRawName(std::string_view name) noexcept {
    for (const ModelEffortLevel level : allModelEffortLevels) {
        if (rawName(level) == name) return level;
    }
    return std::nullopt;
}

const ModelEffort::Levels& ModelEffort::levels() {
    static const Levels table{
        {"claude-opus-5", ModelEffortLevel::high},
        {"claude-opus-4-8", ModelEffortLevel::high},
        {"claude-opus-4-7", ModelEffortLevel::high},
        {"claude-opus-4-6", ModelEffortLevel::high},
        {"claude-opus-4-5", ModelEffortLevel::high},
        {"claude-fable-5", ModelEffortLevel::high},
        {"claude-mythos-5", ModelEffortLevel::high},
        {"claude-sonnet-5", ModelEffortLevel::high},
        {"claude-sonnet-4-6", ModelEffortLevel::high},
        {"claude-sonnet-4-5", ModelEffortLevel::high},
        {"gpt-5.6-sol", ModelEffortLevel::high},
        {"gpt-5.6-luna", ModelEffortLevel::high},
        {"gpt-5.6-terra", ModelEffortLevel::high},
        {"gpt-5.5", ModelEffortLevel::high},
        {"gpt-5.4", ModelEffortLevel::high},
        {"gpt-5.3-codex", ModelEffortLevel::high},
        {"gpt-5.3-codex-spark", ModelEffortLevel::high},
        {"gpt-5.2", ModelEffortLevel::high},
        {"gpt-5.2-codex", ModelEffortLevel::high},
        {"gpt-5.1-codex-max", ModelEffortLevel::high},
        {"gemini-3-pro-preview", ModelEffortLevel::high},
        {"gemini-3", ModelEffortLevel::high},
        {"grok-4.6", ModelEffortLevel::high},
        {"grok-4.5", ModelEffortLevel::high},
        {"grok-4.3", ModelEffortLevel::high},
        {"grok-4.20-0309-reasoning", ModelEffortLevel::high},
        {"grok-4.20-multi-agent-0309", ModelEffortLevel::high},
        {"grok-composer-2.5-fast", ModelEffortLevel::high},
        {"muse-spark-1.1", ModelEffortLevel::high},
        {"muse-spark", ModelEffortLevel::high},
        {"meta-muse-spark-1.1", ModelEffortLevel::high},
        {"gpt-5.1-codex", ModelEffortLevel::medium},
        {"gpt-5-codex", ModelEffortLevel::medium},
        {"gemini-2.5-pro", ModelEffortLevel::medium},
        {"grok-4.20-0309-non-reasoning", ModelEffortLevel::medium},
        {"grok-build-0.1", ModelEffortLevel::medium},
        {"grok-composer-2.5", ModelEffortLevel::medium},
        {"claude-haiku-4-5", ModelEffortLevel::low},
        {"gpt-5.4-mini", ModelEffortLevel::low},
        {"gpt-5.1-codex-mini", ModelEffortLevel::low},
        {"gemini-3-flash-preview", ModelEffortLevel::low},
        {"gemini-2.5-flash", ModelEffortLevel::low},
        {"gemini-2.5-flash-lite", ModelEffortLevel::low},
    };
    return table;
}

std::string ModelEffort::normalizedID(std::string_view model) {
    std::string name = detail::lowerCased(model);
    const std::size_t slash = name.find('/');
    if (slash != std::string::npos && slash > 0) name.erase(0, slash + 1);
    name.resize(detail::withoutCompactDate(name).size());
    name.resize(name.size() - detail::buildTailLength(name));
    return name;
}

ModelEffortLevel ModelEffort::level(std::string_view model) {
    const auto known = levels().find(normalizedID(model));
    return known == levels().end() ? fallback : known->second;
}

}  // namespace quorvane
