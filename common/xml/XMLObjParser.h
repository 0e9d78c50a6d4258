// Reads a document of objects (common/xml/XMLObj.h) from front to back, a field at a time.
//
// The first call on a stream starts a parser that belongs to the stream from then on and reads it
// ahead, so the stream is the parser's alone; later calls go on where the last one ended. Every
// operation returns false for a document that does not hold what was asked for there, is not well
// formed, is nested more than kMaxDepth deep, has a tag of more than kMaxTag bytes, or cannot be
// read; after that, all of them do.
//
// Nothing but the stream is read: the document type is passed over without a look at the DTD or at
// what it declares, and a reference to an entity other than the five of XML itself is an error.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>

namespace MCCommonXML {

constexpr int kMaxDepth = 64;
constexpr int kMaxTag = 4096;

// The start of an object of that name.
[[nodiscard]] bool ParseStartObj(std::istream& is, const std::string& name);
// The name of the object that starts next, which stays to be read.
[[nodiscard]] bool ParseNextName(std::istream& is, std::string& name);
// A field. Numbers must fill their element; a double must be finite.
[[nodiscard]] bool ParseValue(std::istream& is, std::int64_t& value);
[[nodiscard]] bool ParseValue(std::istream& is, double& value);
// A double that may also be "inf", "-inf" or "nan".
[[nodiscard]] bool ParseAnyValue(std::istream& is, double& value);
[[nodiscard]] bool ParseValue(std::istream& is, std::string& value);
// The end of the object.
[[nodiscard]] bool ParseEndObj(std::istream& is);
// The end of the root, and nothing after it.
[[nodiscard]] bool ParseEndRoot(std::istream& is);
// The line, from 1, up to which the document was read; 0 before the first operation.
std::int64_t ParsedLine(std::istream& is);

}  // namespace MCCommonXML
