#include "generator/CGConstraint.h"

#include "analysis/T3Types.h"
#include "generator/CGExpressionParts.h"
#include "generator/CGTypeAccess.h"
#include "generator/CLocations.h"
#include "generator/T3CodeDefs.h"

namespace {
bool IsOmit(T3Tree_Node* node) {
  return node->is<T3Omit>();
}

// The actions of a failing test.
void Fail(const CGTest& test, const std::string& reason, const std::string& expected, CFunction& function) {
  if (!test.quiet)
    function.call(LUMO_LOG_TEMPLATE_MISMATCH_BY_NAME_EVENT,
                  {Quote(test.field), Quote(reason), test.value, expected, VEXA_CONTEXT});
  if (test.on_fail == break_return) return function.addLine("return false;");
  if (test.on_fail == break_assign) return function.assign(test.result, C_FALSE);
  function.beginIf(VEXA_TEMPLATE_CONTINUE_MATCH);
  function.assign(test.result, C_FALSE);
  function.endIf();
  function.beginElse();
  function.addLine("return false;");
  function.endIf();
}

// Runs `inner` where there is a value: nothing can be asked of an omitted one.
template <class Inner>
void UnlessOmitted(const CGTest& test, CFunction& function, const Inner& inner) {
  TestForFailure(test.value + " == " + LUMO_OMIT_VALUE_C, test, "omit unexpected", LUMO_NO_VALUE_C, function);
  function.beginElse();
  inner();
  function.endIf();
}

bool IsList(T3Tree_Node* type) {
  return type->is<_T3HomogeneousType>();
}

std::string InC(T3Tree_Node* node, CFunction& function) {
  const cg::ValueMode mode;
  return cg::InC(node, function);
}

// lower <= text && text <= upper; a side without a bound is left out.
std::string Between(T3Tree_Node* lower, const std::string& text, T3Tree_Node* upper, CFunction& function) {
  std::string condition;
  if (!cg::IsInfinityExpression(lower)) condition = "(" + InC(lower, function) + " <= " + text + ")";
  if (cg::IsInfinityExpression(upper)) return condition.empty() ? std::string(C_TRUE) : condition;
  if (!condition.empty()) condition += " && ";
  return condition + "(" + text + " <= " + InC(upper, function) + ")";
}

void TestLength(T3Tree_Node* lower, T3Tree_Node* upper, T3Tree_Node* type, const CGTest& test,
                const std::string& reason, CFunction& function) {
  const char* word = IsList(type) ? LUMO_VALUE_VECTOR_SIZE : LUMO_VALUE_STRING_LENGTH;
  const std::string length = cg::CastToLongLong(cg::Call(word, {test.value, VEXA_CONTEXT}));
  TestForFailure("!(" + Between(lower, length, upper, function) + ")", test, reason, LUMO_NO_VALUE_C,
                 function);
}

void TestBound(T3Tree_Node* bound, T3Tree_Node* type, const CGTest& test, CFunction& function) {
  if (auto* single = bound->try_as<T3SingleBound>())
    TestLength(single->ub, single->ub, type, test, "length mismatch", function);
  else if (auto* range = bound->try_as<T3RangeBound>())
    TestLength(range->lb, range->ub, type, test, "length mismatch", function);
}

// The result is true when no alternative has matched.
std::string NoneMatches(T3Tree_Node* list, T3Tree_Node* type, const CGTest& test, CFunction& function) {
  std::string none = cg::Temporary(C_BOOL, function);
  function.assign(none, C_TRUE);
  for (T3Tree_Node* at = list; at->is<T3ValueListItem>(); at = at->as<T3ValueListItem>()->next) {
    const std::string matches = cg::Temporary(C_BOOL, function);
    function.assign(matches, C_TRUE);
    CGTest inner = test;
    inner.result = matches;
    inner.on_fail = break_assign;
    inner.quiet = true;
    GenConstraint(at->as<T3ValueListItem>()->value, type, inner, function);
    std::string both = "(";
    both.append(none).append(" && !(").append(matches).append("))");
    function.assign(none, both);
  }
  return none;
}

// By the run-time system: what holds templates, and what it does better than straight-line code.
void MatchTemplate(T3Tree_Node* node, const CGTest& test, const std::string& reason, CFunction& function) {
  const cg::TemplateMode mode;
  const std::string location = cg::InRTS(node, vexa_temp_alloc, function);
  const std::string call = test.mode == vexa_template_plain
                               ? cg::Call(LUMO_MATCH, {location, test.value, VEXA_CONTEXT})
                               : cg::Call(LUMO_MATCH_SIGNATURE,
                                          {location, test.value,
                                           test.mode == vexa_template_call ? C_TRUE : C_FALSE, VEXA_CONTEXT});
  TestForFailure("!(" + call + ")", test, reason, location, function);
}

void TestEqual(T3Tree_Node* node, const CGTest& test, CFunction& function) {
  UnlessOmitted(test, function, [&] {
    const cg::ValueMode mode;
    const std::string expected = cg::InRTS(node, vexa_temp_alloc, function);
    TestForFailure("!(" + cg::Call(LUMO_IS_EQUAL, {expected, test.value, VEXA_CONTEXT}) + ")", test,
                   "value mismatch", expected, function);
  });
}

void TestPart(const std::string& access, const std::string& name, T3Tree_Node* constraint, T3Tree_Node* type,
              const CGTest& test, CFunction& function) {
  if (constraint->is<T3NotUsedSymbol>() || constraint->is<T3AnyOrOmit>()) return;
  CGTest inner = test;
  inner.value = cg::Temporary(LUMO_VALUE_T, function);
  inner.field += name;
  function.assign(inner.value, access);
  GenConstraint(constraint, type, inner, function);
}

T3Tree_Node* FieldAt(T3Tree_Node* type, int64_t index) {
  T3Tree_Node* at = type->as<_T3StructuredType>()->body;
  for (; index > 0 && at->is<T3FieldType>(); --index) at = at->as<T3FieldType>()->next;
  return at->is<T3FieldType>() ? at : nullptr;
}

void TestRecord(T3CompoundValue* node, T3Tree_Node* type, const CGTest& test, CFunction& function) {
  int64_t position = 0;
  for (T3Tree_Node* at = node->value; at->is<T3FieldValue>(); at = at->as<T3FieldValue>()->next, ++position) {
    auto* item = at->as<T3FieldValue>();
    auto* name = item->field->try_as<T3FieldName>();
    const int64_t index = name != nullptr ? GetAlternativeIndex(type, name->name, true) : position;
    T3Tree_Node* field = FieldAt(type, index);
    if (field == nullptr) cg::NotSupported(node);
    TestPart(cg::Call(LUMO_VALUE_FIELD_BY_INDEX, {test.value, std::to_string(index), VEXA_CONTEXT}),
             std::string(".") + gIdents.GetCStr(field->as<T3FieldType>()->name), item->value,
             RootType(field->as<T3FieldType>()->type), test, function);
  }
}

// The parameters that an operation does not carry match anything.
bool IsCarried(T3Tree_Node* formal, vexa_template_mode_t mode) {
  if (!formal->is<_T3TypedFormal>()) return false;
  const t3_par_pass_t pass = formal->as<_T3TypedFormal>()->pass;
  return pass == t3_par_pass_t::InOut || (pass == t3_par_pass_t::Out) == (mode == vexa_template_reply);
}

void TestSignature(T3CompoundValue* node, T3SignatureType* type, const CGTest& test, CFunction& function) {
  int64_t position = 0;
  for (T3Tree_Node* at = node->value; at->is<T3FieldValue>(); at = at->as<T3FieldValue>()->next, ++position) {
    auto* item = at->as<T3FieldValue>();
    auto* name = item->field->try_as<T3FieldName>();
    int64_t index = 0;
    T3Tree_Node* formal = type->fpl;
    while (formal->is<_T3FormalPar>() &&
           (name != nullptr ? formal->as<_T3FormalPar>()->name != name->name : index != position)) {
      formal = formal->as<_T3FormalPar>()->next;
      ++index;
    }
    if (!formal->is<_T3TypedFormal>() || !IsCarried(formal, test.mode)) continue;
    CGTest inner = test;
    inner.mode = vexa_template_plain;
    TestPart(cg::Call(LUMO_VALUE_FIELD_BY_INDEX, {test.value, std::to_string(index), VEXA_CONTEXT}),
             std::string(".") + gIdents.GetCStr(formal->as<_T3FormalPar>()->name), item->value,
             RootType(formal->as<_T3TypedFormal>()->type), inner, function);
  }
}

void TestUnion(T3CompoundValue* node, T3Tree_Node* type, const CGTest& test, CFunction& function) {
  auto* item = node->value->try_as<T3FieldValue>();
  auto* name = item == nullptr ? nullptr : item->field->try_as<T3FieldName>();
  if (name == nullptr) cg::NotSupported(node);
  const int64_t index = GetAlternativeIndex(type, name->name, true);
  const std::string chosen = gIdents.GetCStr(name->name);
  TestForFailure(
      cg::Call(LUMO_VALUE_UNION_INDEX, {test.value, VEXA_CONTEXT}) + " != " + std::to_string(index), test,
      "union alternative '" + chosen + "' expected", LUMO_NO_VALUE_C, function);
  function.beginElse();
  TestPart(cg::Call(LUMO_VALUE_UNION_VALUE, {test.value, VEXA_CONTEXT}), "." + chosen, item->value,
           RootType(FieldAt(type, index)->as<T3FieldType>()->type), test, function);
  function.endIf();
}

void TestCompound(T3CompoundValue* node, T3Tree_Node* type, const CGTest& test, CFunction& function) {
  if (auto* signature = type->try_as<T3SignatureType>())
    return TestSignature(node, signature, test, function);
  UnlessOmitted(test, function, [&] {
    if (IsList(type) && !node->value->is<T3FieldValue>())
      TestForFailure(cg::Call(LUMO_VALUE_VECTOR_SIZE, {test.value, VEXA_CONTEXT}) + " != 0", test,
                     "empty value list", LUMO_NO_VALUE_C, function);
    else if (IsRecordOrSetType(type))
      TestRecord(node, type, test, function);
    else if (type->is<T3UnionType>())
      TestUnion(node, type, test, function);
    else
      MatchTemplate(node, test, type->is<T3SetOfType>() ? "set of mismatch" : "record of mismatch", function);
  });
}

// The bounds of ranges of characters, two for each, as the text of a literal of C; empty where an item is no
// constant of one character of ASCII.
std::string BoundsOf(const std::vector<T3Tree_Node*>& items) {
  std::string bounds;
  const auto add = [&bounds](T3Tree_Node* node) {
    auto* literal = node->try_as<T3CharStringLiteral>();
    if (literal == nullptr) return false;
    const std::string text = CStringOfLiteral(StringM::StGetString(literal->value));
    if (text.size() != 3 || text[1] == '\\' || text[1] == '?') return false;
    bounds += text[1];
    return true;
  };
  for (T3Tree_Node* item : items) {
    auto* range = item->try_as<T3ValueRange>();
    if (!add(range != nullptr ? range->lb : item) || !add(range != nullptr ? range->ub : item)) return "";
  }
  return bounds;
}

// Each character in one of the ranges; false where that cannot be told from a table.
bool TestCharacters(const std::vector<T3Tree_Node*>& items, T3Tree_Node* type, const CGTest& test,
                    CFunction& function) {
  const std::string bounds = type->is<T3CharStringType>() ? BoundsOf(items) : std::string();
  if (bounds.empty()) return false;
  UnlessOmitted(test, function, [&] {
    const std::string check = cg::Call(
        LUMO_TYPE_CHECK_CHAR_RANGE, {test.value, Quote(bounds), std::to_string(bounds.size()), VEXA_CONTEXT});
    TestForFailure("!(" + check + ")", test, "range check failed", LUMO_NO_VALUE_C, function);
  });
  return true;
}

// The items of a list that begins with a range of characters; empty for any other.
std::vector<T3Tree_Node*> CharacterRanges(T3ValueList* list, T3Tree_Node* type) {
  std::vector<T3Tree_Node*> items;
  for (T3Tree_Node* at = list->values; at->is<T3ValueListItem>(); at = at->as<T3ValueListItem>()->next)
    items.push_back(at->as<T3ValueListItem>()->value);
  if (!IsStringType(type) || items.empty() || !items.front()->is<T3ValueRange>()) items.clear();
  return items;
}

void TestRange(T3ValueRange* range, T3Tree_Node* type, const CGTest& test, CFunction& function) {
  if (IsStringType(type) && TestCharacters({range}, type, test, function)) return;
  if (IsStringType(type)) return MatchTemplate(range, test, "range check failed", function);
  UnlessOmitted(test, function, [&] {
    const char* word = type->is<T3Float>() ? LUMO_VALUE_GET_FLOAT : LUMO_VALUE_GET_INTEGER;
    const std::string number = cg::Call(word, {test.value, VEXA_CONTEXT});
    TestForFailure("!(" + Between(range->lb, number, range->ub, function) + ")", test, "value outside range",
                   LUMO_NO_VALUE_C, function);
  });
}
}  // namespace

void TestForFailure(const std::string& condition, const CGTest& test, const std::string& reason,
                    const std::string& expected, CFunction& function) {
  function.beginIf(condition);
  Fail(test, reason, expected, function);
  function.endIf();
}

void GenConstraint(T3Tree_Node* node, T3Tree_Node* type, const CGTest& test, CFunction& function) {
  if (auto* definition = node->try_as<T3TemplateDef>()) node = definition->constraint;
  if (node->is<T3AnyOrOmit>() || node->is<T3NotUsedSymbol>()) return;
  const bool present_only = node->is<T3IfPresentMatch>() || node->is<T3IfPresentIfLengthMatch>();
  if (IsOmit(node)) {
    TestForFailure(test.value + " != " + LUMO_OMIT_VALUE_C, test, "omit expected", LUMO_NO_VALUE_C, function);
  } else if (node->is<T3AnyValue>()) {
    TestForFailure(test.value + " == " + LUMO_OMIT_VALUE_C, test, "omit unexpected", LUMO_NO_VALUE_C,
                   function);
  } else if (auto* compound = node->try_as<T3CompoundValue>()) {
    TestCompound(compound, type, test, function);
  } else if (present_only || node->is<T3LengthMatch>()) {
    const auto inner = [&] {
      if (auto* length = node->try_as<T3LengthMatch>()) TestBound(length->size, type, test, function);
      if (auto* length = node->try_as<T3IfPresentIfLengthMatch>())
        TestBound(length->size, type, test, function);
      GenConstraint(node->as<ExtraMatchingExpressions>()->object, type, test, function);
    };
    if (!present_only) return UnlessOmitted(test, function, inner);
    function.beginIf(test.value + " != " + LUMO_OMIT_VALUE_C);
    inner();
    function.endIf();
  } else if (auto* list = node->try_as<T3ValueList>()) {
    const std::vector<T3Tree_Node*> ranges = CharacterRanges(list, type);
    if (!ranges.empty() && TestCharacters(ranges, type, test, function)) return;
    TestForFailure(NoneMatches(list->values, type, test, function), test, "value list mismatch",
                   LUMO_NO_VALUE_C, function);
  } else if (auto* complement = node->try_as<T3Complement>()) {
    UnlessOmitted(test, function, [&] {
      TestForFailure("!(" + NoneMatches(complement->values, type, test, function) + ")", test,
                     "complement list mismatch", LUMO_NO_VALUE_C, function);
    });
  } else if (auto* range = node->try_as<T3ValueRange>()) {
    TestRange(range, type, test, function);
  } else if (auto* length = node->try_as<T3LengthRange>()) {
    UnlessOmitted(test, function, [&] {
      TestLength(length->lb, length->ub, type, test,
                 IsList(type) ? "vector length outside range" : "string length outside range", function);
    });
  } else if (node->is<T3CharStringMatch>() || node->is<_T3SpecialStringMatch>()) {
    UnlessOmitted(test, function,
                  [&] { MatchTemplate(node, test, "regular expression mismatch", function); });
  } else if (node->is<_T3SuperOrSubSet>()) {
    UnlessOmitted(test, function,
                  [&] { MatchTemplate(node, test, "superset or subset mismatch", function); });
  } else if (cg::HoldsTemplate(node)) {
    MatchTemplate(node, test, "does not match sub-template", function);
  } else {
    TestEqual(node, test, function);
  }
}
