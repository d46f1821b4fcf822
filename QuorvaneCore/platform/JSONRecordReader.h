#pragma once
#include <cstddef>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

#include "QuorvaneCore/platform/JSONField.h"
#include "QuorvaneCore/platform/JSONKeys.h"

namespace quorvane {

/// Takes a few members out of one JSON record after another, records being objects with the interesting members in
/// themselves and in one object among those. What it takes and what it refuses is exactly what `JSONParser` gives for
/// the same text, but of the usual record, which holds no escapes, no document is built.
/// One thread at a time.
class JSONRecordReader {
public:
    /// Asks for the members `keys` of a record, and for the members `innerKeys` of that one of them whose number is
    /// `inner`. The sets that the keys are of must outlive the reader.
    JSONRecordReader(JSONKeys keys, std::size_t inner, JSONKeys innerKeys);
    JSONRecordReader(const JSONRecordReader&) = delete;
    JSONRecordReader& operator=(const JSONRecordReader&) = delete;
    ~JSONRecordReader();

    /// Reads a text that has `JSONParser::padding` readable bytes behind it. False if it is no JSON or no object, and
    /// then the fields are of no meaning.
    [[nodiscard]] bool readPadded(std::string_view text);

    /// The members, in the order of the keys. Valid until the next read, and as long as the text is there. Where an
    /// object has a key twice, the first one counts.
    [[nodiscard]] std::span<const JSONField> members() const noexcept { return members_; }
    [[nodiscard]] std::span<const JSONField> innerMembers() const noexcept { return innerMembers_; }

private:
    class Walk;
    struct State;

    [[nodiscard]] bool readPlain(std::string_view text);
    [[nodiscard]] bool readParsed(std::string_view text);

    JSONKeys keys_;
    std::size_t inner_;
    JSONKeys innerKeys_;
    std::vector<JSONField> members_;
    std::vector<JSONField> innerMembers_;
    std::unique_ptr<State> state_;
};

}  // namespace quorvane
