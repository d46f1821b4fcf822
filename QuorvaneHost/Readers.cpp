#include "QuorvaneHost/Readers.h"

#include <algorithm>

#include "QuorvaneCore/providers/ClaudeProvider.h"
#include "QuorvaneCore/providers/CodexProvider.h"
#include "QuorvaneCore/providers/CopilotProvider.h"
#include "QuorvaneCore/providers/CursorProvider.h"
#include "QuorvaneCore/providers/GeminiProvider.h"
#include "QuorvaneCore/providers/GrokProvider.h"
#include "QuorvaneCore/providers/MuseSparkProvider.h"
#include "QuorvaneCore/providers/OpenCodeProvider.h"

namespace quorvane::host {

std::vector<Reader> allReaders() {
    std::vector<Reader> readers;
    readers.push_back(std::make_unique<ClaudeProvider>());
    readers.push_back(std::make_unique<CodexProvider>());
    readers.push_back(std::make_unique<GeminiProvider>());
    readers.push_back(std::make_unique<CopilotProvider>());
    readers.push_back(std::make_unique<CursorProvider>());
    readers.push_back(std::make_unique<GrokProvider>());
    readers.push_back(std::make_unique<OpenCodeProvider>());
    readers.push_back(std::make_unique<MuseSparkProvider>());
    return readers;
}

bool hasReader(const std::string& providerName) {
    const std::vector<Reader> readers = allReaders();
    return std::any_of(readers.begin(), readers.end(),
                       [&](const Reader& reader) { return rawName(reader->id()) == providerName; });
}

std::vector<Reader> readersNamed(std::span<const std::string> providerNames) {
    std::vector<Reader> readers = allReaders();
    if (providerNames.empty()) return readers;
    std::erase_if(readers, [&](const Reader& reader) {
        return std::find(providerNames.begin(), providerNames.end(), rawName(reader->id())) == providerNames.end();
    });
    return readers;
}

}  // namespace quorvane::host
