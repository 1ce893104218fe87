#include "analysis/walk/T3RuleParts.h"

#include <map>
#include <set>

#include "analysis/names/T3Names.h"
#include "analysis/types/T3References.h"
#include "analysis/types/T3Types.h"
#include "driver/options/T3CommandLine.h"
#include "driver/diagnostics/T3Error.h"

bool IsGiven(T3Tree_Node* expression) {
  return T3Is<_T3Expression>(expression) && !expression->is<T3NoExpression>();
}

bool HasFailed(T3Tree_Node* expression) {
  return !T3Is<_T3Expression>(expression) || ExpressionBaseType(expression)->is<T3ErrorType>();
}

bool IsInControlPart(T3Tree_Node* node) {
  return node->place != nullptr && T3Is<T3ControlPart>(node->place->vexa_owner);
}

void RefuseInControlPart(T3Tree_Node* node, const char* what) {
  if (IsInControlPart(node)) vexa_filtered_error(ERR_control_illegal_construct, PositionOf(node), what);
}

void RefuseInInterleave(T3Tree_Node* node, const char* what) {
  if (node->place != nullptr && node->place->inside_interleave)
    vexa_filtered_error(ERR_interleave_illegal_construct, PositionOf(node), what);
}

// What stands in several places of the tree is told once.
void WarnAt(T3Tree_Node* node, const std::string& text) {
  static auto& told = *new std::map<tPosition, std::set<std::string>, lt_Position>;
  if (node->place == nullptr) return;
  const verbosity_level_t verbosity = GetVerbosity(node->place->vexa_my_module);
  if (verbosity < verbosity_level_t::Warnings || !told[PositionOf(node)].insert(text).second) return;
  vexa_warning(verbosity, text, PositionOf(node));
}

T3TemplateDecl* TemplateNamed(T3Tree_Node* reference) {
  T3Tree_Node* def = DefQuietly(reference);
  return T3Is<T3TemplateDecl>(def) ? def->as<T3TemplateDecl>() : nullptr;
}

T3Tree_Node* ConstraintOf(T3Tree_Node* definition) {
  auto* def = definition->try_as<T3TemplateDef>();
  return def == nullptr ? definition : def->constraint;
}

bool MixesNotations(T3Tree_Node* values) {
  auto* first = values->try_as<T3FieldValue>();
  for (auto* at : Items<T3FieldValue>(values))
    if (at->field->kind != first->field->kind) return true;
  return false;
}

T3Tree_Node* CalleeOf(T3Tree_Node* call) {
  auto* reference = call == nullptr ? nullptr : call->try_as<_T3Reference>();
  T3Tree_Node* def = reference == nullptr ? nullptr : BehindImport(Def(reference));
  return T3Is<T3NoDecl>(def) || T3Is<T3ErrorType>(def) ? nullptr : def;
}

T3Tree_Node* ComponentOf(T3Tree_Node* decl) {
  return T3Is<_T3FunctionDecl>(decl) ? BaseTypeDef(decl->as<_T3FunctionDecl>()->runs_on) : gT3NoType;
}

bool IsElement(T3Tree_Node* part) {
  T3Tree_Node* type = T3Is<T3FieldValue>(part) ? part->as<T3FieldValue>()->attr().vexa_owner_type : nullptr;
  return type != nullptr && IsHomogeneousType(type);
}

bool NamesType(T3Tree_Node* expression) {
  return IsName(expression) && T3Is<T3TypeDecl>(BehindImport(Def(expression)));
}
