// A text of the output, kept as what it was made of: renderers show it, programs read its key.
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace MCHost {

struct OutputText {
  // How the key is to be read.
  enum Kind {
    kKey,       // a key of the string table, its placeholders filled with the arguments
    kLiteral,   // the text itself: a name typed by the user, a number already formatted
    kVariable,  // a variable: fKey is its name, fLabel its label (empty for none)
    kValue      // a value of the data: fKey is the value as printed, fLabel its label or empty
  };

  Kind fKind = kLiteral;
  std::string fKey;
  std::string fLabel;
  std::vector<OutputText> fArguments;  // for kKey
  std::vector<OutputText> fItems;      // for an argument that is a list

  bool operator==(const OutputText&) const = default;

  static OutputText Key(std::string key) { return {kKey, std::move(key), {}, {}, {}}; }
  static OutputText Literal(std::string text) { return {kLiteral, std::move(text), {}, {}, {}}; }
  static OutputText Variable(std::string name, std::string label) {
    return {kVariable, std::move(name), std::move(label), {}, {}};
  }
  static OutputText Value(std::string value, std::string label) {
    return {kValue, std::move(value), std::move(label), {}, {}};
  }
};

}  // namespace MCHost
