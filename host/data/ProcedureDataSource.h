// The active data of the procedure that is running: the current session's table, its weight, and
// the room a procedure reserves for the variables it will add.
#pragma once

#include "host/data/KOVA_DataSource.h"

class ProcedureDataSource : public KOVA_DataSource {
 public:
  // REQUIRES: a session is installed for this thread.
  ProcedureDataSource();

  // Index of the frequency weight variable, -1 for none.
  int GetWeightVarIndex() const { return Table().GetWeightVarIndex(); }

  // Announces that up to so many 8-byte values of new variables will be added to each case.
  void SetMaxObsAdded(unsigned int values);
};

// Settles the measurement level of every variable that has none yet: strings are nominal; numbers
// are nominal when all valid values are whole and fewer than 24 are distinct, else scale. Reads the
// data once if any numeric variable is unsettled. Throws MCHost::HostIOError.
void AdjustMeasurementLevels(ProcedureDataSource& source);

// True when the variable counts as categorical: nominal or ordinal.
bool IsCatVar(int index, const KOVA_DataSource& source);
