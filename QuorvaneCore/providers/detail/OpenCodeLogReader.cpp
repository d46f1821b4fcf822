#include "QuorvaneCore/providers/detail/OpenCodeLogReader.h"

#include <utility>

#include "QuorvaneCore/model/Deduplicator.h"
#include "QuorvaneCore/platform/CheckedArithmetic.h"
#include "QuorvaneCore/platform/UTF8.h"
#include "QuorvaneCore/providers/MuseSparkProvider.h"
#include "QuorvaneCore/providers/OpenCodeProvider.h"
#include "QuorvaneCore/providers/detail/OpenCodeLogFields.h"

namespace quorvane {
namespace {

OpenCodeLogParse parseLines(const std::string& file, const JSONLStreamReader& reader) {
    Deduplicator opencode;
    Deduplicator museSpark;
    reader.read(file, [&](std::string_view line) {
        if (!detail::mayTellOfTokens(line) || !isUTF8(line)) return;
        const detail::OpenCodeLogFields fields = detail::parseOpenCodeLogFields(line);
        if (auto event = OpenCodeProvider::decode(fields)) opencode.add(*std::move(event));
        if (auto event = MuseSparkProvider::decode(fields)) museSpark.add(*std::move(event));
    });
    return {.opencode = opencode.events(), .museSpark = museSpark.events()};
}

}  // namespace

OpenCodeLogCache& OpenCodeLogCache::shared() {
    static OpenCodeLogCache cache;
    return cache;
}

std::optional<OpenCodeLogParse> OpenCodeLogCache::find(const std::string& file,
                                                       const FileCursor::Status& status) const {
    const std::lock_guard guard{lock_};
    if (path_ != file || status_ != status) return std::nullopt;
    return parse_;
}

void OpenCodeLogCache::store(const std::string& file, const FileCursor::Status& status, OpenCodeLogParse parse) {
    const std::lock_guard guard{lock_};
    path_ = file;
    status_ = status;
    std::swap(parse_, parse);
}

void OpenCodeLogCache::countTraversal() {
    const std::lock_guard guard{lock_};
    traversalCount_ = checkedAdd(traversalCount_, 1);
}

std::int64_t OpenCodeLogCache::traversalCount() const {
    const std::lock_guard guard{lock_};
    return traversalCount_;
}

OpenCodeLogParse OpenCodeLogReader::parse(const std::string& file, const JSONLStreamReader& reader) {
    OpenCodeLogCache& cache = OpenCodeLogCache::shared();
    const std::optional<FileCursor::Status> status = FileCursor::state(file);
    if (status) {
        if (std::optional<OpenCodeLogParse> known = cache.find(file, *status)) return *std::move(known);
    }
    cache.countTraversal();
    OpenCodeLogParse parse = parseLines(file, reader);
    if (status) cache.store(file, *status, parse);
    return parse;
}

}  // namespace quorvane
