// What a table holds, variable by variable.
#pragma once

#include "operations/Surroundings.h"

namespace MCHost {
class ITable;
class OutputDocument;
}  // namespace MCHost

namespace PredSelect {

struct DescribeRequest {
  int fTop = 0;               // so many variables have a line on the page, the first ones; 0: all
  bool fbForPrograms = true;  // also the tables that no page shows
};

// Reads the table once, in memory that grows with the distinct texts but not with the cases, and
// shows in a run of the document, whose data source is the caller's to name: names, types, levels
// and why, valid, missing and distinct values, moments, quantiles, histograms, most frequent
// values, labels, which values are missing together. User-missing values are counted, not looked
// into. More than 2,048 distinct numbers of a variable are estimated, with its quantiles, and said
// to be. Completed or cancelled; throws MCHost::HostIOError.
Outcome DescribeTable(MCHost::ITable& table, MCHost::OutputDocument& document,
                      const Surroundings& surroundings, const DescribeRequest& request = {});

}  // namespace PredSelect
