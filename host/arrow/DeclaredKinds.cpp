#include "host/arrow/DeclaredKinds.h"

#include <algorithm>
#include <iterator>

#include "host/arrow/CsvKinds.h"

namespace MCHost {

namespace {

// So many bytes of a text are shown in a message.
constexpr std::size_t kShownText = 60;

struct Declaration {
  FieldType fType;
  unsigned fKinds;
  const char* fName;  // "is not a ..."
};

constexpr Declaration kDeclarations[] = {
    {FieldType::kAny, kCsvAll, ""},
    {FieldType::kString, kCsvText, "string"},
    {FieldType::kNumber, kCsvNumber | kCsvSpelling, "number"},
    {FieldType::kInteger, kCsvNumber | kCsvSpelling, "whole number"},
    {FieldType::kBoolean, kCsvBoolean | kCsvSpelling, "true or false value"},
    {FieldType::kDate, kCsvDate | kCsvSpelling, "date (such as 2024-02-29)"},
    {FieldType::kDateTime,
     kCsvDateTime | kCsvZonedTime | kCsvNanoDateTime | kCsvNanoZonedTime | kCsvSpelling,
     "date and time"},
    {FieldType::kTime, kCsvTime | kCsvNanoTime | kCsvSpelling, "time (such as 12:30:00)"},
};

const Declaration& DeclarationOf(FieldType type) {
  return *std::find_if(std::begin(kDeclarations), std::end(kDeclarations),
                       [type](const Declaration& one) { return one.fType == type; });
}

}  // namespace

unsigned DeclaredKinds(FieldType type) { return DeclarationOf(type).fKinds; }

std::string NotAsDeclared(std::string_view text, FieldType type, const std::string& column) {
  return Quoted(text) + " is not a " + DeclarationOf(type).fName + ", as column \"" + column +
         "\" is declared";
}

std::string Quoted(std::string_view text) {
  if (text.size() <= kShownText) return "\"" + std::string(text) + "\"";
  std::size_t end = kShownText;
  while ((text[end] & 0xC0) == 0x80) --end;
  return "\"" + std::string(text.substr(0, end)) + "...\"";
}

}  // namespace MCHost
