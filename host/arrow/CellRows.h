// The cases of a file whose cells say themselves whether they are numbers or texts, one by one.
//
// What reads such a format implements this; CellRowsSource makes a source of data of it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace MCHost {

struct RowCell {
  enum Kind : std::uint8_t { kNone, kNumber, kBoolean, kText };

  Kind fKind = kNone;
  std::string fText;  // a number's digits; true or false; a text, dates and times in ISO 8601 too
  // Of a number of seconds that may be a time of day, too: that time. Empty for others.
  std::string fClock{};

  // As the sheet shows it.
  const std::string& Shown() const { return fClock.empty() ? fText : fClock; }
};

class ICellRows {
 public:
  virtual ~ICellRows() = default;

  // Goes to the next case and puts its cells into `cells`, by column; a cell that is not there, at
  // the end or among others, is one of kNone. False behind the last case. Throws HostIOError.
  virtual bool Next(std::vector<RowCell>& cells) = 0;

  // The columns that were met so far. Only a case can add to them, behind the others.
  virtual const std::vector<std::string>& Names() const = 0;

  // Where a cell of the case that was read last stands, as messages say it.
  virtual std::string Place(std::size_t column) const = 0;

  // What the user should know once all cases were read, one sentence each.
  virtual std::vector<std::string> Notes() const { return {}; }
};

}  // namespace MCHost
