#pragma once
#include <string>

#include "tests/support/ProgramRun.h"
#include "tests/support/ScratchHome.h"

namespace quorvane::testing {

/// A home on which the lines of a page run as they stand: `quorvane` is on the path, and it is always the same moment,
/// for `quorvane` and for `date +%s` alike.
class SampleMachine {
public:
    enum class Content { Nothing, Sample };

    /// 2026-09-14T16:32:30Z, at which the data of the sample home ends.
    static constexpr const char* now = "2026-09-14T16:32:30Z";
    static constexpr const char* nowSeconds = "1789403550";

    explicit SampleMachine(Content content);

    [[nodiscard]] const ScratchHome& home() const noexcept { return home_; }

    /// Runs the lines with bash, which stops at the first that fails.
    [[nodiscard]] ProgramRun run(const std::string& lines, const std::string& input = "") const;
    /// Puts a program on the path, before all others.
    void addProgram(const std::string& name, const std::string& script) const;

private:
    ScratchHome home_;
};

}  // namespace quorvane::testing
