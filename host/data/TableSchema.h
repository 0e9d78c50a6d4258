// What a Table Schema (version 2) document says of a table's columns, and how it is applied.
//
// Read of each entry of "fields": "name", "title" (the label), "type", "missingValues",
// "categories" and "categoriesOrdered"; other properties are allowed and not looked at.
//
//  type               string, number, integer, boolean, date, datetime, time, any. It settles how a
//                     CSV column is read; for the other formats it must not contradict the file.
//  missingValues      user-missing values: numbers, strings or {"value": ..., "label": ...}. On a
//                     numeric field a string is a number ("-99") or a closed range ("90..99", with
//                     an end left open "..-1" or "900.."). Other strings without a digit ("?") are
//                     null where text, JSON or a workbook is read by a type that is none of text;
//                     else they, "" and the words of NullWords.h change nothing there.
//  categories         values or {"value": ..., "label": ...}: value labels, and the level nominal,
//                     or ordinal where "categoriesOrdered" is true.
//
// A "missingValues" list of the document itself holds for every column whose field has no list of
// its own: its numbers are user-missing in numeric and (as texts) in string columns, its other
// texts in string columns. In CSV these other texts are null, in every column.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "host/data/FieldType.h"

namespace MCHost {

class ITable;

class TableSchema {
 public:
  // A value with its label, empty for none. A number, a string or true (1) and false (0).
  struct Item {
    std::string fText;               // the string, or the number as it stands
    std::optional<double> fpNumber;  // for a JSON number, true and false
    std::string fLabel;
    std::string fPath;  // where it stands in the document
  };

  struct Field {
    std::string fName;
    std::string fTitle;
    FieldType fType = FieldType::kAny;
    std::optional<std::vector<Item>> fpMissing;
    std::vector<Item> fCategories;
    bool fbCategories = false;
    bool fbOrdered = false;
    std::string fPath;
  };

  // Throws HostIOError naming the file and the line and column or the element, and what is allowed.
  static TableSchema Read(const std::string& path);

  // The same for a text; `name` names it in messages.
  static TableSchema Parse(const std::string& text, const std::string& name);

  // What is to be known before a CSV file is read: types by name, and texts that are null, in all
  // columns or in some.
  std::map<std::string, FieldType> Types() const;
  std::vector<std::string> NullTokens() const;
  std::map<std::string, std::vector<std::string>> ColumnNulls() const;

  // Puts labels, user-missing values, value labels and levels into the table's dictionary. Throws
  // HostIOError for a field that the table does not have (naming the nearest column) and for one
  // that does not fit its column.
  void Apply(ITable& table) const;

 private:
  std::string fName;
  std::vector<Field> fFields;
  std::vector<Item> fMissing;  // the document's own
};

}  // namespace MCHost
