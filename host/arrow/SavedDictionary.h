// Columns of dictionary codes in the forms that files can take.
#pragma once

#include <arrow/result.h>
#include <arrow/type_fwd.h>

#include <memory>

namespace MCHost {

// The same cells with the nulls of the dictionary among the codes instead.
// REQUIRES of this and the below: a dictionary column.
arrow::Result<std::shared_ptr<arrow::Array>> WithoutNullEntries(
    const std::shared_ptr<arrow::Array>& column);

// The dictionaries of a column, which may change from batch to batch, as one that only ever grows:
// the file form of Arrow has room for one dictionary a column and for additions to it.
class SavedDictionary {
 public:
  // The cells of a batch by the dictionary as it is now. Null where its codes do not suffice for
  // all values so far, or where one that is to be added to holds a value twice or null.
  arrow::Result<std::shared_ptr<arrow::Array>> Take(const std::shared_ptr<arrow::Array>& column);

 private:
  std::shared_ptr<arrow::Array> fpValues;  // null before the first batch
};

}  // namespace MCHost
