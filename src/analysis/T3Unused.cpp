#include "analysis/T3Unused.h"

bool RequiresGeneration(T3Tree_Node* decl) {
  return decl != nullptr;
}
