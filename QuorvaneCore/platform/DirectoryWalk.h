#pragma once
#include <string>
#include <string_view>
#include <vector>

#include "QuorvaneCore/platform/FunctionView.h"

namespace quorvane {

/// Listing of a folder, mostly with all folders below it.
class DirectoryWalk {
public:
    DirectoryWalk() = delete;

    /// The paths of all entries below `root`, at any depth, whose extension is exactly `extension` (no dot, case
    /// counts). Names that begin with a dot are passed over, folders of such a name with all they hold. Links to
    /// folders are not entered, so no loop and no file twice; `root` itself may be a link.
    /// In the order of the file system, unsorted. A folder that cannot be read adds nothing.
    /// No entry is queried for its status where the file system tells folders apart by itself.
    [[nodiscard]] static std::vector<std::string> entries(const std::string& root, std::string_view extension);

    /// Offers the same paths one by one, in the same order, and ends the walk as soon as `goOn` gives false.
    static void visit(const std::string& root, std::string_view extension, FunctionView<bool(std::string)> goOn);

    /// The paths of what lies in `folder` itself and has that extension, names that begin with a dot included. In the
    /// order of the file system; empty for a folder that cannot be read.
    [[nodiscard]] static std::vector<std::string> children(const std::string& folder, std::string_view extension);
};

}  // namespace quorvane
