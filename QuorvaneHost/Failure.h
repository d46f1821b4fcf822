#pragma once
#include <stdexcept>

namespace quorvane::host {

/// A failed operation, worded for a person in one line. The program prints it and exits with status 1.
class Failure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

}  // namespace quorvane::host
