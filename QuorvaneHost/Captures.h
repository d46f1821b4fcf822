#pragma once
#include <memory>
#include <string>
#include <vector>

namespace quorvane::host {

/// What can be installed into an agent, so that it tells what it would keep to itself.
class Capture {
public:
    Capture() = default;
    Capture(const Capture&) = delete;
    Capture& operator=(const Capture&) = delete;
    virtual ~Capture() = default;

    /// The agent's word on the command line.
    [[nodiscard]] virtual std::string agent() const = 0;
    /// "active", "installable" or "unavailable".
    [[nodiscard]] virtual std::string state() const = 0;
    /// The file that is or would be changed; empty if there is none.
    [[nodiscard]] virtual std::string path() const = 0;
    /// What a person should know of the state; empty for nothing.
    [[nodiscard]] virtual std::string hint() const { return {}; }
    /// Throw `Failure` or `std::system_error`; the user's file is then as it was.
    virtual void install() const = 0;
    virtual void uninstall() const = 0;
};

/// All captures, in the order in which they are listed to people.
[[nodiscard]] std::vector<std::unique_ptr<Capture>> allCaptures();

}  // namespace quorvane::host
