#include "QuorvaneCore/snapshots/detail/RecordWriter.h"

#include <cmath>
#include <string>

#include "QuorvaneCore/platform/ISODate.h"
#include "QuorvaneCore/snapshots/SnapshotCodingError.h"

namespace quorvane::detail {
namespace {

double finite(const char* key, double value) {
    if (!std::isfinite(value)) throw SnapshotCodingError{"\"" + std::string{key} + "\" is not a finite number"};
    return value;
}

}  // namespace

void RecordWriter::put(const char* key, double value) {
    members_[key] = finite(key, value);
}

void RecordWriter::put(const char* key, Date value) {
    members_[key] = ISODate::text(Date{finite(key, value.secondsSince1970)});
}

void RecordWriter::put(const char* key, const std::vector<double>& values) {
    JSONTree::Array array;
    array.reserve(values.size());
    for (const double value : values)
        array.emplace_back(finite(key, value));
    members_[key] = std::move(array);
}

}  // namespace quorvane::detail
