// Other programs, started by name.
#pragma once

#include <string>
#include <vector>

namespace PredSelectApp {

// Starts a program with its arguments and goes on; what it prints is lost. False where there is no
// such program.
bool StartChild(const std::vector<std::string>& command);

enum class ChildOutput { kLost, kShown };

// Runs a program to its end, giving it the input; what it says on standard error is shown, what it
// prints as asked for. One whose output is shown hears the signals of the terminal. Its exit code,
// 128 and the signal where it was killed, below 0 where there is no such program.
int RunChild(const std::vector<std::string>& command, const std::string& input,
             ChildOutput output = ChildOutput::kLost);

}  // namespace PredSelectApp
