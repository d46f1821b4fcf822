// Line cutting: a file that is read while it grows gives the lines of the finished file, whatever the chunk size, and
// the two other ways of reading see the same lines.
//
// Input: one byte for the chunk size, one for the number of pauses of the writer, two for the place of each pause, and
// then the content of the file.

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include <fmt/format.h>
#include <sys/mman.h>
#include <unistd.h>

#include "QuorvaneCore/ingest/JSONLStreamReader.h"
#include "QuorvaneCore/platform/JSONParser.h"
#include "fuzz/FuzzTarget.h"

using quorvane::JSONLStreamReader;
using quorvane::JSONParser;
using quorvane::JSONValue;
using quorvane::fuzz::require;

namespace {

using Lines = std::vector<std::string>;

constexpr std::size_t largestContent = 8192;

/// A file in memory that others can open by its path.
class MemoryFile {
public:
    MemoryFile() : descriptor_{::memfd_create("line_cutting", MFD_CLOEXEC)} {
        require(descriptor_ >= 0, "a file in memory can be made");
    }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;
    ~MemoryFile() { ::close(descriptor_); }

    [[nodiscard]] std::string path() const { return fmt::format("/proc/self/fd/{}", descriptor_); }

    void append(std::string_view bytes) const {
        while (!bytes.empty()) {
            const ssize_t count = ::write(descriptor_, bytes.data(), bytes.size());
            require(count > 0, "a file in memory can be written");
            bytes.remove_prefix(static_cast<std::size_t>(count));
        }
    }

private:
    int descriptor_;
};

struct Input {
    JSONLStreamReader reader;
    std::vector<std::size_t> pauses;
    std::string_view content;
};

Input takeApart(const std::uint8_t* data, std::size_t size) {
    Input input;
    const std::uint8_t chunk = data[0];
    input.reader.chunkSize = chunk == 0 ? 65536 : chunk;
    const std::size_t pauseCount = std::min<std::size_t>(data[1] % 8, (size - 2) / 2);
    const std::uint8_t* places = data + 2;
    const std::uint8_t* begin = places + 2 * pauseCount;
    const auto length = static_cast<std::size_t>(data + size - begin);
    input.content = {reinterpret_cast<const char*>(begin), std::min(length, largestContent)};
    for (std::size_t index = 0; index < pauseCount; ++index) {
        const std::size_t place = places[2 * index] * std::size_t{256} + places[2 * index + 1];
        input.pauses.push_back(place % (input.content.size() + 1));
    }
    std::sort(input.pauses.begin(), input.pauses.end());
    return input;
}

bool isWholeDocument(std::string_view bytes) {
    JSONParser parser;
    const JSONValue document = parser.parse(bytes);
    return document.isObject() || document.isArray();
}

/// The lines of `content` by the plainest means: those that are ended, and what stands behind the last line feed.
struct Expected {
    Lines ended;
    std::string_view rest;
};

Expected cut(std::string_view content) {
    Expected expected;
    for (std::size_t feed = content.find('\n'); feed != std::string_view::npos; feed = content.find('\n')) {
        if (feed > 0) expected.ended.emplace_back(content.substr(0, feed));
        content.remove_prefix(feed + 1);
    }
    expected.rest = content;
    return expected;
}

/// A last line that is a whole document counts as ended, so a writer that pauses there must not go on with the same
/// line. Agents write a line at a time and never do; an input in which one does has that pause left out.
bool isHonestPause(std::string_view content, std::size_t place) {
    if (place == content.size() || content[place] == '\n') return true;
    return !isWholeDocument(cut(content.substr(0, place)).rest);
}

void checkTail(const std::string& path, std::string_view content, const Lines& lines, std::size_t maxBytes) {
    std::string_view window = content;
    Lines expected = lines;
    if (maxBytes < content.size()) {
        window.remove_prefix(content.size() - maxBytes);
        const std::size_t feed = window.find('\n');
        window = feed == std::string_view::npos ? std::string_view{} : window.substr(feed + 1);
        const Expected inWindow = cut(window);
        expected = inWindow.ended;
        if (!inWindow.rest.empty()) expected.emplace_back(inWindow.rest);
    }
    std::reverse(expected.begin(), expected.end());
    const auto accept = [](std::string_view line) { return std::optional<std::string>{line}; };
    require(JSONLStreamReader::matchingTail(path, maxBytes, 1 << 20, accept) == expected, "the tail backwards");
    const auto first = JSONLStreamReader::firstMatchingTail(path, maxBytes, accept);
    require(first.has_value() == !expected.empty(), "a last line is found if there is one");
    require(!first || *first == expected.front(), "the last line is the first of the tail");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 2) return 0;
    const Input input = takeApart(data, size);
    const std::string_view content = input.content;

    const MemoryFile file;
    Lines stepwise;
    std::int64_t offset = 0;
    std::size_t written = 0;
    const auto grow = [&](std::size_t end) {
        file.append(content.substr(written, end - written));
        written = end;
        offset = input.reader.read(file.path(), offset, [&](std::string_view line) { stepwise.emplace_back(line); });
    };
    for (const std::size_t pause : input.pauses) {
        if (isHonestPause(content, pause)) grow(pause);
    }
    grow(content.size());

    const Expected expected = cut(content);
    Lines all = expected.ended;
    if (!expected.rest.empty()) all.emplace_back(expected.rest);
    const bool restCounts = !expected.rest.empty() && isWholeDocument(expected.rest);
    const auto consumed = static_cast<std::int64_t>(content.size() - (restCounts ? 0 : expected.rest.size()));

    Lines atOnce;
    const std::int64_t offsetAtOnce =
        input.reader.read(file.path(), 0, [&](std::string_view line) { atOnce.emplace_back(line); });
    require(offsetAtOnce == consumed, "all ended lines are consumed and nothing else");
    require(atOnce == (restCounts ? all : expected.ended), "the ended lines are delivered");
    require(stepwise == atOnce, "reading in steps gives the lines of reading at once");
    require(offset == offsetAtOnce, "reading in steps ends where reading at once ends");

    Lines whole;
    input.reader.read(file.path(), [&](std::string_view line) { whole.emplace_back(line); });
    require(whole == all, "reading without an offset delivers what is left too");

    checkTail(file.path(), content, all, content.size());
    checkTail(file.path(), content, all, content.size() + 1);
    checkTail(file.path(), content, all, data[1]);
    return 0;
}
