#include "host/output/pivot/BpComposite.h"

#include "common/MCAssert.h"

using MCHost::OutputText;

BpComposite::BpComposite(std::string key) : fText(OutputText::Key(std::move(key))) {}

BpComposite& BpComposite::Add(OutputText argument) {
  std::vector<OutputText>& target = fbSublist ? fText.fArguments.back().fItems : fText.fArguments;
  target.push_back(std::move(argument));
  return *this;
}

BpComposite& BpComposite::AddLiteral(std::string text) {
  return Add(OutputText::Literal(std::move(text)));
}

BpComposite& BpComposite::Sublist() {
  fText.fArguments.push_back(OutputText::Literal(""));
  fbSublist = true;
  return *this;
}

BpComposite& BpComposite::EndSublist() {
  fbSublist = false;
  return *this;
}

OutputText BpComposite::Finish() const {
  MCCommon::Assert(!fbSublist, "!fbSublist", "host/output/BpComposite");
  return fText;
}
