#include "host/data/TableSchemaReader.h"

#include <algorithm>
#include <set>
#include <utility>

#include "host/session/HostIOError.h"
#include "host/text/KeywordMatch.h"

namespace MCHost {

namespace {

struct TypeName {
  const char* fName;
  FieldType fType;
};

constexpr TypeName kTypeNames[] = {
    {"any", FieldType::kAny},           {"string", FieldType::kString},
    {"number", FieldType::kNumber},     {"integer", FieldType::kInteger},
    {"boolean", FieldType::kBoolean},   {"date", FieldType::kDate},
    {"datetime", FieldType::kDateTime}, {"time", FieldType::kTime},
};

std::string PlaceOf(const std::string& text, std::size_t byte) {
  const std::size_t at = std::min(byte > 0 ? byte - 1 : 0, text.size());
  const auto start = text.begin();
  const auto here = start + static_cast<std::ptrdiff_t>(at);
  const auto line = std::count(start, here, '\n') + 1;
  const std::size_t lineEnd = at > 0 ? text.rfind('\n', at - 1) : std::string::npos;
  const std::size_t lineStart = lineEnd == std::string::npos ? 0 : lineEnd + 1;
  return "line " + std::to_string(line) + ", column " + std::to_string(at - lineStart + 1);
}

// Reads a text for the place alone where it can not be read.
class FaultFinder final : public nlohmann::json_sax<nlohmann::json> {
 public:
  bool null() override { return true; }
  bool boolean(bool) override { return true; }
  bool number_integer(number_integer_t) override { return true; }
  bool number_unsigned(number_unsigned_t) override { return true; }
  bool number_float(number_float_t, const string_t&) override { return true; }
  bool string(string_t&) override { return true; }
  bool binary(binary_t&) override { return true; }
  bool start_object(std::size_t) override { return true; }
  bool key(string_t&) override { return true; }
  bool end_object() override { return true; }
  bool start_array(std::size_t) override { return true; }
  bool end_array() override { return true; }
  bool parse_error(std::size_t position, const std::string& token,
                   const nlohmann::json::exception& fault) override {
    fByte = position;
    // The one fault that is no fault of the JSON: a number beyond the largest double.
    if (dynamic_cast<const nlohmann::json::out_of_range*>(&fault) == nullptr) return false;
    fByte -= token.size() - 1;
    fReason = "the number " + token + " is too large";
    return false;
  }

  std::size_t fByte = 0;  // from 1
  std::string fReason = "the text is not valid JSON here";
};

std::string Element(const std::string& path, std::size_t index) {
  return path + "[" + std::to_string(index) + "]";
}

}  // namespace

TableSchemaReader::TableSchemaReader(const std::string& text, std::string name)
    : fName(std::move(name)) {
  fDocument = Json::parse(text, nullptr, false);
  if (fDocument.is_discarded()) {
    FaultFinder finder;
    Json::sax_parse(text, &finder);
    throw HostIOError(fName, PlaceOf(text, finder.fByte), finder.fReason);
  }
  if (!fDocument.is_object()) Fail("", "the document must be an object with a list \"fields\"");
}

std::vector<TableSchema::Field> TableSchemaReader::Fields() const {
  std::vector<TableSchema::Field> fields;
  const auto list = fDocument.find("fields");
  if (list == fDocument.end() || !list->is_array()) Fail("fields", "a list of fields is needed");
  std::set<std::string> names;
  for (std::size_t i = 0; i < list->size(); ++i) {
    const std::string path = Element("fields", i);
    fields.push_back(ReadField((*list)[i], path));
    if (names.insert(fields.back().fName).second) continue;
    Fail(path + ".name", "a field named \"" + fields.back().fName + "\" is there already");
  }
  return fields;
}

std::vector<TableSchema::Item> TableSchemaReader::MissingValues() const {
  const auto list = fDocument.find("missingValues");
  if (list == fDocument.end()) return {};
  return ReadItems(*list, "missingValues");
}

TableSchema::Field TableSchemaReader::ReadField(const Json& json, const std::string& path) const {
  if (!json.is_object()) Fail(path, "a field must be an object with a \"name\"");
  TableSchema::Field field;
  field.fPath = path;
  field.fName = ReadText(json, "name", path);
  if (field.fName.empty()) Fail(path + ".name", "a field needs a name");
  field.fTitle = ReadText(json, "title", path);
  field.fType = ReadType(json, path);
  if (const auto list = json.find("missingValues"); list != json.end()) {
    field.fpMissing = ReadItems(*list, path + ".missingValues");
  }
  if (const auto list = json.find("categories"); list != json.end()) {
    field.fCategories = ReadItems(*list, path + ".categories");
    field.fbCategories = true;
  }
  if (const auto ordered = json.find("categoriesOrdered"); ordered != json.end()) {
    if (!ordered->is_boolean()) Fail(path + ".categoriesOrdered", "true or false is needed");
    field.fbOrdered = ordered->get<bool>();
    if (!field.fbCategories) Fail(path + ".categoriesOrdered", "there are no \"categories\"");
  }
  return field;
}

FieldType TableSchemaReader::ReadType(const Json& field, const std::string& path) const {
  const std::string name = ReadText(field, "type", path);
  if (name.empty()) return FieldType::kAny;
  std::vector<std::string> allowed;
  for (const TypeName& known : kTypeNames) {
    if (name == known.fName) return known.fType;
    allowed.emplace_back(known.fName);
  }
  Fail(path + ".type",
       "\"" + name + "\" is not a type that can be used; it must be " + JoinAlternatives(allowed));
}

std::vector<TableSchema::Item> TableSchemaReader::ReadItems(const Json& json,
                                                            const std::string& path) const {
  if (!json.is_array()) Fail(path, "a list of values is needed");
  std::vector<TableSchema::Item> items;
  for (std::size_t i = 0; i < json.size(); ++i) {
    items.push_back(ReadItem(json[i], Element(path, i)));
  }
  return items;
}

TableSchema::Item TableSchemaReader::ReadItem(const Json& json, const std::string& path) const {
  TableSchema::Item item;
  item.fPath = path;
  if (json.is_object()) {
    const auto value = json.find("value");
    if (value == json.end() || value->is_object()) Fail(path, "the object needs a \"value\"");
    item = ReadItem(*value, path + ".value");
    item.fLabel = ReadText(json, "label", path);
    return item;
  }
  if (json.is_string()) {
    item.fText = json.get<std::string>();
  } else if (json.is_number()) {
    item.fpNumber = json.get<double>();
    item.fText = json.dump();
  } else if (json.is_boolean()) {
    item.fpNumber = json.get<bool>() ? 1.0 : 0.0;
    item.fText = json.dump();
  } else {
    Fail(path,
         "a number, a string, true, false or an object with \"value\" and \"label\" is needed");
  }
  return item;
}

// The text of an optional property; empty when it is not there.
std::string TableSchemaReader::ReadText(const Json& object, const char* key,
                                        const std::string& path) const {
  const auto value = object.find(key);
  if (value == object.end()) return {};
  if (!value->is_string()) Fail(path + "." + key, "a string is needed");
  return value->get<std::string>();
}

void TableSchemaReader::Fail(const std::string& path, const std::string& reason) const {
  throw HostIOError(fName, path, reason);
}

}  // namespace MCHost
