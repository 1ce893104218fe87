#include "generator/text/CGAttributes.h"

#include "generator/text/LUMOS.h"
#include "generator/text/T3CodeDefs.h"
#include "generator/text/T3Context.h"

namespace {
bool IsOfKind(T3Tree_Node* with, t3_with_attribute_t kind) {
  return with->is<T3With>() && with->as<T3With>()->attribute == kind;
}

bool IsUnqualified(T3Tree_Node* with) {
  return with->as<T3With>()->attrib_qualifier->is<T3NoRefItem>();
}

bool ContainsAttributes(T3Tree_Node* list, t3_with_attribute_t kind) {
  bool found = false;
  gT3AST.ForallT3Tree(list, [&](T3Tree_Node* with) { found = found || IsOfKind(with, kind); });
  return found;
}

bool ContainsUnqualified(T3Tree_Node* list, t3_with_attribute_t kind, bool override_only) {
  bool found = false;
  gT3AST.ForallT3Tree(list, [&](T3Tree_Node* with) {
    if (IsOfKind(with, kind) && IsUnqualified(with))
      found = found || !override_only || with->as<T3With>()->override;
  });
  return found;
}

const char* AddTrueOrFalse(bool truth) {
  return truth ? C_TRUE : C_FALSE;
}

void WriteAttributeEntry(CArray& array, T3With* with, std::string_view field) {
  array.addRow(
      {CStringOfLiteral(StringM::StGetString(with->attrib_spec)), AddTrueOrFalse(with->override), field});
}

// The attributes that go to fields: one entry for each field that a statement names.
void GenAttributesForFields(CArray& array, T3With* with) {
  gT3AST.ForallT3Tree(with->attrib_qualifier, [&](T3Tree_Node* item) {
    auto* field = item->as<T3RefItem>()->reference->try_as<T3AttrRefIdentifier>();
    if (field != nullptr) WriteAttributeEntry(array, with, Quote(field->id));
  });
}

// The entries of a list; an attribute of the type as a whole only where `whole` is set.
void GenEntries(CArray& array, T3Tree_Node* list, t3_with_attribute_t kind, bool whole) {
  gT3AST.ForallT3Tree(list, [&](T3Tree_Node* with) {
    if (!IsOfKind(with, kind)) return;
    if (!IsUnqualified(with))
      GenAttributesForFields(array, with->as<T3With>());
    else if (whole)
      array.addRow({CStringOfLiteral(StringM::StGetString(with->as<T3With>()->attrib_spec)),
                    AddTrueOrFalse(with->as<T3With>()->override)});
  });
}

T3Tree_Node* WithOfOrigin(T3Tree_Node* decl) {
  if (!decl->is<_T3ImportDecl>()) return nullptr;
  T3Tree_Node* origin = decl->as<_T3ImportDecl>()->attr().def_aux;
  return T3Is<_T3Decl>(origin) ? origin->as<_T3Decl>()->with_spec : nullptr;
}
}  // namespace

std::string GenAttributes(T3Tree_Node* decl, t3_with_attribute_t kind) {
  T3Tree_Node* own = decl->as<_T3Decl>()->with_spec;
  T3Tree_Node* origin = WithOfOrigin(decl);
  if (!T3Is<T3With>(own) && !T3Is<T3With>(origin)) return C_NULL;
  if (!ContainsAttributes(own, kind) && !ContainsAttributes(origin, kind)) return C_NULL;
  // the import's own attribute holds, unless the one of origin says that it stays
  const bool own_holds = ContainsUnqualified(own, kind, false) && !ContainsUnqualified(origin, kind, true);
  const std::string name = VEXAAttributesName(decl, kind);
  auto array = gT3Context.file().beginArray(LUMO_ENCODE_ATTRIBUTE_STRUCT_T, name, true);
  GenEntries(*array, own, kind, own_holds);
  GenEntries(*array, origin, kind, !own_holds);
  const auto count = array->count();
  if (count == 0) return C_NULL;
  array->end();
  if (kind == t3_with_attribute_t::Encode || kind == t3_with_attribute_t::Variant)
    gT3Context.registerFunction().call(LUMO_ATTRIBUTES_REGISTER, {name, std::to_string(count), VEXA_CONTEXT});
  return name;
}
