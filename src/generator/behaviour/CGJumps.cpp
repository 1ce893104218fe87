#include "generator/behaviour/CGJumps.h"

#include <algorithm>
#include <map>
#include <set>
#include <string_view>
#include <utility>
#include <vector>

#include "driver/diagnostics/T3Error.h"
#include "generator/behaviour/CGStatement.h"
#include "generator/text/CGModuleText.h"
#include "generator/types/CGValue.h"
#include "generator/text/LUMOS.h"
#include "generator/text/T3CodeDefs.h"

namespace {
struct Labels {
  std::map<T3Tree_Node*, std::string, T3NodeLess> names;
  std::map<T3Tree_Node*, std::string, T3NodeLess> scopes;  // of the rounds that begin at a label
  std::vector<T3GotoStmt*> jumps;
  bool knows_jumps = false;
};
// Of the behaviour that is being generated.
auto& g_labels = *new Labels;

bool IsBefore(T3Tree_Node* a, T3Tree_Node* b) {
  return T3NodeLess()(a, b);
}

// A label has the name of the source, unless C has that word or another label of the behaviour has it.
std::string LabelName(T3LabelStmt* statement) {
  static const std::set<std::string_view> words = {
      "auto",     "break",  "case",   "char",     "const",    "continue", "default",  "do",
      "double",   "else",   "enum",   "extern",   "float",    "for",      "goto",     "if",
      "inline",   "int",    "long",   "register", "restrict", "return",   "short",    "signed",
      "sizeof",   "static", "struct", "switch",   "typedef",  "union",    "unsigned", "void",
      "volatile", "while",  "bool",   "true",     "false"};
  const auto known = g_labels.names.find(statement);
  if (known != g_labels.names.end()) return known->second;
  std::string name = gIdents.GetCStr(statement->label);
  const bool taken = std::any_of(g_labels.names.begin(), g_labels.names.end(),
                                 [&](const auto& other) { return other.second == name; });
  if (taken || words.count(name) != 0) name += PositionSuffix(statement->position);
  return g_labels.names[statement] = name;
}

T3LabelStmt* TargetOf(T3GotoStmt* jump) {
  T3Tree_Node* target = jump->attr().goto_target;
  if (!T3Is<T3LabelStmt>(target)) internal_error_ast("CGStatement", __LINE__, "CGGoto", jump);
  return target->as<T3LabelStmt>();
}

const std::vector<T3GotoStmt*>& JumpsAround(T3Tree_Node* statement) {
  if (std::exchange(g_labels.knows_jumps, true)) return g_labels.jumps;
  T3Tree_Node* behaviour = statement;
  while (!behaviour->is<_T3FunctionBodyDecl>() && !behaviour->is<T3ControlPart>())
    behaviour = behaviour->parent;
  gT3AST.TraverseT3TreeTD(behaviour, [](T3Tree_Node* node) {
    if (auto* jump = node->try_as<T3GotoStmt>()) g_labels.jumps.push_back(jump);
  });
  return g_labels.jumps;
}

// Whether rounds begin here: there are jumps back, and none that comes around the label to what is behind it.
bool BeginsRounds(T3LabelStmt* label) {
  bool is_jumped_back_to = false;
  for (T3GotoStmt* jump : JumpsAround(label)) {
    T3LabelStmt* target = TargetOf(jump);
    if (target == label && IsBefore(label, jump)) is_jumped_back_to = true;
    const bool is_around = IsBefore(jump, label) && IsBefore(label, target);
    if (is_around && target->place->vexa_enclosing_block == label->place->vexa_enclosing_block) return false;
  }
  return is_jumped_back_to;
}

// The variables that stand between a jump forward and its label.
void SkipDeclarations(T3GotoStmt* jump, T3LabelStmt* label, CFunction& function) {
  T3Tree_Node* block = label->place->vexa_enclosing_block;
  T3Tree_Node* at = jump;
  while (at->place->vexa_enclosing_block != block) at = at->place->vexa_enclosing_block;
  for (; at->is<_T3Stmt>() && at != label; at = at->as<_T3Stmt>()->next)
    if (auto* declarations = at->try_as<T3DeclStmt>())
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
