#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "QuorvaneCore/platform/FunctionView.h"

namespace quorvane {

/// Reads line-delimited logs that another program may be writing at this moment.
/// A line is the run of bytes between two line feeds; a carriage return stays in it, and lines without a byte are not
/// delivered. Memory is one chunk and the longest line, however large the file. Each call opens and closes the file;
/// nothing throws or reports: what cannot be read is not delivered. Any thread may use a reader.
///
/// The callbacks run on the caller's thread. The bytes they get are valid during the callback only, and
/// `JSONParser::padding` more bytes behind them are readable.
struct JSONLStreamReader {
    std::int64_t chunkSize = 65536;  ///< bytes read per call, at least 1

    using OnLine = FunctionView<void(std::string_view)>;

    /// Reads the whole file. A last line without a line feed is delivered whatever it holds.
    void read(const std::string& file, OnLine onLine) const;

    /// Reads from byte `from` on and returns the offset up to which the file is consumed, to go on from next time.
    /// A last line without a line feed is delivered and consumed only if it is a whole JSON object or array; otherwise
    /// its writer is still at it, and the next read begins at its start.
    /// A file that cannot be opened gives `from` again. A negative `from` reads from the start and counts from `from`.
    [[nodiscard]] std::int64_t read(const std::string& file, std::int64_t from, OnLine onLine) const;

    /// Offers the lines of the last `maxBytes` bytes to `parse`, the last line first, until it has given `limit`
    /// values; returns them in that order. A window that begins within the file begins behind its first line feed. A
    /// last line without a line feed is offered like any other. `parse` takes the bytes of a line and returns an
    /// optional.
    template <typename Parse>
    [[nodiscard]] static auto matchingTail(const std::string& file, std::uint64_t maxBytes, std::int64_t limit,
                                           Parse&& parse) {
        using Value = typename decltype(parse(std::string_view{}))::value_type;
        std::vector<Value> values;
        if (limit < 1) return values;
        forEachTailLine(file, maxBytes, [&](std::string_view line) {
            if (auto value = parse(line)) values.push_back(*std::move(value));
            return std::cmp_less(values.size(), limit);
        });
        return values;
    }

    /// The first of `matchingTail`: what `parse` makes of the last line that it accepts.
    template <typename Parse>
    [[nodiscard]] static auto firstMatchingTail(const std::string& file, std::uint64_t maxBytes, Parse&& parse) {
        auto values = matchingTail(file, maxBytes, 1, std::forward<Parse>(parse));
        using Value = typename decltype(values)::value_type;
        return values.empty() ? std::optional<Value>{} : std::optional<Value>{std::move(values.front())};
    }

private:
    /// `goOn` is asked after each line whether to go on to the one before.
    static void forEachTailLine(const std::string& file, std::uint64_t maxBytes,
                                FunctionView<bool(std::string_view)> goOn);
};

}  // namespace quorvane
