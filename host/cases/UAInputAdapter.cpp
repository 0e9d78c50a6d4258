#include "host/cases/UAInputAdapter.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "host/cases/UACaseScan.h"
#include "host/cases/UAVarValidSpecs.h"
#include "host/data/ProcedureDataSource.h"
#include "host/data/WholeTable.h"
#include "host/output/ShowText.h"
#include "host/session/HostIOError.h"

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

// That of the numbers which the record takes.
const NumberRange& RangeOf(const ColumnRange& known, const UAVarValidSpecs& specs) {
  return specs.IsUserMissingExcluded() ? known.fValid : known.fAll;
}

[[noreturn]] void ThrowUnlisted(const MCHost::WholeTable& whole, const ColumnDictionary& column) {
  const bool isScale = column.fLevel == KOVA_Variable::kScale;
  throw MCHost::HostIOError(
      whole.fName, "",
      isScale ? MCHost::KeyText("The ranges do not list the categories of ^1...", {column.fName})
              : MCHost::KeyText("The ranges know too many categories of ^1: ^2...",
                                {column.fName, std::to_string(ColumnRange::kMostCategories)}));
}

struct Range {
  double fMin = kInfinity;
  double fMax = -kInfinity;
  bool fbConvert = false;  // some missing cell is not yet KOVA_SystemMissing
};

// No branch in the loop: a missing value enters the range as the infinity that changes nothing.
Range Observe(const double* values, std::size_t n) {
  Range range;
  int convert = 0;
  for (std::size_t i = 0; i < n; ++i) {
    const double value = values[i];
    const bool missing = MCMV::IsMissing(value);
    const double low = missing ? kInfinity : value;
    const double high = missing ? -kInfinity : value;
    range.fMin = low < range.fMin ? low : range.fMin;
    range.fMax = high > range.fMax ? high : range.fMax;
    convert |= static_cast<int>(missing) & static_cast<int>(value != KOVA_SystemMissing);
  }
  range.fbConvert = convert != 0;
  return range;
}

}  // namespace

UAInputAdapter::UAInputAdapter(UAVarValidSpecs* specs, ProcedureDataSource& source,
                               const std::vector<int>& extraVars)
    : fpSpecs(specs),
      fpSource(&source),
      fScanPlaces(static_cast<std::size_t>(source.ColumnCount()), -1),
      fIterator(source.Table(), {}) {
  for (int i = 0; i < specs->GetNRecordVars(); ++i) fVars.push_back(MakeVar(i));
  for (const int var : extraVars) AddScanColumn(var);
  fIterator = KOVA_InputCaseIterator(source.Table(), fScanColumns);
}

UAInputAdapter::~UAInputAdapter() = default;

std::size_t UAInputAdapter::AddScanColumn(int kovaVar) {
  int& place = fScanPlaces[static_cast<std::size_t>(kovaVar)];
  if (place < 0) {
    place = static_cast<int>(fScanColumns.size());
    fScanColumns.push_back(kovaVar);
  }
  return static_cast<std::size_t>(place);
}

UAInputAdapter::Var UAInputAdapter::MakeVar(int recordVar) {
  Var var;
  var.fKOVAVar = fpSpecs->GetKOVAVarIndex(recordVar);
  var.fScanColumn = AddScanColumn(var.fKOVAVar);
  const KOVA_Variable& variable = fpSource->GetVariable(var.fKOVAVar);
  const bool exclude = fpSpecs->IsUserMissingExcluded();
  const bool encode = fpSpecs->IsCategorical(recordVar) && fpSpecs->AreCategoriesEncoded();
  if (encode || !variable.IsNumeric()) {
    var.fpCategories = std::make_unique<UACategories>(variable, exclude);
  } else if (exclude && !variable.GetMissingValues().IsEmpty()) {
    var.fpUserMissing = &variable.GetMissingValues();
    var.fbConvert = true;
  }
  if (const MCHost::WholeTable* whole = fpSource->Table().Whole()) BeginWith(*whole, var);
  return var;
}

void UAInputAdapter::BeginWith(const MCHost::WholeTable& whole, Var& var) const {
  var.fpKnown = &whole.fRanges.fColumns[static_cast<std::size_t>(var.fKOVAVar)];
  const ColumnRange& known = *var.fpKnown;
  if (!var.fpCategories) {
    const NumberRange& range = RangeOf(known, *fpSpecs);
    var.fMin = range.fLow;
    var.fMax = range.fHigh;
    return;
  }
  if (!known.fbListed) ThrowUnlisted(whole, known.fDictionary);
  std::vector<KOVA_Value> values(known.fNumbers.begin(), known.fNumbers.end());
  for (const std::string& text : known.fTexts) values.emplace_back(text);
  var.fpCategories->Begin(values);
  var.fNKnown = var.fpCategories->Size();
}

void UAInputAdapter::CheckKnown(std::int64_t cases) const {
  const MCHost::WholeTable* whole = fpSource->Table().Whole();
  if (whole == nullptr) return;
  for (const Var& var : fVars) {
    const NumberRange& range = RangeOf(*var.fpKnown, *fpSpecs);
    const bool isBeyond = var.fpCategories ? var.fpCategories->Size() > var.fNKnown
                                           : var.fMin < range.fLow || var.fMax > range.fHigh;
    if (!isBeyond) continue;
    throw MCHost::HostIOError(whole->fName, "",
                              MCHost::KeyText("^1 has values that the ranges do not know...",
                                              {var.fpKnown->fDictionary.fName}));
  }
  const std::int64_t known = whole->CaseCount();
  if (known < 0 || cases == known) return;
  throw MCHost::HostIOError(whole->fName, "",
                            MCHost::KeyText("The part has ^1 cases instead of ^2...",
                                            {std::to_string(cases), std::to_string(known),
                                             std::to_string(whole->fPart)}));
}

const UAInputAdapter::Var* UAInputAdapter::FindVar(int kovaVar) const {
  const int position = fpSpecs->GetRecVarIndex(kovaVar);
  return position < 0 ? nullptr : &fVars[static_cast<std::size_t>(position)];
}

const MCHost::ITable& UAInputAdapter::GetTable() const { return fpSource->Table(); }

int UAInputAdapter::GetCatVarSize(int kovaVar) const {
  const Var* var = FindVar(kovaVar);
  return var != nullptr && var->fpCategories ? var->fpCategories->Size() : 0;
}

double UAInputAdapter::GetContMinValue(int kovaVar) const {
  const Var* var = FindVar(kovaVar);
  return var == nullptr ? KOVA_SystemMissing : var->fMin;
}

double UAInputAdapter::GetContMaxValue(int kovaVar) const {
  const Var* var = FindVar(kovaVar);
  return var == nullptr ? KOVA_SystemMissing : var->fMax;
}

KOVA_Value UAInputAdapter::DecodeCatValue(int recordVar, int code, int& kovaVar) const {
  kovaVar = -1;
  if (recordVar < 0 || static_cast<std::size_t>(recordVar) >= fVars.size()) return {};
  const Var& var = fVars[static_cast<std::size_t>(recordVar)];
  if (!var.fpCategories || code < 0 || code >= var.fpCategories->Size()) return {};
  kovaVar = var.fKOVAVar;
  return var.fpCategories->Decode(code);
}

void UAInputAdapter::FixCategories(int recordVar, const std::vector<KOVA_Value>& categories,
                                   const KOVA_MissingValues& missing) {
  Var& var = fVars[static_cast<std::size_t>(recordVar)];
  var.fpCategories =
      std::make_unique<UACategories>(fpSource->GetVariable(var.fKOVAVar), categories, missing);
}

void UAInputAdapter::ReorderCategories(int kovaVar, bool ascending) {
  const Var* var = FindVar(kovaVar);
  if (var != nullptr && var->fpCategories) var->fpCategories->Sort(ascending);
}

int UAInputAdapter::GetDataPassCount() const { return fpReading ? fpReading->Pass() : fNScans; }

std::int64_t UAInputAdapter::GetCaseNumber() const {
  if (fpReading == nullptr || fpReading->Cases() == 0) return 0;
  return fpReading->FirstCase() + static_cast<std::int64_t>(fpReading->GetCase()) + 1;
}

std::unique_ptr<UACaseScan> UAInputAdapter::OpenScan() {
  auto scan = std::make_unique<UACaseScan>(fpSource->Table().Scan(fScanColumns),
                                           fpSpecs->GetNRecordVars(), fNScans);
  ++fNScans;
  return scan;
}

void UAInputAdapter::Follow(UACaseScan* scan) {
  fpReading = scan;
  fIterator.Follow(scan);
}

bool UAInputAdapter::NextChunk(UACaseScan& scan) {
  if (!scan.NextChunk()) {
    if (!std::exchange(fbObserved, true)) CheckKnown(scan.FirstCase());
    return false;
  }
  for (std::size_t j = 0; j < fVars.size(); ++j) {
    Var& var = fVars[j];
    if (var.fpCategories) {
      var.fpCategories->Encode(scan.Raw(var.fScanColumn), scan.Cases(), scan.Buffer(j));
      scan.SetColumn(j, scan.Buffer(j));
    } else if (fbObserved && !var.fbConvert) {
      scan.SetColumn(j, scan.Raw(var.fScanColumn).fpNumbers);
    } else {
      PrepareNumbers(var, j, scan);
    }
  }
  const int weight = fpSpecs->GetWeightPosition();
  if (weight >= 0 && scan.Pass() == 0) {
    fLostWeights.Observe(scan.Column(static_cast<std::size_t>(weight)), scan.Cases());
  }
  return true;
}

void UAInputAdapter::PrepareNumbers(Var& var, std::size_t recordVar, UACaseScan& scan) {
  const double* values = scan.Raw(var.fScanColumn).fpNumbers;
  const std::size_t n = scan.Cases();
  Range range;
  if (var.fpUserMissing != nullptr) {
    double* out = scan.Buffer(recordVar);
    for (std::size_t i = 0; i < n; ++i) {
      const bool missing = MCMV::IsMissing(values[i]) || var.fpUserMissing->Contains(values[i]);
      out[i] = missing ? KOVA_SystemMissing : values[i];
    }
    values = out;
    range = Observe(values, n);
  } else {
    range = Observe(values, n);
    if (range.fbConvert) {
      var.fbConvert = true;
      double* out = scan.Buffer(recordVar);
      std::replace_copy_if(values, values + n, out, MCMV::IsMissing, KOVA_SystemMissing);
      values = out;
    }
  }
  scan.SetColumn(recordVar, values);
  if (range.fMin > range.fMax) return;
  var.fMin = var.fMin == KOVA_SystemMissing ? range.fMin : std::min(var.fMin, range.fMin);
  var.fMax = var.fMax == KOVA_SystemMissing ? range.fMax : std::max(var.fMax, range.fMax);
}

void UAInputAdapter::LeaveOutIncomplete(const UACaseScan& scan,
                                        std::vector<std::size_t>& cases) const {
  if (fpSpecs->IsMissingDelivered()) return;
  for (std::size_t j = 0; j < fVars.size(); ++j) {
    const double* column = scan.Column(j);
    std::erase_if(cases, [column](std::size_t i) { return column[i] == KOVA_SystemMissing; });
  }
}
