#include "generator/behaviour/CGJumps.h"

#include <algorithm>
#include <map>
#include <set>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "driver/diagnostics/T3Error.h"
#include "generator/behaviour/CGStatement.h"
#include "generator/text/CGModuleText.h"
#include "generator/types/CGValue.h"
#include "generator/text/LUMOS.h"
#include "generator/text/T3CodeDefs.h"
#include "support/CWords.h"

namespace {
// The jumps forward to labels of one block, in their order: where each stands, and the furthest label that
// one of those up to it goes to.
struct Forward {
  uint32_t jump;
  uint32_t furthest;
};

struct Labels {
  std::map<T3Tree_Node*, std::string, T3NodeLess> names;
  std::set<std::string> taken;
  std::map<T3Tree_Node*, std::string, T3NodeLess> scopes;  // of the rounds that begin at a label
  T3NodeSet jumped_back_to;
  std::map<T3Tree_Node*, std::vector<Forward>, T3NodeLess> forward;  // by their blocks
  std::unordered_map<T3Tree_Node*, T3DeclStmt*> next_declarations;   // at or behind a statement, in its list
  bool knows_jumps = false;
};
// Of the behaviour that is being generated.
auto& g_labels = *new Labels;

bool IsBefore(T3Tree_Node* a, T3Tree_Node* b) {
  return T3NodeLess()(a, b);
}

// A label has the name of the source, unless C has that word or another label of the behaviour has it.
std::string LabelName(T3LabelStmt* statement) {
  const auto known = g_labels.names.find(statement);
  if (known != g_labels.names.end()) return known->second;
  std::string name = gIdents.GetCStr(statement->label);
  if (g_labels.taken.count(name) != 0 || IsWordOfC(name)) name += PositionSuffix(statement->position);
  g_labels.taken.insert(name);
  return g_labels.names[statement] = name;
}

T3LabelStmt* TargetOf(T3GotoStmt* jump) {
  T3Tree_Node* target = jump->attr().goto_target;
  if (!T3Is<T3LabelStmt>(target)) internal_error_ast("CGStatement", __LINE__, "CGGoto", jump);
  return target->as<T3LabelStmt>();
}

void NoteJump(T3GotoStmt* jump) {
  T3LabelStmt* target = TargetOf(jump);
  if (IsBefore(target, jump))
    g_labels.jumped_back_to.insert(target);
  else
    g_labels.forward[target->place->vexa_enclosing_block].push_back({jump->number, target->number});
}

void KnowJumpsAround(T3Tree_Node* statement) {
  if (std::exchange(g_labels.knows_jumps, true)) return;
  gT3AST.TraverseT3TreeTD(statement->place->vexa_owner, [](T3Tree_Node* node) {
    if (auto* jump = node->try_as<T3GotoStmt>()) NoteJump(jump);
  });
  for (auto& [block, jumps] : g_labels.forward) {
    std::sort(jumps.begin(), jumps.end(), [](const Forward& a, const Forward& b) { return a.jump < b.jump; });
    uint32_t furthest = 0;
    for (Forward& forward : jumps) furthest = forward.furthest = std::max(furthest, forward.furthest);
  }
}

// Whether a jump comes around the label to what is behind it in its block.
bool IsJumpedAround(T3LabelStmt* label) {
  const auto jumps = g_labels.forward.find(label->place->vexa_enclosing_block);
  if (jumps == g_labels.forward.end()) return false;
  const auto behind = std::lower_bound(jumps->second.begin(), jumps->second.end(), label->number,
                                       [](const Forward& at, uint32_t number) { return at.jump < number; });
  return behind != jumps->second.begin() && (behind - 1)->furthest > label->number;
}

// Whether rounds begin here: there are jumps back, and none that comes around the label to what is behind it.
bool BeginsRounds(T3LabelStmt* label) {
  KnowJumpsAround(label);
  return g_labels.jumped_back_to.count(label) != 0 && !IsJumpedAround(label);
}

T3DeclStmt* NextDeclaration(T3Tree_Node* at) {
  std::vector<T3Tree_Node*> way;
  T3DeclStmt* found = nullptr;
  for (; at->is<_T3Stmt>(); at = at->as<_T3Stmt>()->next) {
    if ((found = at->try_as<T3DeclStmt>()) != nullptr) break;
    const auto known = g_labels.next_declarations.find(at);
    if (known != g_labels.next_declarations.end()) {
      found = known->second;
      break;
    }
    way.push_back(at);
  }
  for (T3Tree_Node* before : way) g_labels.next_declarations[before] = found;
  return found;
}

// The variables that stand between a jump forward and its label.
void SkipDeclarations(T3GotoStmt* jump, T3LabelStmt* label, CFunction& function) {
  T3Tree_Node* block = label->place->vexa_enclosing_block;
  T3Tree_Node* at = jump;
  while (at->place->vexa_enclosing_block != block) at = at->place->vexa_enclosing_block;
  for (auto* declarations = NextDeclaration(at); declarations != nullptr && IsBefore(declarations, label);
       declarations = NextDeclaration(declarations->next))
    for (auto* decl : Items<_T3Decl>(declarations->decl))
      if (!decl->is<T3TemplateDecl>()) CGUnsetLocalValue(decl, function);
}
}  // namespace

void CGLabel(T3LabelStmt* statement, CFunction& function) {
  function.addLabel(LabelName(statement));
  CallComponentControl(function);
  if (!BeginsRounds(statement)) return;
  const std::string scope = function.getTmpVariable(LUMO_MEMORY_SCOPE_T);
  g_labels.scopes[statement] = scope;
  function.call(LUMO_MEMORY_TEMP_BEGIN, {"&(" + scope + ")", VEXA_CONTEXT});
}

void CGGoto(T3GotoStmt* statement, CFunction& function) {
  T3LabelStmt* target = TargetOf(statement);
  TidyUp(statement, target->place->vexa_enclosing_block, function);
  const auto scope = g_labels.scopes.find(target);
  if (IsBefore(statement, target))
    SkipDeclarations(statement, target, function);
  else if (scope != g_labels.scopes.end())
    function.call(LUMO_MEMORY_TEMP_CLEAR, {"&(" + scope->second + ")", VEXA_CONTEXT});
  function.addGoto(LabelName(target));
}

void ForgetLabels() {
  g_labels = Labels();
}
