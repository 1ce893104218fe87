// The check for `omit` that is carried by templates to where a value must stand: into mandatory fields, into
// unions, through parameters and by assignments. What is written as `omit` at such a place is refused in any
// case, where its type is found; this check, which has to be asked for, follows references.
#include <unordered_set>

#include "analysis/names/T3Names.h"
#include "analysis/walk/T3RuleParts.h"
#include "analysis/walk/T3Stages.h"
#include "analysis/walk/T3Subtree.h"
#include "analysis/types/T3Types.h"
#include "driver/diagnostics/T3Error.h"

namespace {
// References are followed no further than this.
constexpr int kMaxDepth = 200;

// The value of a field in the compound that an expression stands for; null where there is none.
T3Tree_Node* DefineFieldValue(T3Tree_Node* expression, tIdent name) {
  auto* compound = expression->try_as<T3CompoundValue>();
  if (compound == nullptr) return nullptr;
  for (T3Tree_Node* at = compound->value; at->is<T3FieldValue>(); at = at->as<T3FieldValue>()->next) {
    T3Tree_Node* member = at->as<T3FieldValue>()->attr().def;
    if (T3Is<T3FieldType>(member) && member->as<T3FieldType>()->name == name)
      return at->as<T3FieldValue>()->value;
  }
  return nullptr;
}

// What an expression stands for: the constraint of a template without parameters, or a field of one.
T3Tree_Node* Behind(T3Tree_Node* expression, int depth = 0) {
  for (; depth < kMaxDepth; ++depth) {
    T3Tree_Node* next = nullptr;
    if (T3TemplateDecl* decl = TemplateNamed(expression)) {
      next = ConstraintOf(decl->definition);
    } else if (auto* qualifier = expression->try_as<T3Qualifier>()) {
      next = DefineFieldValue(Behind(qualifier->base, depth + 1), qualifier->id);
    }
    if (next == nullptr || !T3Is<_T3Expression>(next)) break;
    expression = next;
  }
  return expression;
}

bool OmitExpression(T3Tree_Node* expression) {
  return Behind(expression)->is<T3Omit>();
}

// ---- Parameters ----

bool MustHaveValue(T3Tree_Node* member) {
  return T3Is<T3FieldType>(member) && !member->as<T3FieldType>()->optional;
}

// Marks the parameters that feed a field which cannot be left out.
void OmitTemplCheckPars(T3TemplateDecl* decl) {
  auto* compound = ConstraintOf(decl->definition)->try_as<T3CompoundValue>();
  if (compound == nullptr) return;
  for (T3Tree_Node* at = compound->value; at->is<T3FieldValue>(); at = at->as<T3FieldValue>()->next) {
    auto* value = at->as<T3FieldValue>();
    if (!MustHaveValue(value->attr().def) || !value->value->is<T3Identifier>()) continue;
    const tIdent name = value->value->as<T3Identifier>()->id;
    for (T3Tree_Node* par = decl->fpl; T3Is<_T3FormalPar>(par); par = par->as<_T3FormalPar>()->next)
      if (par->as<_T3FormalPar>()->name == name) par->as<_T3FormalPar>()->attr().omit_not_allow_par = true;
  }
}

// Parameters of templates of other modules are marked when they are first asked for.
void MarkOnce(T3TemplateDecl* decl) {
  static auto& marked = *new std::unordered_set<uint32_t>;
  if (marked.insert(decl->number).second) OmitTemplCheckPars(decl);
}

void CompareParameters(T3Tree_Node* par, T3Tree_Node* at) {
  for (; T3Is<T3FormalTemplatePar>(par) && at->is<T3ActualPar>();
       par = par->as<_T3FormalPar>()->next, at = at->as<T3ActualPar>()->next) {
    T3Tree_Node* value = ConstraintOf(at->as<T3ActualPar>()->expression);
    if (par->as<_T3FormalPar>()->attr().omit_not_allow_par && T3Is<_T3Expression>(value) &&
        OmitExpression(value))
      vexa_filtered_error(ERR_omit_param_illegal, PositionOf(at));
  }
}

void CheckParametrTemplate(T3Tree_Node* node) {
  auto* call = node->try_as<T3Parameterization>();
  T3TemplateDecl* decl = call == nullptr ? nullptr : TemplateNamed(call->base);
  if (decl == nullptr) return;
  MarkOnce(decl);
  CompareParameters(decl->fpl, call->apl);
}

// ---- Fields ----

void CheckFieldValue(T3CompoundValue* compound) {
  T3Tree_Node* type = ExpressionBaseType(compound);
  for (T3Tree_Node* at = compound->value; at->is<T3FieldValue>(); at = at->as<T3FieldValue>()->next) {
    auto* value = at->as<T3FieldValue>();
    const bool is_reference = value->value->is<_T3Reference>() && !value->value->is<T3Parameterization>();
    if (!is_reference || !MustHaveValue(value->attr().def) || !OmitExpression(value->value)) continue;
    if (T3Is<T3UnionType>(type)) vexa_filtered_error(ERR_omit_to_union_field, PositionOf(value->value));
    if (T3Is<T3RecordType>(type)) vexa_filtered_error(ERR_omit_to_mandatory_field, PositionOf(value->value));
  }
}

// False for a field that must have a value.
bool CheckFieldOmitable(T3Qualifier* field) {
  return !MustHaveValue(Def(field));
}

void OmitAssignCheck(T3AssignStmt* statement) {
  auto* field = statement->lhs->try_as<T3Qualifier>();
  T3Tree_Node* value = ConstraintOf(statement->rhs);
  if (field != nullptr && T3Is<_T3Expression>(value) && !CheckFieldOmitable(field) && OmitExpression(value))
    vexa_filtered_error(ERR_omit_assign_illegal, PositionOf(statement));
}

void OmitCheck1(T3Tree_Node* node) {
  if (auto* compound = node->try_as<T3CompoundValue>()) return CheckFieldValue(compound);
  if (auto* assignment = node->try_as<T3AssignStmt>()) return OmitAssignCheck(assignment);
  CheckParametrTemplate(node);
}
}  // namespace

void OmitCheck(T3Tree_Node* root) {
  T3Tree_Node* decl = root->as<T3Builtin>()->module->as<T3Module>()->definition_part;
  for (; decl->is<_T3Decl>(); decl = decl->as<_T3Decl>()->next)
    ForEachInSubtree(decl, [](T3Tree_Node* node) {
      OmitCheck1(node);
      return !T3Is<_T3Type>(node);
    });
}
