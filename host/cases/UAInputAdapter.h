// Reads the active data as an engine's records: applies the missing rules, numbers the categories,
// keeps the range of continuous variables.
//
// Every case that is read is observed before a stream decides whether to deliver it, so after the
// first pass the adapter knows the categories and ranges of all cases. Streams over one adapter
// (UAProcDataSourceIter) share this knowledge, each reading with a scan of its own. Missing cells
// are delivered as KOVA_SystemMissing in every column.
//
// Of a table that is a part, or whose parts lie elsewhere (WholeTable.h), the categories and ranges
// are those of the whole from the beginning. A part that goes beyond them ends its first pass with
// an error.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "host/cases/KOVA_InputCaseIterator.h"
#include "host/cases/KOVA_Value.h"
#include "host/cases/UACategories.h"
#include "host/cases/UALostWeights.h"

struct ColumnRange;
namespace MCHost {
class ITable;
struct WholeTable;
}  // namespace MCHost
class ProcedureDataSource;
class UACaseScan;
class UAVarValidSpecs;

class UAInputAdapter {
 public:
  // Throws HostIOError where the whole lists no categories of a variable that needs them.
  // Specifications and data are borrowed. `extraVars` are read beside the record, for whoever looks
  // at the current case (GetDSIterator).
  UAInputAdapter(UAVarValidSpecs* specs, ProcedureDataSource& source,
                 const std::vector<int>& extraVars = {});
  ~UAInputAdapter();

  // Number of categories met; 0 for a variable that is not categorical in the record.
  int GetCatVarSize(int kovaVar) const;

  // Lowest and highest valid value of a continuous variable; KOVA_SystemMissing when it has none.
  double GetContMinValue(int kovaVar) const;
  double GetContMaxValue(int kovaVar) const;

  // The value behind a code of a record variable, whose index in the data `kovaVar` receives (-1
  // and a missing value for a code or variable that does not exist).
  KOVA_Value DecodeCatValue(int recordVar, int code, int& kovaVar) const;

  // Numbers the categories of a record variable by this list and no further. Of the values that are
  // not in it, those in `missing` are missing, and all others are delivered as
  // UACategories::kUnseen. REQUIRES: before the first pass; values of the variable's kind.
  void FixCategories(int recordVar, const std::vector<KOVA_Value>& categories,
                     const KOVA_MissingValues& missing = {});

  // Renumbers the categories by value (numbers by size, strings by bytes); codes delivered from the
  // next pass on are the new ones.
  void ReorderCategories(int kovaVar, bool ascending);

  // The pass of the stream that is reading, 0 during the first over the data; while none reads, the
  // number of passes so far.
  int GetDataPassCount() const;

  // The number of the case at which that stream is, from 1; 0 before the first.
  std::int64_t GetCaseNumber() const;

  KOVA_InputCaseIterator* GetDSIterator() { return &fIterator; }
  ProcedureDataSource& GetDataSource() { return *fpSource; }
  const MCHost::ITable& GetTable() const;

  // nRecords: the cases delivered in the first pass over the data.
  int GetRecordCount() const { return fNRecords; }

  // What the first pass over the data has met of frequency weights, whatever else the cases hold.
  const UALostWeights& GetLostWeights() const { return fLostWeights; }
  // Adds what was met of them elsewhere.
  void AddLostWeights(const UALostWeights& others) { fLostWeights.Add(others); }

  // For the streams. A new scan (throws HostIOError); the next chunk of one, observed and prepared,
  // false at the end (throws HostIOError); making a scan the one that is reading; counting a
  // delivery; taking out the cases of the chunk that lack a value, when only complete ones are
  // wanted.
  std::unique_ptr<UACaseScan> OpenScan();
  bool NextChunk(UACaseScan& scan);
  void Follow(UACaseScan* scan);
  bool IsFollowing(const UACaseScan* scan) const { return fpReading == scan; }
  void CountDelivered(int n) { fNRecords += n; }
  void LeaveOutIncomplete(const UACaseScan& scan, std::vector<std::size_t>& cases) const;
  std::size_t GetNRecordVars() const { return fVars.size(); }

 private:
  struct Var {
    int fKOVAVar = -1;
    std::size_t fScanColumn = 0;
    const KOVA_MissingValues* fpUserMissing = nullptr;  // null when there is none to apply
    std::unique_ptr<UACategories> fpCategories;         // null for a number
    bool fbConvert = false;  // some missing cell is not KOVA_SystemMissing in the table
    double fMin = KOVA_SystemMissing;
    double fMax = KOVA_SystemMissing;
    const ColumnRange* fpKnown = nullptr;  // of the whole; null for a table that stands for itself
    int fNKnown = 0;                       // categories of the whole
  };

  std::size_t AddScanColumn(int kovaVar);
  Var MakeVar(int recordVar);
  const Var* FindVar(int kovaVar) const;
  // Takes what is known of the whole.
  void BeginWith(const MCHost::WholeTable& whole, Var& var) const;
  // Throws HostIOError for a part that goes beyond the whole, or has become another one.
  void CheckKnown(std::int64_t cases) const;
  static void PrepareNumbers(Var& var, std::size_t recordVar, UACaseScan& scan);

  UAVarValidSpecs* fpSpecs;
  ProcedureDataSource* fpSource;
  std::vector<int> fScanColumns;
  std::vector<int> fScanPlaces;  // by variable, -1 for none; needed while columns are added
  std::vector<Var> fVars;
  KOVA_InputCaseIterator fIterator;
  UACaseScan* fpReading = nullptr;
  bool fbObserved = false;  // every case, by a scan that came to the end
  UALostWeights fLostWeights;
  int fNScans = 0;
  int fNRecords = 0;
};
