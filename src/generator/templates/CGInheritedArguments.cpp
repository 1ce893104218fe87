#include "generator/templates/CGInheritedArguments.h"

#include <algorithm>

#include "analysis/templates/T3TemplateChains.h"
#include "analysis/templates/T3TemplateMerge.h"
#include "analysis/types/T3Types.h"
#include "analysis/walk/T3Subtree.h"
#include "generator/expressions/CGCalls.h"
#include "generator/expressions/CGExpressionParts.h"
#include "generator/templates/CGTemplate.h"
#include "generator/templates/CGTemplateParts.h"
#include "generator/text/CLocations.h"
#include "generator/text/T3CodeDefs.h"

namespace cgtemplate {
namespace {
using Visit = std::function<bool(T3Tree_Node*)>;

std::vector<_T3FormalPar*> FormalsOf(T3TemplateDecl* decl) {
  std::vector<_T3FormalPar*> formals;
  for (auto* at : Items<_T3FormalPar>(decl->fpl)) formals.push_back(at);
  return formals;
}

// The links along a chain, up to the one behind which `rest` of them are left.
std::vector<T3ChainLink> ChainOf(T3TemplateDef* definition, size_t rest = 0) {
  std::vector<T3ChainLink> chain;
  for (T3ChainLink link = FirstChainLink(definition); link.length > rest; link = NextChainLink(link))
    chain.push_back(link);
  return chain;
}

void VisitFree(T3Tree_Node* root, const T3NodeSet& bound, const Visit& visit);

void VisitArguments(T3Tree_Node* actuals, const T3NodeSet& bound, const Visit& visit) {
  for (auto* at : Items<T3ActualPar>(actuals)) VisitFree(at->expression, bound, visit);
}

void VisitModification(T3TemplateDef* definition, T3NodeSet bound, const Visit& visit) {
  VisitFree(definition->modifies->as<T3TemplateReference>()->reference, bound, visit);
  for (const T3ChainLink& link : ChainOf(definition)) {
    if (link.modifying != definition) VisitArguments(ActualsForModified(link.modifying), bound, visit);
    for (_T3FormalPar* formal : FormalsOf(link.modified)) bound.insert(formal);
  }
  VisitFree(definition->constraint, bound, visit);
}

void VisitFree(T3Tree_Node* root, const T3NodeSet& bound, const Visit& visit) {
  ForEachInSubtree(root, [&](T3Tree_Node* node) {
    auto* definition = node->try_as<T3TemplateDef>();
    if (definition != nullptr && definition->modifies->is<T3TemplateReference>()) {
      VisitModification(definition, bound, visit);
      return false;
    }
    if (node->is<T3Identifier>() && T3Is<_T3FormalPar>(Def(node)) && bound.count(Def(node)) != 0)
      return false;
    return visit(node);
  });
}

// Whether a name or a call is an argument of the functions that are being written already.
bool IsPassed(T3Tree_Node* node) {
  if (auto* name = node->try_as<T3Identifier>()) return name->cold().vexa_id_place == kPassedToTemplate;
  auto* call = node->try_as<T3Parameterization>();
  return call != nullptr && call->cold().vexa_id_place == kPassedToTemplate;
}

Visit AddParameters(T3NodeSet& used) {
  return [&used](T3Tree_Node* node) {
    if (IsPassed(node)) return false;
    if (node->is<T3Identifier>() && T3Is<_T3FormalPar>(Def(node))) used.insert(Def(node));
    return true;
  };
}

bool UsesAny(const T3NodeSet& used, T3TemplateDecl* decl) {
  for (_T3FormalPar* formal : FormalsOf(decl))
    if (used.count(formal) != 0) return true;
  return false;
}

// The number of links behind the last one whose parameters are read.
size_t LengthBehind(T3TemplateDef* definition, const T3NodeSet& used) {
  size_t rest = FirstChainLink(definition).length;
  for (T3Tree_Node* formal : used)
    if (const size_t length = ChainLengthAt(formal)) rest = std::min(rest, length - 1);
  return rest;
}

// To the parameters that are read those which are read to fill their vectors.
void AddParametersOfVectors(T3NodeSet& used, const std::vector<T3ChainLink>& chain) {
  for (size_t i = chain.size(); i > 0; --i) {
    const T3ChainLink& link = chain[i - 1];
    if (!UsesAny(used, link.modified)) continue;
    T3Tree_Node* actuals = ActualsForModified(link.modifying);
    VisitArguments(actuals, {}, AddParameters(used));
    // It shares the vector of what modifies it.
    if (actuals == nullptr && i > 1 && chain[i - 2].modified->definition == link.modifying)
      for (_T3FormalPar* formal : FormalsOf(chain[i - 2].modified)) used.insert(formal);
  }
}

// What a parameter means for which nothing is given.
std::string DefaultArgument(_T3FormalPar* formal, CFunction& function) {
  auto* typed = formal->try_as<_T3TypedFormal>();
  T3Tree_Node* value = typed == nullptr ? nullptr : typed->default_value;
  if (!T3Is<T3TemplateDef>(value) && (!T3Is<_T3Expression>(value) || value->is<T3NoExpression>()))
    return LUMO_VALUE_DEFAULT_C;
  return CGArgument(cg::Operands({value}), 0, formal, function);
}

std::string Vector(T3TemplateDecl* decl, T3Tree_Node* actuals, CFunction& function) {
  std::vector<std::string> arguments;
  const cg::Operands given = GivenActuals(actuals);
  for (_T3FormalPar* formal : FormalsOf(decl)) {
    const size_t at = arguments.size();
    std::string argument = LUMO_VALUE_DEFAULT_C;
    if (at < given.All().size()) {
      // They stand outside of the definition, and may be evaluated for one around it as well.
      ResetLocations(given.All()[at]);
      argument = CGArgument(given, at, formal, function);
    }
    arguments.push_back(argument == LUMO_VALUE_DEFAULT_C ? DefaultArgument(formal, function) : argument);
  }
  std::string array = function.declareArray(LUMO_VALUE_T, arguments.size() + 1);
  arguments.emplace_back(C_NULL);
  for (size_t i = 0; i < arguments.size(); ++i)
    function.assign(array + "[" + std::to_string(i) + "]", arguments[i]);
  return array;
}
}  // namespace

void ForEachFreeNode(T3Tree_Node* constraint, const std::function<bool(T3Tree_Node*)>& visit) {
  VisitFree(constraint, {}, visit);
}

InheritedArguments::InheritedArguments(T3TemplateDef* definition, std::string_view own, CFunction& function) {
  if (FirstChainLink(definition).length == 0) return;
  T3NodeSet used;
  VisitFree(definition->constraint, {}, AddParameters(used));
  const std::vector<T3ChainLink> chain = ChainOf(definition, LengthBehind(definition, used));
  AddParametersOfVectors(used, chain);
  std::string vector(own);
  for (const T3ChainLink& link : chain) {
    if (!UsesAny(used, link.modified)) continue;
    T3Tree_Node* actuals = ActualsForModified(link.modifying);
    if (actuals != nullptr || vector.empty()) vector = Vector(link.modified, actuals, function);
    for (_T3FormalPar* formal : FormalsOf(link.modified)) {
      before_.emplace_back(formal, HasRTSLocation(formal) ? RTSLocation(formal) : "");
      DeclareRTSLocation(formal, vector + "[" + std::to_string(formal->attr().vexa_index) + "]");
    }
  }
}

InheritedArguments::~InheritedArguments() {
  for (auto at = before_.rbegin(); at != before_.rend(); ++at) {
    ResetLocation(at->first);
    if (!at->second.empty()) DeclareRTSLocation(at->first, at->second);
  }
}
}  // namespace cgtemplate
