#pragma once
#include <optional>
#include <utility>
#include <vector>

#include "QuorvaneCore/platform/Date.h"
#include "QuorvaneCore/platform/JSONTree.h"

namespace quorvane::detail {

/// One JSON object of a snapshot file, as it is built. Absent values are left out, dates are internet dates in UTC with
/// whole seconds. Throws `SnapshotCodingError` for a number or date that is not finite.
class RecordWriter {
public:
    void put(const char* key, JSONTree value) { members_[key] = std::move(value); }
    void put(const char* key, double value);
    void put(const char* key, Date value);
    void put(const char* key, const std::vector<double>& values);

    template <typename Value>
    void put(const char* key, const std::optional<Value>& value) {
        if (value) put(key, *value);
    }

    [[nodiscard]] JSONTree take() { return JSONTree{std::move(members_)}; }

private:
    JSONTree::Object members_;
};

}  // namespace quorvane::detail
