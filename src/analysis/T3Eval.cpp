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

namespace {
struct Children {
  std::vector<const T3FieldInfo*> fields;
  const T3FieldInfo* next = nullptr;
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
  Children result;
  for (const T3FieldInfo& field : T3Tree_KindInfo[kind].fields) {
    if (!field.IsChild()) continue;
    if (std::string_view(field.name) == "next")
      result.next = &field;
    else
      result.fields.push_back(&field);
  }
  const auto named = [&](std::string_view name) {
    return std::find_if(result.fields.begin(), result.fields.end(),
                        [&](const T3FieldInfo* field) { return field->name == name; });
  };
  for (const Precedence& order : kPrecedence) {
    if (static_cast<int>(order.kind) != kind) continue;
    const T3FieldInfo* moved = *named(order.field);
    result.fields.erase(named(order.field));
    result.fields.insert(named(order.before), moved);
  }
  return result;
}

const Children& ChildrenOf(const T3Tree_Node* node) {
  static const auto& table = *[] {
    auto* made = new std::array<Children, kT3KindCount>;
    for (int kind = 0; kind < kT3KindCount; ++kind) (*made)[static_cast<size_t>(kind)] = ChildrenOfKind(kind);
    return made;
  }();
  return table[static_cast<size_t>(node->kind)];
}

struct Frame {
  T3Tree_Node* node;
  const Children* children;
  size_t index;
};
}  // namespace

void EvaluateSubtree(T3Tree_Node* root, T3Tree_Node* parent) {
  std::vector<Frame> open;
  EnterNode(root, parent);
  open.push_back({root, &ChildrenOf(root), 0});
  while (!open.empty()) {
    Frame& top = open.back();
    T3Tree_Node* node = top.node;
    if (top.index < top.children->fields.size()) {
      T3Tree_Node* child = T3ChildField(node, *top.children->fields[top.index++]);
      if (child == nullptr || !IsWalked(child, node)) continue;
      EnterNode(child, node);
      open.push_back({child, &ChildrenOf(child), 0});
      continue;
    }
    CheckNode(node);
    // A list goes on in the same frame. A module's `next` is another module.
    T3Tree_Node* next = top.children->next == nullptr || node->is<T3Module>() || node == root
                            ? nullptr
                            : T3ChildField(node, *top.children->next);
    if (next == nullptr) {
      open.pop_back();
      continue;
    }
    top = {next, &ChildrenOf(next), 0};
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
