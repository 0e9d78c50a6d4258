// Other programs, started by name.
#pragma once

#include <string>
#include <vector>

namespace PredSelectApp {

// Starts a program with its arguments and goes on; what it prints is lost. False where there is no
// such program.
bool StartChild(const std::vector<std::string>& command);

// Runs a program to its end, giving it the input; what it says on standard error is shown, what it
// prints is lost. Its exit code, below 0 where there is no such program or it was killed.
int RunChild(const std::vector<std::string>& command, const std::string& input);

}  // namespace PredSelectApp
