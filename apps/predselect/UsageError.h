// A command line that asks for something that is not there: ends the program with code 2.
#pragma once

#include <stdexcept>

namespace PredSelectApp {

class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace PredSelectApp
