#include "generator/expressions/CGExpression.h"

#include <utility>

#include "analysis/names/T3Names.h"
#include "analysis/types/T3Types.h"
#include "driver/diagnostics/T3Exception.h"
#include "generator/expressions/CGExpressionParts.h"
#include "generator/expressions/CGModes.h"
#include "generator/expressions/CGReads.h"
#include "generator/text/CGLiteralTable.h"
#include "generator/text/CGModuleText.h"
#include "generator/text/CGTypeAccess.h"
#include "generator/text/CLocations.h"
#include "generator/text/LUMOS.h"
#include "generator/text/T3CodeDefs.h"
#include "generator/text/T3Context.h"
#include "support/ModuleCaches.h"

namespace {
// The temporaries that statements have taken, the innermost scope's last.
std::vector<std::string>& g_temporaries = *new std::vector<std::string>;
const ModuleCache temporaries([] { g_temporaries.clear(); });

// ---- Conversions ----

// Null for what has no form in C.
const char* C2RTSFunction(const T3Tree_Node* type) {
  switch (type->kind) {
    case T3Kind::T3Integer:
      return LUMO_VALUE_SET_INTEGER;
    case T3Kind::T3Float:
      return LUMO_VALUE_SET_FLOAT;
    case T3Kind::T3Boolean:
      return LUMO_VALUE_SET_BOOLEAN;
    case T3Kind::T3BitStringType:
    case T3Kind::T3OctetStringType:
    case T3Kind::T3HexStringType:
    case T3Kind::T3CharStringType:
      return LUMO_VALUE_SET_STRING;
    case T3Kind::T3CharacterType:
      return LUMO_VALUE_SET_CHAR;
    case T3Kind::T3UniversalCharacterType:
      return LUMO_VALUE_SET_UNIVERSAL_CHAR_TO_ASCII;
    case T3Kind::T3UniversalCharStringType:
      return LUMO_VALUE_SET_UNIVERSAL_CHARSTRING_TO_ASCII;
    default:
      return nullptr;
  }
}

// ---- Forms ----

const cg::Form* g_forms = nullptr;
cg::InPlaceForm g_in_place = nullptr;

void GenerateForm(T3Tree_Node* node, CGMode mode, CFunction& function) {
  if (!node->is<_T3Expression>()) cg::NotSupported(node);
  const cg::Form form = g_forms[static_cast<size_t>(node->kind) - _T3Expression::kFirst];
  if (form == nullptr || !form(node, mode, function)) cg::NotSupported(node);
}

// ---- Cached literals ----

bool IsCachableConstantExpression(T3Tree_Node* node) {
  switch (node->kind) {
    case T3Kind::T3IntLiteral:
    case T3Kind::T3FloatLiteral:
    case T3Kind::T3BooleanLiteral:
    case T3Kind::T3VerdictLiteral:
    case T3Kind::T3CharStringLiteral:
    case T3Kind::T3BitStringLiteral:
    case T3Kind::T3OctStringLiteral:
    case T3Kind::T3HexStringLiteral:
      return true;
    default:
      return false;
  }
}

// What the module is initialized with must not be made where statements run only on a condition.
bool MayCache(CFunction& function) {
  return !function.isConditional() || &function != &gT3Context.initializeFunction();
}

// A literal is made once, when the module is initialized, and deleted when it is finalized.
void CacheLiteral(T3Tree_Node* node) {
  const std::string_view known = FindLiteral(node);
  if (!known.empty()) return SetRTSLocation(node, known);
  CFile& file = gT3Context.file();
  const std::string name = file.uniqueName("vexa_constant_expression");
  file.addVariable(LUMO_VALUE_T, name, true);
  AddLiteral(node, name);
  CFunction& initialize = gT3Context.initializeFunction();
  const tPosition& position = node->as<_T3Expression>()->position;
  CGCommentPlace(initialize, position, "constant literal");
  CGSetSourceLine(initialize, position);
  initialize.callAndAssign(name, LUMO_TYPE_INSTANTIATE_VALUE,
                           {VEXATypeRef(ExpressionLocalType(node)), LUMO_PERM_ALLOC_C, VEXA_CONTEXT});
  SetRTSLocation(node, name);
  if (NaturalMode(node) == vexa_c_mode) {
    GenerateForm(node, vexa_perm_alloc, initialize);
    cg::SetFromC(node, name, initialize);
  } else {
    GenerateForm(node, vexa_perm_alloc, initialize);
  }
  gT3Context.finalizeFunction().call(LUMO_VALUE_DELETE, {"&(" + name + ")", VEXA_CONTEXT});
}

// A name or a call that the functions of a template in line get as an argument.
const char* PassedToTemplate(T3Tree_Node* node) {
  if (!node->HasCold()) return nullptr;
  if (auto* name = node->try_as<T3Identifier>())
    return name->cold().vexa_id_place == kPassedToTemplate ? name->cold().template_special_rts_loc : nullptr;
  auto* call = node->try_as<T3Parameterization>();
  return call != nullptr && call->cold().vexa_id_place == kPassedToTemplate
             ? call->cold().template_special_rts_loc
             : nullptr;
}

// What stands in the place of a part of a template that is modified.
void Modification(T3TemplateDef* definition, CGMode mode, CFunction& function) {
  const std::string made = cg::TemplateInPlace(definition, vexa_template_plain, function);
  SetRTSLocation(definition, mode.is_template ? made
                                              : cg::Call(LUMO_VALUEOF, {made, AllocationMode(mode.allocation),
                                                                        VEXA_CONTEXT}));
}

void Generate(T3Tree_Node* node, CGMode mode, CFunction& function) {
  if (const char* argument = PassedToTemplate(node)) {
    const bool is_value = !mode.is_template && cg::HoldsTemplate(node);
    return SetRTSLocation(
        node, is_value ? cg::Call(LUMO_VALUEOF, {argument, AllocationMode(mode.allocation), VEXA_CONTEXT})
                       : std::string(argument));
  }
  GenerateForm(node, mode, function);
}
}  // namespace

namespace cg {
void SetForms(std::span<const Form, kForms> forms, InPlaceForm in_place) {
  g_forms = forms.data();
  g_in_place = in_place;
}

std::string TemplateInPlace(T3Tree_Node* node, vexa_template_mode_t mode, CFunction& function) {
  return g_in_place(node, mode, function);
}

const char* CVariableType(const T3Tree_Node* type) {
  switch (type->kind) {
    case T3Kind::T3Integer:
    case T3Kind::T3EnumType:
      return LUMO_LONG_INTEGER_T;
    case T3Kind::T3Float:
      return C_DOUBLE;
    case T3Kind::T3Boolean:
      return C_BOOL;
    case T3Kind::T3CharacterType:
      return C_CHAR;
    default:
      return nullptr;
  }
}

const char* RTS2CFunction(T3Tree_Node* node, const T3Tree_Node* type) {
  switch (type->kind) {
    case T3Kind::T3Integer:
      return LUMO_VALUE_GET_INTEGER;
    case T3Kind::T3Float:
      return LUMO_VALUE_GET_FLOAT;
    case T3Kind::T3Boolean:
      return LUMO_VALUE_GET_BOOLEAN;
    case T3Kind::T3BitStringType:
      return LUMO_VALUE_GET_BITSTRING;
    case T3Kind::T3OctetStringType:
      return LUMO_VALUE_GET_OCTETSTRING;
    case T3Kind::T3HexStringType:
      return LUMO_VALUE_GET_HEXSTRING;
    case T3Kind::T3CharacterType:
      return LUMO_VALUE_GET_CHAR;
    case T3Kind::T3CharStringType:
      return LUMO_VALUE_GET_CHARSTRING;
    case T3Kind::T3EnumType:
      return LUMO_VALUE_GET_ENUM_NUMBER;
    case T3Kind::T3UniversalCharacterType:
      return LUMO_VALUE_GET_UNIVERSAL_CHAR;
    default:
      NotSupported(node);
  }
}

std::string Call(std::string_view function, const std::vector<std::string>& arguments) {
  return getSignature("", function, arguments);
}

std::string Call(std::string_view function, CWords arguments) {
  return getSignature("", function, arguments);
}

std::string_view InC(T3Tree_Node* node, CFunction& function) {
  CGExpression(node, vexa_c_mode, vexa_temp_alloc, function);
  return ShortLocation(node, vexa_c_mode, function);
}

std::string_view InRTS(T3Tree_Node* node, Mode mode, CFunction& function) {
  CGExpression(node, vexa_rts_mode, mode, function);
  return ShortLocation(node, vexa_rts_mode, function);
}

std::string_view ShortLocation(T3Tree_Node* node, vexa_expression_mode_t form, CFunction& function,
                               Variables* variables) {
  constexpr size_t kLong = 500;
  const bool is_c = form == vexa_c_mode;
  const std::string_view text = is_c ? CLocation(node) : RTSLocation(node);
  const char* type = text.size() <= kLong ? nullptr : is_c ? CVariableType(TypeOf(node)) : LUMO_VALUE_T;
  if (type == nullptr) return text;
  Variables own;
  std::string& name = (variables != nullptr ? *variables : own)[type];
  if (name.empty()) name = Temporary(type, function);
  function.assign(name, text);
  is_c ? SetCLocation(node, name) : SetRTSLocation(node, name);
  return is_c ? CLocation(node) : RTSLocation(node);
}

std::string Temporary(std::string_view type, CFunction& function) {
  std::string name = function.getTmpVariable(type);
  g_temporaries.push_back(name);
  return name;
}

namespace {
// What a function that returns a template may give back.
t3_template_restriction_t RestrictionOfResult(T3Tree_Node* node) {
  auto* function = node->is<T3Parameterization>() ? BehindImport(Def(node))->try_as<T3Function>() : nullptr;
  return function == nullptr ? t3_template_restriction_t::None : function->returns_template_restr;
}
}  // namespace

std::string AllocateRTSValue(T3Tree_Node* node, Mode mode, CFunction& function) {
  if (HasRTSLocation(node)) return std::string(RTSLocation(node));
  std::string name = Temporary(LUMO_VALUE_T, function);
  const std::string_view type = VEXATypeRef(ExpressionLocalType(node));
  const char* allocation = AllocationMode(mode.allocation);
  if (mode.is_template)
    function.callAndAssign(
        name, LUMO_TYPE_INSTANTIATE_DYNAMIC_TEMPLATE,
        {type, allocation, std::to_string(static_cast<int>(RestrictionOfResult(node))), VEXA_CONTEXT});
  else
    function.callAndAssign(name, LUMO_TYPE_INSTANTIATE_VALUE, {type, allocation, VEXA_CONTEXT});
  SetRTSLocation(node, name);
  return name;
}

std::string_view OperandInOrder(const Operands& operands, size_t at, vexa_expression_mode_t form,
                                CFunction& function) {
  T3Tree_Node* operand = operands.All()[at];
  const bool is_c = form == vexa_c_mode;
  const std::string_view location = is_c ? CLocation(operand) : RTSLocation(operand);
  const char* type = is_c ? CVariableType(TypeOf(operand)) : LUMO_VALUE_T;
  const bool changes = type != nullptr && operands.MayChange(at, false, function);
  if (type == nullptr || (!changes && !operands.MayFaultLate(at, location))) return location;
  const std::string kept = !is_c && changes ? Kept(location, function) : Temporary(type, function);
  if (is_c || !changes) function.assign(kept, location);
  is_c ? SetCLocation(operand, kept) : SetRTSLocation(operand, kept);
  return is_c ? CLocation(operand) : RTSLocation(operand);
}

std::string Kept(std::string_view location, CFunction& function) {
  const std::string kept = Temporary(LUMO_VALUE_T, function);
  function.callAndAssign(kept, LUMO_VALUE_COPY, {location, LUMO_TEMP_ALLOC_C, VEXA_CONTEXT});
  return kept;
}

T3Tree_Node* TypeOf(T3Tree_Node* expression) {
  return GetAddressBaseType(ExpressionBaseType(expression));
}

std::string CastToUnsignedLong(std::string_view text) {
  return joined({"((", C_UNSIGNED_LONG, ") ", text, ")"});
}

std::string CastToLongLong(std::string_view text) {
  return joined({"((", LUMO_LONG_INTEGER_T, ") ", text, ")"});
}

void NotSupported(T3Tree_Node* node) {
  throw not_supported{PositionOf(node),
                      std::string("CGExpression currently does not support ") + T3KindName(node)};
}

void ReportAtRunTime(std::string_view text, const tPosition& position, CFunction& function) {
  const std::string wide = function.getTmpVariable(LUMO_WIDE_STRING_T);
  function.callAndAssign(wide, LUMO_WIDE_STRING_CONSTRUCT_FROM_ASCII,
                         {Quote(text), LUMO_TEMP_ALLOC_C, VEXA_CONTEXT});
  const std::string place = CGSourceFileName(position) + ":" + std::to_string(position.Line);
  function.call(LUMO_REPORT_ERROR, {Quote(place), wide, VEXA_CONTEXT});
  function.releaseTmpVariable(wide);
}

void SetFromC(T3Tree_Node* node, std::string_view target, CFunction& function) {
  const char* word = IsInfinityExpression(node) ? LUMO_VALUE_SET_REAL : C2RTSFunction(TypeOf(node));
  if (word == nullptr) NotSupported(node);
  function.call(word, {target, CLocation(node), VEXA_CONTEXT});
}

}  // namespace cg

const char* AllocationMode(vexa_allocation_mode_t mode) {
  switch (mode) {
    case vexa_temp_alloc:
      return LUMO_TEMP_ALLOC_C;
    case vexa_perm_alloc:
      return LUMO_PERM_ALLOC_C;
    default:
      return VEXA_ALLOC_STRATEGY;
  }
}

void CGExpression(T3Tree_Node* node, vexa_expression_mode_t form, CGMode mode, CFunction& function) {
  // A part without templates in it is a value also where a template is made.
  mode.is_template = mode.is_template && (cg::HoldsTemplate(node) || node->is<T3TemplateDef>());
  const bool wants_c = form == vexa_c_mode;
  if (wants_c ? HasCLocation(node) : HasRTSLocation(node)) return;
  if (node->is<T3NoExpression>()) return SetRTSLocation(node, LUMO_NO_VALUE_C);
  if (node->is<T3NotUsedSymbol>()) return SetRTSLocation(node, LUMO_NOT_USED_VALUE_C);
  if (auto* definition = node->try_as<T3TemplateDef>()) {
    if (definition->modifies->is<T3TemplateReference>()) return Modification(definition, mode, function);
    CGExpression(definition->constraint, form, mode, function);
    return wants_c ? SetCLocation(node, CLocation(definition->constraint))
                   : SetRTSLocation(node, RTSLocation(definition->constraint));
  }
  if (!wants_c && MayCache(function) && IsCachableConstantExpression(node)) return CacheLiteral(node);
  const vexa_expression_mode_t natural = NaturalMode(node);
  if (natural == form) return Generate(node, mode, function);
  CGExpression(node, natural, mode, function);
  if (wants_c) {
    SetCLocation(node,
                 cg::Call(cg::RTS2CFunction(node, cg::TypeOf(node)), {RTSLocation(node), VEXA_CONTEXT}));
  } else {
    const std::string target = cg::AllocateRTSValue(node, mode, function);
    cg::SetFromC(node, target, function);
  }
}

void CGAssign(std::string_view target, T3Tree_Node* rhs, bool log_modification, CFunction& function,
              CGMode mode) {
  if (rhs == nullptr || rhs->is<T3NotUsedSymbol>()) return;
  auto* definition = rhs->try_as<T3TemplateDef>();
  if (definition != nullptr && !definition->modifies->is<T3TemplateReference>()) rhs = definition->constraint;
  if (rhs->is<T3CompoundValue>() && !HasRTSLocation(rhs)) {
    // The target is filled in place.
    SetRTSLocation(rhs, target);
    cg::CompoundValue(rhs->as<T3CompoundValue>(), mode, function);
  } else if (cg::IsWideText(rhs)) {
    cg::SetWideText(rhs, target, function);
  } else if (NaturalMode(rhs) == vexa_rts_mode) {
    function.call(LUMO_VALUE_ASSIGN, {target, cg::InRTS(rhs, mode, function), VEXA_CONTEXT});
  } else {
    cg::InC(rhs, function);
    cg::SetFromC(rhs, target, function);
  }
  if (log_modification) function.call(LUMO_LOG_VARIABLE_MODIFIED_EVENT, {target, VEXA_CONTEXT});
}

CGStatementScope::CGStatementScope(CFunction& function)
    : function_(&function), outer_temporaries_(g_temporaries.size()) {}

CGStatementScope::CGStatementScope() : outer_temporaries_(g_temporaries.size()) {}

CGStatementScope::~CGStatementScope() {
  for (size_t i = outer_temporaries_; function_ != nullptr && i < g_temporaries.size(); ++i)
    function_->releaseIfTmpVariable(g_temporaries[i]);
  g_temporaries.resize(outer_temporaries_);
}
