// The walk of the evaluation: children first, in the order of the source, with a stack of its own.
#include "analysis/T3Eval.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <vector>

#include "analysis/T3Constants.h"
#include "analysis/T3Names.h"
#include "analysis/T3Stages.h"
#include "analysis/T3Types.h"
#include "frontend/T3TreeFields.h"

namespace {
// Where the children of a kind lie in the node, in the order of the source; `next` is 0 for kinds that are
// no elements of lists.
struct Children {
  std::vector<uint16_t> offsets;
  uint16_t next = 0;
};

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

Children ChildrenOfKind(int kind) {
  const T3ChildFields& declared = T3Tree_ChildFields[kind];
  std::vector<const T3FieldInfo*> fields;
  for (const T3ChildFields::Child& child : declared.children) fields.push_back(child.info);
  const auto named = [&](std::string_view name) {
    return std::find_if(fields.begin(), fields.end(),
                        [&](const T3FieldInfo* field) { return field->name == name; });
  };
  for (const Precedence& order : kPrecedence) {
    if (static_cast<int>(order.kind) != kind) continue;
    const T3FieldInfo* moved = *named(order.field);
    fields.erase(named(order.field));
    fields.insert(named(order.before), moved);
  }
  Children result;
  for (const T3FieldInfo* field : fields) result.offsets.push_back(field->offset);
  result.next = declared.next.offset;
  return result;
}

using ChildrenOfKinds = std::array<Children, kT3KindCount>;
const ChildrenOfKinds& AllChildren() {
  static const auto& table = *[] {
    auto* made = new ChildrenOfKinds;
    for (int kind = 0; kind < kT3KindCount; ++kind) (*made)[static_cast<size_t>(kind)] = ChildrenOfKind(kind);
    return made;
  }();
  return table;
}

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

void EvaluateSubtree(T3Tree_Node* root, T3Tree_Node* parent) {
  const ChildrenOfKinds& kinds = AllChildren();
  const auto frame_of = [&kinds](T3Tree_Node* node) {
    const std::vector<uint16_t>& offsets = kinds[static_cast<size_t>(node->kind)].offsets;
    return Frame{node, offsets.data(), offsets.data() + offsets.size()};
  };
  std::vector<Frame> open;
  EnterNode(root, parent);
  open.push_back(frame_of(root));
  while (!open.empty()) {
    Frame& top = open.back();
    T3Tree_Node* node = top.node;
    if (top.child != top.end) {
      T3Tree_Node* child = FieldAt(node, *top.child++);
      if (child == nullptr || !IsWalked(child, node)) continue;
      EnterNode(child, node);
      const Children& below = kinds[static_cast<size_t>(child->kind)];
      if (below.offsets.empty() && below.next == 0)
        CheckNode(child);
      else
        open.push_back(frame_of(child));
      continue;
    }
    CheckNode(node);
    // A list goes on in the same frame. A module's `next` is another module.
    const uint16_t next_offset = kinds[static_cast<size_t>(node->kind)].next;
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
  for (; decls->is<_T3Decl>(); decls = decls->as<_T3Decl>()->next) EvaluateSubtree(decls, root);
}
}  // namespace

T3Eval gT3Eval;

void T3Eval::BeginT3Eval() {
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
