#pragma once
#include <string>

#include "QuorvaneCore/platform/JSONTree.h"

namespace quorvane {

/// JSON text with sorted keys, in UTF-8. A float that is a whole number is written without a fraction, any other in the
/// shortest form that reads back as the same number; one that is not finite is written as null. Bytes that are no
/// UTF-8 become U+FFFD.
class JSONWriter {
public:
    JSONWriter() = delete;

    /// Two blanks an indentation level, one member a line, no line feed at the end.
    [[nodiscard]] static std::string pretty(const JSONTree& tree);

    /// Everything on one line, without blanks and without a line feed at the end.
    [[nodiscard]] static std::string compact(const JSONTree& tree);
};

}  // namespace quorvane
