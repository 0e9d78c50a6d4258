// The dictionary of the active data as procedures see it.
//
// A view of the current session's table: it owns nothing and holds no cells.
#pragma once

#include <string>

#include "host/data/ITable.h"

class KOVA_DataSource {
 public:
  explicit KOVA_DataSource(MCHost::ITable& table) : fpTable(&table) {}

  // Number of variables.
  int ColumnCount() const { return fpTable->ColumnCount(); }

  // REQUIRES: 0 <= index < ColumnCount().
  const KOVA_Variable& GetVariable(int index) const { return Table().GetVariable(index); }
  KOVA_Variable& GetVariable(int index) { return fpTable->GetVariable(index); }

  // The index of the variable with that name, or -1. Names are compared as they are; when no name
  // is equal, one that differs only in the case of letters is taken if it is the only such.
  int FindVariable(const std::string& name) const;

  // Appends a variable named `name` of the given type (0 numeric, else width in bytes); returns its
  // index. REQUIRES: no variable of that name exists.
  int MakeVariable(const std::string& name, int type);

  MCHost::ITable& Table() { return *fpTable; }
  const MCHost::ITable& Table() const { return *fpTable; }

 private:
  MCHost::ITable* fpTable;
};
