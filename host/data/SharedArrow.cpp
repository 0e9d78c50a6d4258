#include "host/data/SharedArrow.h"

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <utility>

namespace MCHost {

namespace {

template <class Node>
struct Owned : Node {
  Owned() : Node{} {}
  Owned(const Owned&) = delete;
  Owned& operator=(const Owned&) = delete;
  ~Owned() {
    if (this->release != nullptr) this->release(this);
  }
};

template <class Node>
std::shared_ptr<const Node> Share(Node& node) {
  Owned<Node> taken;
  static_cast<Node&>(taken) = node;
  node.release = nullptr;
  auto shared = std::make_shared<Owned<Node>>();
  std::swap(static_cast<Node&>(*shared), static_cast<Node&>(taken));
  return shared;
}

// The children of a node that was given out, and what keeps their contents.
template <class Node>
struct GivenOut {
  GivenOut() = default;
  GivenOut(const GivenOut&) = delete;
  GivenOut& operator=(const GivenOut&) = delete;
  ~GivenOut() {
    for (Node& child : fChildren) {
      if (child.release != nullptr) child.release(&child);
    }
  }

  std::vector<Node> fChildren;
  std::vector<Node*> fPointers;
  std::shared_ptr<const Node> fpOwner;
};

template <class Node>
void ReleaseChild(Node* child) {
  delete static_cast<std::shared_ptr<const Node>*>(child->private_data);
  child->release = nullptr;
}

template <class Node>
void ReleaseNode(Node* node) {
  delete static_cast<GivenOut<Node>*>(node->private_data);
  node->release = nullptr;
}

template <class Node>
bool HasChild(const Node& node, int place) {
  return place >= 0 && place < node.n_children && node.children != nullptr &&
         node.children[place] != nullptr;
}

template <class Node>
void Give(const std::shared_ptr<const Node>& owner, const std::vector<int>* columns, Node* out) {
  std::vector<int> places(static_cast<std::size_t>(std::max<std::int64_t>(owner->n_children, 0)));
  std::iota(places.begin(), places.end(), 0);
  if (columns != nullptr) places = *columns;
  const auto isThere = [&](int place) { return HasChild(*owner, place); };
  if (!std::all_of(places.begin(), places.end(), isThere)) places.clear();
  auto given = std::make_unique<GivenOut<Node>>();
  given->fpOwner = owner;
  given->fChildren.resize(places.size());
  for (Node& child : given->fChildren) given->fPointers.push_back(&child);
  for (std::size_t i = 0; i < places.size(); ++i) {
    Node& child = given->fChildren[i];
    auto keeper = std::make_unique<std::shared_ptr<const Node>>(owner);
    child = *owner->children[places[i]];
    child.release = ReleaseChild<Node>;
    child.private_data = keeper.release();
  }
  *out = *owner;
  out->n_children = static_cast<std::int64_t>(places.size());
  out->children = given->fPointers.data();
  out->release = ReleaseNode<Node>;
  out->private_data = given.release();
}

}  // namespace

SharedSchema ShareSchema(ArrowSchema& schema) { return Share(schema); }

SharedBatch ShareBatch(ArrowArray& batch) { return Share(batch); }

void GiveOut(const SharedSchema& schema, const std::vector<int>* columns, ArrowSchema* out) {
  Give(schema, columns, out);
}

void GiveOut(const SharedBatch& batch, const std::vector<int>* columns, ArrowArray* out) {
  Give(batch, columns, out);
}

}  // namespace MCHost
