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

  // Three of each, by index 0 to 2; what they mean is said where the code is documented. Beyond,
  // reading gives 0 and setting does nothing.
  std::int64_t GetDiscreteDatum(unsigned index) const { return Get(fDiscrete, index); }
  void SetDiscreteDatum(unsigned index, std::int64_t datum) { Set(fDiscrete, index, datum); }
  double GetScaleDatum(unsigned index) const { return Get(fScale, index); }
  void SetScaleDatum(unsigned index, double datum) { Set(fScale, index, datum); }

  bool operator==(const MCStatus&) const = default;

 private:
  template <class Data>
  static typename Data::value_type Get(const Data& data, unsigned index) {
    return index < data.size() ? data[index] : 0;
  }
  template <class Data>
  static void Set(Data& data, unsigned index, typename Data::value_type datum) {
    if (index < data.size()) data[index] = datum;
  }

  std::int64_t fCode = 0;
  std::int16_t fSeverity = 0;
  std::array<std::int64_t, 3> fDiscrete{};
  std::array<double, 3> fScale{};
};

}  // namespace MCCommon
