// Pieces of the parts of a table, brought together.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace PredSelect {

// A piece, and what a refusal calls it.
struct NamedPiece {
  std::string_view fBytes;
  std::string fName;
};

// Brings pieces of one kind together into one: ranges, or answers to one request. Counts do not
// depend on the order, other sums only in their last digits. Throws RequestError, naming the piece
// that does not fit. REQUIRES: at least one.
std::string MergePieces(const std::vector<NamedPiece>& pieces);

}  // namespace PredSelect
