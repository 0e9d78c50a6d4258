#include "operations/MergePieces.h"

#include <memory>
#include <optional>
#include <utility>

#include "common/parts/Piece.h"
#include "common/parts/TableRanges.h"
#include "common/state/StateBytes.h"
#include "host/cases/UAPartCounts.h"
#include "modelfiles/ComponentFile.h"
#include "naivebayes/parts/NBPartClassified.h"
#include "naivebayes/parts/NBPartCounts.h"
#include "naivebayes/parts/NBPartSums.h"
#include "operations/MergeStates.h"
#include "operations/RequestError.h"

namespace PredSelect {

namespace {

constexpr const char* kDamaged = "it is damaged";

[[noreturn]] void Refuse(const std::string& name, const std::string& why) {
  throw RequestError(name + " cannot be added: " + why + ".");
}

template <class T>
T Content(const Piece& piece, const std::string& name) {
  T content;
  if (!StateBytes::To(piece.fContent, content)) Refuse(name, kDamaged);
  return content;
}

// Merges pieces one after the other. The first makes it.
class Merger {
 public:
  virtual ~Merger() = default;
  virtual void Add(const Piece& piece, const std::string& name) = 0;
  virtual std::string Take() = 0;
};

class RangesMerger : public Merger {
 public:
  void Add(const Piece& piece, const std::string& name) override {
    auto ranges = Content<TableRanges>(piece, name);
    if (!fMerged) {
      fMerged = std::move(ranges);
      return;
    }
    const std::string why = fMerged->Merge(ranges);
    if (!why.empty()) Refuse(name, why);
  }
  std::string Take() override { return StateBytes::Of(*fMerged); }

 private:
  std::optional<TableRanges> fMerged;
};

class CountsMerger : public Merger {
 public:
  void Add(const Piece& piece, const std::string& name) override {
    const auto counts = Content<UAPartCounts>(piece, name);
    fNumbers.AddNumbers(counts);
    if (counts.fComponent.empty()) return;
    ComponentFile component;
    const std::string why = ReadComponentBytes(counts.fComponent, component);
    if (!why.empty() || component.fpFeature == nullptr) Refuse(name, kDamaged);
    if (fComponent.fpFeature == nullptr) {
      fComponent = std::move(component);
    } else {
      MergeStates(fComponent, component, name);
    }
  }
  std::string Take() override {
    if (fComponent.fpFeature != nullptr) {
      fNumbers.fComponent = ComponentBytes(
          *fComponent.fpFeature, fComponent.fDictionary ? &*fComponent.fDictionary : nullptr);
    }
    return StateBytes::Of(fNumbers);
  }

 private:
  UAPartCounts fNumbers;
  ComponentFile fComponent;
};

// What the engine adds up by itself.
template <class T>
class SumMerger : public Merger {
 public:
  using AddOne = bool (*)(T& into, const T& from);
  explicit SumMerger(AddOne add) : fAdd(add) {}

  void Add(const Piece& piece, const std::string& name) override {
    auto content = Content<T>(piece, name);
    if (!fMerged) {
      fMerged = std::move(content);
    } else if (!fAdd(*fMerged, content)) {
      Refuse(name, "it is of other variables or categories");
    }
  }
  std::string Take() override { return StateBytes::Of(*fMerged); }

 private:
  AddOne fAdd;
  std::optional<T> fMerged;
};

bool AddCounts(NBPartCounts& into, const NBPartCounts& from) {
  if (!into.HasShapeOf(from)) return false;
  into.Add(from);
  return true;
}

bool AddSums(NBPartSums& into, const NBPartSums& from) {
  if (into.fSums.size() != from.fSums.size()) return false;
  into.Add(from);
  return true;
}

bool AddClassified(NBPartClassified& into, const NBPartClassified& from) { return into.Add(from); }

std::unique_ptr<Merger> MergerOf(const Piece& first, const std::string& name) {
  switch (first.fKind) {
    case Piece::kRanges:
      return std::make_unique<RangesMerger>();
    case Piece::kCounts:
      return std::make_unique<CountsMerger>();
    case Piece::kNaiveCounts:
      return std::make_unique<SumMerger<NBPartCounts>>(AddCounts);
    case Piece::kSums:
      return std::make_unique<SumMerger<NBPartSums>>(AddSums);
    case Piece::kClassified:
      return std::make_unique<SumMerger<NBPartClassified>>(AddClassified);
    default:
      Refuse(name, std::string("it is ") + Piece::NameOf(first.fKind) + ", which is not merged");
  }
}

}  // namespace

std::string MergePieces(const std::vector<NamedPiece>& pieces) {
  Piece merged;
  std::unique_ptr<Merger> merger;
  for (const NamedPiece& each : pieces) {
    Piece piece;
    const std::string why = piece.Read(each.fBytes);
    if (!why.empty()) Refuse(each.fName, why);
    if (merger == nullptr) {
      merger = MergerOf(piece, each.fName);
      merged = {piece.fKind, piece.fOf, {}};
    }
    if (piece.fKind != merged.fKind) {
      Refuse(each.fName, std::string("it is ") + Piece::NameOf(piece.fKind) +
                             ", and the others are " + Piece::NameOf(merged.fKind));
    }
    if (piece.fOf != merged.fOf) Refuse(each.fName, "it answers another request");
    merger->Add(piece, each.fName);
  }
  merged.fContent = merger->Take();
  return merged.Bytes();
}

}  // namespace PredSelect
