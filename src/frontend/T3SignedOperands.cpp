#include "frontend/T3SignedOperands.h"

#include <unordered_set>

namespace {
// By their numbers.
std::unordered_set<uint32_t>& g_signed = *new std::unordered_set<uint32_t>;
}  // namespace

void NoteSignedOperand(const T3Tree_Node* operand) {
  g_signed.insert(operand->number);
}

bool IsSignedOperand(const T3Tree_Node* operand) {
  return !g_signed.empty() && g_signed.count(operand->number) != 0;
}
