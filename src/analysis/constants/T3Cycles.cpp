// The graphs of what declarations of a module need: values and types, templates, modifications. Structured
// types may contain themselves, so that only parents of subtypes, constraints and bounds count; a record or a
// set in whose fields each value has to hold another one has no value, which a graph of its own shows.
#include <algorithm>
#include <map>
#include <set>

#include "analysis/constants/T3Dependencies.h"
#include "analysis/constants/T3Cycles.h"
#include "analysis/types/T3Constants.h"
#include "analysis/names/T3Names.h"
#include "analysis/types/T3References.h"
#include "analysis/walk/T3Stages.h"
#include "analysis/walk/T3Subtree.h"
#include "analysis/types/T3Types.h"
#include "driver/diagnostics/T3Error.h"
#include "support/NumberMap.h"

namespace {
struct Graphs {
  T3DependencyGraph constants;
  T3DependencyGraph templates;
  /// What orderDependencies answers for each module.
  std::map<T3Tree_Node*, T3NodeList, T3NodeLess> orders;
  bool orders_kept = true;
};
Graphs& g_graphs = *new Graphs;

/// The chains of template modifications, and whether one of them met itself.
T3DependencyGraph& gTemplateDeps = *new T3DependencyGraph([](T3Tree_Node* node) -> T3DependencyGraph::Index& {
  return node->as<T3TemplateDecl>()->attr().modification_index;
});
bool g_template_cycles = false;

/// Records and sets with those that each of their values holds.
NumberMap<T3DependencyGraph::Index>& g_contents_places = *new NumberMap<T3DependencyGraph::Index>;
T3DependencyGraph& gContents = *new T3DependencyGraph(
    [](T3Tree_Node* node) -> T3DependencyGraph::Index& { return g_contents_places[node->number]; });

bool IsOfModule(const T3Tree_Node* decl, const T3Tree_Node* user) {
  return decl->place != nullptr && user->place != nullptr &&
         decl->place->vexa_my_module == user->place->vexa_my_module;
}

bool IsConstantLike(T3Tree_Node* def) {
  if (auto* type = def->try_as<T3TypeDecl>()) return !T3Is<_T3BuiltinType>(type->type);
  return def->is<T3ConstDecl>() || def->is<T3ModuleParDecl>();
}

// What is no type in the place of one is told as such, and makes no cycle.
bool StandsForType(const T3Tree_Node* reference, const T3Tree_Node* def) {
  return T3Is<T3TypeReference>(reference->parent) && !def->is<T3TypeDecl>();
}

// Adds the declarations that the references of a subtree mean and that `wanted` accepts.
template <class Wanted>
void Collect(T3Tree_Node* root, T3Tree_Node* user, Wanted wanted, T3NodeList& found) {
  if (root == nullptr) return;
  ForEachInSubtree(root, [&](T3Tree_Node* node) {
    if (!node->is<T3Identifier>() && !node->is<T3Qualifier>()) return true;
    T3Tree_Node* def = node->as<_T3Reference>()->attr().def;
    if (def == nullptr || !def->is<_T3Decl>() || StandsForType(node, def)) return true;
    if (wanted(def) && IsOfModule(def, user)) found.push_back(def);
    return true;
  });
}

// Names of names are followed for a while only, so that many fields at the end of a long chain do not walk it
// again and again.
constexpr int kMostLinks = 32;

// The array that a type is, behind its names, or null.
T3ArrayType* ArrayBehind(T3Tree_Node* type, const T3Tree_Node* user) {
  for (int links = 0; links < kMostLinks && !type->is<T3ArrayType>(); ++links) {
    if (auto* subtype = type->try_as<T3SubType>()) {
      type = subtype->parent;
      continue;
    }
    auto* reference = type->try_as<T3TypeReference>();
    T3Tree_Node* decl = reference == nullptr ? nullptr : Def(reference->reference);
    if (!T3Is<T3TypeDecl>(decl) || !IsOfModule(decl, user)) return nullptr;
    type = decl->as<T3TypeDecl>()->type;
  }
  return type->try_as<T3ArrayType>();
}

// The bounds of an array may stand further down in the module, where no name has been resolved yet.
void CollectBounds(T3ArrayType* array, T3Tree_Node* user, T3NodeList& found) {
  ForEachInSubtree(array->dimension, [](T3Tree_Node* node) {
    if (node->is<_T3Reference>()) ResolveReference(node);
    return true;
  });
  const auto is_value = [](T3Tree_Node* def) { return !def->is<T3TypeDecl>() && IsConstantLike(def); };
  Collect(array->dimension, user, is_value, found);
}

// The bounds of a field that is an array. Elements with a name of their own count no further: they may be of
// a type that is under construction.
void CollectFieldBounds(T3Tree_Node* type, T3Tree_Node* user, T3NodeList& found) {
  T3ArrayType* array = ArrayBehind(type, user);
  while (array != nullptr) {
    CollectBounds(array, user, found);
    T3Tree_Node* element = array->type;
    auto* reference = element->try_as<T3TypeReference>();
    T3Tree_Node* decl = reference == nullptr ? nullptr : Def(reference->reference);
    if (T3Is<T3TypeDecl>(decl) && PositionOf(decl) == NoPosition) element = decl->as<T3TypeDecl>()->type;
    array = element->try_as<T3ArrayType>();
  }
}

// What the values of a record, a set or a union need are the bounds of their fields.
void CollectFields(T3Tree_Node* type, T3Tree_Node* user, T3NodeList& found) {
  if (!type->is<T3RecordType>() && !type->is<T3SetType>() && !type->is<T3UnionType>()) return;
  for (auto* at : Items<T3FieldType>(type->as<_T3StructuredType>()->body))
    CollectFieldBounds(at->type, user, found);
}

// What a type needs: along its parents with their constraints, and its bounds.
void CollectType(T3Tree_Node* type, T3Tree_Node* user, T3NodeList& found) {
  for (;;) {
    if (auto* array = type->try_as<T3ArrayType>()) {
      Collect(array->dimension, user, IsConstantLike, found);
      type = array->type;
      continue;
    }
    auto* subtype = type->try_as<T3SubType>();
    if (subtype == nullptr) break;
    Collect(subtype->constraint, user, IsConstantLike, found);
    if (BaseTypeDef(subtype)->is<T3ErrorType>()) return;
    type = subtype->parent;
  }
  const auto is_type = [](T3Tree_Node* def) { return def->is<T3TypeDecl>() && IsConstantLike(def); };
  if (type->is<T3TypeReference>()) Collect(type, user, is_type, found);
}

// Enters what was collected, each declaration once, in the order of the numbers.
void Enter(T3DependencyGraph& graph, T3Tree_Node* decl, T3NodeList& needed,
           const _vexa_error_message_t& cycle) {
  std::sort(needed.begin(), needed.end(), T3NodeLess());
  needed.erase(std::unique(needed.begin(), needed.end()), needed.end());
  graph.addDependencyNode(decl);
  for (T3Tree_Node* other : needed)
    if (graph.addDependency(decl, other)) vexa_filtered_error(cycle, PositionOf(other));
}

// The declaration of the record or set of which a value holds one at least, or null.
T3Tree_Node* RecordBehind(T3Tree_Node* type, const T3Tree_Node* user) {
  for (int links = 0; links < kMostLinks; ++links) {
    if (auto* subtype = type->try_as<T3SubType>()) {
      type = subtype->parent;
    } else if (auto* array = type->try_as<T3ArrayType>()) {
      type = array->type;
    } else {
      auto* reference = type->try_as<T3TypeReference>();
      T3Tree_Node* decl = reference == nullptr ? nullptr : Def(reference->reference);
      if (!T3Is<T3TypeDecl>(decl) || !IsOfModule(decl, user)) return nullptr;
      type = decl->as<T3TypeDecl>()->type;
      if (type->is<T3RecordType>() || type->is<T3SetType>()) return decl;
    }
  }
  return nullptr;
}

void EnterContents(T3TypeDecl* decl) {
  if (!decl->type->is<T3RecordType>() && !decl->type->is<T3SetType>()) return;
  T3NodeSet held;
  gContents.addDependencyNode(decl);
  for (auto* at : Items<T3FieldType>(decl->type->as<_T3StructuredType>()->body)) {
    T3Tree_Node* record = at->optional ? nullptr : RecordBehind(at->type, decl);
    if (record == nullptr || !held.insert(record).second) continue;
    if (gContents.addDependency(decl, record)) vexa_filtered_error(ERR_cycle_const, PositionOf(at));
  }
}

void EnterConstant(T3Tree_Node* decl) {
  T3NodeList needed;
  if (auto* type = decl->try_as<T3TypeDecl>()) {
    CollectType(type->type, decl, needed);
    CollectFields(type->type, decl, needed);
    EnterContents(type);
  }
  if (decl->is<_T3InstanceValueDecl>()) {
    CollectType(decl->as<_T3InstanceValueDecl>()->type, decl, needed);
    Collect(decl->as<_T3InstanceValueDecl>()->value, decl, IsConstantLike, needed);
  }
  Enter(g_graphs.constants, decl, needed, ERR_cycle_const);
}

// Names of a body or a component are declared before they are used, so that only a declaration that needs
// itself can close a cycle there.
void EnterLocal(_T3InstanceValueDecl* decl) {
  T3NodeList needed;
  Collect(
      decl->value, decl, [decl](T3Tree_Node* def) { return def == decl; }, needed);
  if (!needed.empty()) vexa_filtered_error(ERR_cycle_const, PositionOf(decl));
}

// The template that a declaration modifies, or null.
T3Tree_Node* ModifiedTemplate(T3TemplateDecl* decl) {
  auto* definition = decl->definition->try_as<T3TemplateDef>();
  auto* modifies = definition == nullptr ? nullptr : definition->modifies->try_as<T3TemplateReference>();
  T3Tree_Node* modified = modifies == nullptr ? nullptr : Def(modifies->reference);
  return T3Is<T3TemplateDecl>(modified) ? modified : nullptr;
}

// Enters a link of a chain of modifications; false when it closes a cycle, which is reported.
bool addTemplateDependency(T3TemplateDecl* decl, T3Tree_Node* modified) {
  if (!gTemplateDeps.addDependency(decl, modified)) return true;
  auto* modifies = decl->definition->as<T3TemplateDef>()->modifies->as<T3TemplateReference>();
  modifies->attr().cycle_in_template_modifies_definition = true;
  g_template_cycles = true;
  vexa_filtered_error(ERR_cycle_modifies, modifies->position);
  return false;
}

// A chain of modifications that met itself is no cycle of definitions besides.
void EnterTemplate(T3TemplateDecl* decl) {
  T3NodeList needed;
  Collect(
      decl->definition, decl, [](T3Tree_Node* def) { return def->is<T3TemplateDecl>(); }, needed);
  T3Tree_Node* modified = ModifiedTemplate(decl);
  if (modified != nullptr && !addTemplateDependency(decl, modified)) std::erase(needed, modified);
  Enter(g_graphs.templates, decl, needed, ERR_cycle_template);
}

// Code is generated after all modules have been analysed, so that each one's order is kept.
void KeepOrders() {
  if (g_graphs.orders_kept) return;
  g_graphs.orders_kept = true;
  std::set<T3Tree_Node*, T3NodeLess> begun;
  for (T3Tree_Node* decl : g_graphs.constants.Ordered()) {
    if (decl->place == nullptr || decl->place->vexa_my_module == nullptr) continue;
    T3NodeList& order = g_graphs.orders[decl->place->vexa_my_module];
    if (begun.insert(decl->place->vexa_my_module).second) order.clear();
    order.push_back(decl);
  }
}
}  // namespace

void ResetDependencies() {
  KeepOrders();
  g_graphs.constants.Clear();
  g_graphs.templates.Clear();
  gContents.Clear();
  g_contents_places.clear();
}

void resetTemplateDependencies() {
  gTemplateDeps.Clear();
  g_template_cycles = false;
}

void EnterDependencies(T3Tree_Node* decl) {
  g_graphs.orders_kept = false;
  const bool at_module_level = decl->as<_T3DeclList>()->attr().vexa_place == kAtModuleLevel;
  if (decl->is<T3TypeDecl>() || (decl->is<_T3InstanceValueDecl>() && at_module_level))
    EnterConstant(decl);
  else if (decl->is<_T3InstanceValueDecl>())
    EnterLocal(decl->as<_T3InstanceValueDecl>());
  if (auto* definition = decl->try_as<T3TemplateDecl>()) EnterTemplate(definition);
}

T3NodeList orderDependencies(T3Tree_Node* module) {
  KeepOrders();
  const auto kept = g_graphs.orders.find(module);
  return kept == g_graphs.orders.end() ? T3NodeList() : kept->second;
}

bool TemplateCyclesFound() {
  return g_template_cycles;
}
