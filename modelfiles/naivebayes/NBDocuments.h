// What the documents of the Naive Bayes component share: its name, the names of model elements that
// several classes write, and how a category is named in them.
#pragma once

#include <memory>

class INBEncoder;
namespace MCCommonXML {
class XMLElement;
}

namespace MCModelFiles {

inline constexpr const char* kNBComponentName = "Naive Bayes Component";

namespace pmml {
inline constexpr const char* kValue = "Value";
inline constexpr const char* kValueAttribute = "value";
inline constexpr const char* kDisplayValue = "displayValue";
inline constexpr const char* kProperty = "property";
inline constexpr const char* kDataType = "dataType";
inline constexpr const char* kOptype = "optype";
inline constexpr const char* kFieldName = "fieldName";
inline constexpr const char* kTargetValueCounts = "TargetValueCounts";
}  // namespace pmml

// Gives the element the value that an encoder (null: none) decodes a category to, a number or a
// string; `unknown` for a category that it does not know. True when it knew it.
// Throws XMLError for a value that XML cannot hold.
bool AddCategory(MCCommonXML::XMLElement& element, const INBEncoder* encoder, int category,
                 int unknown);

// Adds a TargetValueCount to the element: the target category and its case weight.
void AddTargetCount(MCCommonXML::XMLElement& counts, const INBEncoder* targetEncoder, int category,
                    double count);

}  // namespace MCModelFiles
