// A command over data that lie in parts: seen from the one place where it runs, and from a part
// that is asked for one of its passes.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "common/parts/PartRequest.h"
#include "common/parts/Piece.h"
#include "common/state/StateBytes.h"
#include "host/cases/UAPartCounts.h"

class IFSAlgorithm;
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
    if (!StateBytes::To(Ask(request, kind), answer)) ThrowDamaged();
  }
  // The same of counts. Throws HostIOError for counts that are not of all cases.
  UAPartCounts AskCounts(const PartRequest& request) const;

  // The feature selection component that counts were saved of. Throws HostIOError for other bytes.
  std::unique_ptr<IFSAlgorithm> ComponentOf(const UAPartCounts& counts) const;
  // Throws HostIOError: the parts' answer cannot be read.
  [[noreturn]] void ThrowDamaged() const;

  // Empty for as many cases as all parts have, or what is wrong.
  std::string WhyNotAll(std::int64_t cases) const;

 private:
  [[noreturn]] void Throw(const std::string& why) const;
  std::string Ask(const PartRequest& request, Piece::Kind kind) const;

  const MCHost::WholeTable* fpWhole;
};

// What the current session wants of its part, nothing where it runs whole commands.
std::optional<PartRequest> PRSPartRequest();
// Hands the session an answer to it.
void PRSAnswer(Piece::Kind kind, std::string content, std::string codes = {});
