#include "generator/expressions/CGModes.h"

#include <utility>

#include "analysis/types/T3Types.h"
#include "generator/expressions/CGExpressionParts.h"

namespace cg {
namespace {
bool g_template_mode = false;
int g_left_sides = 0;
int g_probes = 0;
int g_conditional = 0;

bool HoldsInList(T3Tree_Node* list) {
  for (auto* at : Items<T3FieldValue>(list))
    if (at->permutation_kind != t3_permutation_kind_t::No || HoldsTemplate(at->value)) return true;
  return false;
}
}  // namespace

LeftSide::LeftSide() {
  ++g_left_sides;
}
LeftSide::~LeftSide() {
  --g_left_sides;
}
bool IsLeftSide() {
  return g_left_sides != 0;
}
Probe::Probe() {
  ++g_probes;
}
Probe::~Probe() {
  --g_probes;
}
bool IsProbe() {
  return g_probes != 0;
}
ReadSide::ReadSide() : left_sides_(std::exchange(g_left_sides, 0)), probes_(std::exchange(g_probes, 0)) {}
ReadSide::~ReadSide() {
  g_left_sides = left_sides_;
  g_probes = probes_;
}

Conditional::Conditional() {
  ++g_conditional;
}
Conditional::~Conditional() {
  --g_conditional;
}
bool IsConditional() {
  return g_conditional != 0;
}

TemplateMode::TemplateMode() : before_(g_template_mode) {
  g_template_mode = true;
}
TemplateMode::~TemplateMode() {
  g_template_mode = before_;
}
ValueMode::ValueMode() : before_(g_template_mode) {
  g_template_mode = false;
}
ValueMode::~ValueMode() {
  g_template_mode = before_;
}
bool IsTemplateMode() {
  return g_template_mode;
}

bool IsTemplateDecl(T3Tree_Node* decl) {
  return T3Is<T3TemplateDecl>(decl) || T3Is<T3ImportTemplateDecl>(decl);
}

bool IsInfinityExpression(T3Tree_Node* node) {
  if (auto* negative = node->try_as<T3UnaryMinus>()) node = negative->arg;
  return node->is<T3Infinity>();
}

bool HoldsTemplate(T3Tree_Node* node) {
  if (auto* definition = node->try_as<T3TemplateDef>()) {
    if (definition->modifies->is<T3TemplateReference>()) return true;
    node = definition->constraint;
  }
  if (node->is<_T3MatchingExpression>() || node->is<ExtraMatchingExpressions>() || node->is<T3LengthRange>())
    return true;
  if (auto* compound = node->try_as<T3CompoundValue>()) return HoldsInList(compound->value);
  if (auto* call = node->try_as<T3Parameterization>()) {
    T3Tree_Node* callee = BehindImport(Def(call));
    if (T3Is<T3Function>(callee)) return callee->as<T3Function>()->returns_template;
    node = call->base;
  }
  if (auto* element = node->try_as<T3Subscription>()) return HoldsTemplate(element->base);
  if (auto* field = node->try_as<T3Qualifier>(); field != nullptr && IsField(field))
    return HoldsTemplate(WholeOf(field));
  if (!node->is<T3Identifier>() && !node->is<T3Qualifier>()) return false;
  T3Tree_Node* def = Def(node);
  return IsTemplateDecl(def) || T3Is<T3FormalTemplatePar>(def) ||
         (T3Is<T3VarDecl>(def) && def->as<T3VarDecl>()->is_template_variable);
}
}  // namespace cg
