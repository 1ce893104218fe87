// Tests against bounds: numbers in ranges, lengths, and characters in tables of ranges.
#include <cstdlib>
#include <optional>

#include "analysis/types/T3Constants.h"
#include "analysis/types/T3Types.h"
#include "driver/modules/T3UTF8String.h"
#include "generator/templates/CGConstraintParts.h"
#include "generator/expressions/CGModes.h"
#include "generator/text/CGModuleText.h"
#include "generator/text/CLocations.h"
#include "generator/text/T3Context.h"

namespace cgtest {
namespace {
using cg::InC;

// lower <= value && value <= upper, of which an infinite side is left out; empty where both are.
std::string Between(std::string_view lower, std::string_view value, std::string_view upper) {
  if (lower.empty()) return upper.empty() ? "" : joined({value, " ", C_LEQ, " ", upper});
  if (upper.empty()) return joined({lower, " ", C_LEQ, " ", value});
  return joined({lower, " ", C_LEQ, " ", value, " ", C_AND, " ", value, " ", C_LEQ, " ", upper});
}

std::string_view BoundInC(T3Tree_Node* bound, CFunction& function) {
  return cg::IsInfinityExpression(bound) ? std::string_view() : InC(bound, function);
}

const char* CType(T3Tree_Node* type) {
  return type->is<T3Float>() ? C_DOUBLE : LUMO_LONG_INTEGER_T;
}

// ---- Lengths ----

const char* LengthFunction(T3Tree_Node* type) {
  return type->is<_T3HomogeneousType>() ? LUMO_VALUE_VECTOR_SIZE : LUMO_VALUE_STRING_LENGTH;
}

std::string LengthBound(T3Tree_Node* bound, CFunction& function) {
  const std::string_view text = BoundInC(bound, function);
  return text.empty() ? "" : cg::CastToUnsignedLong(text);
}

// The user who generates a suite may want to be warned of lists of a wrong length only.
bool ListLengthsAreFree() {
  return std::getenv("TTCN3_DISABLE_LENGTH_RESTRICTION") != nullptr;
}

void WarnOfLength(std::string_view condition, const CGTest& test, CFunction& function) {
  function.beginIf(condition);
  const std::string name = cg::Call(LUMO__VALUE_LABEL_OR_NAME, {test.value, VEXA_CONTEXT});
  const std::string text =
      cg::Call(LUMO_FORMAT_WIDE_STRING, {Quote("LUMO__VAL_CHECK_VALUE_FAILURE_sname"), VEXA_CONTEXT, name});
  function.call(LUMO_LOG_WIDE_STRING_TO_ALL, {LUMO_LOG_KIND_MSG_WARNING_C, text, VEXA_CONTEXT});
  function.endIf();
}

void TestLength(T3Tree_Node* lower, T3Tree_Node* upper, T3Tree_Node* type, const CGTest& test,
                std::string_view reason, CFunction& function) {
  const std::string length = function.getTmpVariable(C_UNSIGNED_LONG);
  function.callAndAssign(length, LengthFunction(type), {test.value, VEXA_CONTEXT});
  const std::string low = LengthBound(lower, function);
  const std::string condition = Between(low, length, lower == upper ? low : LengthBound(upper, function));
  if (!condition.empty() && type->is<_T3HomogeneousType>() && ListLengthsAreFree())
    WarnOfLength(Negated(condition), test, function);
  else if (!condition.empty())
    TestForFailure(Negated(condition), test, reason, LUMO_NO_VALUE_C, function);
  function.releaseTmpVariable(length);
}

// ---- Characters ----

// The quadruple of one character; what a bound without a limit stands for.
struct Quadruple {
  unsigned char group = 0;
  unsigned char plane = 0;
  unsigned char row = 0;
  unsigned char cell = 0;
  bool IsAscii() const { return group == 0 && plane == 0 && row == 0 && cell < 128; }
};
constexpr Quadruple kLastAscii{0, 0, 0, 127};
constexpr Quadruple kLastCharacter{127, 255, 255, 255};

bool IsUniversal(T3Tree_Node* type) {
  return type->is<T3UniversalCharStringType>() || type->is<T3UniversalCharacterType>();
}

// The one character of a constant; nothing for any other expression.
std::optional<Quadruple> CharacterOf(T3Tree_Node* node) {
  std::optional<std::string> text = ConstCharValue(node);
  if (!text) return std::nullopt;
  if (*text == "\"\"") text = "\"";
  int length = static_cast<int>(text->size());
  Quadruple character;
  if (length == 0) return std::nullopt;
  UTF_8ToUCS_4(reinterpret_cast<const unsigned char*>(text->data()), length, character.group, character.plane,
               character.row, character.cell);
  return length == 0 ? std::optional(character) : std::nullopt;
}

// Adds the two bounds of an item, which are equal for a single character.
bool AddToRanges(T3Tree_Node* item, T3Tree_Node* type, std::vector<Quadruple>& bounds) {
  auto* range = item->try_as<T3ValueRange>();
  T3Tree_Node* lower = range != nullptr ? range->lb : item;
  T3Tree_Node* upper = range != nullptr ? range->ub : item;
  const auto low = cg::IsInfinityExpression(lower) ? Quadruple() : CharacterOf(lower);
  const auto high = !cg::IsInfinityExpression(upper) ? CharacterOf(upper)
                    : IsUniversal(type)              ? kLastCharacter
                                                     : kLastAscii;
  if (!low || !high) return false;
  bounds.insert(bounds.end(), {*low, *high});
  return true;
}

// The table of the bounds; returns its name.
std::string GenCharacterRanges(const std::vector<Quadruple>& bounds, bool is_universal) {
  const std::string name =
      gT3Context.file().uniqueName("vexa_" + CGModuleName(CGCurrentModule()) + "_character_ranges");
  auto array = gT3Context.file().beginArray(is_universal ? LUMO_WIDE_CHAR_T : C_CHAR, name, true);
  for (const Quadruple& bound : bounds)
    array->addElement(is_universal ? cg::WideCharacterText(bound.group, bound.plane, bound.row, bound.cell)
                                   : cg::CharacterText(static_cast<char>(bound.cell)));
  array->end();
  return name;
}
}  // namespace

void TestNumberRange(T3ValueRange* range, T3Tree_Node* type, const CGTest& test, CFunction& function) {
  UnlessOmitted(test, function, [&] {
    const std::string number = function.getTmpVariable(CType(type));
    function.callAndAssign(number, cg::RTS2CFunction(range, type), {test.value, VEXA_CONTEXT});
    const std::string_view lower = BoundInC(range->lb, function);
    const std::string condition = Between(lower, number, BoundInC(range->ub, function));
    if (!condition.empty())
      TestForFailure(Negated(condition), test, "value outside range", LUMO_NO_VALUE_C, function);
    function.releaseTmpVariable(number);
  });
}

void TestBound(T3Tree_Node* bound, T3Tree_Node* type, const CGTest& test, CFunction& function) {
  if (auto* single = bound->try_as<T3SingleBound>())
    TestLength(single->ub, single->ub, type, test, "length mismatch", function);
  else if (auto* range = bound->try_as<T3RangeBound>())
    TestLength(range->lb, range->ub, type, test, "length mismatch", function);
}

void TestLengthRange(T3LengthRange* length, T3Tree_Node* type, const CGTest& test, CFunction& function) {
  UnlessOmitted(test, function, [&] {
    const bool is_list = type->is<_T3HomogeneousType>();
    TestLength(length->lb, length->ub, type, test,
               is_list ? "vector length outside range" : "string length outside range", function);
  });
}

bool IsOfCharacters(T3Tree_Node* type) {
  return type->is<T3CharStringType>() || type->is<T3CharacterType>() || IsUniversal(type);
}

bool TestCharacters(const std::vector<T3Tree_Node*>& ranges, T3Tree_Node* type, const CGTest& test,
                    CFunction& function) {
  std::vector<Quadruple> bounds;
  for (T3Tree_Node* range : ranges)
    if (!AddToRanges(range, type, bounds)) return false;
  bool is_universal = IsUniversal(type);
  for (const Quadruple& bound : bounds) is_universal = is_universal || !bound.IsAscii();
  UnlessOmitted(test, function, [&] {
    std::string array = GenCharacterRanges(bounds, is_universal);
    if (is_universal) array = std::string("((const ") + LUMO_WIDE_CHAR_T + " *) " + array + ")";
    const std::string check =
        cg::Call(is_universal ? LUMO_TYPE_CHECK_UNIVERSAL_CHAR_RANGE : LUMO_TYPE_CHECK_CHAR_RANGE,
                 {test.value, array, std::to_string(bounds.size()), VEXA_CONTEXT});
    TestForFailure(Negated(check), test, "range check failed", LUMO_NO_VALUE_C, function);
  });
  return true;
}

std::vector<T3Tree_Node*> CharacterRanges(T3ValueList* list, T3Tree_Node* type) {
  std::vector<T3Tree_Node*> items;
  for (auto* at : Items<T3ValueListItem>(list->values)) items.push_back(at->value);
  if (!IsOfCharacters(type) || items.empty() || !items.front()->is<T3ValueRange>()) items.clear();
  return items;
}

void TestPattern(T3Tree_Node* node, const CGTest& test, CFunction& function) {
  UnlessOmitted(test, function, [&] {
    const std::string pattern = cg::PatternText(node, function);
    TestForFailure(Negated(cg::Call(LUMO_REGEXP_MATCH, {pattern, test.value, VEXA_CONTEXT})), test,
                   "regular expression mismatch", LUMO_NO_VALUE_C, function);
  });
}
}  // namespace cgtest
