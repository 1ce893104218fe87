#include "generator/text/CLocations.h"

#include <vector>

#include "driver/diagnostics/T3Error.h"
#include "generator/text/CGKeptTexts.h"
#include "support/ModuleCaches.h"

namespace {
struct Places {
  const char*& c_loc;
  const char*& rts_loc;
};

template <class T>
Places PlacesIn(T3Tree_Node* node) {
  auto& cold = node->as<T>()->cold();
  return {cold.c_loc, cold.rts_loc};
}

Places PlacesOf(T3Tree_Node* node, const char* function) {
  if (T3Is<_T3Expression>(node)) return PlacesIn<_T3Expression>(node);
  if (T3Is<_T3Decl>(node)) return PlacesIn<_T3Decl>(node);
  if (T3Is<_T3FormalPar>(node)) return PlacesIn<_T3FormalPar>(node);
  if (T3Is<T3TemplateDef>(node)) return PlacesIn<T3TemplateDef>(node);
  internal_error_ast("LUMOS", __LINE__, function, node);
}

using Nodes = std::vector<T3Tree_Node*>;
// The nodes that have got a location for the module, and those that have one to the end of a scope, the
// innermost scope's last; some of them more than once.
Nodes& g_in_module = *new Nodes;
Nodes& g_in_scopes = *new Nodes;
const ModuleCache located(
    [] {
      g_in_module.clear();
      g_in_scopes.clear();
    },
    ModuleCache::Holds::ForRun);

Places NewPlacesOf(T3Tree_Node* node, Nodes& located, const char* function) {
  located.push_back(node);
  return PlacesOf(node, function);
}

void ResetFrom(size_t begin, Nodes& located) {
  for (size_t i = begin; i < located.size(); ++i) ResetLocation(located[i]);
  located.resize(begin);
}

bool IsAllocated(const char* location) {
  return location != vexa_location_not_allocated;
}
}  // namespace

std::string_view CLocation(T3Tree_Node* node) {
  return PlacesOf(node, __func__).c_loc;
}

std::string_view RTSLocation(T3Tree_Node* node) {
  return PlacesOf(node, __func__).rts_loc;
}

void SetCLocation(T3Tree_Node* node, std::string_view location) {
  NewPlacesOf(node, g_in_scopes, __func__).c_loc = CGKeep(location).data();
}

void SetRTSLocation(T3Tree_Node* node, std::string_view location) {
  NewPlacesOf(node, g_in_scopes, __func__).rts_loc = CGKeep(location).data();
}

void DeclareRTSLocation(T3Tree_Node* node, std::string_view location) {
  NewPlacesOf(node, g_in_module, __func__).rts_loc = CGKeep(location).data();
}

bool HasCLocation(T3Tree_Node* node) {
  return IsAllocated(PlacesOf(node, __func__).c_loc);
}

bool HasRTSLocation(T3Tree_Node* node) {
  return IsAllocated(PlacesOf(node, __func__).rts_loc);
}

void ResetLocation(T3Tree_Node* node) {
  const Places places = PlacesOf(node, __func__);
  places.c_loc = vexa_location_not_allocated;
  places.rts_loc = vexa_location_not_allocated;
}

CLocationScope::CLocationScope() : begin_(g_in_scopes.size()) {}

CLocationScope::~CLocationScope() {
  ResetFrom(begin_, g_in_scopes);
}

void ResetAllLocations() {
  ResetFrom(0, g_in_module);
  ResetFrom(0, g_in_scopes);
}
