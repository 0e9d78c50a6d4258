#include "common/xml/TagWatch.h"

#include "common/xml/XMLObjParser.h"

namespace MCCommonXML {

bool TagWatch::Passes(std::string_view bytes) {
  for (std::size_t i = 0; i < bytes.size() && fLength <= kMaxTag; ++i) Look(bytes[i]);
  return fLength <= kMaxTag;
}

void TagWatch::Look(char byte) {
  switch (fIn) {
    case In::kText:
      if (byte == '<') fIn = In::kOpen;
      break;
    case In::kOpen:
    case In::kDeclaration:
      LookAtKind(byte);
      break;
    case In::kDash:  // the second dash is no part of the end: "<!-->" goes on
      PassOver("-->");
      break;
    case In::kDocType:
      if (byte == '[') fIn = In::kSubset;
      if (byte == '>') fIn = In::kText;
      break;
    case In::kSubset:
      if (byte == ']') PassOver(">");
      break;
    case In::kPassedOver:
      fTail += byte;
      if (fTail.size() > fEnd.size()) fTail.erase(0, 1);
      if (fTail == fEnd) fIn = In::kText;
      break;
    case In::kTag:
      LookInTag(byte);
  }
}

void TagWatch::LookAtKind(char byte) {
  if (fIn == In::kOpen && byte == '!') {
    fIn = In::kDeclaration;
  } else if (fIn == In::kOpen && byte == '?') {
    PassOver("?>");
  } else if (fIn == In::kOpen) {
    fIn = In::kTag;
    fLength = 2;
    fQuote = '\0';
  } else if (byte == '[') {
    PassOver("]]>");
  } else {
    fIn = byte == '-' ? In::kDash : In::kDocType;
  }
}

void TagWatch::LookInTag(char byte) {
  if (++fLength > kMaxTag) return;
  if (fQuote != '\0') {
    if (byte == fQuote) fQuote = '\0';
  } else if (byte == '"' || byte == '\'') {
    fQuote = byte;
  } else if (byte == '>') {
    fIn = In::kText;
  }
}

void TagWatch::PassOver(std::string_view end) {
  fIn = In::kPassedOver;
  fEnd = end;
  fTail.clear();
}

}  // namespace MCCommonXML
