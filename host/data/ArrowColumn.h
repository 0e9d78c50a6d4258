// One column of an Arrow stream, read as the host keeps it: numbers as doubles, strings as codes.
//
// Booleans, integers, floating point numbers and decimals become numbers; a column of nulls is
// numeric and all missing. Dates become days since 1970-01-01, timestamps seconds since then, times
// of day and durations seconds. Strings, dictionary-encoded or not, become codes of a pool. Nulls,
// NaN and infinities become missing (KOVA_SystemMissing, code -1). Lists, structs, maps, binary and
// other types are refused by name.
//
// The column borrows the array it is attached to. Arrays that break the interface's rules are
// refused with a HostIOError; the sizes of buffers are not part of the interface and are trusted.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "host/data/ArrowCDataInterface.h"
#include "host/data/DecimalCells.h"
#include "host/data/KOVA_Variable.h"

namespace MCHost {

class StringPool;

class ArrowColumn {
 public:
  // Reads the type. `source` names the data in messages. Throws HostIOError for a refused type.
  ArrowColumn(const ArrowSchema& schema, const std::string& source);
  ArrowColumn(ArrowColumn&&) noexcept;
  ~ArrowColumn();

  const std::string& Name() const { return fName; }
  // What the column's metadata hold under the key "label"; empty for nothing.
  const std::string& Label() const { return fLabel; }
  bool IsNumeric() const;

  // What its numbers stand for.
  KOVA_Variable::Time Time() const;

  // How values changed on their way in ("holds dates, read as days since 1970-01-01"), or empty.
  std::string Note() const;

  // Makes the cells first .. first + length - 1 of the array (its own offset not counted) the cells
  // 0 .. length - 1 of this column. Throws HostIOError.
  void Attach(const ArrowArray& array, std::int64_t first, std::int64_t length);

  // Copies n cells from `first`. REQUIRES: IsNumeric(), attached, the cells exist.
  void ReadNumbers(std::int64_t first, std::size_t n, double* values);

  // The codes of n cells from `first`; new strings enter the pool. All calls use the same pool.
  // REQUIRES: !IsNumeric(), attached, the cells exist. Throws HostIOError.
  void ReadCodes(std::int64_t first, std::size_t n, StringPool& pool, std::int32_t* codes);

 private:
  struct Type;
  static const Type kTypes[];
  static const Type& FindType(const char* format);

  // Cell `at` of the raw array, its offset included.
  bool IsNull(std::int64_t at) const;
  std::string_view StringAt(std::int64_t at) const;
  std::int64_t DictionaryIndexAt(std::int64_t at) const;
  std::int32_t Intern(std::string_view text, StringPool& pool) const;
  std::int32_t CodeAt(std::int64_t at, StringPool& pool);
  void ReadDictionaryNumbers(std::int64_t at, std::size_t n, double* values);
  void MarkMissing(std::int64_t at, std::size_t n, double* values);
  [[noreturn]] void Refuse(const std::string& reason) const;

  std::string fName;
  std::string fLabel;
  std::string fSource;
  const Type* fpType = nullptr;
  void (*fReadNumbers)(const void* data, std::int64_t at, std::size_t n, double divisor,
                       double* values) = nullptr;
  double fDivisor = 1.0;                      // stored units in one of ours
  DecimalReader fReadDecimals = nullptr;      // null for all but decimals
  int fPlaces = 0;                            // of decimals
  std::unique_ptr<ArrowColumn> fpDictionary;  // null unless dictionary-encoded
  std::vector<std::int32_t> fDictionaryCodes;
  std::vector<double> fDictionaryNumbers;
  bool fbDigitsLost = false;

  const ArrowArray* fpArray = nullptr;
  const std::uint8_t* fpValid = nullptr;  // null when no cell is null
  std::int64_t fFirst = 0;                // raw index of cell 0
};

}  // namespace MCHost
