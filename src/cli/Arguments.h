#pragma once

#include "CallRegistry.h"

#include <stdexcept>
#include <string>
#include <vector>

namespace velmorant::cli {

// Bad input on the command line: the message names what is wrong.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Reads the command-line arguments of a call as its parameters' types;
// throws UsageError naming the argument that does not fit.
CallArgs readArguments(const Operation& operation, const std::vector<std::string>& args,
                       const platform::Platform& platform);

}  // namespace velmorant::cli
