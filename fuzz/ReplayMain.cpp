// Runs a fuzz target over kept inputs: the arguments are files, and folders of files. Fails if there is no input at
// all.

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <system_error>
#include <vector>

#include "fuzz/FuzzTarget.h"

namespace {

namespace fs = std::filesystem;

std::vector<fs::path> inputsOf(int count, char** arguments) {
    std::vector<fs::path> inputs;
    for (int index = 1; index < count; ++index) {
        const fs::path argument{arguments[index]};
        if (!fs::is_directory(argument)) {
            inputs.push_back(argument);
            continue;
        }
        for (const fs::directory_entry& entry : fs::directory_iterator{argument}) {
            if (entry.is_regular_file()) inputs.push_back(entry.path());
        }
    }
    std::sort(inputs.begin(), inputs.end());
    return inputs;
}

bool run(const fs::path& input) {
    std::ifstream stream{input, std::ios::binary};
    if (!stream) {
        std::fprintf(stderr, "cannot read %s\n", input.c_str());
        return false;
    }
    const std::string content{std::istreambuf_iterator<char>{stream}, {}};
    // A broken invariant ends the process, so the name of the input comes first.
    std::printf("%s, %zu bytes\n", input.c_str(), content.size());
    std::fflush(stdout);
    const std::vector<std::uint8_t> bytes{content.begin(), content.end()};
    LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
    return true;
}

}  // namespace

int main(int count, char** arguments) {
    try {
        const std::vector<fs::path> inputs = inputsOf(count, arguments);
        if (inputs.empty()) {
            std::fprintf(stderr, "no inputs\n");
            return 1;
        }
        return std::all_of(inputs.begin(), inputs.end(), run) ? 0 : 1;
    } catch (const std::system_error& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
