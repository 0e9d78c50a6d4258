// A model of the Open Neural Network Exchange format, part by part: inputs, constants, nodes,
// outputs, in any order; then the whole as bytes.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "modelfiles/export/ProtobufWriter.h"

namespace MCModelFiles {

class ONNXGraph {
 public:
  enum class Element { kInt64 = 7, kText = 8, kDouble = 11 };  // numbers of the format
  using Shape = std::vector<std::int64_t>;  // below 0: as many as there are cases
  using Names = std::vector<std::string>;

  // Operators of the general set, and of the one for machine learning models.
  static constexpr int kOperators = 13;
  static constexpr int kModelOperators = 2;

  void AddInput(const std::string& name, Element element, const Shape& shape);
  void AddOutput(const std::string& name, Element element, const Shape& shape);

  void AddDoubles(const std::string& name, const Shape& shape, const std::vector<double>& values);
  void AddInts(const std::string& name, const std::vector<std::int64_t>& values);
  void AddTexts(const std::string& name, const std::vector<std::string>& values);

  // An operator with whole-number attributes.
  void AddNode(const std::string& op, const Names& inputs, const std::string& output,
               const std::vector<std::pair<std::string, std::int64_t>>& attributes = {});
  // The place of a text among others, and how many these are for any other.
  void AddPlaces(const std::string& input, const std::string& output,
                 const std::vector<std::string>& texts);

  // The file. `facts` go into its metadata.
  std::string Bytes(const std::string& version, const std::string& description,
                    const std::vector<std::pair<std::string, std::string>>& facts) const;

 private:
  static ProtobufWriter ValueInfo(const std::string& name, Element element, const Shape& shape);

  ProtobufWriter fGraph;
};

}  // namespace MCModelFiles
