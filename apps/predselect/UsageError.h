// A command line that asks for something that is not there: ends the program with code 2.
#pragma once

#include <stdexcept>
#include <string>
#include <utility>

namespace PredSelectApp {

class UsageError : public std::runtime_error {
 public:
  // `advice`: lines of the program's own below the text, which may be empty.
  explicit UsageError(const std::string& text, std::string advice = "")
      : std::runtime_error(text), fAdvice(std::move(advice)) {}

  const std::string& Advice() const { return fAdvice; }

 private:
  std::string fAdvice;
};

}  // namespace PredSelectApp
