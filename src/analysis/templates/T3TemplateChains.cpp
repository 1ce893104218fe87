#include "analysis/templates/T3TemplateChains.h"

#include <vector>

#include "analysis/templates/T3TemplateMerge.h"
#include "frontend/T3Lists.h"
#include "support/ModuleCaches.h"
#include "support/NumberMap.h"

namespace {
// The first link of each definition's chain, and the lengths of the links whose templates have a parameter.
NumberMap<T3ChainLink>& g_links = *new NumberMap<T3ChainLink>;
NumberMap<size_t>& g_lengths = *new NumberMap<size_t>;
const ModuleCache links{[] {
                          g_links.clear();
                          g_lengths.clear();
                        },
                        ModuleCache::Holds::ForTree};

void AddLink(T3TemplateDef* modifying, T3TemplateDecl* modified, T3ChainLink& link) {
  if (!modified->fpl->is<_T3FormalPar>()) return;
  link = {modifying, modified, link.length + 1};
  for (auto* formal : Items<_T3FormalPar>(modified->fpl)) g_lengths[formal->number] = link.length;
}
}  // namespace

T3ChainLink FirstChainLink(T3TemplateDef* definition) {
  std::vector<T3TemplateDef*> way;
  T3ChainLink link;
  for (T3TemplateDef* at = definition;;) {
    const auto [known, is_new] = g_links.TryEmplace(at->number);
    link = *known;
    if (!is_new) break;
    way.push_back(at);
    T3TemplateDecl* modified = ModifiedTemplate(at);
    if (modified == nullptr) break;
    at = modified->definition->as<T3TemplateDef>();
  }
  for (size_t i = way.size(); i-- > 0; g_links[way[i]->number] = link)
    if (T3TemplateDecl* modified = ModifiedTemplate(way[i])) AddLink(way[i], modified, link);
  return link;
}

T3ChainLink NextChainLink(const T3ChainLink& link) {
  return FirstChainLink(link.modified->definition->as<T3TemplateDef>());
}

size_t ChainLengthAt(T3Tree_Node* formal) {
  const size_t* length = g_lengths.Find(formal->number);
  return length == nullptr ? 0 : *length;
}

T3Tree_Node* GivenAlongChain(T3TemplateDef* definition, T3Tree_Node* formal) {
  T3ChainLink link = FirstChainLink(definition);
  const size_t length = ChainLengthAt(formal);
  while (link.length > length && length > 0) link = NextChainLink(link);
  if (length == 0 || link.length < length) return nullptr;
  for (const auto [at, actual] :
       Pairs<_T3FormalPar, T3ActualPar>(link.modified->fpl, ActualsForModified(link.modifying)))
    if (at == formal) return actual->expression;
  return nullptr;
}
