// The status that every engine operation returns: a code, a severity and a few data that a message
// may name. A plain value; engines never throw across their interfaces.
#pragma once

#include <array>
#include <cstdint>

namespace MCCommon {

class [[nodiscard]] MCStatus {
 public:
  // OK, code 0, all data zero.
  MCStatus() = default;

  // A warning (severity 1) or an error (severity -1) with the given code.
  MCStatus(std::int64_t code, bool warning) : fCode(code), fSeverity(warning ? 1 : -1) {}

  bool IsOK() const { return fSeverity == 0; }
  bool IsWarning() const { return fSeverity > 0; }
  bool IsError() const { return fSeverity < 0; }

  std::int64_t GetErrorCode() const { return fCode; }
  std::int16_t GetSeverity() const { return fSeverity; }

  // What the data mean is said where the code is documented. REQUIRES: index < 3.
  std::int64_t GetDiscreteDatum(unsigned index) const { return fDiscrete.at(index); }
  void SetDiscreteDatum(unsigned index, std::int64_t datum) { fDiscrete.at(index) = datum; }
  double GetScaleDatum(unsigned index) const { return fScale.at(index); }
  void SetScaleDatum(unsigned index, double datum) { fScale.at(index) = datum; }

  bool operator==(const MCStatus&) const = default;

 private:
  std::int64_t fCode = 0;
  std::int16_t fSeverity = 0;
  std::array<std::int64_t, 3> fDiscrete{};
  std::array<double, 3> fScale{};
};

}  // namespace MCCommon
