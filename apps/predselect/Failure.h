// What has ended the program before its work was done, as its user is told.
#pragma once

#include <exception>
#include <string>

namespace PredSelectApp {

struct Failure {
  int fCode;              // of the exit
  std::string fText;      // what was wrong
  std::string fFile{};    // which file it is about; empty for none
  std::string fPlace{};   // where in it, in words
  std::string fAdvice{};  // lines of the program's own that are shown below
  bool fbAtOnce = false;  // the program ends without unwinding libraries, which might wait for ever
};

Failure FailureOf(const std::exception& error);

// On standard error; and where the results were to be JSON on standard output, as a document there.
void Report(const Failure& failure, bool asJson);

}  // namespace PredSelectApp
