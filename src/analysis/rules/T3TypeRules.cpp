// The rules of types and constants that every node of their kinds obeys.
#include <unordered_set>

#include "analysis/constants/T3Cycles.h"
#include "analysis/types/T3Constants.h"
#include "analysis/constants/T3Faults.h"
#include "analysis/types/T3KnownNumbers.h"
#include "analysis/walk/T3Eval.h"
#include "analysis/names/T3Names.h"
#include "analysis/walk/T3RuleParts.h"
#include "analysis/walk/T3Subtree.h"
#include "analysis/types/T3References.h"
#include "analysis/types/T3Types.h"
#include "driver/options/T3CommandLine.h"
#include "driver/diagnostics/T3Error.h"
#include "driver/diagnostics/T3ToldErrors.h"
#include "driver/modules/T3UTF8String.h"
#include "support/ModuleCaches.h"
#include "support/StringM.h"

namespace {
// A reference in the place of a type must mean one.
void CheckTypeReference(T3Tree_Node* node) {
  auto* type = node->as<T3TypeReference>();
  if (!LocalTypeDef(type)->is<T3ErrorType>()) return;
  T3Tree_Node* reference = type->reference;
  if (reference->is<_T3Reference>()) {
    T3Tree_Node* def = BehindImport(Def(reference));
    // A name that failed, and what an import or a type declaration leads to, have had their own message.
    const bool named = !reference->is<T3MTC>() && !reference->is<T3System>() && !reference->is<T3Self>();
    const bool led = T3Is<T3TypeDecl>(def) && !IsPartOfSomething(reference);
    if (named && (led || T3Is<T3ErrorType>(def) || T3Is<T3NoDecl>(def))) return;
    if (auto* identifier = reference->try_as<T3Identifier>())
      return vexa_filtered_error(ERR_type_not_a_type_with_name, identifier->position, identifier->id);
  }
  vexa_filtered_error(ERR_type_not_a_type, PositionOf(reference));
}

// One message for each cycle of parents, at the subtype that the walk meets first.
void CheckSubtypeCycle(T3Tree_Node* node) {
  auto* subtype = node->as<T3SubType>();
  BaseTypeDef(subtype);
  if (!subtype->attr().detect_cycle_in_subtypes) return;
  vexa_filtered_error(ERR_cycle_subtype, subtype->position);
  for (T3Tree_Node* at = subtype;
       at->is<T3SubType>() && at->as<T3SubType>()->attr().detect_cycle_in_subtypes;) {
    at->as<T3SubType>()->attr().detect_cycle_in_subtypes = false;
    at = LocalTypeDef(at->as<T3SubType>()->parent);
  }
}

void NumberLiterals(T3Tree_Node* node) {
  AssignEnumValues(node);
}

// Numbers of literals that were warned of.
std::unordered_set<uint32_t> g_large_literals;
const ModuleCache large_literals([] { g_large_literals.clear(); }, ModuleCache::Holds::ForRun);

// A literal that several declarations share is walked with each of them, and told once.
void CheckIntLiteral(T3Tree_Node* node) {
  auto* literal = node->as<T3IntLiteral>();
  if (CheckIntegerSize(StringM::StGetCStr(literal->value)) || literal->place == nullptr) return;
  if (!g_large_literals.insert(literal->number).second) return;
  vexa_warning(GetVerbosity(literal->place->vexa_my_module), "integer literal might be too large",
               literal->position);
}

// Bytes that no source text may hold pass through the scanner: only the literal that keeps them is at fault.
void CheckCharStringLiteral(T3Tree_Node* node) {
  auto* literal = node->as<T3CharStringLiteral>();
  if (DetermineCharStringKind(literal->value) == kind_malformed)
    vexa_filtered_error(ERR_malformed_utf8, literal->position);
}

// The message of a division by the constant zero comes with the folding, or here where the left operand is
// no constant.
void CheckDivision(T3Tree_Node* node) {
  auto* division = node->as<T3Divide>();
  ConstIntValue(node);
  ConstFloatValue(node);
  if (ConstIntValue(division->right) == 0 || ConstFloatValue(division->right) == 0.0)
    vexa_filtered_error(ERR_div_by_zero, division->position);
}

bool HasMessageInside(T3Tree_Node* expression) {
  bool told = false;
  ForEachInSubtree(expression, [&told](T3Tree_Node* node) {
    told = told || (node->is<_T3Expression>() && vexa_error_is_told(PositionOf(node)));
    return !told;
  });
  return told;
}

// The size of an array is known before the suite is compiled. An expression that has failed, or stands on a
// constant that has, has had its message.
void CheckArrayBounds(T3Tree_Node* node) {
  T3Tree_Node* bound = node->as<T3ArrayType>()->dimension;
  const auto varies = [](T3Tree_Node* expression) {
    return IsGiven(expression) && !KnownInteger(expression) && !HasFault(expression) &&
           !HasMessageInside(expression);
  };
  auto* single = bound->try_as<T3SingleBound>();
  auto* range = bound->try_as<T3RangeBound>();
  if ((single != nullptr && varies(single->ub)) ||
      (range != nullptr && (varies(range->lb) || varies(range->ub))))
    vexa_filtered_error(ERR_const, PositionOf(bound));
}

// A template that is named keeps the type that it has, even where values of the two types fit each other. One
// whose type does not fit at all has had its message.
void CheckExplicitTemplateType(T3Tree_Node* node) {
  auto* definition = node->as<T3TemplateDef>();
  if (T3Is<T3NoType>(definition->parent) || definition->modifies->is<T3TemplateReference>()) return;
  if (!T3Is<_T3Expression>(definition->constraint) || !NamesTemplate(definition->constraint)) return;
  T3Tree_Node* own = BaseTypeDef(definition->parent);
  T3Tree_Node* named = BaseTypeDef(BehindImport(Def(definition->constraint)));
  if (own->is<T3ErrorType>() || named->is<T3ErrorType>()) return;
  if (ExpressionBaseType(definition->constraint)->is<T3ErrorType>()) return;
  if (!CheckStrictTypeCompatibility(own, named))
    vexa_filtered_error(ERR_type_template_changing, PositionOf(definition));
}

constexpr T3Rule kRules[] = {
    {T3Kind::T3TypeReference, CheckTypeReference},
    {T3Kind::T3SubType, CheckSubtypeCycle},
    {T3Kind::T3EnumType, NumberLiterals},
    {T3Kind::T3ArrayType, CheckArrayBounds},
    {T3Kind::T3IntLiteral, CheckIntLiteral},
    {T3Kind::T3CharStringLiteral, CheckCharStringLiteral},
    {T3Kind::T3Divide, CheckDivision},
    {T3Kind::T3TypeDecl, EnterDependencies},
    {T3Kind::_T3InstanceValueDecl, EnterDependencies},
    {T3Kind::T3TemplateDef, CheckExplicitTemplateType},
    {T3Kind::T3TemplateDecl, EnterDependencies},
};
}  // namespace

std::span<const T3Rule> TypeRules() {
  return kRules;
}
