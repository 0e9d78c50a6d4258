// The name of a variable, or of a macro that stands for variables.
//
// A plain value. An empty name means that none was given. Names keep the spelling of their author;
// the rules below are those for names that a procedure gives to new variables.
#pragma once

#include <cstddef>
#include <string>
#include <utility>

class KovaVarName {
 public:
  // The longest name of a new variable, in bytes of UTF-8.
  static constexpr std::size_t kMaxBytes = 64;

  KovaVarName() = default;
  explicit KovaVarName(std::string name) : fName(std::move(name)) {}

  const std::string& GetName() const { return fName; }
  bool IsEmpty() const { return fName.empty(); }

  // True for a name that a new variable may carry: valid UTF-8 of at most kMaxBytes, not empty,
  // without control characters, without blanks at its ends, and not a reserved word.
  bool IsValid() const;

  // The name as a command must spell it: in double quotes (doubled inside) when it would otherwise
  // be read as something else.
  std::string Quoted() const;

  // ALL, BY, TO and WITH, in any case: the words that lists of variables are made of.
  static bool IsReserved(const std::string& word);

  // Names are equal when their bytes are.
  bool operator==(const KovaVarName&) const = default;

 private:
  std::string fName;
};
