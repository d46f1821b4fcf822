#include "benchmarks/support/BenchmarkData.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <stdexcept>

#include <unistd.h>

namespace quorvane::benchmarks {
namespace {

namespace fs = std::filesystem;
using Totals = ClaudeHistory::Totals;

/// Beside the logs stands what is in them; written last, it also says that they are complete.
constexpr const char* totalsFile = "totals.txt";

std::optional<Totals> readTotals(const fs::path& file) {
    std::ifstream stream{file};
    Totals totals;
    stream >> totals.files >> totals.bytes >> totals.lines >> totals.usageLines >> totals.calls >>
        totals.subagentCalls >> totals.longestLine >> totals.usageBytes >> totals.tokens.input >>
        totals.tokens.output >> totals.tokens.cacheCreate5m >> totals.tokens.cacheCreate1h >> totals.tokens.cacheRead;
    return stream ? std::optional{totals} : std::nullopt;
}

void writeTotals(const fs::path& file, const Totals& totals) {
    std::ofstream stream{file};
    stream << totals.files << '\n'
           << totals.bytes << '\n'
           << totals.lines << '\n'
           << totals.usageLines << '\n'
           << totals.calls << '\n'
           << totals.subagentCalls << '\n'
           << totals.longestLine << '\n'
           << totals.usageBytes << '\n'
           << totals.tokens.input << '\n'
           << totals.tokens.output << '\n'
           << totals.tokens.cacheCreate5m << '\n'
           << totals.tokens.cacheCreate1h << '\n'
           << totals.tokens.cacheRead << '\n';
    if (!stream.flush()) throw std::runtime_error{"cannot write " + file.string()};
}

/// Reads all logs once, so that the first timed pass finds them in the system's cache like the later ones.
void warmCache(const std::string& folder) {
    std::string chunk(1 << 20, '\0');
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator{folder}) {
        if (!entry.is_regular_file()) continue;
        std::ifstream stream{entry.path(), std::ios::binary};
        while (stream.read(chunk.data(), static_cast<std::streamsize>(chunk.size())) || stream.gcount() > 0) {
        }
    }
}

}  // namespace

std::string BenchmarkData::folder() {
    const char* chosen = std::getenv("QUORVANE_BENCHMARK_DATA");
    fs::path folder =
        chosen != nullptr && *chosen != '\0' ? fs::path{chosen} : fs::temp_directory_path() / "quorvane-benchmark-data";
    fs::create_directories(folder);
    return folder.string();
}

double BenchmarkData::scale() {
    const char* chosen = std::getenv("QUORVANE_BENCHMARK_SCALE");
    if (chosen == nullptr || *chosen == '\0') return 1;
    const double scale = std::strtod(chosen, nullptr);
    if (!(scale > 0 && scale <= 1))
        throw std::invalid_argument{"QUORVANE_BENCHMARK_SCALE must be above 0 and at most 1"};
    return scale;
}

std::int64_t BenchmarkData::scaled(std::int64_t count) {
    return std::max<std::int64_t>(1, std::llround(static_cast<double>(count) * scale()));
}

BenchmarkData::History BenchmarkData::history(const ClaudeHistory::Parameters& parameters) {
    const fs::path folder = fs::path{BenchmarkData::folder()} / parameters.name();
    const std::string projects = (folder / "projects").string();
    std::optional<Totals> totals = readTotals(folder / totalsFile);
    if (!totals) {
        std::fprintf(stderr, "generating %s\n", folder.c_str());
        fs::remove_all(folder);
        totals = ClaudeHistory::write(projects, parameters);
        writeTotals(folder / totalsFile, *totals);
    }
    warmCache(projects);
    return {.projects = projects, .totals = *totals};
}

const BenchmarkData::History& BenchmarkData::typicalHistory() {
    static const History history = BenchmarkData::history(
        {.shape = ClaudeHistory::Shape::Typical, .bytes = scaled(1 << 30), .files = scaled(3000)});
    return history;
}

const BenchmarkData::History& BenchmarkData::manyFiles() {
    static const History history = BenchmarkData::history(
        {.shape = ClaudeHistory::Shape::EqualFiles, .bytes = scaled(10'000) * 4096, .files = scaled(10'000)});
    return history;
}

const BenchmarkData::History& BenchmarkData::largeFile() {
    static const History history = BenchmarkData::history(
        {.shape = ClaudeHistory::Shape::OneLargeFile, .bytes = scaled(600'000'000), .longLine = scaled(10'000'000)});
    return history;
}

ScratchFolder::ScratchFolder() {
    std::string pattern = BenchmarkData::folder() + "/scratch-XXXXXX";
    if (::mkdtemp(pattern.data()) == nullptr) throw std::runtime_error{"cannot make " + pattern};
    path_ = pattern;
}

ScratchFolder::~ScratchFolder() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
}

void ScratchFolder::clear() const {
    for (const fs::directory_entry& entry : fs::directory_iterator{path_})
        fs::remove_all(entry.path());
}

}  // namespace quorvane::benchmarks
