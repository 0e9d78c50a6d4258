// From the columns of a table to the records of a saved Naive Bayes model: variables are matched by
// name, values become the model's category codes.
//
// A category that the model has not seen, or a value that it takes as missing, is missing. What the
// table declares as user-missing does not count: the run that built the model has decided whether
// such values are excluded, and the model remembers. Model and table are borrowed.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "common/Record.h"
#include "host/data/ITable.h"
#include "naivebayes/variables/NBVarList.h"

namespace PredSelect {

class ModelColumns {
 public:
  // Throws RequestError when the table lacks a predictor of the model.
  ModelColumns(const NBVarList& variables, const MCHost::ITable& table);

  // The table's columns to be scanned.
  const std::vector<int>& TableColumns() const { return fTableColumns; }

  // The record of one case of a batch of that scan: a value per variable of the model's list.
  // Throws RequestError for a text where the model has numbers, or the other way round; a column
  // without any value may be of either kind.
  void FillRecord(const MCHost::TableBatch& batch, std::size_t i, MCCommon::Record& record);

 private:
  struct Column {
    int fPosition = 0;  // in the model's list
    bool fbCategorical = false;
    std::string fRefusal;  // why no value of the column can be used; empty when they can
    std::map<double, int> fNumberCodes;
    std::map<std::string, int> fStringCodes;
    std::vector<int> fCodes;  // by the table's own string code, found so far
  };

  double ValueOf(Column& column, const MCHost::ColumnView& view, std::size_t i) const;
  static int CodeOfString(Column& column, const MCHost::StringDictionary& dictionary,
                          std::int32_t code);

  std::vector<int> fTableColumns;
  std::vector<Column> fColumns;
};

// A category of a categorical variable of the model: as text, and as a number (missing for a string
// variable).
std::string CategoryText(const INBVariable& variable, int code);
double CategoryNumber(const INBVariable& variable, int code);

}  // namespace PredSelect
