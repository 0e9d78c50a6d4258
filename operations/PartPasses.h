// What is done where a part of a table is: passes of a command, answered in pieces of bytes that
// whoever runs the command brings together.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "operations/Surroundings.h"

namespace MCHost {
class DataTable;
struct WholeTable;
}  // namespace MCHost

namespace PredSelect {

// The whole that a piece of ranges is of, for TableOptions. Throws RequestError for other bytes,
// and for a part that the ranges do not know; `part` below 0: nobody has said.
std::shared_ptr<MCHost::WholeTable> WholeOf(std::string_view ranges, std::int64_t part);

struct PartAnswer {
  std::string fAnswer;  // a piece, to be merged with those of the other parts
  std::string fCodes;   // a piece that stays with the part, for passes over codes; empty for none
};

// Answers a request over the cases of a part. The same request over the same cases has the same
// answer. Throws RequestError for a request that is none or of other ranges, MCHost::HostIOError
// for data that cannot be read or go beyond the ranges, and Cancelled.
// REQUIRES: the table was prepared as a part of its whole.
PartAnswer AnswerPart(MCHost::DataTable& table, const std::string& request,
                      const Surroundings& surroundings);

// Answers a request over the codes of a part. Throws RequestError, and Cancelled.
std::string AnswerFromCodes(std::string_view codes, const std::string& request,
                            const Surroundings& surroundings);

// The codes of a part where they stay in memory between requests, with what one step of a selection
// leaves to the next: the same answers in less time.
class PartCodes {
 public:
  // `mostKept`: bytes besides the codes. Throws RequestError for bytes that are no codes.
  PartCodes(std::string_view codes, const Surroundings& surroundings, std::size_t mostKept);
  ~PartCodes();

  // As AnswerFromCodes.
  std::string Answer(const std::string& request);

 private:
  struct Kept;

  std::unique_ptr<Kept> fpKept;
};

}  // namespace PredSelect
