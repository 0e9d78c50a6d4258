// One parameter of a subcommand, declared once: its name, what may follow it, bounds, default and
// help. The parser, its messages, the procedures' defaults and the help text all come from here.
//
// Setters return the descriptor, so that a declaration reads as one sentence.
#pragma once

#include <string>
#include <vector>

class ParamDescriptor {
 public:
  enum Kind {
    kFlag,          // NAME
    kNumber,        // NAME=number
    kInteger,       // NAME=whole number
    kKeyword,       // NAME=WORD, one of the string values
    kKeywordList,   // NAME or NAME(WORD ...), of the string values
    kName,          // NAME=name
    kVariable,      // NAME=variable
    kVariableList,  // NAME=variables
    kNewName,       // NAME or NAME(name), of a new variable
    kNewNames,      // NAME or NAME(root) or NAME(root:count) or NAME(count), of new variables
    kFile           // NAME='path'
  };
  // How the value is joined to the name.
  enum Form {
    kNamed,  // as shown with the kind
    kBare,   // the value stands without a name, first in its subcommand
    kLed     // the name, then the value, without a sign between
  };
  enum LowerBdryOptions { kNoLowerBdry, kLowerInclusive, kLowerExclusive };
  enum UpperBdryOptions { kNoUpperBdry, kUpperInclusive, kUpperExclusive };
  enum QualifOption { kNoQualif, kOptionalQualif };

  ParamDescriptor(std::string name, Kind kind, std::string help);

  ParamDescriptor& setForm(Form form);
  ParamDescriptor& setLowerBoundary(double bound, LowerBdryOptions option);
  ParamDescriptor& setUpperBoundary(double bound, UpperBdryOptions option);

  // A word that may stand as the value: the only choices of a keyword, or instead of a number.
  ParamDescriptor& addStringValue(std::string value);

  // Whether qualifiers, in parentheses, may follow the value; their declarations, of kind kKeyword.
  ParamDescriptor& setQualifOption(QualifOption option);
  ParamDescriptor& addQualifDesc(ParamDescriptor qualifier);

  // The value that holds when the parameter is not given, a number or a word. New names have both,
  // a count and a root, set in this order.
  ParamDescriptor& setDefault(double value);
  ParamDescriptor& setDefault(std::string value);

  const std::string& GetName() const { return fName; }
  Kind GetKind() const { return fKind; }
  Form GetForm() const { return fForm; }
  const std::string& GetHelp() const { return fHelp; }
  const std::vector<std::string>& GetStringValues() const { return fStringValues; }
  QualifOption GetQualifOption() const { return fQualifOption; }
  const std::vector<ParamDescriptor>& GetQualifDescs() const { return fQualifDescs; }

  // 0 when the default is a word or there is none.
  double GetDefaultNumber() const { return fDefaultNumber; }
  // Empty when there is none.
  const std::string& GetDefaultText() const { return fDefaultText; }

  // True when the value lies within the bounds. NaN lies within none.
  bool IsInBounds(double value) const;

  // What a value must be, for messages and help: "a number above 0 and at most 100", "ON or OFF",
  // "a whole number above 0, or AUTO".
  std::string Expectation() const;

 private:
  // "above 0 and at most 100"; empty without bounds.
  std::string BoundsText() const;
  std::string NumberExpectation(const char* what, const std::string& words) const;

  std::string fName;
  Kind fKind;
  Form fForm = kNamed;
  std::string fHelp;
  double fLowerBoundary = 0.0;
  double fUpperBoundary = 0.0;
  LowerBdryOptions fLowerOption = kNoLowerBdry;
  UpperBdryOptions fUpperOption = kNoUpperBdry;
  std::vector<std::string> fStringValues;
  QualifOption fQualifOption = kNoQualif;
  std::vector<ParamDescriptor> fQualifDescs;
  double fDefaultNumber = 0.0;
  std::string fDefaultText;
};
