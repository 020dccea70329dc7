#pragma once

#include <ostream>
#include <string>
#include <vector>

namespace velmorant::cli {

// Runs `velmorant-snippet` with its arguments (without the program name);
// returns the exit status. Results go to `out`, errors to `err`.
int runProgram(const std::vector<std::string>& args, std::ostream& out, std::ostream& err);

}  // namespace velmorant::cli
