#pragma once
#include <cstdlib>
#include <initializer_list>
#include <map>
#include <optional>
#include <string>

namespace quorvane::testing {

/// Environment variables that a test takes over: absent from here on, unless set, and restored at the end.
class ScopedVariables {
public:
    ScopedVariables(std::initializer_list<const char*> names) {
        for (const char* name : names) {
            const char* value = std::getenv(name);
            old_[name] = value == nullptr ? std::nullopt : std::optional<std::string>{value};
            ::unsetenv(name);
        }
    }
    ScopedVariables(const ScopedVariables&) = delete;
    ScopedVariables& operator=(const ScopedVariables&) = delete;
    ~ScopedVariables() {
        for (const auto& [name, value] : old_) {
            if (value) {
                ::setenv(name.c_str(), value->c_str(), 1);
            } else {
                ::unsetenv(name.c_str());
            }
        }
    }

    /// `name` must be one of those taken over.
    void set(const std::string& name, const std::string& value) const {
        static_cast<void>(old_.at(name));
        ::setenv(name.c_str(), value.c_str(), 1);
    }

private:
    std::map<std::string, std::optional<std::string>> old_;
};

}  // namespace quorvane::testing
