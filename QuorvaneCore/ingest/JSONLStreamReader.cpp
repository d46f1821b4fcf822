#include "QuorvaneCore/ingest/JSONLStreamReader.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <utility>

#include "QuorvaneCore/platform/CheckedArithmetic.h"
#include "QuorvaneCore/platform/FileHandle.h"
#include "QuorvaneCore/platform/JSONParser.h"

namespace quorvane {
namespace {

struct Free {
    void operator()(char* bytes) const noexcept { std::free(bytes); }  // NOLINT: from realloc
};

/// Memory for lines. The padding behind them is readable from the start.
struct LineMemory {
    std::unique_ptr<char, Free> bytes;
    std::size_t capacity = 0;
};

/// What a thread keeps for its next file: to give a block of this size back and take it again for each of thousands of
/// small files makes the allocator tidy up every time, which costs several percent of a refresh.
LineMemory& keptMemory() noexcept {
    thread_local LineMemory kept;
    return kept;
}

/// The part of a file that is in memory: the beginning of a line whose end is not read yet, and one chunk.
class LineBuffer {
public:
    /// Takes what the thread keeps, so that a read inside another's line has memory of its own.
    explicit LineBuffer(std::size_t chunkSize) noexcept
        : chunkSize_{chunkSize}, memory_{std::exchange(keptMemory(), {})} {}
    LineBuffer(const LineBuffer&) = delete;
    LineBuffer& operator=(const LineBuffer&) = delete;
    ~LineBuffer() {
        constexpr std::size_t mostKept = 1 << 20;  // a very long line does not stay
        if (memory_.capacity <= mostKept) keptMemory() = std::move(memory_);
    }

    enum class Fill { Bytes, EndOfFile, Error };

    /// Reads one chunk behind what is left.
    Fill fill(FileHandle& file) {
        makeRoom();
        const std::optional<std::size_t> count = file.read({memory_.bytes.get() + end_, chunkSize_});
        if (!count) return Fill::Error;
        end_ += *count;
        return *count == 0 ? Fill::EndOfFile : Fill::Bytes;
    }

    /// Delivers the finished lines and drops them. Returns the bytes dropped, line feeds and empty lines included.
    std::size_t deliver(JSONLStreamReader::OnLine onLine) {
        const char* const bytes = memory_.bytes.get();
        std::size_t lineBegin = 0;
        while (const void* found = std::memchr(bytes + scanned_, '\n', end_ - scanned_)) {
            const auto feed = static_cast<std::size_t>(static_cast<const char*>(found) - bytes);
            if (feed > lineBegin) onLine({bytes + lineBegin, feed - lineBegin});
            lineBegin = scanned_ = feed + 1;
        }
        begin_ = lineBegin;
        scanned_ = end_;
        return lineBegin;
    }

    /// What is behind the last line feed.
    [[nodiscard]] std::string_view remainder() const noexcept { return {memory_.bytes.get() + begin_, end_ - begin_}; }

private:
    void makeRoom() {
        const std::size_t left = end_ - begin_;
        if (begin_ > 0) std::memmove(memory_.bytes.get(), memory_.bytes.get() + begin_, left);
        scanned_ -= begin_;
        begin_ = 0;
        end_ = left;
        const std::size_t needed = end_ + chunkSize_ + JSONParser::padding;
        if (needed <= memory_.capacity) return;
        // realloc moves the pages of a large block instead of copying them, so a line of 100 MB is in memory once.
        const std::size_t larger = std::max(needed, memory_.capacity + memory_.capacity / 2);
        auto* grown = static_cast<char*>(std::realloc(memory_.bytes.get(), larger));  // NOLINT: owned at once
        if (grown == nullptr) throw std::bad_alloc{};
        static_cast<void>(memory_.bytes.release());
        memory_.bytes.reset(grown);
        // The padding is readable from the start, whatever stands in it.
        std::memset(grown + memory_.capacity, 0, std::min<std::size_t>(larger - memory_.capacity, JSONParser::padding));
        memory_.capacity = larger;
    }

    std::size_t chunkSize_;
    LineMemory memory_;
    std::size_t begin_ = 0;    ///< where what is left begins
    std::size_t scanned_ = 0;  ///< up to here there is no line feed
    std::size_t end_ = 0;
};

std::size_t chunkBytes(std::int64_t chunkSize) {
    return static_cast<std::size_t>(std::max<std::int64_t>(chunkSize, 1));
}

bool isCompleteDocument(std::string_view bytes) {
    JSONParser parser;
    const JSONValue document = parser.parsePadded(bytes);
    return document.isObject() || document.isArray();
}

}  // namespace

void JSONLStreamReader::read(const std::string& file, OnLine onLine) const {
    std::optional<FileHandle> handle = FileHandle::open(file);
    if (!handle) return;
    LineBuffer buffer{chunkBytes(chunkSize)};
    while (buffer.fill(*handle) == LineBuffer::Fill::Bytes)
        buffer.deliver(onLine);
    if (const std::string_view last = buffer.remainder(); !last.empty()) onLine(last);
}

std::int64_t JSONLStreamReader::read(const std::string& file, std::int64_t from, OnLine onLine) const {
    std::optional<FileHandle> handle = FileHandle::open(file);
    if (!handle || !handle->seek(std::max<std::int64_t>(from, 0))) return from;
    LineBuffer buffer{chunkBytes(chunkSize)};
    std::int64_t consumed = from;
    for (;;) {
        switch (buffer.fill(*handle)) {
            case LineBuffer::Fill::Error: return consumed;
            case LineBuffer::Fill::Bytes:
                consumed = checkedAdd(consumed, static_cast<std::int64_t>(buffer.deliver(onLine)));
                continue;
            case LineBuffer::Fill::EndOfFile: break;
        }
        break;
    }
    const std::string_view last = buffer.remainder();
    if (last.empty() || !isCompleteDocument(last)) return consumed;
    onLine(last);
    return checkedAdd(consumed, static_cast<std::int64_t>(last.size()));
}

void JSONLStreamReader::forEachTailLine(const std::string& file, std::uint64_t maxBytes,
                                        FunctionView<bool(std::string_view)> goOn) {
    std::optional<FileHandle> handle = FileHandle::open(file);
    if (!handle) return;
    const std::optional<std::int64_t> size = handle->seekToEnd();
    if (!size) return;
    const bool isCut = std::cmp_greater(*size, maxBytes);
    const std::int64_t start = isCut ? *size - static_cast<std::int64_t>(maxBytes) : 0;
    if (!handle->seek(start)) return;
    const auto length = static_cast<std::size_t>(*size - start);
    std::string bytes(length + JSONParser::padding, '\0');
    const std::optional<std::size_t> count = handle->read({bytes.data(), length});
    if (!count || *count == 0) return;

    std::string_view window = std::string_view{bytes}.substr(0, *count);
    if (isCut) {
        const std::size_t feed = window.find('\n');
        if (feed == std::string_view::npos) return;
        window.remove_prefix(feed + 1);
    }
    for (;;) {
        while (!window.empty() && window.back() == '\n')
            window.remove_suffix(1);
        if (window.empty()) return;
        const std::size_t feed = window.rfind('\n');
        const bool isFirst = feed == std::string_view::npos;
        if (!goOn(window.substr(isFirst ? 0 : feed + 1)) || isFirst) return;
        window = window.substr(0, feed);
    }
}

}  // namespace quorvane
