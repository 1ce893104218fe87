// The graphs of what declarations of a module need: values and types, templates, modifications. Structured
// types may contain themselves, so that only parents of subtypes, constraints and bounds count.
#include <map>
#include <set>

#include "analysis/T3Constants.h"
#include "analysis/T3Names.h"
#include "analysis/T3Stages.h"
#include "analysis/T3Subtree.h"
#include "analysis/T3Types.h"
#include "driver/T3Error.h"

namespace {
struct Graphs {
  T3DependencyGraph constants;
  T3DependencyGraph templates;
  T3DependencyGraph modifications;
  bool modification_cycle = false;
  /// What orderDependencies answers for each module.
  std::map<T3Tree_Node*, T3NodeList, T3NodeLess> orders;
  bool orders_kept = true;
};
Graphs& g_graphs = *new Graphs;

bool IsOfModule(const T3Tree_Node* decl, const T3Tree_Node* user) {
  return decl->place != nullptr && user->place != nullptr &&
         decl->place->vexa_my_module == user->place->vexa_my_module;
}

bool IsConstantLike(T3Tree_Node* def) {
  if (auto* type = def->try_as<T3TypeDecl>()) return !T3Is<_T3BuiltinType>(type->type);
  return def->is<T3ConstDecl>() || def->is<T3ModuleParDecl>();
}

// Adds the declarations that the references of a subtree mean and that `wanted` accepts.
template <class Wanted>
void Collect(T3Tree_Node* root, T3Tree_Node* user, Wanted wanted, T3NodeSet& found) {
  if (root == nullptr) return;
  ForEachInSubtree(root, [&](T3Tree_Node* node) {
    if (node->is<T3TemplateReference>()) return false;
    if (!node->is<T3Identifier>() && !node->is<T3Qualifier>()) return true;
    T3Tree_Node* def = node->as<_T3Reference>()->attr().def;
    if (def != nullptr && def->is<_T3Decl>() && wanted(def) && IsOfModule(def, user)) found.insert(def);
    return true;
  });
}

// What a type needs: along its parents with their constraints, and its bounds.
void CollectType(T3Tree_Node* type, T3Tree_Node* user, T3NodeSet& found) {
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
  if (type->is<T3TypeReference>()) Collect(type, user, IsConstantLike, found);
}

void Enter(T3DependencyGraph& graph, T3Tree_Node* decl, const T3NodeSet& needed,
           const _vexa_error_message_t& cycle) {
  graph.addDependencyNode(decl);
  for (T3Tree_Node* other : needed)
    if (graph.addDependency(decl, other)) vexa_filtered_error(cycle, PositionOf(other));
}

void EnterConstant(T3Tree_Node* decl) {
  T3NodeSet needed;
  if (auto* type = decl->try_as<T3TypeDecl>()) CollectType(type->type, decl, needed);
  if (decl->is<_T3InstanceValueDecl>()) {
    CollectType(decl->as<_T3InstanceValueDecl>()->type, decl, needed);
    Collect(decl->as<_T3InstanceValueDecl>()->value, decl, IsConstantLike, needed);
  }
  Enter(g_graphs.constants, decl, needed, ERR_cycle_const);
}

void EnterTemplate(T3TemplateDecl* decl) {
  T3NodeSet needed;
  Collect(
      decl->definition, decl, [](T3Tree_Node* def) { return def->is<T3TemplateDecl>(); }, needed);
  Enter(g_graphs.templates, decl, needed, ERR_cycle_template);
  auto* definition = decl->definition->try_as<T3TemplateDef>();
  auto* modifies = definition == nullptr ? nullptr : definition->modifies->try_as<T3TemplateReference>();
  if (modifies == nullptr) return;
  T3Tree_Node* modified = Def(modifies->reference);
  if (!T3Is<T3TemplateDecl>(modified) || !g_graphs.modifications.addDependency(decl, modified)) return;
  modifies->attr().cycle_in_template_modifies_definition = true;
  g_graphs.modification_cycle = true;
  vexa_filtered_error(ERR_cycle_modifies, modifies->position);
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
  g_graphs.modifications.Clear();
  g_graphs.modification_cycle = false;
}

void EnterDependencies(T3Tree_Node* decl) {
  g_graphs.orders_kept = false;
  if (decl->is<T3TypeDecl>() || decl->is<T3ConstDecl>() || decl->is<T3ModuleParDecl>()) EnterConstant(decl);
  if (auto* definition = decl->try_as<T3TemplateDecl>()) EnterTemplate(definition);
}

T3NodeList orderDependencies(T3Tree_Node* module) {
  KeepOrders();
  const auto kept = g_graphs.orders.find(module);
  return kept == g_graphs.orders.end() ? T3NodeList() : kept->second;
}

bool TemplateCyclesFound() {
  return g_graphs.modification_cycle;
}
