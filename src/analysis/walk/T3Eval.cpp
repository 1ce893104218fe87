// The walk of the evaluation: children first, in the order of the source, with a stack of its own.
#include "analysis/constants/T3Cycles.h"
#include "analysis/walk/T3Eval.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <vector>

#include "analysis/types/T3Constants.h"
#include "analysis/inference/T3InferenceForms.h"
#include "analysis/names/T3Names.h"
#include "analysis/walk/T3Stages.h"
#include "analysis/types/T3Types.h"
#include "driver/diagnostics/T3Error.h"
#include "frontend/T3TreeFields.h"

namespace {
// Where the order of fields is not that of the source: a field that stands before another.
struct Precedence {
  T3Kind kind;
  std::string_view field;
  std::string_view before;
};
constexpr Precedence kPrecedence[] = {
    {T3Kind::T3Testcase, "system", "body"},
    {T3Kind::T3Function, "return_type", "body"},
    {T3Kind::T3TestStep, "decls", "body"},
    {T3Kind::T3TemplateDef, "modifies", "constraint"},
    {T3Kind::T3ForStmt, "init", "condition"},
    {T3Kind::T3ForStmt, "step", "body"},
    {T3Kind::T3DoWhileStmt, "body", "condition"},
    {T3Kind::T3GuardedAlt, "operation", "body"},
    {T3Kind::T3TestStepRefAlt, "test_step", "body"},
    {T3Kind::T3CallStmt, "timeout", "recipient"},
    {T3Kind::T3ReplyStmt, "return_expr", "recipient"},
    {T3Kind::T3RaiseStmt, "signature", "template_value"},
    {T3Kind::T3CatchStmt, "signature", "template_value"},
    {T3Kind::T3GetReplyStmt, "return_template", "sender"},
    {T3Kind::T3PortRedirect, "redirect_params", "redirect_sender"},
    {T3Kind::T3SignatureType, "return_type", "exceptions"},
};

using Check = void (*)(T3Tree_Node*);

// How the nodes of a kind are walked.
struct KindWalk {
  /// Where the children lie in the node, in the order of the source.
  const uint16_t* children;
  const uint16_t* children_end;
  T3EnterRule enter;
  const Check* checks;
  const Check* checks_end;
  /// Where the link of a list lies; 0 for none.
  uint16_t next;
  bool picks_children;
  /// The walk passes over it: there is nothing to do for it, and nothing below it.
  bool is_passive;
  /// Nothing hangs below it, and it is no element of a list.
  bool is_leaf;

  void Enter(T3Tree_Node* node, T3Tree_Node* parent) const {
    if (enter != nullptr) enter(node, parent);
  }
  void CheckAll(T3Tree_Node* node) const {
    for (const Check* check = checks; check != checks_end; ++check) (*check)(node);
  }
};

class WalkOfKinds {
 public:
  WalkOfKinds() {
    std::array<size_t, kT3KindCount + 1> begin{};
    for (size_t kind = 0; kind < kT3KindCount; ++kind) {
      for (const T3ChildFields::Child& child : T3Tree_ChildFields[kind].children)
        offsets_.push_back(child.offset);
      begin[kind + 1] = offsets_.size();
    }
    for (size_t kind = 0; kind < kT3KindCount; ++kind)
      Describe(static_cast<T3Kind>(kind), offsets_.data() + begin[kind], offsets_.data() + begin[kind + 1]);
    for (const Precedence& order : kPrecedence) Move(order, begin[static_cast<size_t>(order.kind)]);
  }

  const KindWalk& operator[](T3Kind kind) const { return kinds_[static_cast<size_t>(kind)]; }

 private:
  void Describe(T3Kind kind, const uint16_t* children, const uint16_t* end) {
    const auto checks = ChecksOf(kind);
    const bool is_with =
        T3Kind::_T3WithList <= kind && static_cast<unsigned short>(kind) <= _T3WithList::kLast;
    KindWalk& walk = kinds_[static_cast<size_t>(kind)];
    walk.children = children;
    walk.children_end = end;
    walk.enter = EnterRuleOf(kind);
    walk.checks = checks.data();
    walk.checks_end = checks.data() + checks.size();
    // A module's `next` is another module.
    walk.next = kind == T3Kind::T3Module ? 0 : T3Tree_ChildFields[static_cast<size_t>(kind)].next.offset;
    walk.picks_children = PicksChildren(kind);
    walk.is_leaf = children == end && walk.next == 0;
    walk.is_passive = is_with || (walk.is_leaf && walk.enter == nullptr && checks.empty());
  }

  void Move(const Precedence& order, size_t begin) {
    const auto children = T3Tree_ChildFields[static_cast<size_t>(order.kind)].children;
    const auto first = offsets_.begin() + static_cast<ptrdiff_t>(begin);
    const auto place = [&](std::string_view name) {
      for (const T3ChildFields::Child& child : children)
        if (name == child.info->name)
          return std::find(first, first + static_cast<ptrdiff_t>(children.size()), child.offset);
      yyAbort("EvaluateSubtree");
    };
    const auto before = place(order.before);
    const auto field = place(order.field);
    if (before < field) std::rotate(before, field, field + 1);
  }

  std::vector<uint16_t> offsets_;
  std::array<KindWalk, kT3KindCount> kinds_{};
};

T3Tree_Node* FieldAt(T3Tree_Node* node, uint16_t offset) {
  return *reinterpret_cast<T3Tree_Node**>(reinterpret_cast<char*>(node) + offset);
}

// A node whose children are being walked.
struct Frame {
  T3Tree_Node* node;
  const uint16_t* child;
  const KindWalk* kind;
};
}  // namespace

// In bytes.
constexpr ptrdiff_t kAhead = 1536;

void EvaluateSubtree(T3Tree_Node* root, T3Tree_Node* parent) {
  static const WalkOfKinds& walks = *new WalkOfKinds;
  const KindWalk* const kinds = &walks[T3Kind{}];
  const auto kind_of = [kinds](const T3Tree_Node* node) { return kinds + static_cast<size_t>(node->kind); };
  std::vector<Frame> open;
  kind_of(root)->Enter(root, parent);
  open.push_back({root, kind_of(root)->children, kind_of(root)});
  while (!open.empty()) {
    Frame& top = open.back();
    T3Tree_Node* node = top.node;
    const KindWalk* const own = top.kind;
    if (top.child != own->children_end) {
      T3Tree_Node* child = FieldAt(node, *top.child++);
      if (child == nullptr) continue;
      PrefetchNodesBehind(child, kAhead);
      const KindWalk* const kind = kind_of(child);
      if (kind->is_passive || (own->picks_children && !IsWalked(child, node))) continue;
      kind->Enter(child, node);
      if (kind->is_leaf)
        kind->CheckAll(child);
      else
        open.push_back({child, kind->children, kind});
      continue;
    }
    own->CheckAll(node);
    // A list goes on in the same frame.
    T3Tree_Node* next = own->next == 0 || node == root ? nullptr : FieldAt(node, own->next);
    const KindWalk* const kind = next == nullptr ? nullptr : kind_of(next);
    if (kind == nullptr || kind->is_passive) {
      open.pop_back();
      continue;
    }
    top = {next, kind->children, kind};
    kind->Enter(next, open.size() > 1 ? open[open.size() - 2].node : parent);
  }
}

namespace {
void EvaluateDecls(T3Tree_Node* decls, T3Tree_Node* root) {
  for (auto* decl : Items<_T3Decl>(decls)) EvaluateSubtree(decl, root);
}
}  // namespace

T3Eval gT3Eval;

void T3Eval::BeginT3Eval() {
  InstallInferenceForms();
  ResetDependencies();
  resetTemplateDependencies();
}

void T3Eval::Evaluate(T3Tree_Node* root) {
  SetPlaces(root);
  auto* builtin = root->as<T3Builtin>();
  EvaluateSubtree(builtin->module, root);
  EvaluateDecls(builtin->builtin, root);
  CheckAddressConflicts(root);
  EvaluateDecls(builtin->aux_types, root);
}

void T3Eval::CloseT3Eval() {}
