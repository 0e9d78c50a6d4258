// Which records of a document are written: those of one kind of table.
#pragma once

#include <optional>
#include <string>

#include "host/output/FlatRecords.h"

namespace MCHost {
class OutputDocument;
}

namespace PredSelectApp {

// Those of all tables of that subtype, be its letters small or not, or of the main table: of the
// last run that has shown one. The tables of several runs follow each other, and a column "command"
// counts the runs. Nothing where there is no such table.
std::optional<MCHost::FlatRecords> ChosenRecords(const MCHost::OutputDocument& document,
                                                 const std::string& subtype);

// Says so, and which tables there are.
std::string WithoutTable(const MCHost::OutputDocument& document, const std::string& subtype);

}  // namespace PredSelectApp
