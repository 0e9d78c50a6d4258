// The envelope around a saved component in a file: format, version, length and checksum, and the
// signature of who holds a key. It stands outside of the component's own form, which it leaves
// alone.
//
// Binary: the tag, 1 or 0 for a signature or none (4 bytes), the length of the content (8 bytes),
// the content, the SHA-256 digest of all that, and the HMAC-SHA-256 of the same bytes if it is
// signed. XML: a processing instruction behind the XML declaration names version and length (bytes
// between the two instructions), another one at the end digest and signature of all bytes in front
// of it. A file with one of the two alone is damaged. Files of earlier days have none of all this.
#pragma once

#include <iosfwd>
#include <string>
#include <string_view>

namespace MCModelFiles {

// Puts `content` (the bytes of a component, or its document) into an envelope, signed where the key
// is not empty.
std::string PutIntoEnvelope(std::string_view content, bool xml, const std::string& key);

struct OpenedEnvelope {
  bool fbThere = false;
  std::string fTrouble;    // why the file must not be read further; empty for nothing
  std::string fContent;    // of an envelope: what is to be read instead of the file
  std::size_t fStart = 0;  // where that begins in the file
};

// Holds a file against its envelope, if it has one. Where the key is not empty, a file that is not
// signed with it is refused. The stream stands at its start before and after.
OpenedEnvelope OpenEnvelope(std::istream& file, bool xml, const std::string& key);

}  // namespace MCModelFiles
