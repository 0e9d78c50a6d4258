#include "host/session/Session.h"

#include <algorithm>
#include <cstddef>

namespace MCHost {

namespace {

constexpr const char* kBlanks = " \t\r\n\f\v";

std::string UpperCase(std::string name) {
  std::transform(name.begin(), name.end(), name.begin(), [](char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
  });
  return name;
}

// Up to the first blank or mark that can follow a word.
std::string FirstWord(const std::string& text) {
  const std::size_t start = std::min(text.find_first_not_of(kBlanks), text.size());
  const std::size_t end = std::min(text.find_first_of(" \t\r\n\f\v/=():,'\".", start), text.size());
  return text.substr(start, end - start);
}

}  // namespace

void Session::SetCommand(const std::string& text, int line, int column) {
  fCommandText = text;
  fCommandLine = line;
  fCommandColumn = column;
  fSystemBlock.fCommandWord = FirstWord(text);
  fCommonBlock.fStatusWord &= ~CmnGlb::kErrorBit;
}

void Session::SetMacro(const std::string& name, const std::vector<std::string>& values) {
  fMacros[UpperCase(name)] = values;
}

const std::vector<std::string>* Session::FindMacro(const std::string& name) const {
  const auto found = fMacros.find(UpperCase(name));
  return found == fMacros.end() ? nullptr : &found->second;
}

void Session::ReportProgress(const std::string& text) {
  if (fProgressListener) fProgressListener(text);
}

}  // namespace MCHost
