// Declarations for types that have none: array types, and types written inside other types.
#include <string>
#include <unordered_set>
#include <vector>

#include "frontend/T3Attributes.h"
#include "frontend/T3GlobalASTNodes.h"
#include "frontend/T3TreeFields.h"

namespace {
// The number of the last array type of the run.
long array_counter = 0;

T3TypeDecl* ImplicitDecl(const tPosition& position, tIdent name, T3Tree_Node* type) {
  auto* decl = gT3AST.mT3TypeDecl(position, _sgT3NoDecl(), name, _sgT3NoWith(), type);
  decl->implicit_type_decl = true;
  return decl;
}

// Calls for each array type below a declaration, inner ones first; what follows the declaration is left out.
struct Step {
  T3Tree_Node* node;
  bool children_done;
};

template <class Call>
void ForArrayTypesBelow(T3Tree_Node* decl, const Call& call) {
  std::vector<Step> stack{{decl, false}};
  // A node without children is no array type.
  const auto push = [&stack](T3Tree_Node* node) {
    if (node == nullptr) return;
    const T3ChildFields& fields = ChildFieldsOf(node);
    if (!fields.children.empty() || fields.next.info != nullptr) stack.push_back({node, false});
  };
  while (!stack.empty()) {
    const Step step = stack.back();
    stack.pop_back();
    if (step.children_done) {
      call(step.node->as<T3ArrayType>());
      continue;
    }
    const T3ChildFields& fields = ChildFieldsOf(step.node);
    if (step.node != decl && fields.next.info != nullptr) push(T3ChildField(step.node, fields.next));
    if (step.node->is<T3ArrayType>()) stack.push_back({step.node, true});
    for (auto child = fields.children.rbegin(); child != fields.children.rend(); ++child)
      push(T3ChildField(step.node, *child));
  }
}

// A declaration is made behind all that stands in it, and behind the declaration before it; where that does
// not hold, it is looked through.
bool MayHaveArrayTypes(uint32_t before, uint32_t number) {
  return number < before || gT3AST.MadeArrayTypes(before, number);
}

// Gives an array type its declaration, which is put into the chain.
void ExplicifyArrayType(T3ArrayType* array, std::vector<T3TypeDecl*>& implicit_array_types) {
  if (array->explicit_type != nullptr) return;
  const tIdent name = gIdents.MakeIdent("vexa_expl_array" + std::to_string(++array_counter));
  T3TypeDecl* decl = ImplicitDecl(NoPosition, name, array);
  array->explicit_type = decl;
  implicit_array_types.push_back(decl);
}

// Links the new declarations in front of the place to which `link` points; returns the link behind them.
T3Tree_Node** InsertAll(T3Tree_Node** link, const std::vector<T3TypeDecl*>& decls) {
  T3Tree_Node* rest = *link;
  for (T3TypeDecl* decl : decls) {
    *link = decl;
    link = &decl->next;
  }
  *link = rest;
  return link;
}

// The names of a module's declarations, so that none is given twice.
class NamesOfModule {
 public:
  explicit NamesOfModule(T3Module* module) : module_(module) {}
  /// The name, or where it is taken the first free one of those with a number behind it.
  tIdent Free(const std::string& name);

 private:
  bool IsTaken(tIdent name);
  void AddDeclared();

  T3Module* module_;
  std::vector<tIdent> given_;
  // Gathered when a name comes up that was seen before: most are new to the whole run.
  std::unordered_set<tIdent> taken_;
};

void NamesOfModule::AddDeclared() {
  std::vector<T3Tree_Node*> rest{module_->definition_part};
  while (!rest.empty()) {
    T3Tree_Node* decl = rest.back();
    rest.pop_back();
    for (auto* at : Items<_T3Decl>(decl)) {
      taken_.insert(at->name);
      if (auto* group = at->try_as<T3GroupDecl>()) rest.push_back(group->body);
    }
  }
}

bool NamesOfModule::IsTaken(tIdent name) {
  if (taken_.empty()) AddDeclared();
  taken_.insert(given_.begin(), given_.end());
  given_.clear();
  return taken_.contains(name);
}

tIdent NamesOfModule::Free(const std::string& name) {
  std::string candidate = name;
  for (long number = 1;; ++number) {
    const tIdent last = gIdents.MaxIdent();
    const tIdent id = gIdents.MakeIdent(candidate);
    if (id > last || !IsTaken(id)) {
      given_.push_back(id);
      return id;
    }
    candidate = name + '_' + std::to_string(number);
  }
}

// The declarations that nested types of one declaration of the module get.
class InlinedTypes {
 public:
  explicit InlinedTypes(NamesOfModule& names) : names_(names) {}
  /// Works through a declaration, and a group through all that stand in it.
  void Explicify(T3Tree_Node* decl);
  const std::vector<T3TypeDecl*>& Decls() const { return explicit_inlined_types_; }

 private:
  // A type whose parts are still to be looked at, and the name from which theirs are made.
  struct Work {
    T3Tree_Node* type;
    tIdent name;
  };
  void ExplTypeParts(const Work& work);
  T3Tree_Node* ExplType(T3Tree_Node* type, const std::string& name);

  NamesOfModule& names_;
  std::vector<T3TypeDecl*> explicit_inlined_types_;
  std::vector<Work> work_;
};

std::string NameOf(tIdent name) {
  return std::string(gIdents.GetString(name));
}

std::string ExplNameForFieldType(tIdent decl, tIdent field) {
  return NameOf(decl) + "_expl_" + NameOf(field);
}

std::string ExplNameForAggType(tIdent decl) {
  return NameOf(decl) + "_expl_agg";
}

std::string ExplNameForNestedSubType(tIdent decl) {
  return NameOf(decl) + "_expl_sub";
}

T3Tree_Node* TypeReferenceTo(tIdent name, const tPosition& position) {
  return gT3AST.mT3TypeReference(position, gT3AST.mT3Identifier(position, name));
}

// An array has its declaration already. Any other type gets one, whose parts are looked at later.
T3Tree_Node* InlinedTypes::ExplType(T3Tree_Node* type, const std::string& name) {
  const tPosition position = type->as<_T3Type>()->position;
  if (auto* array = type->try_as<T3ArrayType>(); array != nullptr && array->explicit_type != nullptr)
    return TypeReferenceTo(array->explicit_type->as<T3TypeDecl>()->name, position);
  const tIdent id = names_.Free(name);
  explicit_inlined_types_.push_back(ImplicitDecl(position, id, type));
  work_.push_back({type, id});
  return TypeReferenceTo(id, position);
}

// A reference and a built-in type need no declaration.
bool IsNested(T3Tree_Node* type) {
  return !type->is<T3TypeReference>() && !type->is<_T3BuiltinType>() && !type->is<T3NoType>();
}

// A constructor that is limited where it is written has the subtype's declaration.
bool IsConstructor(T3Tree_Node* type) {
  return type->is<_T3StructuredType>() || (type->is<_T3HomogeneousType>() && !type->is<T3ArrayType>());
}

// What ASN.1 has is known by one name to the C that is generated for it, whether it is constrained or not.
bool ComesFromAsn1(T3Tree_Node* type) {
  return type->HasCold() && type->as<_T3Type>()->cold().inlined;
}

std::string ExplNameForElement(tIdent decl, T3Tree_Node* element) {
  return element->is<T3SubType>() && !ComesFromAsn1(element) ? ExplNameForNestedSubType(decl)
                                                             : ExplNameForAggType(decl);
}

void InlinedTypes::ExplTypeParts(const Work& work) {
  T3Tree_Node* type = work.type;
  if (auto* subtype = type->try_as<T3SubType>()) {
    type = subtype->parent;
    if (IsNested(type) && !IsConstructor(type))
      subtype->parent = ExplType(type, ExplNameForNestedSubType(work.name));
  }
  if (auto* aggregate = type->try_as<_T3HomogeneousType>()) {
    if (IsNested(aggregate->type))
      aggregate->type = ExplType(aggregate->type, ExplNameForElement(work.name, aggregate->type));
  } else if (auto* structured = type->try_as<_T3StructuredType>()) {
    for (auto* node : Items<T3FieldType>(structured->body)) {
      if (IsNested(node->type))
        node->type = ExplType(node->type, ExplNameForFieldType(work.name, node->name));
    }
  }
}

void InlinedTypes::Explicify(T3Tree_Node* decl) {
  std::vector<T3Tree_Node*> rest{decl};
  while (!rest.empty()) {
    T3Tree_Node* next = rest.back();
    rest.pop_back();
    if (!next->is<_T3Decl>()) continue;
    if (next != decl) rest.push_back(next->as<_T3Decl>()->next);
    if (auto* group = next->try_as<T3GroupDecl>()) rest.push_back(group->body);
    auto* type_decl = next->try_as<T3TypeDecl>();
    if (type_decl == nullptr) continue;
    type_decl->implicit_type_decl = false;
    work_.push_back({type_decl->type, type_decl->name});
    while (!work_.empty()) {
      const Work work = work_.back();
      work_.pop_back();
      ExplTypeParts(work);
    }
  }
}
}  // namespace

void ExplicifyArrayTypes(T3Tree_Node* module) {
  T3Tree_Node** link = &module->as<T3Module>()->definition_part;
  uint32_t before = 0;
  while ((*link)->is<_T3Decl>()) {
    const uint32_t number = (*link)->number;
    if (MayHaveArrayTypes(before, number)) {
      std::vector<T3TypeDecl*> implicit_array_types;
      ForArrayTypesBelow(*link, [&](T3ArrayType* array) { ExplicifyArrayType(array, implicit_array_types); });
      link = InsertAll(link, implicit_array_types);
    }
    before = number;
    link = &(*link)->as<_T3Decl>()->next;
  }
}

void ExplicifyInlinedTypes(T3Tree_Node* root) {
  T3Tree_Node* module = root->is<T3Builtin>() ? root->as<T3Builtin>()->module : root;
  for (; module->is<T3Module>(); module = module->as<T3Module>()->next) {
    T3Tree_Node** link = &module->as<T3Module>()->definition_part;
    NamesOfModule names(module->as<T3Module>());
    while ((*link)->is<_T3Decl>()) {
      InlinedTypes types(names);
      types.Explicify(*link);
      link = InsertAll(link, types.Decls());
      link = &(*link)->as<_T3Decl>()->next;
    }
  }
}
