// A command over data that lie in parts: seen from the one place where it runs, and from a part
// that is asked for one of its passes.
#pragma once

#include <cstdint>
#include <fstream>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "common/parts/PartRequest.h"
#include "common/parts/Piece.h"
#include "host/cases/UAPartCounts.h"

namespace MCHost {
class ITable;
struct WholeTable;
}  // namespace MCHost

// The passes that a command asks of the parts of its table.
class PRSParts {
 public:
  explicit PRSParts(const MCHost::ITable& table);

  // Whether the table's cases lie elsewhere.
  bool AreThere() const;

  // The request of a pass of the current command. REQUIRES, here and below: AreThere().
  PartRequest Request(PartRequest::Kind kind, std::vector<int> numbers = {},
                      std::string content = {}) const;
  // All parts' answer. Throws HostIOError for one that is damaged, or of another kind or request.
  template <class T>
  void AskFor(const PartRequest& request, Piece::Kind kind, T& answer) const {
    Read(Ask(request, kind), [&answer](std::fstream& is) { answer.ReadObject(is); });
  }
  // The same of counts. Throws HostIOError for counts that are not of all cases.
  UAPartCounts AskCounts(const PartRequest& request) const;

  // Throws HostIOError: the parts' answer cannot be read.
  [[noreturn]] void ThrowDamaged() const;

  // Empty for as many cases as all parts have, or what is wrong.
  std::string WhyNotAll(std::int64_t cases) const;

 private:
  [[noreturn]] void Throw(const std::string& why) const;
  std::string Ask(const PartRequest& request, Piece::Kind kind) const;
  void Read(const std::string& content, const std::function<void(std::fstream&)>& read) const;

  const MCHost::WholeTable* fpWhole;
};

// What the current session wants of its part, nothing where it runs whole commands.
std::optional<PartRequest> PRSPartRequest();
// Hands the session an answer to it.
void PRSAnswer(Piece::Kind kind, std::string content, std::string codes = {});
