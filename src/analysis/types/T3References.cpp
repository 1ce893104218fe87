// The resolution of references.
#include "analysis/types/T3References.h"

#include "analysis/names/T3Names.h"
#include "analysis/types/T3AnyTypes.h"
#include "analysis/types/T3Types.h"
#include "driver/diagnostics/T3Error.h"
#include "frontend/T3GlobalASTNodes.h"

namespace {
void SetOwnType(_T3Reference* reference, T3Tree_Node* entity) {
  const T3TypeViews views = TypeViewsOf(entity);
  auto& attributes = reference->attr();
  attributes.local_type_def = views.local;
  attributes.base_type_def = views.base;
}

void SetMeaning(_T3Reference* reference, T3Tree_Node* def, T3Tree_Node* typed) {
  reference->attr().def = def;
  SetOwnType(reference, typed);
}

void Fail(_T3Reference* reference) {
  SetMeaning(reference, _sgT3NoDecl(true), gT3ErrorType);
}

// A local name is known only behind its declaration; that of a group means nothing by itself.
T3Tree_Node* UsableHere(T3Tree_Node* def, T3Identifier* use) {
  if (def == nullptr) return _sgT3NoDecl(true);
  const bool is_usable = !def->is<T3GroupDecl>() && DefUsePositionsConsistent(def, use);
  if (!def->is<_T3Decl>() || is_usable) return def;
  vexa_filtered_error(ERR_undefined, use->position, use->id);
  return _sgT3NoDecl(true);
}

void ResolveIdentifier(T3Identifier* identifier) {
  T3Tree_Node* env = identifier->place == nullptr ? nullptr : identifier->place->env;
  if (!T3Is<T3MapEnv>(env)) return Fail(identifier);
  T3Tree_Node* def = UsableHere(NewIdentifyId(env, identifier), identifier);
  if (def->is<T3NoDecl>()) return Fail(identifier);
  SetMeaning(identifier, def, def);
}

// True when the scopes know a qualified name: then the look-up has told what is wrong with it.
bool IsKnownInModule(T3Tree_Node* env, T3Qualifier* qualifier, tIdent module) {
  T3NodeSet found;
  CollectDecls(env, qualifier->id, module == qualifier->place->vexa_module_name ? 0 : module, found);
  return !found.empty();
}

// The member of a module that a qualifier names. The module is named by an identifier alone.
void ResolveInModule(T3Qualifier* qualifier, T3Module* named) {
  T3Tree_Node* env = qualifier->place == nullptr ? nullptr : qualifier->place->env;
  if (!T3Is<T3MapEnv>(env)) return Fail(qualifier);
  auto* base = qualifier->base->try_as<T3Identifier>();
  const tIdent module = base != nullptr ? base->id : named->name;
  T3Tree_Node* def = base != nullptr ? IdentifyQualified(env, qualifier) : nullptr;
  const bool is_group = T3Is<T3GroupDecl>(def);
  const bool found = def != nullptr && !def->is<T3NoDecl>();
  const bool usable =
      found && !is_group && (!def->is<_T3Decl>() || DefUsePositionsConsistent(def, qualifier));
  if (usable) return SetMeaning(qualifier, def, def);
  if (base == nullptr || found || !IsKnownInModule(env, qualifier, module))
    vexa_filtered_error(ERR_undefined_with_mod, qualifier->position, module, qualifier->id);
  Fail(qualifier);
}

// A field of `anytype` is the name of a type, alone or qualified by its module.
void ResolveInAnyType(T3Qualifier* qualifier, tIdent module) {
  if (qualifier->place == nullptr || !T3Is<T3MapEnv>(qualifier->place->env)) return Fail(qualifier);
  T3Tree_Node* named =
      module == NoIdent ? ModuleInAnyType(qualifier, qualifier->id, qualifier->position) : nullptr;
  if (named != nullptr) {
    qualifier->attr().module_name_in_anytype_qualification = true;
    return SetMeaning(qualifier, named, gT3AnyModuleType);
  }
  T3Tree_Node* member = AnyTypeMember(qualifier, qualifier->id, module, qualifier->position);
  if (!member->is<T3ErrorType>()) return SetMeaning(qualifier, member, member);
  ReportNoAnyTypeMember(qualifier, qualifier->id, module, qualifier->position);
  Fail(qualifier);
}

// The member of a value, template or signature that a qualifier names.
void ResolveField(T3Qualifier* qualifier, T3Tree_Node* base) {
  T3Tree_Node* field = gT3ErrorType;
  if (base->is<_T3StructuredType>() || base->is<T3SignatureType>())
    field = FindName(base, qualifier->id, nullptr);
  if (field->is<T3ErrorType>()) {
    vexa_filtered_error(ERR_type_unknown_field, qualifier->position, qualifier->id);
    return SetMeaning(qualifier, gT3ErrorType, gT3ErrorType);
  }
  SetMeaning(qualifier, field, field);
}

void ResolveQualifier(T3Qualifier* qualifier) {
  auto* outer = qualifier->base->is<_T3Reference>() ? qualifier->base->as<_T3Reference>() : nullptr;
  if (outer == nullptr) return Fail(qualifier);
  auto* nested = qualifier->base->try_as<T3Qualifier>();
  if (nested != nullptr && nested->attr().module_name_in_anytype_qualification)
    return ResolveInAnyType(qualifier, nested->id);
  if (T3Is<T3Module>(outer->attr().def)) return ResolveInModule(qualifier, outer->attr().def->as<T3Module>());
  T3Tree_Node* base = GetAddressBaseType(outer->attr().base_type_def);
  if (base->is<T3ErrorType>()) return SetMeaning(qualifier, gT3ErrorType, gT3ErrorType);
  if (base->is<T3AnyType>()) return ResolveInAnyType(qualifier, NoIdent);
  ResolveField(qualifier, base);
}

void ResolveSubscription(T3Subscription* subscription) {
  auto* outer = subscription->base->is<_T3Reference>() ? subscription->base->as<_T3Reference>() : nullptr;
  if (outer == nullptr) return Fail(subscription);
  T3Tree_Node* base = GetAddressBaseType(outer->attr().base_type_def);
  if (base->is<T3NoType>()) vexa_filtered_error(ERR_type_na, subscription->position);
  SetMeaning(subscription, outer->attr().def, IsStringType(base) ? base : ElementType(base));
}

// An object identifier goes on from a value.
void ResolveLonger(T3ObjIdQualifier* qualifier) {
  auto* outer = qualifier->base->is<_T3Reference>() ? qualifier->base->as<_T3Reference>() : nullptr;
  T3Tree_Node* def = outer == nullptr ? _sgT3NoDecl(true) : outer->attr().def;
  if (T3Is<T3TypeDecl>(BehindImport(def)) || def->is<T3Module>()) {
    vexa_filtered_error(ERR_type_na, qualifier->position);
    return Fail(qualifier);
  }
  SetMeaning(qualifier, def, gT3ObjectIdentifierType);
}

// A type that is given by a part of what has the type comes by again: until all is known it finds nothing.
void ResolveOne(_T3Reference* reference) {
  auto& attributes = reference->attr();
  attributes.def = _sgT3NoDecl(true);
  attributes.local_type_def = gT3NoType;
  attributes.base_type_def = gT3NoType;
  if (auto* identifier = reference->try_as<T3Identifier>()) return ResolveIdentifier(identifier);
  if (auto* qualifier = reference->try_as<T3Qualifier>()) return ResolveQualifier(qualifier);
  if (auto* subscription = reference->try_as<T3Subscription>()) return ResolveSubscription(subscription);
  auto* call = reference->try_as<T3Parameterization>();
  if (call != nullptr && call->base->is<_T3Reference>()) {
    auto& base = call->base->as<_T3Reference>()->attr();
    call->attr().fpl = FormalParametersOf(base.def);
    reference->attr().def = base.def;
    reference->attr().local_type_def = base.local_type_def;
    reference->attr().base_type_def = base.base_type_def;
    return;
  }
  if (auto* longer = reference->try_as<T3ObjIdQualifier>()) return ResolveLonger(longer);
  SetMeaning(reference, _sgT3NoDecl(true), gT3NoType);
}
}  // namespace

T3ReferenceChain::T3ReferenceChain(T3Tree_Node* reference) {
  const auto for_links = [reference](const auto& call) {
    T3Tree_Node* at = reference;
    for (call(at); at->is<_T3Qualification>(); call(at)) at = at->as<_T3Qualification>()->base;
  };
  for_links([this](T3Tree_Node*) { ++count_; });
  if (!IsShort()) long_.resize(count_);
  T3Tree_Node** link = (IsShort() ? short_.data() : long_.data()) + count_;
  for_links([&link](T3Tree_Node* at) { *--link = at; });
}

void ResolveReference(T3Tree_Node* reference) {
  auto* outermost = reference->as<_T3Reference>();
  if (outermost->attr().def != nullptr) return;
  if (!reference->is<_T3Qualification>()) return ResolveOne(outermost);
  for (T3Tree_Node* at : T3ReferenceChain(reference)) {
    if (!at->is<_T3Reference>() || at->as<_T3Reference>()->attr().def != nullptr) continue;
    ResolveOne(at->as<_T3Reference>());
  }
}

T3Tree_Node* Def(T3Tree_Node* reference) {
  if (!T3Is<_T3Reference>(reference)) return _sgT3NoDecl(true);
  auto* own = static_cast<_T3Reference*>(reference);
  if (T3Tree_Node* known = own->attr().def) return known;
  ResolveReference(reference);
  return own->attr().def;
}

// A module in the midst of a field of `anytype` is no name by itself, and so no module that names stand
// behind.
bool IsName(T3Tree_Node* expression) {
  if (expression->is<T3Identifier>()) return true;
  auto* qualifier = expression->try_as<T3Qualifier>();
  return qualifier != nullptr && qualifier->base->is<T3Identifier>() && T3Is<T3Module>(Def(qualifier->base));
}

bool IsPartOfSomething(T3Tree_Node* expression) {
  return expression->is<T3Subscription>() || (expression->is<T3Qualifier>() && !IsName(expression));
}

bool NamesNoValue(T3Tree_Node* expression) {
  while (!IsName(expression) && (expression->is<T3Subscription>() || expression->is<T3Qualifier>()))
    expression = expression->as<_T3Qualification>()->base;
  if (!IsName(expression)) return false;
  T3Tree_Node* def = BehindImport(Def(expression));
  return (T3Is<T3TypeDecl>(def) && !IsAsnNullType(def)) || T3Is<T3Module>(def) || T3Is<_T3FunctionDecl>(def);
}

bool NamesTemplate(T3Tree_Node* expression) {
  if (auto* call = expression->try_as<T3Parameterization>()) expression = call->base;
  T3Tree_Node* def = DefQuietly(expression);
  if (auto* variable = def == nullptr ? nullptr : def->try_as<T3VarDecl>())
    return variable->is_template_variable;
  return T3Is<T3TemplateDecl>(def) || T3Is<T3FormalTemplatePar>(def);
}

void TakeMeaning(_T3Reference* made, _T3Reference* written) {
  auto& attributes = made->attr();
  const auto& own = written->attr();
  attributes.def = own.def;
  attributes.local_type_def = own.local_type_def;
  attributes.base_type_def = own.base_type_def;
  attributes.expression_local_type = own.expression_local_type;
  attributes.expression_base_type = own.expression_base_type;
  attributes.pass1 = own.pass1;
  attributes.pass2 = own.pass2;
}

T3Tree_Node* BareLocalName(T3Tree_Node* expression) {
  auto* qualifier = expression->try_as<T3Qualifier>();
  if (qualifier == nullptr || !IsName(qualifier)) return nullptr;
  T3Tree_Node* def = Def(qualifier);
  const bool local = T3Is<_T3FormalPar>(def) || (T3Is<_T3DeclList>(def) && !def->is<_T3ImportDecl>() &&
                                                 def->as<_T3DeclList>()->attr().vexa_place > kAtModuleLevel);
  if (!local) return nullptr;
  T3Tree_Node* name = gT3AST.mT3Identifier(qualifier->position, qualifier->id);
  name->place = qualifier->place;
  name->parent = qualifier->parent;
  TakeMeaning(name->as<T3Identifier>(), qualifier);
  return name;
}

T3Tree_Node* NumberInComponent(T3Tree_Node* component) {
  auto* form = component->try_as<T3Parameterization>();
  auto* actual = form == nullptr ? nullptr : form->apl->try_as<T3ActualPar>();
  if (actual == nullptr || !form->base->is<T3Identifier>() || actual->next->is<T3ActualPar>()) return nullptr;
  T3Tree_Node* def = DefQuietly(form->base);
  if (T3Is<_T3FunctionDecl>(def) || T3Is<T3TemplateDecl>(def)) return nullptr;
  auto* definition = actual->expression->try_as<T3TemplateDef>();
  return definition == nullptr ? actual->expression : definition->constraint;
}

void LetMeanNothing(T3Tree_Node* reference) {
  for (T3Tree_Node* at : T3ReferenceChain(reference))
    if (at->is<_T3Reference>()) SetMeaning(at->as<_T3Reference>(), _sgT3NoDecl(true), gT3NoType);
}

T3Tree_Node* DefQuietly(T3Tree_Node* name) {
  if (!name->is<T3Identifier>() && !name->is<T3Qualifier>()) return _sgT3NoDecl();
  T3Tree_Node* def = name->attributes == nullptr ? nullptr : name->as<_T3Reference>()->attr().def;
  if (def != nullptr) return BehindImport(def);
  if (name->place == nullptr) return _sgT3NoDecl();
  T3Tree_Node* env = name->place->env;
  if (auto* id = name->try_as<T3Identifier>()) return BehindImport(IdentifyQuietly(env, id->id, 0));
  auto* qualifier = name->as<T3Qualifier>();
  if (!qualifier->base->is<T3Identifier>()) return _sgT3NoDecl();
  const tIdent module = qualifier->base->as<T3Identifier>()->id;
  const bool own = module == name->place->vexa_module_name;
  return BehindImport(IdentifyQuietly(env, qualifier->id, own ? 0 : module));
}
