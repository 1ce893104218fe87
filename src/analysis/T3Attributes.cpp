// Gives each array type and each type that is nested in another a declaration of its own, so that analysis
// and generated code can name it.
#include "analysis/T3Stages.h"
#include "frontend/T3GlobalASTNodes.h"

namespace {

/// Numbers the declarations of arrays over the whole run.
long array_counter = 0;

T3Tree_Node* ArrayDeclaration(T3ArrayType* array) {
  const std::string name = "vexa_expl_array" + std::to_string(++array_counter);
  auto* decl = gT3AST.mT3TypeDecl(NoPosition, _sgT3NoDecl(), gIdents.MakeIdent(name), _sgT3NoWith(), array);
  decl->implicit_type_decl = true;
  array->explicit_type = decl;
  return decl;
}

}  // namespace

void ExplicifyArrayTypes(T3Tree_Node* module) {
  T3NodeList arrays;
  // Children first: inner dimensions get their declaration before outer ones.
  gT3AST.TraverseT3TreeBU(module->as<T3Module>()->definition_part, [&arrays](T3Tree_Node* node) {
    if (node->is<T3ArrayType>()) arrays.push_back(node);
  });
  T3Tree_Node** end = &module->as<T3Module>()->definition_part;
  while (auto* decl = (*end)->try_as<_T3Decl>()) end = &decl->next;
  for (T3Tree_Node* array : arrays) {
    T3Tree_Node* rest = *end;
    auto* decl = ArrayDeclaration(array->as<T3ArrayType>())->as<T3TypeDecl>();
    decl->next = rest;
    *end = decl;
    end = &decl->next;
  }
}

namespace {

/// Moves nested types into declarations of their own, hung behind the module's declarations, until no
/// declared type holds anything but references.
class InlinedTypes {
 public:
  void Declaration(T3TypeDecl* decl) { Body(decl->type, gIdents.GetCStr(decl->name)); }
  T3NodeList made;

 private:
  static bool MustMove(T3Tree_Node* type) {
    return !type->is<T3TypeReference>() && !type->is<_T3BuiltinType>() && !type->is<T3NoType>();
  }

  T3Tree_Node* ExplType(T3Tree_Node* type, const std::string& name) {
    const tPosition position = type->as<_T3Type>()->position;
    tIdent id = gIdents.MakeIdent(name);
    if (auto* array = type->try_as<T3ArrayType>(); array != nullptr && array->explicit_type != nullptr) {
      id = array->explicit_type->as<T3TypeDecl>()->name;
    } else {
      made.push_back(gT3AST.mT3TypeDecl(position, _sgT3NoDecl(), id, _sgT3NoWith(), type));
    }
    return gT3AST.mT3TypeReference(position, gT3AST.mT3Identifier(position, id));
  }

  void Body(T3Tree_Node* type, const std::string& name) {
    if (auto* structured = type->try_as<_T3StructuredType>()) {
      for (auto* field = structured->body->try_as<T3FieldType>(); field != nullptr;
           field = field->next->try_as<T3FieldType>())
        if (MustMove(field->type)) field->type = ExplType(field->type, name + "_expl_" + gIdents.GetCStr(field->name));
    } else if (auto* homogeneous = type->try_as<_T3HomogeneousType>()) {
      if (MustMove(homogeneous->type)) homogeneous->type = ExplType(homogeneous->type, name + "_expl_agg");
    } else if (auto* subtype = type->try_as<T3SubType>()) {
      if (MustMove(subtype->parent)) subtype->parent = ExplType(subtype->parent, name + "_expl_sub");
    }
  }
};

void CollectTypeDecls(T3Tree_Node* list, T3NodeList& decls) {
  for (auto* decl = list->try_as<_T3Decl>(); decl != nullptr; decl = decl->next->try_as<_T3Decl>()) {
    if (decl->is<T3TypeDecl>()) decls.push_back(decl);
    if (auto* group = decl->try_as<T3GroupDecl>()) CollectTypeDecls(group->body, decls);
  }
}

}  // namespace

void ExplicifyInlinedTypes(T3Tree_Node* root) {
  auto* module = root->as<T3Builtin>()->module->as<T3Module>();
  T3NodeList decls;
  CollectTypeDecls(module->definition_part, decls);
  InlinedTypes inlined;
  for (T3Tree_Node* decl : decls) inlined.Declaration(decl->as<T3TypeDecl>());
  // What was moved may hold nested types itself.
  for (size_t i = 0; i < inlined.made.size(); ++i) inlined.Declaration(inlined.made[i]->as<T3TypeDecl>());
  T3Tree_Node** end = &module->definition_part;
  while (auto* decl = (*end)->try_as<_T3Decl>()) end = &decl->next;
  for (T3Tree_Node* decl : inlined.made) {
    decl->as<T3TypeDecl>()->next = *end;
    *end = decl;
    end = &decl->as<T3TypeDecl>()->next;
  }
}
