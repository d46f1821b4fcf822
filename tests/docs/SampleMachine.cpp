#include "tests/docs/SampleMachine.h"

#include <cstdlib>
#include <filesystem>
#include <stdexcept>

namespace quorvane::testing {

SampleMachine::SampleMachine(Content content) {
    const std::string source = QUORVANE_SOURCE;
    if (content == Content::Sample) {
        const ProgramRun made = ProgramRun::of(
            {"python3", source + "/tools/sample-home", source + "/resources/sample-home", home_.path(), nowSeconds});
        if (made.status != 0) throw std::runtime_error{made.error};
    }
    addProgram("quorvane", std::string{"#!/bin/sh\nexec "} + QUORVANE_PROGRAM + " --now " + now + " \"$@\"\n");
    addProgram("date", std::string{"#!/bin/sh\n[ \"$*\" = +%s ] || exit 1\necho "} + nowSeconds + "\n");
}

void SampleMachine::addProgram(const std::string& name, const std::string& script) const {
    const std::filesystem::path file = home_.write("bin/" + name, script);
    std::filesystem::permissions(file, std::filesystem::perms{0755});
}

ProgramRun SampleMachine::run(const std::string& lines, const std::string& input) const {
    const char* path = std::getenv("PATH");
    return ProgramRun::of(
        {"bash", "-euo", "pipefail", "-c", lines},
        {.environment = {{"LC_ALL", "C.UTF-8"},
                         {"NO_COLOR", ""},
                         {"PATH", home_.path("bin") + ":" + (path == nullptr ? "/usr/bin:/bin" : path)}},
         .input = input,
         .folder = home_.path()});
}

}  // namespace quorvane::testing
