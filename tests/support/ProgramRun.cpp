#include "tests/support/ProgramRun.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <stdexcept>
#include <thread>
#include <utility>

#include <fcntl.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

namespace quorvane::testing {
namespace {

struct Pipe {
    int readEnd = -1;
    int writeEnd = -1;

    Pipe() {
        std::array<int, 2> ends{};
        if (::pipe2(ends.data(), O_CLOEXEC) != 0) throw std::runtime_error{"pipe"};
        readEnd = ends[0];
        writeEnd = ends[1];
    }
};

std::string readToEnd(int descriptor) {
    std::string text;
    std::array<char, 65536> buffer;
    for (;;) {
        const ssize_t count = ::read(descriptor, buffer.data(), buffer.size());
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) break;  // a terminal whose program has ended gives an error, not an end
        text.append(buffer.data(), static_cast<std::size_t>(count));
    }
    ::close(descriptor);
    return text;
}

void writeAll(int descriptor, const std::string& text) {
    std::size_t written = 0;
    while (written < text.size()) {
        const ssize_t count = ::write(descriptor, text.data() + written, text.size() - written);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) break;  // the program does not read its input
        written += static_cast<std::size_t>(count);
    }
    ::close(descriptor);
}

[[noreturn]] void become(const std::vector<std::string>& command, const ProgramRun::Options& options) {
    for (const auto& [name, value] : options.environment) {
        if (value.empty()) {
            ::unsetenv(name.c_str());
        } else {
            ::setenv(name.c_str(), value.c_str(), 1);
        }
    }
    if (!options.folder.empty() && ::chdir(options.folder.c_str()) != 0) ::_exit(126);
    std::vector<char*> arguments;
    for (const std::string& argument : command)
        arguments.push_back(const_cast<char*>(argument.c_str()));
    arguments.push_back(nullptr);
    ::execvp(arguments.front(), arguments.data());
    ::_exit(127);
}

int waitFor(pid_t child) {
    int status = 0;
    while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

}  // namespace

ProgramRun ProgramRun::of(const std::vector<std::string>& command, const Options& options) {
    ::signal(SIGPIPE, SIG_IGN);  // a program that does not read its input must not end the test
    const Pipe input;
    const Pipe output;
    const Pipe error;
    int terminal = -1;
    int terminalEnd = -1;
    if (options.terminalColumns) {
        winsize size{};
        size.ws_col = static_cast<unsigned short>(*options.terminalColumns);
        size.ws_row = 50;
        if (::openpty(&terminal, &terminalEnd, nullptr, nullptr, &size) != 0) throw std::runtime_error{"openpty"};
        ::fcntl(terminal, F_SETFD, FD_CLOEXEC);
    }
    const pid_t child = ::fork();
    if (child < 0) throw std::runtime_error{"fork"};
    if (child == 0) {
        ::signal(SIGPIPE, SIG_DFL);
        ::dup2(input.readEnd, STDIN_FILENO);
        ::dup2(terminalEnd < 0 ? output.writeEnd : terminalEnd, STDOUT_FILENO);
        ::dup2(terminalEnd < 0 ? error.writeEnd : terminalEnd, STDERR_FILENO);
        become(command, options);
    }
    ::close(input.readEnd);
    ::close(output.writeEnd);
    ::close(error.writeEnd);
    if (terminalEnd >= 0) ::close(terminalEnd);

    ProgramRun run;
    std::thread feeding{[&] { writeAll(input.writeEnd, options.input); }};
    std::thread listening{[&] { run.error = readToEnd(error.readEnd); }};
    if (terminal < 0) {
        run.output = readToEnd(output.readEnd);
    } else {
        run.output = readToEnd(terminal);
        ::close(output.readEnd);
    }
    listening.join();
    run.status = waitFor(child);
    feeding.join();
    return run;
}

}  // namespace quorvane::testing
