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

// Where the children of each kind lie in the node, in the order of the source.
class ChildrenOfKinds {
 public:
  ChildrenOfKinds() {
    for (size_t kind = 0; kind < kT3KindCount; ++kind) {
      for (const T3ChildFields::Child& child : T3Tree_ChildFields[kind].children)
        offsets_.push_back(child.offset);
      begin_[kind + 1] = static_cast<uint16_t>(offsets_.size());
    }
    for (const Precedence& order : kPrecedence) Move(order);
  }

  const uint16_t* begin(T3Kind kind) const { return offsets_.data() + begin_[static_cast<size_t>(kind)]; }
  const uint16_t* end(T3Kind kind) const { return offsets_.data() + begin_[static_cast<size_t>(kind) + 1]; }

 private:
  void Move(const Precedence& order) {
    const auto kind = static_cast<size_t>(order.kind);
    const auto place = [&](std::string_view name) {
      for (const T3ChildFields::Child& child : T3Tree_ChildFields[kind].children)
        if (name == child.info->name)
          return std::find(offsets_.begin() + begin_[kind], offsets_.begin() + begin_[kind + 1],
                           child.offset);
      yyAbort("EvaluateSubtree");
    };
    const auto before = place(order.before);
    const auto field = place(order.field);
    if (before < field) std::rotate(before, field, field + 1);
  }

  std::vector<uint16_t> offsets_;
  std::array<uint16_t, kT3KindCount + 1> begin_{};
};

T3Tree_Node* FieldAt(T3Tree_Node* node, uint16_t offset) {
  return *reinterpret_cast<T3Tree_Node**>(reinterpret_cast<char*>(node) + offset);
}

// A node whose children are being walked.
struct Frame {
  T3Tree_Node* node;
  const uint16_t* child;
  const uint16_t* end;
};
}  // namespace

// In bytes.
constexpr ptrdiff_t kAhead = 1536;

void EvaluateSubtree(T3Tree_Node* root, T3Tree_Node* parent) {
  static const ChildrenOfKinds& kinds = *new ChildrenOfKinds;
  const auto frame_of = [](T3Tree_Node* node) {
    return Frame{node, kinds.begin(node->kind), kinds.end(node->kind)};
  };
  std::vector<Frame> open;
  EnterNode(root, parent);
  open.push_back(frame_of(root));
  while (!open.empty()) {
    Frame& top = open.back();
    T3Tree_Node* node = top.node;
    if (top.child != top.end) {
      T3Tree_Node* child = FieldAt(node, *top.child++);
      PrefetchNodesBehind(child, kAhead);
      if (child == nullptr || !IsWalked(child, node)) continue;
      EnterNode(child, node);
      if (kinds.begin(child->kind) == kinds.end(child->kind) && ChildFieldsOf(child).next.offset == 0)
        CheckNode(child);
      else
        open.push_back(frame_of(child));
      continue;
    }
    CheckNode(node);
    // A list goes on in the same frame. A module's `next` is another module.
    const uint16_t next_offset = ChildFieldsOf(node).next.offset;
    T3Tree_Node* next =
        next_offset == 0 || node->is<T3Module>() || node == root ? nullptr : FieldAt(node, next_offset);
    if (next == nullptr) {
      open.pop_back();
      continue;
    }
    top = frame_of(next);
    EnterNode(next, open.size() > 1 ? open[open.size() - 2].node : parent);
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
