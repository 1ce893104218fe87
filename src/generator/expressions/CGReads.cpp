#include "generator/expressions/CGReads.h"

#include "analysis/names/T3Names.h"
#include "analysis/types/T3Types.h"

namespace cg {
namespace {
constexpr int kComponentMember = 2;

bool IsMember(T3Tree_Node* def) {
  return def->is<_T3DeclList>() && def->as<_T3DeclList>()->attr().vexa_place == kComponentMember;
}

// What may be the same variable by another name.
bool IsReferenceFormal(T3Tree_Node* def) {
  auto* formal = def->try_as<_T3TypedFormal>();
  return formal != nullptr && formal->pass != t3_par_pass_t::In;
}

bool IsSame(T3Tree_Node* a, T3Tree_Node* b) {
  if (a == b) return true;
  if (IsMember(a) && IsMember(b)) return a->as<_T3Decl>()->name == b->as<_T3Decl>()->name;
  return (IsReferenceFormal(a) && (IsReferenceFormal(b) || IsMember(b))) ||
         (IsReferenceFormal(b) && IsMember(a));
}

// A behaviour on the component of the caller uses its variables.
bool MayUseMembers(T3Tree_Node* node) {
  auto* call = node->try_as<T3Parameterization>();
  T3Tree_Node* decl = call == nullptr ? nullptr : BehindImport(Def(call));
  return T3Is<_T3FunctionDecl>(decl) && decl->as<_T3FunctionDecl>()->runs_on->is<_T3Type>() &&
         !decl->as<_T3FunctionDecl>()->runs_on->is<T3NoType>();
}
}  // namespace

T3Tree_Node* RootOfReference(T3Tree_Node* reference) {
  while (reference->is<_T3Qualification>()) reference = reference->as<_T3Qualification>()->base;
  return reference;
}

bool Reads(T3Tree_Node* expression, T3Tree_Node* target) {
  T3Tree_Node* root = RootOfReference(target);
  T3Tree_Node* variable = root->is<T3Identifier>() ? Def(root) : nullptr;
  if (variable == nullptr) return true;
  const bool is_shared = IsMember(variable) || IsReferenceFormal(variable);
  bool reads = false;
  gT3AST.TraverseT3TreeTD(expression, [&](T3Tree_Node* node) {
    if (reads) return;
    T3Tree_Node* def = node->is<T3Identifier>() ? Def(node) : nullptr;
    reads = (def != nullptr && IsSame(def, variable)) || (is_shared && MayUseMembers(node));
  });
  return reads;
}
}  // namespace cg
