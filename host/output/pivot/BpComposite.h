// A text made of a key of the string table and the arguments that fill its placeholders.
//
// "^1", "^2", ... in the key's text are replaced by the arguments in order. A list pattern such as
// "[%1:, ^1:]1" joins the items of a sublist: what stands before "^1" separates the items.
// Composites are plain values.
#pragma once

#include <string>
#include <vector>

#include "host/output/OutputText.h"

class BpComposite {
 public:
  explicit BpComposite(std::string key);

  // Appends an argument, or an item while a sublist is open.
  BpComposite& Add(MCHost::OutputText argument);
  // A literal text, shown as it is.
  BpComposite& AddLiteral(std::string text);

  // Everything added until EndSublist() becomes one list argument.
  BpComposite& Sublist();
  BpComposite& EndSublist();

  // The finished text. REQUIRES: no sublist is open.
  MCHost::OutputText Finish() const;

 private:
  MCHost::OutputText fText;
  bool fbSublist = false;
};
