#include "host/data/ProcedureDataSource.h"

#include <algorithm>
#include <limits>

#include "host/data/MeasurementLevels.h"
#include "host/session/HostBlocks.h"
#include "host/session/ISession.h"
#include "host/session/SessionScope.h"

ProcedureDataSource::ProcedureDataSource() : KOVA_DataSource(MCHost::CurrentSession().Table()) {}

void ProcedureDataSource::SetMaxObsAdded(unsigned int values) {
  constexpr unsigned int kMost = std::numeric_limits<std::int32_t>::max();
  MCHost::CurrentSession().CommonBlock().fMaxObsAdded =
      static_cast<std::int32_t>(std::min(values, kMost));
}

void AdjustMeasurementLevels(ProcedureDataSource& source) {
  MCHost::SettleMeasurementLevels(source.Table());
}

bool IsCatVar(int index, const KOVA_DataSource& source) {
  const auto level = source.GetVariable(index).GetMeasurementLevel();
  return level == KOVA_Variable::kNominal || level == KOVA_Variable::kOrdinal;
}
