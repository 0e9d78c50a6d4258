#include "host/data/ProcedureDataSource.h"

#include "host/data/MeasurementLevels.h"
#include "host/session/HostBlocks.h"
#include "host/session/ISession.h"
#include "host/session/SessionScope.h"

ProcedureDataSource::ProcedureDataSource() : KOVA_DataSource(MCHost::CurrentSession().Table()) {}

void ProcedureDataSource::SetMaxObsAdded(unsigned int values) {
  MCHost::CurrentSession().CommonBlock().fMaxObsAdded = static_cast<std::int32_t>(values);
}

void AdjustMeasurementLevels(ProcedureDataSource& source) {
  MCHost::SettleMeasurementLevels(source.Table());
}

bool IsCatVar(int index, const KOVA_DataSource& source) {
  const auto level = source.GetVariable(index).GetMeasurementLevel();
  return level == KOVA_Variable::kNominal || level == KOVA_Variable::kOrdinal;
}
