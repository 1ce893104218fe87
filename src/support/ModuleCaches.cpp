#include "support/ModuleCaches.h"

namespace {
ModuleCache* g_first = nullptr;
}  // namespace

ModuleCache::ModuleCache(void (*clear)(), Holds holds) : clear_(clear), holds_(holds), next_(g_first) {
  g_first = this;
}

void ClearModuleCaches() {
  for (const ModuleCache* cache = g_first; cache != nullptr; cache = cache->next_)
    if (cache->holds_ != ModuleCache::Holds::ForRun) cache->clear_();
}

void ClearTreeCaches() {
  for (const ModuleCache* cache = g_first; cache != nullptr; cache = cache->next_)
    if (cache->holds_ == ModuleCache::Holds::ForTree) cache->clear_();
}

void ClearAllCaches() {
  for (const ModuleCache* cache = g_first; cache != nullptr; cache = cache->next_) cache->clear_();
}
