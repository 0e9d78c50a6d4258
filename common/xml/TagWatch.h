// Watches the bytes of a UTF-8 document for a tag of more than kMaxTag bytes.
//
// The XML parser holds every attribute of a tag against every other before it shows any of them,
// which a hostile tag turns into hours; so the bytes are looked at before the parser has them.
// Comments, CDATA sections, processing instructions and the document type end here exactly where
// the parser ends them: what looks like a tag inside one must not hide the next tag. A document
// that is not well formed may be taken for anything from there on; the parser stops there.
#pragma once

#include <string>
#include <string_view>

namespace MCCommonXML {

class TagWatch {
 public:
  // The next bytes of the document. False from the first tag on that is too long.
  bool Passes(std::string_view bytes);

 private:
  enum class In {
    kText,
    kOpen,         // behind "<"
    kDeclaration,  // behind "<!"
    kDash,         // behind "<!-"
    kDocType,      // up to its end, or to the bracket of its own declarations
    kSubset,       // inside those brackets
    kPassedOver,   // up to fEnd
    kTag
  };

  void Look(char byte);
  void LookAtKind(char byte);
  void LookInTag(char byte);
  void PassOver(std::string_view end);

  In fIn = In::kText;
  int fLength = 0;        // of the tag up to here
  char fQuote = '\0';     // the one open in the tag
  std::string_view fEnd;  // of what is passed over
  std::string fTail;      // its last bytes
};

}  // namespace MCCommonXML
