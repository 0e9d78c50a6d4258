// Reads the JSON of a Table Schema document, property by property, and names what is wrong by its
// path ("fields[2].categories[0].value").
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "host/data/TableSchema.h"

namespace MCHost {

class TableSchemaReader {
 public:
  // Throws HostIOError with line and column for a text that is not a JSON object.
  TableSchemaReader(const std::string& text, std::string name);

  // Both throw HostIOError.
  std::vector<TableSchema::Field> Fields() const;
  std::vector<TableSchema::Item> MissingValues() const;  // of the document itself

 private:
  using Json = nlohmann::json;

  TableSchema::Field ReadField(const Json& json, const std::string& path) const;
  std::vector<TableSchema::Item> ReadItems(const Json& json, const std::string& path) const;
  TableSchema::Item ReadItem(const Json& json, const std::string& path) const;
  std::string ReadText(const Json& object, const char* key, const std::string& path) const;
  FieldType ReadType(const Json& field, const std::string& path) const;
  [[noreturn]] void Fail(const std::string& path, const std::string& reason) const;

  std::string fName;
  Json fDocument;
};

}  // namespace MCHost
