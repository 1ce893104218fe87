// Tests of what has parts: each field by a test of its own; lists by the run-time system, which finds out
// what stands for what.
#include <optional>

#include "analysis/types/T3Bounds.h"
#include "analysis/templates/T3TemplateStatus.h"
#include "analysis/types/T3Parts.h"
#include "analysis/types/T3Types.h"
#include "frontend/T3GlobalASTNodes.h"
#include "generator/templates/CGConstraintParts.h"
#include "generator/expressions/CGModes.h"
#include "generator/text/CGTypeAccess.h"
#include "generator/text/CLocations.h"

namespace cgtest {
namespace {
std::string_view Name(tIdent name) {
  return gIdents.GetString(name);
}

// `access` gives the part's value.
void TestPart(std::string_view access, tIdent name, T3Tree_Node* constraint, T3Tree_Node* type,
              const CGTest& test, CFunction& function) {
  if (constraint->is<T3NotUsedSymbol>() || constraint->is<T3AnyOrOmit>()) return;
  // Parts of one template may be taken over for several parts of another.
  const CGStatementScope scope(function);
  CGTest inner = test;
  const std::string value = function.getTmpVariable(LUMO_VALUE_T);
  const std::string field = joined({test.field, ".", Name(name)});
  inner.value = value;
  inner.field = field;
  function.assign(value, access);
  GenConstraint(constraint, type, inner, function);
  function.releaseTmpVariable(value);
}

std::string ByIndex(std::string_view value, int64_t index) {
  return cg::Call(LUMO_VALUE_FIELD_BY_INDEX, {value, std::to_string(index), VEXA_CONTEXT});
}

// The fields of a record by their places; those of a set, when they are named, by their names.
void TestRecord(T3CompoundValue* node, T3Tree_Node* type, const CGTest& test, CFunction& function) {
  const std::vector<T3Tree_Node*> fields = MembersOf(type);
  for (const T3Part& part : PartsOf(node, type)) {
    if (!part.place || static_cast<size_t>(*part.place) >= fields.size()) cg::NotSupported(node);
    auto* field = fields[static_cast<size_t>(*part.place)]->as<T3FieldType>();
    const std::string access =
        part.item->field->is<T3FieldName>() && type->is<T3SetType>()
            ? cg::Call(LUMO_VALUE_FIELD_BY_NAME, {test.value, Quote(field->name), VEXA_CONTEXT})
            : ByIndex(test.value, *part.place);
    TestPart(access, field->name, part.item->value, RootType(field->type), test, function);
  }
}

// The fields that an operation does not carry match anything.
void TestSignature(T3CompoundValue* node, T3SignatureType* type, const CGTest& test, CFunction& function) {
  CGTest inner = test;
  inner.mode = vexa_template_plain;
  const std::vector<T3Tree_Node*> formals = MembersOf(type);
  for (const T3Part& part : PartsOf(node, type)) {
    if (!part.place || static_cast<size_t>(*part.place) >= formals.size()) continue;
    auto* formal = formals[static_cast<size_t>(*part.place)]->try_as<_T3TypedFormal>();
    if (formal == nullptr || !FieldValueIsRelevant(formal, test.mode)) continue;
    TestPart(ByIndex(test.value, *part.place), formal->name, part.item->value, RootType(formal->type), inner,
             function);
  }
}

// The chosen alternative, and then what it holds.
void TestAlternative(std::string_view what, tIdent name, int64_t index, T3Tree_Node* constraint,
                     T3Tree_Node* type, const CGTest& test, CFunction& function) {
  const std::string chosen = cg::Call(LUMO_VALUE_UNION_INDEX, {test.value, VEXA_CONTEXT});
  TestForFailure(joined({chosen, " != ", std::to_string(index)}), test,
                 joined({what, " alternative '", Name(name), "' expected"}), LUMO_NO_VALUE_C, function);
  function.beginElse();
  TestPart(cg::Call(LUMO_VALUE_UNION_VALUE, {test.value, VEXA_CONTEXT}), name, constraint, type, test,
           function);
  function.endIf();
}

void TestUnion(T3CompoundValue* node, T3Tree_Node* type, const CGTest& test, CFunction& function) {
  auto* item = node->value->try_as<T3FieldValue>();
  auto* name = item == nullptr ? nullptr : item->field->try_as<T3FieldName>();
  if (name == nullptr) cg::NotSupported(node);
  if (type->is<T3AnyType>()) {
    T3Tree_Node* held = BehindImport(item->attr().def);
    return TestAlternative("anytype", name->name, cg::AlternativeOfAnyType(type, held), item->value,
                           RootType(held), test, function);
  }
  const int64_t index = GetAlternativeIndex(type, name->name, true);
  TestAlternative("union", name->name, index, item->value,
                  RootType(FindIndex(type, index)->as<T3FieldType>()->type), test, function);
}

// ---- Lists ----

// What the stack of a component holds of a list; longer ones are matched as values.
constexpr int64_t kMostPlaces = 4096;

// The items of a list by their places, null where none is given; nothing where a place is known at run time
// only.
std::optional<std::vector<T3FieldValue*>> ItemsByPlace(T3CompoundValue* node, T3Tree_Node* type) {
  if (type->is<T3ArrayType>() && !KnownBounds(type)) return std::nullopt;
  const std::vector<T3Part> parts = PartsOf(node, type);
  for (const T3Part& part : parts)
    if (!part.place || *part.place >= kMostPlaces) return std::nullopt;
  return ValuesByPlace(parts, kMostPlaces);
}

// How many elements an item stands for that may be any number of them.
struct ElementLength {
  std::string lower = "0";
  std::string upper = "-1";
};

std::string_view ElementLengthHelper(T3Tree_Node* bound, CFunction& function) {
  if (cg::IsInfinityExpression(bound)) return "-1";
  return cg::InC(bound, function);
}

// "*" with a length; null for any other item.
T3LengthMatch* LengthOfAny(T3Tree_Node* value) {
  auto* length = value->try_as<T3LengthMatch>();
  return length != nullptr && length->object->is<T3AnyOrOmit>() ? length : nullptr;
}

ElementLength LengthOfElement(T3Tree_Node* value, CFunction& function) {
  ElementLength length;
  auto* match = LengthOfAny(value);
  if (match == nullptr) return length;
  if (auto* single = match->size->try_as<T3SingleBound>()) {
    length.lower = length.upper = ElementLengthHelper(single->ub, function);
  } else if (auto* range = match->size->try_as<T3RangeBound>()) {
    length.lower = ElementLengthHelper(range->lb, function);
    length.upper = ElementLengthHelper(range->ub, function);
  }
  return length;
}

std::string_view ExplicifyCompoundValueWorker(T3Tree_Node* value, CFunction& function) {
  if (value->is<T3NotUsedSymbol>()) return LUMO_ANYONE_VALUE_C;
  if (LengthOfAny(value) != nullptr) return LUMO_ANYORNONE_VALUE_C;
  return cg::InRTS(value, CGTemplateMode(), function);
}

// The three arrays of a list: templates of the elements, permutations, lengths.
std::vector<std::string> ExplicifyCompoundValue(const std::vector<T3FieldValue*>& items,
                                                CFunction& function) {
  const std::vector<std::string> arrays = {
      function.declareArray(LUMO_VALUE_T, items.size() + 1),
      function.declareArray(LUMO_PERMUTATION_KIND_T, items.size()),
      function.declareArray(LUMO_LENGTH_CONSTRAINT_T, items.size()),
  };
  for (size_t i = 0; i < items.size(); ++i) {
    const std::string slot = "[" + std::to_string(i) + "]";
    const bool given = items[i] != nullptr;
    function.assign(arrays[0] + slot,
                    given ? ExplicifyCompoundValueWorker(items[i]->value, function) : LUMO_ANYONE_VALUE_C);
    function.assign(arrays[1] + slot,
                    PermutationKindToString(given ? items[i]->permutation_kind : t3_permutation_kind_t::No));
    const ElementLength length = given ? LengthOfElement(items[i]->value, function) : ElementLength();
    function.assign(arrays[2] + slot + ".lower", length.lower);
    function.assign(arrays[2] + slot + ".upper", length.upper);
  }
  function.assign(arrays[0] + "[" + std::to_string(items.size()) + "]", C_NULL);
  return arrays;
}
}  // namespace

void TestList(T3CompoundValue* node, T3Tree_Node* type, const CGTest& test, CFunction& function) {
  const bool is_set = type->is<T3SetOfType>();
  const std::string_view reason = is_set ? "set of mismatch" : "record of mismatch";
  const auto items = ItemsByPlace(node, type);
  if (!items) return MatchTemplate(node, test, reason, function);
  std::vector<std::string> arguments = ExplicifyCompoundValue(*items, function);
  arguments.emplace(arguments.begin(), test.value);
  arguments.push_back(std::to_string(items->size()));
  arguments.emplace_back(VEXA_CONTEXT);
  TestForFailure(Negated(cg::Call(is_set ? LUMO_SETOF_MATCH : LUMO_RECORDOF_MATCH, arguments)), test, reason,
                 LUMO_NO_VALUE_C, function);
}

void TestSuperOrSubSet(_T3SuperOrSubSet* node, const CGTest& test, CFunction& function) {
  UnlessOmitted(test, function, [&] {
    std::vector<std::string> items;
    for (auto* at : Items<T3ValueListItem>(node->values))
      items.emplace_back(ExplicifyCompoundValueWorker(at->value, function));
    const std::string array = function.declareArray(LUMO_VALUE_T, items.size());
    for (size_t i = 0; i < items.size(); ++i)
      function.assign(array + "[" + std::to_string(i) + "]", items[i]);
    const std::string call = cg::Call(node->is<T3SubSet>() ? LUMO_SUBSET_MATCH : LUMO_SUPERSET_MATCH,
                                      {test.value, array, std::to_string(items.size()), VEXA_CONTEXT});
    TestForFailure(Negated(call), test, "superset or subset mismatch", LUMO_NO_VALUE_C, function);
  });
}

void TestCompound(T3CompoundValue* node, T3Tree_Node* type, const CGTest& test, CFunction& function) {
  if (auto* signature = type->try_as<T3SignatureType>())
    return TestSignature(node, signature, test, function);
  UnlessOmitted(test, function, [&] {
    if (type->is<_T3HomogeneousType>() && !node->value->is<T3FieldValue>())
      TestForFailure(cg::Call(LUMO_VALUE_VECTOR_SIZE, {test.value, VEXA_CONTEXT}) + " != 0", test,
                     "empty value list", LUMO_NO_VALUE_C, function);
    else if (type->is<_T3HomogeneousType>())
      TestList(node, type, test, function);
    else if (IsRecordOrSetType(type))
      TestRecord(node, type, test, function);
    else if (type->is<T3UnionType>() || type->is<T3AnyType>())
      TestUnion(node, type, test, function);
    else
      MatchTemplate(node, test, "value mismatch", function);
  });
}
}  // namespace cgtest
