#include "cli/Program.h"

#include <iostream>

int main(int argc, char** argv) {
    std::vector<std::string> args(argv + 1, argv + argc);
    return velmorant::cli::runProgram(args, std::cout, std::cerr);
}
