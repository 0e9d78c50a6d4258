// What a caller asked for is not there, or does not fit the data or the state.
//
// It may be about one of the caller's options ("level", "weight", "predicted", "probabilities",
// "model", "allow-equal", "memory", "to", "export"), which its text then names once: as it is, or with the dashes
// of a command line.
#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>

namespace PredSelect {

class RequestError : public std::runtime_error {
 public:
  explicit RequestError(const std::string& text) : RequestError(text, "", "") {}
  // "option: text".
  RequestError(const std::string& option, const std::string& text)
      : RequestError("", option, ": " + text) {}
  // A text that names the option somewhere inside.
  RequestError(const std::string& before, const std::string& option, const std::string& after)
      : std::runtime_error(before + option + after), fOption(option), fPlace(before.size()) {}

  // Empty when it is about none.
  const std::string& Option() const { return fOption; }

  // what(), with the option as a command line has it ("--option").
  std::string TextWithDashes() const {
    const std::string text = what();
    return fOption.empty() ? text : text.substr(0, fPlace) + "--" + text.substr(fPlace);
  }

 private:
  std::string fOption;
  std::size_t fPlace;  // of the option in the text
};

}  // namespace PredSelect
