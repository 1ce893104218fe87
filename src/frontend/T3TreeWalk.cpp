// Walks over the tree. They keep their own stack, so that neither a long list nor a deep expression takes
// any of the process's.
#include <unordered_map>

#include "driver/diagnostics/T3Exception.h"
#include "frontend/T3TreeFields.h"

namespace {
// The nodes that a walk has met. A walk inside another's call-back has a mark of its own.
class Visited {
 public:
  Visited() : bit_(static_cast<int16_t>(1 << depth_)) {
    if (++depth_ > 14) {
      --depth_;
      throw internal_exception("T3Tree", __LINE__, "walk", "walks are nested too deeply");
    }
  }
  Visited(const Visited&) = delete;
  Visited& operator=(const Visited&) = delete;
  ~Visited() {
    for (T3Tree_Node* node : nodes_) node->mark = static_cast<int16_t>(node->mark & ~bit_);
    --depth_;
  }
  /// True when the node is met for the first time.
  bool Enter(T3Tree_Node* node) {
    if (node->mark & bit_) return false;
    node->mark = static_cast<int16_t>(node->mark | bit_);
    nodes_.push_back(node);
    return true;
  }
  const std::vector<T3Tree_Node*>& nodes() const { return nodes_; }

 private:
  inline static int depth_ = 0;
  int16_t bit_;
  std::vector<T3Tree_Node*> nodes_;
};

// Puts the children of a node on a stack so that the first field comes off first and `next` last.
template <class Push>
void PushChildren(T3Tree_Node* node, const Push& push) {
  const T3ChildFields& fields = ChildFieldsOf(node);
  if (fields.next.info != nullptr) push(fields.next);
  for (size_t i = fields.children.size(); i > 0; --i) push(fields.children[i - 1]);
}

// Calls for each node under the root, parents first.
template <class Call>
void WalkDown(T3Tree_Node* root, Visited& visited, const Call& call) {
  std::vector<T3Tree_Node*> stack{root};
  while (!stack.empty()) {
    T3Tree_Node* node = stack.back();
    stack.pop_back();
    if (node == nullptr || !visited.Enter(node)) continue;
    call(node);
    PushChildren(node,
                 [&](const T3ChildFields::Child& child) { stack.push_back(T3ChildField(node, child)); });
  }
}

T3Tree_Node* CopyOfNode(T3Tree_Node* node) {
  T3Tree_Node* copy = gT3AST.MakeT3Tree(node->kind);
  const uint32_t number = copy->number;
  std::memcpy(static_cast<void*>(copy), node, T3Tree_NodeSize[static_cast<int>(node->kind)]);
  copy->number = number;
  copy->mark = 0;
  copy->attributes = nullptr;
  copy->place = nullptr;
  return copy;
}

using CopyMap = std::unordered_map<T3Tree_Node*, T3Tree_Node*>;

void Redirect(T3Tree_Node*& target, const CopyMap& copies) {
  if (const auto found = copies.find(target); found != copies.end()) target = found->second;
}

// Lets the copy point into the copied tree wherever the original pointed into its own.
void RedirectFields(T3Tree_Node* copy, const CopyMap& copies) {
  if (const auto parent = copies.find(copy->parent); parent != copies.end()) {
    copy->parent = parent->second;
  } else {
    copy->parent = nullptr;
    copy->child_slot = 0;
  }
  for (const T3FieldInfo& field : T3Tree_KindInfo[static_cast<int>(copy->kind)].fields) {
    const bool pointer = field.shape == T3FieldShape::Node || field.shape == T3FieldShape::Reference;
    if (pointer && field.record == T3FieldRecord::Node) Redirect(T3ChildField(copy, field), copies);
  }
}
}  // namespace

void T3Tree::TraverseT3TreeTD(T3Tree_Node* root, const T3TreeCallback& call) {
  Visited visited;
  WalkDown(root, visited, call);
}

void T3Tree::TraverseT3TreeBU(T3Tree_Node* root, const T3TreeCallback& call) {
  struct Step {
    T3Tree_Node* node;
    bool children_done;
  };
  Visited visited;
  std::vector<Step> stack{{root, false}};
  while (!stack.empty()) {
    const Step step = stack.back();
    stack.pop_back();
    if (step.node == nullptr) continue;
    if (step.children_done) {
      call(step.node);
      continue;
    }
    if (!visited.Enter(step.node)) continue;
    stack.push_back({step.node, true});
    PushChildren(step.node, [&](const T3ChildFields::Child& child) {
      stack.push_back({T3ChildField(step.node, child), false});
    });
  }
}

void T3Tree::ForallT3Tree(T3Tree_Node* list, const T3TreeCallback& call) {
  for (T3Tree_Node* element = list; element != nullptr;) {
    const T3FieldInfo* next = ChildFieldsOf(element).next.info;
    if (next == nullptr) return;
    // read first: the call may put the element elsewhere
    T3Tree_Node* following = T3ChildField(element, *next);
    call(element);
    element = following;
  }
}

T3Tree_Node* T3Tree::ReverseT3Tree(T3Tree_Node* list) {
  T3Tree_Node* last = nullptr;
  T3Tree_Node* reversed = nullptr;
  T3Tree_Node* element = list;
  while (element != nullptr) {
    const T3FieldInfo* next = ChildFieldsOf(element).next.info;
    if (next == nullptr) break;
    if (last == nullptr) last = element;
    T3Tree_Node* following = T3ChildField(element, *next);
    T3ChildField(element, *next) = reversed;
    reversed = element;
    element = following;
  }
  if (last == nullptr) return list;
  T3ChildField(last, *ChildFieldsOf(last).next.info) = element;
  return reversed;
}

T3Tree_Node* T3Tree::CopyT3Tree(T3Tree_Node* root) {
  if (root == nullptr) return nullptr;
  Visited visited;
  CopyMap copies;
  std::vector<T3Tree_Node*> made;
  WalkDown(root, visited, [&](T3Tree_Node* node) {
    made.push_back(CopyOfNode(node));
    copies.emplace(node, made.back());
  });
  for (T3Tree_Node* copy : made) RedirectFields(copy, copies);
  return copies[root];
}

void T3Tree::InitT3Tree(T3Tree_Node* root) {
  Visited visited;
  WalkDown(root, visited, [&](T3Tree_Node* node) {
    if (node->attributes != nullptr)
      std::memset(node->attributes->evaluated, 0, sizeof node->attributes->evaluated);
    const auto adopt = [node](const T3ChildFields::Child& child) {
      T3Tree_Node* target = T3ChildField(node, child);
      if (target == nullptr) return;
      target->parent = node;
      target->child_slot = child.slot;
    };
    PushChildren(node, adopt);
  });
}
