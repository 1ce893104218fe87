// The functions of a template. Each walks the same tree, with locations of its own, and reaches what the
// module declares through the symbol table.
#include "analysis/names/T3Names.h"
#include "analysis/walk/T3Subtree.h"
#include "analysis/templates/T3TemplateStatus.h"
#include "analysis/types/T3Parts.h"
#include "analysis/types/T3Types.h"
#include "frontend/T3GlobalASTNodes.h"
#include "generator/expressions/CGCalls.h"
#include "generator/expressions/CGModes.h"
#include "generator/templates/CGConstraint.h"
#include "generator/templates/CGInheritedArguments.h"
#include "generator/expressions/CGExpressionParts.h"
#include "generator/templates/CGTemplate.h"
#include "generator/templates/CGTemplateParts.h"
#include "generator/text/CGTypeAccess.h"
#include "generator/text/CLocations.h"
#include "generator/text/T3CodeDefs.h"
#include "generator/text/T3Context.h"

namespace {
using namespace cgtemplate;

std::vector<std::string> Parameters(const std::vector<std::string>& behind) {
  std::vector<std::string> parameters = {FormalPar(LUMO_TYPE_T, VEXA_TYPE),
                                         FormalPar(LUMO_VALUE_T, std::string(VEXA_ARGV) + "[]")};
  parameters.insert(parameters.end(), behind.begin(), behind.end());
  parameters.push_back(FormalPar(LUMO_CONTEXT_T, VEXA_CONTEXT));
  return parameters;
}

// All templates have functions of these kinds.
const std::vector<std::string>& MatchParameters() {
  static auto& parameters = *new auto(Parameters({FormalPar(LUMO_VALUE_T, VEXA_VALUE)}));
  return parameters;
}

const std::vector<std::string>& ValueParameters() {
  static auto& parameters = *new auto(Parameters({FormalPar(LUMO_ALLOC_STRATEGY_T, VEXA_ALLOC_STRATEGY)}));
  return parameters;
}

const std::vector<std::string>& SizeParameters() {
  static auto& parameters = *new auto(Parameters({}));
  return parameters;
}

// One function of a template.
template <class Body>
void TemplateFunction(T3TemplateDecl* decl, const char* result, const std::string& name,
                      const std::vector<std::string>& parameters, const Body& body) {
  const CGStatementScope scope;
  auto function = gT3Context.file().beginFunction(result, name, parameters, "", false);
  function->reach.locals = decl->attr().vexa_place != kAtModuleLevel;
  body(*function);
  function->end();
}

// ---- Matching ----

// A type without restrictions and fields of its own is known by the tests themselves.
bool TypeCheckNeeded(T3Tree_Node* type) {
  if (IsWildcardType(type)) return false;
  T3Tree_Node* decl = TypeDeclaration(type);
  return decl != nullptr && BuiltinBehind(decl) == nullptr && !RootType(type)->is<T3SignatureType>() &&
         VEXATypeRef(type) != LUMO_UNDEFINED_TYPE;
}

bool AcceptsOmit(T3Tree_Node* constraint) {
  return constraint->is<T3Omit>() || constraint->is<T3AnyOrOmit>() || constraint->is<T3IfPresentMatch>() ||
         constraint->is<T3IfPresentIfLengthMatch>();
}

void CGMatch(T3TemplateDecl* decl, T3TemplateDef* definition, vexa_template_mode_t mode) {
  TemplateFunction(decl, C_BOOL, VEXAMatchName(decl, mode), MatchParameters(), [&](CFunction& function) {
    T3Tree_Node* type = TypeOfTemplate(definition);
    const std::string result = function.declare(C_BOOL, "", C_TRUE);
    GenDefaultFormalPars(decl->fpl, function);
    const std::string whole = joined({"<", Description(decl), ">"});
    const CGTest test{mode, VEXA_VALUE, result, break_by_mode, false, whole};
    if (TypeCheckNeeded(type)) {
      const std::string check = cg::Call(LUMO_TYPE_CHECK, {VEXATypeRef(type), VEXA_VALUE, VEXA_CONTEXT});
      // The other tests ask what only a value of the type can answer.
      CGTest type_test = test;
      type_test.on_fail = break_return;
      TestForFailure(joined({C_NOT, "(", check, ")"}), type_test, "type mismatch", LUMO_NO_VALUE_C, function);
    }
    if (AcceptsOmit(definition->constraint)) {
      function.beginIf(joined({VEXA_VALUE, " == ", LUMO_OMIT_VALUE_C}));
      function._return(C_TRUE);
      function.endIf();
    }
    function.reach.rows = true;
    const InheritedArguments inherited(definition, VEXA_ARGV, function);
    GenConstraint(definition->constraint, RootType(type), test, function);
    function._return(result);
  });
}

// ---- Values ----

// True for a matching mechanism anywhere in the body: there is no one value. What an operation asks about a
// template, such as `match`, is a value all the same.
bool IsAmbiguous(T3Tree_Node* node) {
  bool found = false;
  ForEachInSubtree(node, [&found](T3Tree_Node* at) {
    found = found || at->is<_T3MatchingExpression>() || at->is<ExtraMatchingExpressions>() ||
            at->is<T3LengthRange>();
    return !found && (!at->is<_T3Expression>() || at->is<T3CompoundValue>());
  });
  return found;
}

// A value of another type, which the template's type lets pass, is made one of that.
void ReturnAs(T3Tree_Node* type, std::string_view location, CFunction& function) {
  const std::string value = function.getTmpVariable(LUMO_VALUE_T);
  function.assign(value, location);
  const std::string value_type = cg::Call(LUMO_VALUE_TYPE, {value, VEXA_CONTEXT});
  function.beginIf("(" + value + " == " + LUMO_OMIT_VALUE_C + ") || " +
                   cg::Call(LUMO_TYPE_IS_EQUAL, {value_type, VEXAStaticTypeRef(type), VEXA_CONTEXT}));
  function._return(value);
  function.endIf();
  const std::string recast = function.getTmpVariable(LUMO_VALUE_T);
  function.callAndAssign(recast, LUMO_TYPE_INSTANTIATE_VALUE, {VEXA_TYPE, LUMO_TEMP_ALLOC_C, VEXA_CONTEXT});
  function.call(LUMO_VALUE_ASSIGN, {recast, value, VEXA_CONTEXT});
  function._return(recast);
}

void CGValueOf(T3TemplateDecl* decl, T3TemplateDef* definition, vexa_template_mode_t mode) {
  TemplateFunction(decl, LUMO_VALUE_T, VEXAValueOfName(decl, mode), ValueParameters(),
                   [&](CFunction& function) {
                     if (IsAmbiguous(definition->constraint)) {
                       cg::ReportAtRunTime("attempting to turn ambiguous template into value",
                                           definition->position, function);
                       function._return(LUMO_ILLEGAL_VALUE_C);
                       return;
                     }
                     function.reach.rows = true;
                     GenDefaultFormalPars(decl->fpl, function);
                     const InheritedArguments inherited(definition, VEXA_ARGV, function);
                     ReturnAs(TypeOfTemplate(definition),
                              cg::InRTS(definition->constraint, vexa_strategy_alloc, function), function);
                   });
}

// ---- Sizes ----

void AddTo(std::string_view sum, std::string_view what, CFunction& function) {
  function.addLine({sum, " = ", sum, "+", what, ";"});
}

// Counts what a list has in it; an omitted field is nothing. False for an item that may be any number of
// elements, or none.
bool CountItems(T3CompoundValue* compound, std::string_view sum, CFunction& function) {
  for (auto* at : Items<T3FieldValue>(compound->value))
    if (at->value->is<T3AnyOrOmit>() || at->value->is<T3IfPresentMatch>() ||
        at->value->is<T3IfPresentIfLengthMatch>())
      return false;
  for (auto* at : Items<T3FieldValue>(compound->value))
    if (!at->value->is<T3Omit>()) AddTo(sum, "1", function);
  return true;
}

// The size of what a reference means is asked for.
void GenReferenceConstraint(T3Tree_Node* node, std::string_view sum, CFunction& function) {
  const std::string size = function.getTmpVariable(C_LONG);
  function.callAndAssign(size, LUMO_SIZE_OF, {cg::InRTS(node, CGTemplateMode(), function), VEXA_CONTEXT});
  AddTo(sum, size, function);
  function.releaseTmpVariable(size);
}

void CGSizeOf(T3TemplateDecl* decl, T3TemplateDef* definition) {
  TemplateFunction(decl, C_UNSIGNED_LONG, VEXASizeOfName(decl), SizeParameters(), [&](CFunction& function) {
    function.reach.rows = true;
    GenDefaultFormalPars(decl->fpl, function);
    const InheritedArguments inherited(definition, VEXA_ARGV, function);
    T3Tree_Node* constraint = definition->constraint;
    const std::string sum = function.getTmpVariable(C_UNSIGNED_LONG);
    function.assign(sum, "0");
    auto* compound = constraint->try_as<T3CompoundValue>();
    const bool known = compound != nullptr ? CountItems(compound, sum, function) : !IsAmbiguous(constraint);
    if (!known)
      cg::ReportAtRunTime(std::string("Attempt to call sizeof for template ") + T3KindName(constraint),
                          PositionOf(constraint), function);
    else if (compound == nullptr)
      GenReferenceConstraint(constraint, sum, function);
    function._return(sum);
  });
}

void CGConstraintOf(T3TemplateDecl* decl, T3TemplateDef* definition) {
  TemplateFunction(decl, LUMO_VALUE_T, VEXAConstraintOfName(decl), ValueParameters(),
                   [&](CFunction& function) {
                     GenDefaultFormalPars(decl->fpl, function);
                     const InheritedArguments inherited(definition, VEXA_ARGV, function);
                     GenConstraintOf(definition->constraint, TypeOfTemplate(definition), function);
                   });
}

// ---- Signatures ----

template <class Node>
Node* SameSurroundings(Node* made, Node* model) {
  made->place = model->place;
  made->attributes = model->attributes;
  return made;
}

// What of a field an operation carries. By position it keeps its place, with nothing in it.
T3Tree_Node* IgnoreThisParameter(T3FieldValue* item, T3Tree_Node* next) {
  if (item->field->is<T3FieldName>()) return next;
  auto* nothing = gT3AST.mT3NotUsedSymbol(item->position);
  nothing->place = item->place;
  return SameSurroundings(
      gT3AST.mT3FieldValue(item->position, next, item->field, nothing, item->permutation_kind), item);
}

// The definition without what the operation does not carry.
T3TemplateDef* CleanSignatureDecl(T3TemplateDef* definition, vexa_template_mode_t mode) {
  auto* compound = definition->constraint->try_as<T3CompoundValue>();
  if (compound == nullptr) return definition;
  auto* signature = RootType(TypeOfTemplate(definition))->as<T3SignatureType>();
  const std::vector<T3Tree_Node*> formals = MembersOf(signature);
  const std::vector<T3Part> parts = PartsOf(compound, signature);
  T3Tree_Node* list = _sgT3NoFieldValue();
  for (size_t i = parts.size(); i > 0; --i) {
    T3FieldValue* item = parts[i - 1].item;
    const auto place = static_cast<size_t>(parts[i - 1].place.value_or(-1));
    T3Tree_Node* formal = place < formals.size() ? formals[place] : nullptr;
    if (T3Is<_T3TypedFormal>(formal) && !FieldValueIsRelevant(formal, mode))
      list = IgnoreThisParameter(item, list);
    else
      list = SameSurroundings(
          gT3AST.mT3FieldValue(item->position, list, item->field, item->value, item->permutation_kind), item);
  }
  auto* cleaned = SameSurroundings(gT3AST.mT3CompoundValue(compound->position, list), compound);
  return SameSurroundings(gT3AST.mT3TemplateDef(definition->position, definition->parent, cleaned,
                                                definition->modifies, definition->restriction),
                          definition);
}

void CGSignatureTemplate(T3TemplateDecl* decl, T3TemplateDef* definition) {
  for (const vexa_template_mode_t mode : {vexa_template_call, vexa_template_reply}) {
    T3TemplateDef* cleaned = CleanSignatureDecl(definition, mode);
    CGMatch(decl, cleaned, mode);
    CGValueOf(decl, cleaned, mode);
  }
}
}  // namespace

void GenConstraintOf(T3Tree_Node* constraint, T3Tree_Node* type, CFunction& function) {
  function.reach.rows = true;
  CGMode mode = vexa_strategy_alloc;
  mode.is_template = true;
  const std::string_view location = cg::InRTS(constraint, mode, function);
  if (constraint->is<T3Omit>() || (!IsAmbiguous(constraint) && !cg::HoldsTemplate(constraint)))
    return function._return(location);
  const std::string general = function.getTmpVariable(LUMO_VALUE_T);
  function.callAndAssign(general, LUMO_TYPE_INSTANTIATE_DYNAMIC_TEMPLATE,
                         {VEXATypeRef(type), LUMO_TEMP_ALLOC_C, "0", VEXA_CONTEXT});
  function.call(LUMO_VALUE_ASSIGN, {general, location, VEXA_CONTEXT});
  function._return(general);
}

namespace cgtemplate {
void CGTemplateFunctions(T3TemplateDecl* decl, T3TemplateDef* definition) {
  // What stands in a behaviour may have locations of its function; each function below has its own.
  if (decl->attr().vexa_place != kAtModuleLevel) ResetLocations(definition);
  CGMatch(decl, definition, vexa_template_plain);
  CGValueOf(decl, definition, vexa_template_plain);
  if (IsSignatureTemplate(definition)) CGSignatureTemplate(decl, definition);
  CGSizeOf(decl, definition);
  CGConstraintOf(decl, definition);
}
}  // namespace cgtemplate
