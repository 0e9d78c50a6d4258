#include "host/cases/KOVA_InputCaseIterator.h"

#include <algorithm>
#include <utility>

#include "common/MCAssert.h"
#include "common/MissingValue.h"
#include "host/cases/UACaseScan.h"

namespace {

constexpr const char* kSource = "host/cases/KOVA_InputCaseIterator";

bool ContinuesCharacter(char byte) { return (static_cast<unsigned char>(byte) & 0xC0) == 0x80; }

}  // namespace

KOVA_InputCaseIterator::KOVA_InputCaseIterator(MCHost::ITable& table,
                                               const std::vector<int>& scanColumns)
    : fpTable(&table), fScanPlaces(static_cast<std::size_t>(table.ColumnCount()), -1) {
  for (std::size_t i = 0; i < scanColumns.size(); ++i) {
    fScanPlaces[static_cast<std::size_t>(scanColumns[i])] = static_cast<int>(i);
  }
}

const KOVA_Variable& KOVA_InputCaseIterator::GetVariable(int var) const {
  return fpTable->GetVariable(var);
}

std::size_t KOVA_InputCaseIterator::ScanColumn(int var) const {
  const bool read = var >= 0 && static_cast<std::size_t>(var) < fScanPlaces.size() &&
                    fScanPlaces[static_cast<std::size_t>(var)] >= 0;
  MCCommon::Assert(read, "the variable is read", kSource);
  MCCommon::Assert(fpScan != nullptr && fpScan->Cases() > 0, "a stream is at a case", kSource);
  return static_cast<std::size_t>(fScanPlaces[static_cast<std::size_t>(var)]);
}

double KOVA_InputCaseIterator::GetNumericValue(int var) const {
  const std::size_t column = ScanColumn(var);
  const MCHost::ColumnView view = fpScan->Raw(column);
  if (view.fpNumbers == nullptr) return KOVA_SystemMissing;
  const double value = view.fpNumbers[fpScan->GetCase()];
  return MCMV::IsMissing(value) ? KOVA_SystemMissing : value;
}

const std::string* KOVA_InputCaseIterator::GetStringValue(int var) const {
  const std::size_t column = ScanColumn(var);
  const MCHost::ColumnView view = fpScan->Raw(column);
  if (view.fpCodes == nullptr || view.fpCodes[fpScan->GetCase()] < 0) return nullptr;
  return &view.fpDictionary->At(view.fpCodes[fpScan->GetCase()]);
}

bool KOVA_InputCaseIterator::MayStore() const {
  return fbLastPass && fpScan != nullptr && fpScan->Cases() > 0;
}

double* KOVA_InputCaseIterator::NumberColumn(int var) {
  std::vector<double>& values = fNumbers[var];
  if (values.empty()) values.assign(fpScan->Cases(), KOVA_SystemMissing);
  return values.data();
}

const std::string** KOVA_InputCaseIterator::StringColumn(int var) {
  std::vector<const std::string*>& values = fStrings[var];
  if (values.empty()) values.assign(fpScan->Cases(), nullptr);
  return values.data();
}

std::string KOVA_InputCaseIterator::Cut(const std::string& value, int width) {
  auto length = std::min(value.size(), static_cast<std::size_t>(std::max(width, 0)));
  while (length > 0 && length < value.size() && ContinuesCharacter(value[length])) --length;
  return value.substr(0, length);
}

bool KOVA_InputCaseIterator::SetColumnValue(int var, double value) {
  if (!MayStore()) return false;
  NumberColumn(var)[fpScan->GetCase()] = value;
  return true;
}

bool KOVA_InputCaseIterator::SetColumnValue(int var, const std::string& value, int width) {
  if (!MayStore()) return false;
  std::vector<std::string>& texts = fTexts[var];
  if (texts.size() < fpScan->Cases()) texts.resize(fpScan->Cases());
  std::string& text = texts[fpScan->GetCase()];
  text = Cut(value, width);
  StringColumn(var)[fpScan->GetCase()] = &text;
  return true;
}

// All are taken out before one is written: after a failure nothing stale is left behind.
void KOVA_InputCaseIterator::WriteValues() {
  const auto numbers = std::exchange(fNumbers, {});
  const auto strings = std::exchange(fStrings, {});
  for (const auto& [var, values] : numbers) {
    fpTable->WriteNumbers(var, fpScan->FirstCase(), values.data(), values.size());
  }
  for (const auto& [var, values] : strings) {
    fpTable->WriteStrings(var, fpScan->FirstCase(), values.data(), values.size());
  }
}
