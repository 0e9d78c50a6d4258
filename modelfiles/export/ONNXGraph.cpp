#include "modelfiles/export/ONNXGraph.h"

#include <bit>

namespace MCModelFiles {

namespace {

// The numbers of fields and attribute kinds in onnx.proto.
namespace field {
constexpr int kModelIR = 1, kProducer = 2, kProducerVersion = 3, kModelDoc = 6, kGraph = 7,
              kOperatorSet = 8, kMetadata = 14;
constexpr int kSetDomain = 1, kSetVersion = 2;
constexpr int kFactKey = 1, kFactValue = 2;
constexpr int kNode = 1, kGraphName = 2, kInitializer = 5, kInput = 11, kOutput = 12;
constexpr int kNodeInput = 1, kNodeOutput = 2, kNodeName = 3, kNodeOp = 4, kNodeAttribute = 5,
              kNodeDomain = 7;
constexpr int kAttributeName = 1, kAttributeInt = 3, kAttributeInts = 8, kAttributeTexts = 9,
              kAttributeKind = 20;
constexpr int kDims = 1, kElement = 2, kTextData = 6, kTensorName = 8, kRawData = 9;
constexpr int kValueName = 1, kValueType = 2, kTensorType = 1, kTypeElement = 1, kTypeShape = 2;
constexpr int kShapeDim = 1, kDimValue = 1, kDimName = 2;
}  // namespace field

constexpr std::int64_t kIRVersion = 8;
constexpr std::int64_t kIntKind = 2, kIntsKind = 7, kTextsKind = 8;
constexpr const char* kModelDomain = "ai.onnx.ml";

// Little endian, whatever the machine is.
void AppendBytes(std::uint64_t bits, std::string& bytes) {
  for (int i = 0; i < 8; ++i) bytes += static_cast<char>(bits >> (8U * static_cast<unsigned>(i)));
}

template <class Value>
std::string Raw(const std::vector<Value>& values) {
  std::string bytes;
  for (const Value value : values) AppendBytes(std::bit_cast<std::uint64_t>(value), bytes);
  return bytes;
}

ProtobufWriter Tensor(const std::string& name, const ONNXGraph::Shape& shape,
                      ONNXGraph::Element element) {
  ProtobufWriter tensor;
  for (const std::int64_t size : shape) tensor.Int(field::kDims, size);
  tensor.Int(field::kElement, static_cast<std::int64_t>(element)).Text(field::kTensorName, name);
  return tensor;
}

ProtobufWriter Node(const std::string& op, const ONNXGraph::Names& inputs,
                    const std::string& output) {
  ProtobufWriter node;
  for (const std::string& input : inputs) node.Text(field::kNodeInput, input);
  node.Text(field::kNodeOutput, output).Text(field::kNodeName, output).Text(field::kNodeOp, op);
  return node;
}

ProtobufWriter Attribute(const std::string& name, std::int64_t kind) {
  ProtobufWriter attribute;
  attribute.Text(field::kAttributeName, name).Int(field::kAttributeKind, kind);
  return attribute;
}

ProtobufWriter OperatorSet(const char* domain, std::int64_t version) {
  ProtobufWriter set;
  set.Text(field::kSetDomain, domain).Int(field::kSetVersion, version);
  return set;
}

}  // namespace

ProtobufWriter ONNXGraph::ValueInfo(const std::string& name, Element element, const Shape& shape) {
  ProtobufWriter dims;
  for (const std::int64_t size : shape) {
    ProtobufWriter dim;
    size < 0 ? dim.Text(field::kDimName, "cases") : dim.Int(field::kDimValue, size);
    dims.Message(field::kShapeDim, dim);
  }
  ProtobufWriter tensor, type, info;
  tensor.Int(field::kTypeElement, static_cast<std::int64_t>(element));
  tensor.Message(field::kTypeShape, dims);
  type.Message(field::kTensorType, tensor);
  info.Text(field::kValueName, name).Message(field::kValueType, type);
  return info;
}

void ONNXGraph::AddInput(const std::string& name, Element element, const Shape& shape) {
  fGraph.Message(field::kInput, ValueInfo(name, element, shape));
}

void ONNXGraph::AddOutput(const std::string& name, Element element, const Shape& shape) {
  fGraph.Message(field::kOutput, ValueInfo(name, element, shape));
}

void ONNXGraph::AddDoubles(const std::string& name, const Shape& shape,
                           const std::vector<double>& values) {
  ProtobufWriter tensor = Tensor(name, shape, Element::kDouble);
  fGraph.Message(field::kInitializer, tensor.Text(field::kRawData, Raw(values)));
}

void ONNXGraph::AddInts(const std::string& name, const std::vector<std::int64_t>& values) {
  const Shape shape = {static_cast<std::int64_t>(values.size())};
  ProtobufWriter tensor = Tensor(name, shape, Element::kInt64);
  fGraph.Message(field::kInitializer, tensor.Text(field::kRawData, Raw(values)));
}

void ONNXGraph::AddTexts(const std::string& name, const std::vector<std::string>& values) {
  const Shape shape = {static_cast<std::int64_t>(values.size())};
  ProtobufWriter tensor = Tensor(name, shape, Element::kText);
  for (const std::string& value : values) tensor.Text(field::kTextData, value);
  fGraph.Message(field::kInitializer, tensor);
}

void ONNXGraph::AddNode(const std::string& op, const Names& inputs, const std::string& output,
                        const std::vector<std::pair<std::string, std::int64_t>>& attributes) {
  ProtobufWriter node = Node(op, inputs, output);
  for (const auto& [name, value] : attributes) {
    ProtobufWriter attribute = Attribute(name, kIntKind);
    node.Message(field::kNodeAttribute, attribute.Int(field::kAttributeInt, value));
  }
  fGraph.Message(field::kNode, node);
}

void ONNXGraph::AddPlaces(const std::string& input, const std::string& output,
                          const std::vector<std::string>& texts) {
  ProtobufWriter keys = Attribute("keys_strings", kTextsKind);
  ProtobufWriter places = Attribute("values_int64s", kIntsKind);
  ProtobufWriter other = Attribute("default_int64", kIntKind);
  std::int64_t place = 0;
  for (const std::string& text : texts) {
    keys.Text(field::kAttributeTexts, text);
    places.Int(field::kAttributeInts, place++);
  }
  other.Int(field::kAttributeInt, place);
  ProtobufWriter node = Node("LabelEncoder", {input}, output);
  for (const ProtobufWriter* attribute : {&keys, &places, &other}) {
    node.Message(field::kNodeAttribute, *attribute);
  }
  fGraph.Message(field::kNode, node.Text(field::kNodeDomain, kModelDomain));
}

std::string ONNXGraph::Bytes(const std::string& version, const std::string& description,
                             const std::vector<std::pair<std::string, std::string>>& facts) const {
  ProtobufWriter graph = fGraph;
  graph.Text(field::kGraphName, "naive_bayes");
  ProtobufWriter model;
  model.Int(field::kModelIR, kIRVersion).Text(field::kProducer, "PredSelect");
  model.Text(field::kProducerVersion, version).Text(field::kModelDoc, description);
  model.Message(field::kGraph, graph);
  model.Message(field::kOperatorSet, OperatorSet("", kOperators));
  model.Message(field::kOperatorSet, OperatorSet(kModelDomain, kModelOperators));
  for (const auto& [key, value] : facts) {
    ProtobufWriter fact;
    model.Message(field::kMetadata, fact.Text(field::kFactKey, key).Text(field::kFactValue, value));
  }
  return model.Bytes();
}

}  // namespace MCModelFiles
