// Compound values: the value of the whole is reserved, and its parts are assigned to it one by one.
#include <set>

#include "analysis/types/T3Bounds.h"
#include "analysis/types/T3AnyTypes.h"
#include "analysis/types/T3Parts.h"
#include "analysis/types/T3Types.h"
#include "generator/expressions/CGExpressionParts.h"
#include "generator/expressions/CGReads.h"
#include "generator/text/CGModuleText.h"
#include "generator/text/CGTypeAccess.h"
#include "generator/text/CLocations.h"
#include "generator/text/T3CodeDefs.h"
#include "generator/text/T3Context.h"

namespace cg {
int64_t AlternativeOfAnyType(T3Tree_Node* anytype, T3Tree_Node* type_decl) {
  if (AnyTypeFields(anytype) == nullptr) anytype = CGCurrentModule()->attr().my_anytype;
  const int64_t number = AnyTypeAlternative(anytype, type_decl);
  if (number < 0) NotSupported(type_decl);
  return number;
}

namespace {
std::vector<T3FieldValue*> ItemsOf(T3CompoundValue* node) {
  std::vector<T3FieldValue*> items;
  for (auto* at : Items<T3FieldValue>(node->value)) items.push_back(at);
  return items;
}

// Assigns one part, and gives what it has taken back to the parts that follow.
void AssignPart(std::string_view word, std::string_view target, std::string_view index, T3Tree_Node* value,
                Mode mode, CFunction& function) {
  function.call(word, {target, index, InRTS(value, mode, function), VEXA_CONTEXT});
}

// The text of an item's index in a list whose first index is `first`.
std::string IndexText(T3FieldValue* item, int64_t first, size_t position, CFunction& function) {
  if (auto* place = item->field->try_as<T3FieldIndex>()) {
    InC(place->index, function);
    return CastToUnsignedLong(
        OperandInOrder(Operands({place->index, item->value}), 0, vexa_c_mode, function));
  }
  return std::to_string(first + static_cast<int64_t>(position));
}

// A value of an ASN.1 module leaves out what it does not have, or has it as omitted.
void SetMissingFields(T3CompoundValue* node, T3Tree_Node* type, std::string_view target,
                      CFunction& function) {
  std::set<int64_t> named;
  for (const T3Part& part : PartsOf(node, type))
    if (!part.item->value->is<T3Omit>()) named.insert(part.place.value_or(-1));
  function.addComment("explicitly omitting unmentioned fields for ASN.1 value");
  int64_t index = 0;
  gT3AST.ForallT3Tree(type->as<_T3StructuredType>()->body, [&](T3Tree_Node* field) {
    const int64_t at = index++;
    if (named.count(at) > 0) return;
    const char* value = field->as<T3FieldType>()->optional ? LUMO_OMIT_VALUE_C : LUMO_NOT_USED_VALUE_C;
    function.call(LUMO_VALUE_ASSIGN_VECTOR_ELEMENT_PARTIAL, {target, std::to_string(at), value, VEXA_CONTEXT});
  });
}

void FillMembers(T3CompoundValue* node, T3Tree_Node* type, std::string_view target, Mode mode,
                 CFunction& function) {
  const bool is_asn1 = IsRecordOrSetType(type) && IsT3ASN_1(CGCurrentModule());
  if (is_asn1) SetMissingFields(node, type, target, function);
  // Without a call nothing would tell that the value was given at all.
  if (node->value->is<T3NoFieldValue>() && IsRecordOrSetType(type) &&
      type->as<_T3StructuredType>()->body->is<T3FieldType>())
    function.call(LUMO_VALUE_SET_VECTOR_EMPTY, {target, VEXA_CONTEXT});
  bool first = true;
  for (const T3Part& part : PartsOf(node, type)) {
    if (is_asn1 && part.item->value->is<T3Omit>()) continue;
    const char* word = first ? LUMO_VALUE_INIT_VECTOR_ELEMENT : LUMO_VALUE_ASSIGN_VECTOR_ELEMENT;
    first = false;
    if (part.item->value->is<T3NotUsedSymbol>()) continue;
    if (!part.place) NotSupported(node);
    AssignPart(word, target, std::to_string(*part.place), part.item->value, mode, function);
  }
}

void FillArray(T3CompoundValue* node, T3Tree_Node* type, std::string_view target, Mode mode,
               CFunction& function) {
  const auto bounds = KnownBounds(type);
  if (!bounds) NotSupported(node);
  size_t position = 0;
  for (T3FieldValue* item : ItemsOf(node)) {
    const size_t index = position++;
    if (item->value->is<T3NotUsedSymbol>()) continue;
    AssignPart(index == 0 ? LUMO_VALUE_INIT_VECTOR_ELEMENT_PARTIAL : LUMO_VALUE_ASSIGN_VECTOR_ELEMENT_PARTIAL,
               target, IndexText(item, bounds->low, index, function), item->value, mode, function);
  }
}

// Tells which elements are a permutation.
void SetPermutations(const std::vector<T3FieldValue*>& items, std::string_view target, CFunction& function) {
  const auto kind = [&](size_t i) { return items[i]->permutation_kind; };
  for (size_t i = 0; i < items.size(); ++i) {
    if (kind(i) != t3_permutation_kind_t::Head && kind(i) != t3_permutation_kind_t::HeadTail) continue;
    size_t tail = i;
    while (kind(tail) != t3_permutation_kind_t::Tail && kind(tail) != t3_permutation_kind_t::HeadTail &&
           tail + 1 < items.size())
      ++tail;
    function.call(LUMO_TEMPLATE_SET_PERMUTATION,
                  {target, std::to_string(i), std::to_string(tail), VEXA_CONTEXT});
  }
}

void FillList(T3CompoundValue* node, std::string_view target, Mode mode, CFunction& function) {
  const std::vector<T3FieldValue*> items = ItemsOf(node);
  if (items.empty()) {
    function.call(LUMO_VALUE_SET_VECTOR_EMPTY, {target, VEXA_CONTEXT});
    return;
  }
  function.call(LUMO_VALUE_SET_VECTOR_SIZE, {target, std::to_string(items.size()), VEXA_CONTEXT});
  for (size_t i = 0; i < items.size(); ++i) {
    if (items[i]->value->is<T3NotUsedSymbol>()) continue;
    AssignPart(i == 0 ? LUMO_VALUE_INIT_VECTOR_ELEMENT : LUMO_VALUE_ASSIGN_VECTOR_ELEMENT, target,
               IndexText(items[i], 0, i, function), items[i]->value, mode, function);
  }
  SetPermutations(items, target, function);
}

void FillUnion(T3CompoundValue* node, T3Tree_Node* type, std::string_view target, Mode mode,
               CFunction& function) {
  const std::vector<T3FieldValue*> items = ItemsOf(node);
  auto* name = items.size() == 1 ? items.front()->field->try_as<T3FieldName>() : nullptr;
  if (name == nullptr) NotSupported(node);
  const int64_t index = type->is<T3AnyType>() ? AlternativeOfAnyType(type, items.front()->attr().def)
                                              : GetAlternativeIndex(type, name->name, true);
  const std::string alternative = Temporary(LUMO_VALUE_T, function);
  function.callAndAssign(alternative, LUMO_VALUE_SET_UNION_ALTERNATIVE_BY_INDEX,
                         {target, std::to_string(index), VEXA_CONTEXT});
  CGAssign(alternative, items.front()->value, false, function, mode);
}
}  // namespace

void CompoundValue(T3CompoundValue* node, Mode mode, CFunction& function) {
  T3Tree_Node* type = TypeOf(node);
  // A value that is made here is one of the module's own `anytype`, wherever it is assigned to.
  if (type->is<T3AnyType>() && !HasRTSLocation(node) && !IsT3ASN_1(type))
    type = CGCurrentModule()->attr().my_anytype;
  const std::string target = AllocateRTSValue(node, mode, function);
  if (type->is<T3UnionType>() || type->is<T3AnyType>())
    FillUnion(node, type, target, mode.temporary(), function);
  else if (type->is<T3ArrayType>())
    FillArray(node, type, target, mode.temporary(), function);
  else if (type->is<_T3HomogeneousType>())
    FillList(node, target, mode.temporary(), function);
  else
    FillMembers(node, type, target, mode.temporary(), function);
}

bool Compound(T3Tree_Node* node, Mode mode, CFunction& function) {
  auto* compound = node->try_as<T3CompoundValue>();
  if (compound != nullptr) CompoundValue(compound, mode, function);
  return compound != nullptr;
}
}  // namespace cg
