#include "generator/templates/CGConstraint.h"
#include "generator/expressions/CGModes.h"

#include "analysis/types/T3Types.h"
#include "analysis/walk/T3RuleParts.h"
#include "driver/options/T3CommandLine.h"
#include "generator/templates/CGConstraintParts.h"
#include "generator/text/CGTypeAccess.h"
#include "generator/text/CLocations.h"
#include "generator/text/T3Decompile.h"

namespace {
using namespace cgtest;

// Whether only its text in the source tells what a constraint of a template asks for.
bool IsToldByText(T3Tree_Node* node, T3Tree_Node* type, const CGTest& test) {
  if (test.field.empty() || test.field[0] != '<' || node->is<T3Omit>() || node->is<T3AnyValue>())
    return false;
  return !node->is<T3CompoundValue>() || type->is<_T3HomogeneousType>();
}

// Tells a mismatch, unless within a list of alternatives, where it is none.
void ReportResult(const CGTest& test, std::string_view reason, std::string_view expected,
                  CFunction& function) {
  if (test.quiet) return;
  if (test.constraint != nullptr && expected == LUMO_NO_VALUE_C)
    function.call(LUMO_LOG_TEMPLATE_EXPECTED,
                  {Quote(InLiteral(GetConstraintDescription(test.constraint,
                                                            gT3CommandLine.template_description_length))),
                   VEXA_CONTEXT});
  function.addLine({LUMO_LOG_TEMPLATE_MISMATCH_BY_NAME_EVENT, "(\"", test.field, "\", \"", reason, "\", ",
                    test.value, ", ", expected, ", ", VEXA_CONTEXT, ");"});
}

// The actions of a failing test.
void Fail(const CGTest& test, std::string_view reason, std::string_view expected, CFunction& function) {
  ReportResult(test, reason, expected, function);
  if (test.on_fail == break_return) return function.addLine("return false;");
  if (test.on_fail == break_assign) return function.assign(test.result, C_FALSE);
  function.beginIf(VEXA_TEMPLATE_CONTINUE_MATCH);
  function.assign(test.result, C_FALSE);
  function.endIf();
  function.beginElse();
  function.addLine("return false;");
  function.endIf();
}

// Tries all alternatives of a list, each without a word; the result, which is released by the caller, is true
// when none has matched.
std::string GenValueListConstraint(T3Tree_Node* list, T3Tree_Node* type, const CGTest& test,
                                   CFunction& function) {
  std::string none = function.getTmpVariable(C_BOOL);
  function.assign(none, C_TRUE);
  for (auto* at : Items<T3ValueListItem>(list)) {
    const std::string matches = function.getTmpVariable(C_BOOL);
    function.assign(matches, C_TRUE);
    CGTest inner = test;
    inner.result = matches;
    inner.on_fail = break_assign;
    inner.quiet = true;
    GenConstraint(at->value, type, inner, function);
    function.assign(none, joined({"(", none, " ", C_AND, " ", C_NOT, "(", matches, "))"}));
    function.releaseTmpVariable(matches);
  }
  return none;
}

void TestValueList(T3ValueList* list, T3Tree_Node* type, const CGTest& test, CFunction& function) {
  const std::vector<T3Tree_Node*> ranges = CharacterRanges(list, type);
  if (!ranges.empty() && TestCharacters(ranges, type, test, function)) return;
  const std::string none = GenValueListConstraint(list->values, type, test, function);
  TestForFailure(none, test, "value list mismatch", LUMO_NO_VALUE_C, function);
  function.releaseTmpVariable(none);
}

// What is omitted is no other value than those of the list.
void TestComplement(T3Complement* node, T3Tree_Node* type, const CGTest& test, CFunction& function) {
  UnlessOmitted(test, function, [&] {
    const std::string none = GenValueListConstraint(node->values, type, test, function);
    TestForFailure(Negated(none), test, "complement list mismatch", LUMO_NO_VALUE_C, function);
    function.releaseTmpVariable(none);
  });
}

void TestEqual(T3Tree_Node* node, const CGTest& test, CFunction& function) {
  const std::string_view expected = cg::InRTS(node, vexa_temp_alloc, function);
  TestForFailure(Negated(cg::Call(LUMO_IS_EQUAL, {expected, test.value, VEXA_CONTEXT})), test,
                 "value mismatch", expected, function);
}

// Why a value does not match what a reference to a template means.
std::string ReasonOf(T3Tree_Node* node) {
  auto* name = node->try_as<T3Identifier>();
  if (name != nullptr && T3Is<T3FormalTemplatePar>(Def(name)))
    return std::string("does not match template parameter '") + gIdents.GetCStr(name->id) + "'";
  if (name != nullptr && T3Is<T3VarDecl>(Def(name)))
    return std::string("does not match dynamic template '") + gIdents.GetCStr(name->id) + "'";
  return "does not match sub-template";
}

void TestExtra(ExtraMatchingExpressions* node, T3Tree_Node* type, const CGTest& test, CFunction& function) {
  const auto inner = [&] {
    if (auto* length = node->try_as<T3LengthMatch>()) TestBound(length->size, type, test, function);
    if (auto* length = node->try_as<T3IfPresentIfLengthMatch>())
      TestBound(length->size, type, test, function);
    GenConstraint(node->object, type, test, function);
  };
  if (node->is<T3LengthMatch>()) return UnlessOmitted(test, function, inner);
  function.beginIf(joined({test.value, " != ", LUMO_OMIT_VALUE_C}));
  inner();
  function.endIf();
}

void TestRange(T3ValueRange* range, T3Tree_Node* type, const CGTest& test, CFunction& function) {
  if (!IsOfCharacters(type)) return TestNumberRange(range, type, test, function);
  if (!TestCharacters({range}, type, test, function))
    MatchTemplate(range, test, "range check failed", function);
}

// The list of a subtype may name types, each of which stands for its values.
T3Tree_Node* NamedType(T3Tree_Node* node) {
  return NamesType(node) ? Def(node) : nullptr;
}

void TestType(T3Tree_Node* type, const CGTest& test, CFunction& function) {
  TestForFailure(Negated(cg::Call(LUMO_TYPE_CHECK, {VEXATypeRef(type), test.value, VEXA_CONTEXT})), test,
                 "type mismatch", LUMO_NO_VALUE_C, function);
}

// Matching mechanisms; false for any other expression.
bool TestMechanism(T3Tree_Node* node, T3Tree_Node* type, const CGTest& test, CFunction& function) {
  if (node->is<T3AnyValue>())
    FailIfOmitted(test, function);
  else if (auto* extra = node->try_as<ExtraMatchingExpressions>())
    TestExtra(extra, type, test, function);
  else if (auto* list = node->try_as<T3ValueList>())
    TestValueList(list, type, test, function);
  else if (auto* complement = node->try_as<T3Complement>())
    TestComplement(complement, type, test, function);
  else if (auto* range = node->try_as<T3ValueRange>())
    TestRange(range, type, test, function);
  else if (auto* length = node->try_as<T3LengthRange>())
    TestLengthRange(length, type, test, function);
  else if (node->is<T3CharStringMatch>() || node->is<_T3SpecialStringMatch>())
    TestPattern(node, test, function);
  else if (auto* set = node->try_as<_T3SuperOrSubSet>())
    TestSuperOrSubSet(set, test, function);
  else
    return false;
  return true;
}
}  // namespace

void TestForFailure(std::string_view condition, const CGTest& test, std::string_view reason,
                    std::string_view expected, CFunction& function) {
  function.beginIf(condition);
  Fail(test, reason, expected, function);
  function.endIf();
}

namespace cgtest {
namespace {
// A template as the only item of a list: the run-time system tries these without a word.
std::string Silenced(T3Tree_Node* node, std::string_view location, CFunction& function) {
  std::string list = cg::Temporary(LUMO_VALUE_T, function);
  function.callAndAssign(list, LUMO_TYPE_INSTANTIATE_DYNAMIC_TEMPLATE,
                         {VEXATypeRef(ExpressionLocalType(node)), LUMO_TEMP_ALLOC_C, "0", VEXA_CONTEXT});
  const std::string items = function.declareArray(LUMO_VALUE_T, 2);
  function.assign(items + "[0]", location);
  function.assign(items + "[1]", C_NULL);
  function.call(LUMO_TEMPLATE_SET_VALUE_LIST, {list, LUMO_VALUE_LIST_NORMAL, items, C_FALSE, VEXA_CONTEXT});
  return list;
}
}  // namespace

void MatchTemplate(T3Tree_Node* node, const CGTest& test, std::string_view reason, CFunction& function) {
  std::string location(cg::InRTS(node, CGTemplateMode(), function));
  // A call is made once, although its result is also told.
  if (location.find('(') != std::string::npos) {
    const std::string made = cg::Temporary(LUMO_VALUE_T, function);
    function.assign(made, location);
    location = made;
  }
  const bool is_plain = test.mode == vexa_template_plain;
  if (test.quiet && is_plain) location = Silenced(node, location, function);
  const char* is_call = test.mode == vexa_template_call ? C_TRUE : C_FALSE;
  const std::string matches =
      is_plain ? cg::Call(LUMO_MATCH, {location, test.value, VEXA_CONTEXT})
               : cg::Call(LUMO_MATCH_SIGNATURE, {location, test.value, is_call, VEXA_CONTEXT});
  TestForFailure(Negated(matches), test, reason, location, function);
}
}  // namespace cgtest

void GenConstraint(T3Tree_Node* node, T3Tree_Node* type, const CGTest& whole, CFunction& function) {
  CGTest test = whole;
  test.constraint = IsToldByText(node, GetAddressBaseType(type), whole) ? node : nullptr;
  if (node->is<T3TemplateDef>()) return MatchTemplate(node, test, ReasonOf(node), function);
  if (node->is<T3AnyOrOmit>() || node->is<T3NotUsedSymbol>()) return;
  type = GetAddressBaseType(type);
  if (auto* compound = node->try_as<T3CompoundValue>())
    TestCompound(compound, type, test, function);
  else if (node->is<T3Omit>())
    TestForFailure(joined({test.value, " != ", LUMO_OMIT_VALUE_C}), test, "omit expected", LUMO_NO_VALUE_C,
                   function);
  else if (TestMechanism(node, type, test, function))
    return;
  else if (T3Tree_Node* named = NamedType(node))
    TestType(named, test, function);
  else if (cg::HoldsTemplate(node))
    MatchTemplate(node, test, ReasonOf(node), function);
  else
    TestEqual(node, test, function);
}
