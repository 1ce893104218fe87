// What a node needs to know of its kind: its records of attributes, and its name where it is misused.
#include "driver/diagnostics/T3Exception.h"
#include "frontend/T3Tree.h"

void T3Tree_Node::MakeAttributes() {
  const T3KindInfo& info = T3Tree_KindInfo[static_cast<int>(kind)];
  void* memory = gT3AST.AllocAttributes(info.attribute_size);
  attributes = static_cast<T3Attributes*>(memory);
  info.build_attributes(memory);
}

void T3Tree_Node::MakeCold() {
  const T3KindInfo& info = T3Tree_KindInfo[static_cast<int>(kind)];
  void* memory = gT3AST.AllocAttributes(info.cold_size);
  info.build_cold(memory);
  AttributeRecord().cold = static_cast<T3Cold*>(memory);
}

void T3Tree_Node::BadCast(unsigned short wanted) const {
  throw internal_exception("T3Tree", 0, "as",
                           std::string("node of kind ") + T3Tree_NodeName[static_cast<int>(kind)] +
                               " used as " + T3Tree_NodeName[wanted]);
}
