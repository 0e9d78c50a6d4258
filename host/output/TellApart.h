// Makes variables, and values, that share a label tell themselves apart: the label is then shown
// with what it stands for behind it, "label (name)". A variable's label is shared when another
// variable of the active data has it too or bears it as its name; a value's, when another value in
// the same place is shown so. What programs know them by, names and values, is left alone.
//
// Every table, note, message and chart goes through here before it is handed to the output.
#pragma once

#include <vector>

#include "host/output/OutputText.h"

namespace MCHost {

struct OutputTable;

// Each looks at all that the text, or any text of the list or table, speaks of. Costs nothing where
// none has a label. REQUIRES: a session is installed for this thread.
void TellApart(OutputText& text);
void TellApart(std::vector<OutputText>& texts);
void TellApart(OutputTable& table);

}  // namespace MCHost
