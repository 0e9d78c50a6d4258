#include "host/arrow/JsonRows.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <string_view>
#include <utility>

#include "host/arrow/DeclaredKinds.h"
#include "host/session/HostIOError.h"

namespace MCHost {

using Json = nlohmann::json;

// Takes the values of one record.
class JsonRows::Handler final : public nlohmann::json_sax<Json> {
 public:
  Handler(JsonRows& rows, std::vector<RowCell>& cells) : fRows(rows), fCells(cells) {
    for (RowCell& cell : fCells) cell.fKind = RowCell::kNone;
    fMet.assign(fCells.size(), false);
  }

  bool null() override { return Take(RowCell::kNone, {}); }
  bool boolean(bool value) override { return Take(RowCell::kBoolean, value ? "true" : "false"); }
  bool number_integer(number_integer_t value) override {
    return Take(RowCell::kNumber, std::to_string(value));
  }
  bool number_unsigned(number_unsigned_t value) override {
    return Take(RowCell::kNumber, std::to_string(value));
  }
  bool number_float(number_float_t, const string_t& digits) override {
    return Take(RowCell::kNumber, digits);
  }
  bool string(string_t& text) override { return Take(RowCell::kText, text); }
  bool binary(binary_t&) override { return false; }
  bool start_object(std::size_t) override {
    if (fbInside) Refuse("an object");
    return fbInside = true;
  }
  bool end_object() override { return true; }
  bool start_array(std::size_t) override { Refuse("a list"); }
  bool end_array() override { return true; }

  bool key(string_t& key) override {
    fColumn = fRows.ColumnOf(key, fNext);
    fNext = fColumn + 1;
    if (fColumn >= fCells.size()) {
      fCells.resize(fColumn + 1);
      fMet.resize(fColumn + 1, false);
    }
    if (fMet[fColumn]) fRows.Fail("the record has the key " + Quoted(key) + " twice");
    fMet[fColumn] = true;
    return true;
  }

  bool parse_error(std::size_t byte, const std::string& token,
                   const nlohmann::json::exception& fault) override {
    // The one fault that is no fault of the JSON: a number beyond the largest double.
    if (dynamic_cast<const Json::out_of_range*>(&fault) == nullptr) {
      fRows.FailAt(byte, "the text is not valid JSON here");
    }
    fRows.FailAt(byte - token.size() + 1, "the number " + token + " is too large");
  }

 private:
  bool Take(RowCell::Kind kind, std::string_view text) {
    if (!fbInside) fRows.Fail("the record is " + Quoted(fRows.fRecords.Text()) + ", not an object");
    fCells[fColumn].fKind = kind;
    fCells[fColumn].fText = text;
    return true;
  }

  [[noreturn]] void Refuse(const std::string& what) const {
    if (!fbInside) fRows.Fail("the record is " + what + ", not an object");
    fRows.Fail(Quoted(fRows.fNames[fColumn]) + " holds " + what +
               "; only single values can be read: give each of them a key of its own");
  }

  JsonRows& fRows;
  std::vector<RowCell>& fCells;
  std::vector<bool> fMet;
  std::size_t fColumn = 0;
  std::size_t fNext = 0;  // what the next key is guessed to be
  bool fbInside = false;
};

JsonRows::JsonRows(std::shared_ptr<arrow::io::InputStream> input, std::string source)
    : fSource(source), fRecords(std::move(input), std::move(source)) {}

bool JsonRows::Next(std::vector<RowCell>& cells) {
  if (!fRecords.Next()) return false;
  Handler handler(*this, cells);
  Json::sax_parse(fRecords.Text(), &handler);
  return true;
}

std::size_t JsonRows::ColumnOf(const std::string& key, std::size_t guess) {
  if (guess < fNames.size() && fNames[guess] == key) return guess;
  const auto [found, isNew] = fColumns.try_emplace(key, fNames.size());
  if (isNew) fNames.push_back(key);
  return found->second;
}

std::string JsonRows::Place(std::size_t) const { return "line " + std::to_string(fRecords.Line()); }

void JsonRows::FailAt(std::size_t byte, const std::string& reason) const {
  const std::string_view before = fRecords.Text().substr(0, byte > 0 ? byte - 1 : 0);
  const auto lines = std::count(before.begin(), before.end(), '\n');
  const std::size_t start = before.rfind('\n');
  const std::size_t column =
      start == std::string_view::npos ? fRecords.Column() + before.size() : before.size() - start;
  throw HostIOError(
      fSource,
      "line " + std::to_string(fRecords.Line() + lines) + ", column " + std::to_string(column),
      reason);
}

void JsonRows::Fail(const std::string& reason) const {
  throw HostIOError(fSource, Place(0), reason);
}

}  // namespace MCHost
