// An XML document in a zip archive, read piece by piece.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace MCHost {

// The attributes of an element, as long as it is told of.
class IXmlAttributes {
 public:
  virtual ~IXmlAttributes() = default;
  // The value of an attribute by its whole name ("r:id"); empty where it is not there.
  virtual std::string Get(const char16_t* name) const = 0;
  // The same of the first that has a prefix, whichever it is, by its name behind that.
  virtual std::string GetPrefixed(std::u16string_view name) const = 0;
};

// Is told of a document in the order in which it stands there. Elements go by their names without
// a prefix.
class IXmlListener {
 public:
  virtual ~IXmlListener() = default;
  virtual void Start(std::u16string_view element, const IXmlAttributes& attributes) = 0;
  virtual void End(std::u16string_view element) = 0;
  virtual void Text(std::u16string_view text) = 0;
};

class XmlEntry {
 public:
  // The document under a name in an archive; `listener` is borrowed. Throws HostIOError.
  XmlEntry(const std::string& path, const std::string& name, IXmlListener& listener);
  ~XmlEntry();

  // Tells of a bit more; false at the end. What the listener throws passes through it. Throws
  // HostIOError for a document that is not well formed.
  bool Scan();

  // Tells of all of it.
  void ScanAll() {
    while (Scan()) {
    }
  }

 private:
  class Parser;
  std::unique_ptr<Parser> fpParser;
};

// Appends a text as UTF-8.
void AppendUtf8(std::string& to, std::u16string_view text);

}  // namespace MCHost
