#include "benchmarks/support/Process.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <string_view>

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace quorvane::benchmarks {
namespace {

std::vector<std::string> environmentWith(const std::vector<std::string>& changes) {
    std::vector<std::string> merged = changes;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        const std::string_view variable{*entry};
        const std::string_view name = variable.substr(0, variable.find('=') + 1);
        const bool isReplaced = std::any_of(changes.begin(), changes.end(),
                                            [&](const std::string& change) { return change.starts_with(name); });
        if (!isReplaced) merged.emplace_back(variable);
    }
    return merged;
}

std::vector<char*> pointers(std::vector<std::string>& texts) {
    std::vector<char*> list;
    for (std::string& text : texts)
        list.push_back(text.data());
    list.push_back(nullptr);
    return list;
}

double seconds(const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

std::string readAll(int descriptor) {
    std::string text;
    std::array<char, 4096> chunk{};
    for (;;) {
        const ssize_t count = ::read(descriptor, chunk.data(), chunk.size());
        if (count <= 0) return text;
        text.append(chunk.data(), static_cast<std::size_t>(count));
    }
}

}  // namespace

ProcessResult runProcess(const std::vector<std::string>& arguments, const std::vector<std::string>& environment) {
    std::array<int, 2> pipe{};
    if (::pipe2(pipe.data(), O_CLOEXEC) != 0) return {};
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_adddup2(&actions, pipe[1], STDOUT_FILENO);
    std::vector<std::string> texts = arguments;
    std::vector<std::string> variables = environmentWith(environment);

    ProcessResult result;
    const auto begin = std::chrono::steady_clock::now();
    pid_t child = 0;
    const int failure = ::posix_spawn(&child, arguments.front().c_str(), &actions, nullptr, pointers(texts).data(),
                                      pointers(variables).data());
    ::posix_spawn_file_actions_destroy(&actions);
    ::close(pipe[1]);
    if (failure == 0) {
        result.output = readAll(pipe[0]);
        int status = 0;
        rusage usage{};
        ::wait4(child, &status, 0, &usage);
        result.seconds = std::chrono::duration<double>{std::chrono::steady_clock::now() - begin}.count();
        result.cpuSeconds = seconds(usage.ru_utime) + seconds(usage.ru_stime);
        result.isSuccess = WIFEXITED(status) && WEXITSTATUS(status) == 0;
    }
    ::close(pipe[0]);
    return result;
}

}  // namespace quorvane::benchmarks
