// The walk that sets the place record of every node: scopes, owners, and the constructs around it. It keeps
// its own stack, so that neither long lists nor deep nestings take any of the process's.
#include <memory>
#include <new>
#include <unordered_map>

#include "analysis/names/T3DeclMap.h"
#include "analysis/names/T3Members.h"
#include "analysis/names/T3Names.h"
#include "driver/diagnostics/T3Error.h"
#include "frontend/T3GlobalASTNodes.h"
#include "frontend/T3TreeFields.h"
#include "frontend/T3KindCover.h"
#include "frontend/T3Lists.h"
#include "support/ModuleCaches.h"

namespace {
constexpr int kMaximumAliases = 1000;
// In bytes.
constexpr ptrdiff_t kAhead = 8192;

class PlaceWalk {
 public:
  explicit PlaceWalk(T3Tree_Node* root) : root_(root->as<T3Builtin>()) {}
  void WalkRoot();
  void WalkSubtree(T3Tree_Node* subtree, const T3Place* like);

 private:
  struct Step {
    T3Tree_Node* node;
    T3Place* place;
  };

  static T3Place* Copy(const T3Place* place);
  static T3Place* WithScope(const T3Place* place, T3DeclMap* map);
  static void AddScope(T3Place* place, T3DeclMap* map);

  // Pushing a node also sets its parent; a list is pushed as a whole.
  void Push(T3Tree_Node* parent, T3Tree_Node*& child, T3Place* place);
  void PushAt(T3Tree_Node* parent, uint16_t slot, T3Tree_Node* list, T3Place* place);
  void PushElement(T3Tree_Node* parent, uint16_t slot, T3Tree_Node* node, T3Place* place);
  void PushChildren(T3Tree_Node* node, T3Place* place);
  void PushDecls(T3Tree_Node* parent, T3Tree_Node*& list, T3Place* place, int where);
  void PushModuleDecls(T3Tree_Node* parent, T3Tree_Node*& list, T3Place* place);
  void PushNextModuleDecl();
  void PushStatements(T3Tree_Node* parent, T3Tree_Node*& list, T3Place* place);
  void PushBranch(T3Tree_Node* parent, T3Tree_Node*& list, T3Place* place);
  void PushParameters(T3Tree_Node* parent, T3Tree_Node*& list, T3Place* place, int where);
  void Drain();

  void Visit(T3Tree_Node* node, T3Place* place);
  bool VisitDecl(T3Tree_Node* node, T3Place* place);
  void PushInnerDimension(T3ArrayType* array, T3Place* place);
  bool VisitType(T3Tree_Node* node, T3Place* place);
  bool VisitStatement(T3Tree_Node* node, T3Place* place);
  void VisitModule(T3Module* module, T3Place* place);
  void VisitTypeDecl(T3TypeDecl* decl, T3Place* place);
  void VisitTemplate(T3TemplateDecl* decl, T3Place* place);
  void VisitFunction(_T3FunctionDecl* decl, T3Place* place);
  void VisitBody(_T3FunctionBodyDecl* decl, T3Place* place);
  void VisitControlPart(T3ControlPart* decl, T3Place* place);
  void VisitImport(_T3ImportDecl* decl);
  void VisitComponent(T3ComponentType* type, T3Place* place);
  void VisitFor(T3ForStmt* stmt, T3Place* place);
  void VisitCall(T3CallStmt* stmt, T3Place* place);
  void VisitAlt(_T3Alt* alt, T3Place* place);

  T3DeclMap* RegisterModule(T3Module* module);
  T3DeclMap* RegisterList(T3Tree_Node* list);
  T3DeclMap* RegisterMembers(T3ComponentType* component);
  T3DeclMap* RegisterStatements(T3Tree_Node* list);
  T3DeclMap* RegisterParameters(T3Tree_Node* list);
  T3Tree_Node* ComponentScope(T3Tree_Node* component);

  void SetAddressType();

  // What references mean, found before types are known and without reports.
  T3Tree_Node* QuietDef(T3Tree_Node* reference, T3Tree_Node* env);
  T3Tree_Node* QuietType(T3Tree_Node* type, T3Tree_Node* env);
  T3Tree_Node* QuietComponent(T3Tree_Node* runs_on);
  T3Tree_Node* QuietPort(T3Tree_Node* port, T3Tree_Node* env);
  T3Tree_Node* QuietSignature(T3Tree_Node* value, T3Tree_Node* env);
  T3Tree_Node* EnvOf(T3Tree_Node* node) const {
    return node->place != nullptr ? node->place->env : module_env_;
  }

  T3Builtin* root_;
  T3Tree_Node* module_env_ = nullptr;
  tIdent module_name_ = NoIdent;
  T3Tree_Node* module_ = nullptr;
  // The rest of a list of a module's or a group's declarations, and how it hangs in the tree.
  struct RestOfDecls {
    T3Tree_Node* decl;
    T3Tree_Node* parent;
    uint16_t slot;
    T3Place* place;
  };

  std::vector<Step> stack_;
  std::vector<RestOfDecls> decls_;
  // Declarations of array types that are written elsewhere: walked last, as far as nobody came by.
  std::vector<Step> array_decls_;
  std::unordered_map<tIdent, T3TypeDecl*> array_names_;
  std::unordered_map<T3Tree_Node*, T3Tree_Node*> component_scopes_;
};

bool IsWrittenElsewhere(T3TypeDecl* decl) {
  auto* array = decl->type->try_as<T3ArrayType>();
  return array != nullptr && array->explicit_type == decl;
}

uint16_t SlotOf(T3Tree_Node* parent, T3Tree_Node*& child) {
  const auto offset = reinterpret_cast<char*>(&child) - reinterpret_cast<char*>(parent);
  for (const T3ChildFields::Child& field : ChildFieldsOf(parent).children)
    if (field.offset == offset) return field.slot;
  return 0;
}

T3Place* PlaceWalk::Copy(const T3Place* place) {
  return new (gT3AST.AllocAttributes(sizeof(T3Place))) T3Place(*place);
}

T3Place* PlaceWalk::WithScope(const T3Place* place, T3DeclMap* map) {
  T3Place* inner = Copy(place);
  AddScope(inner, map);
  return inner;
}

// A scope in which nothing is declared, and that has no map, still is one: what fails is told once in each.
void PlaceWalk::AddScope(T3Place* place, T3DeclMap* map) {
  place->env = MakeMapEnv(place->env, map);
}

// A node without children has its place at once.
inline void PlaceWalk::PushElement(T3Tree_Node* parent, uint16_t slot, T3Tree_Node* node, T3Place* place) {
  node->parent = parent;
  node->child_slot = slot;
  if (ChildFieldsOf(node).children.empty())
    node->place = place;
  else
    stack_.push_back({node, place});
}

// Calls for each element of a list that hangs in a field, with the parent and slot that it gets; the end
// marker is the last element.
template <class Call>
void ForElements(T3Tree_Node* parent, uint16_t slot, T3Tree_Node* list, const Call& call) {
  for (T3Tree_Node* node = list; node != nullptr;) {
    call(parent, slot, node);
    const T3ChildFields::Child& next = ChildFieldsOf(node).next;
    if (next.info == nullptr) return;
    parent = node;
    slot = next.slot;
    node = T3ChildField(node, next);
  }
}

bool HasLabels(T3Tree_Node* list) {
  for (auto* statement : Items<_T3Stmt>(list))
    if (statement->is<T3LabelStmt>()) return true;
  return false;
}

// The scope of labels of a list of statements: that around it where it has none.
T3Tree_Node* LabelsOf(T3Tree_Node* outer, T3Tree_Node* list) {
  return HasLabels(list) ? MakeEnv(outer, list) : outer;
}

void PlaceWalk::Push(T3Tree_Node* parent, T3Tree_Node*& child, T3Place* place) {
  if (child != nullptr) PushAt(parent, SlotOf(parent, child), child, place);
}

[[gnu::noinline]] void PlaceWalk::PushAt(T3Tree_Node* parent, uint16_t slot, T3Tree_Node* list,
                                         T3Place* place) {
  int index = 0;
  ForElements(parent, slot, list, [&](T3Tree_Node* above, uint16_t own, T3Tree_Node* node) {
    if (node->is<T3FieldType>()) node->as<T3FieldType>()->attr().vexa_index = index++;
    PushElement(above, own, node, place);
  });
}

void PlaceWalk::PushChildren(T3Tree_Node* node, T3Place* place) {
  for (const T3ChildFields::Child& field : ChildFieldsOf(node).children) {
    T3Tree_Node* child = T3ChildField(node, field);
    if (child == nullptr) continue;
    if (ChildFieldsOf(child).next.info == nullptr)
      PushElement(node, field.slot, child, place);
    else
      PushAt(node, field.slot, child, place);
  }
}

void PlaceWalk::PushDecls(T3Tree_Node* parent, T3Tree_Node*& list, T3Place* place, int where) {
  ForElements(parent, SlotOf(parent, list), list, [&](T3Tree_Node* above, uint16_t slot, T3Tree_Node* node) {
    if (node->is<_T3Decl>()) node->as<_T3Decl>()->attr().vexa_place = where;
    PushElement(above, slot, node, place);
  });
}

// One declaration of a module is walked through before the next is looked at, so that the memory in which a
// large module lies is gone along once.
void PlaceWalk::PushModuleDecls(T3Tree_Node* parent, T3Tree_Node*& list, T3Place* place) {
  decls_.push_back({list, parent, SlotOf(parent, list), place});
}

// Each declaration of a module is the owner of the scope of what lies below it.
void PlaceWalk::PushNextModuleDecl() {
  RestOfDecls& rest = decls_.back();
  T3Tree_Node* node = rest.decl;
  const auto [parent, slot, place] = std::tuple(rest.parent, rest.slot, rest.place);
  auto* decl = node->try_as<_T3Decl>();
  if (decl == nullptr) {
    decls_.pop_back();
    return PushElement(parent, slot, node, place);
  }
  rest = {decl->next, decl, SlotOf(decl, decl->next), place};
  decl->attr().vexa_place = kAtModuleLevel;
  // Nothing below an import statement asks for its owner.
  T3Place* own = place;
  if (!decl->is<_T3ImportDecl>()) {
    own = Copy(place);
    own->top_scope_owner = decl;
  }
  auto* type_decl = decl->try_as<T3TypeDecl>();
  if (type_decl == nullptr || !IsWrittenElsewhere(type_decl)) return PushElement(parent, slot, decl, own);
  decl->parent = parent;
  decl->child_slot = slot;
  array_decls_.push_back({decl, own});
}

// A declaration behind the first behavioural statement has a place of its own.
void PlaceWalk::PushStatements(T3Tree_Node* parent, T3Tree_Node*& list, T3Place* place) {
  place->inside_declaration_header = true;
  bool header = true;
  T3Place* behind = nullptr;
  ForElements(parent, SlotOf(parent, list), list, [&](T3Tree_Node* above, uint16_t slot, T3Tree_Node* node) {
    const bool is_decl = node->is<T3DeclStmt>();
    if (is_decl && !header && behind == nullptr) {
      behind = Copy(place);
      behind->inside_declaration_header = false;
    }
    PushElement(above, slot, node, is_decl && !header ? behind : place);
    header = header && is_decl;
  });
}

// The statements of a branch, loop or alternative. `place` may be shared with other branches of the same
// construct. A branch that is a block, or that goes on with the next condition, needs no scope.
void PlaceWalk::PushBranch(T3Tree_Node* parent, T3Tree_Node*& list, T3Place* place) {
  const bool single = list->is<_T3Stmt>() && !list->as<_T3Stmt>()->next->is<_T3Stmt>();
  if (!single || !(list->is<T3BlockStmt>() || list->is<T3IfStmt>())) {
    place = WithScope(place, RegisterStatements(list));
    place->labelEnv = LabelsOf(place->labelEnv, list);
  }
  PushStatements(parent, list, place);
}

void PlaceWalk::PushParameters(T3Tree_Node* parent, T3Tree_Node*& list, T3Place* place, int where) {
  int index = 0;
  ForElements(parent, SlotOf(parent, list), list, [&](T3Tree_Node* above, uint16_t slot, T3Tree_Node* node) {
    if (node->is<_T3FormalPar>()) {
      node->as<_T3FormalPar>()->attr().vexa_place = where;
      node->as<_T3FormalPar>()->attr().vexa_index = index++;
    }
    PushElement(above, slot, node, place);
  });
}

void PlaceWalk::Drain() {
  for (;;) {
    while (!stack_.empty()) {
      const Step step = stack_.back();
      stack_.pop_back();
      PrefetchNodesBehind(step.node, kAhead);
      step.node->place = step.place;
      if (step.node->is<_T3Expression>())
        PushChildren(step.node, step.place);
      else
        Visit(step.node, step.place);
    }
    if (decls_.empty()) return;
    PushNextModuleDecl();
  }
}

void PlaceWalk::Visit(T3Tree_Node* node, T3Place* place) {
  if (node->is<_T3Expression>()) return PushChildren(node, place);
  const bool done = node->is<_T3StmtList>()   ? VisitStatement(node, place)
                    : node->is<_T3DeclList>() ? VisitDecl(node, place)
                    : node->is<_T3Type>()     ? VisitType(node, place)
                                              : false;
  if (done) return;
  if (node->is<_T3Alt>()) return VisitAlt(node->as<_T3Alt>(), place);
  if (node->is<T3Module>()) return VisitModule(node->as<T3Module>(), place);
  PushChildren(node, place);
}

// The kinds of declarations whose children have other places; false for the others.
bool PlaceWalk::VisitDecl(T3Tree_Node* node, T3Place* place) {
  if (node->is<_T3ImportDecl>()) {
    VisitImport(node->as<_T3ImportDecl>());
    return false;
  }
  if (auto* group = node->try_as<T3GroupDecl>()) {
    T3Place* inner = Copy(place);
    inner->groupEnv = MakeEnv(place->groupEnv, group->body);
    PushModuleDecls(group, group->body, inner);
    Push(group, group->with_spec, place);
  } else if (node->is<T3TypeDecl>()) {
    VisitTypeDecl(node->as<T3TypeDecl>(), place);
  } else if (node->is<T3TemplateDecl>()) {
    VisitTemplate(node->as<T3TemplateDecl>(), place);
  } else if (node->is<_T3FunctionDecl>()) {
    VisitFunction(node->as<_T3FunctionDecl>(), place);
  } else if (node->is<T3ControlPart>()) {
    VisitControlPart(node->as<T3ControlPart>(), place);
  } else {
    return false;
  }
  return true;
}

void PlaceWalk::VisitModule(T3Module* module, T3Place* place) {
  T3Place* inner = WithScope(place, RegisterModule(module));
  module_env_ = inner->env;
  inner->groupEnv = MakeEnv(_sgT3NoEnv(), module->definition_part);
  PushModuleDecls(module, module->definition_part, inner);
  Push(module, module->with_spec, inner);
  Push(module, module->def_id, inner);
}

void PlaceWalk::VisitImport(_T3ImportDecl* decl) {
  if (decl->is<T3ImportAllDecl>()) return;
  decl->attr().visible_unqualified = VisibleUnqualified(module_, decl);
  T3Tree_Node* def = decl->attr().def_aux;
  if (!T3Is<_T3FunctionDecl>(def)) return;
  auto* function = def->as<_T3FunctionDecl>();
  decl->attr().has_component = !function->runs_on->is<T3NoType>();
  decl->attr().has_return_type =
      function->is<T3Function>() && !function->as<T3Function>()->return_type->is<T3NoType>();
}

// An array type that is written somewhere has the places of what is around it there.
void PlaceWalk::VisitTypeDecl(T3TypeDecl* decl, T3Place* place) {
  Push(decl, decl->with_spec, place);
  if (IsWrittenElsewhere(decl) && decl->type->place != nullptr) return;
  Push(decl, decl->type, place);
}

void PlaceWalk::VisitTemplate(T3TemplateDecl* decl, T3Place* place) {
  T3Place* inner = WithScope(place, RegisterParameters(decl->fpl));
  if (T3Is<T3Module>(place->vexa_owner)) inner->vexa_owner = decl;
  PushParameters(decl, decl->fpl, inner, kAsTemplateParameters);
  Push(decl, decl->definition, inner);
  Push(decl, decl->with_spec, place);
}

void PlaceWalk::VisitFunction(_T3FunctionDecl* decl, T3Place* place) {
  T3Place* outer = Copy(place);
  outer->vexa_owner = decl;
  outer->has_component = !decl->runs_on->is<T3NoType>();
  T3Tree_Node* component = QuietComponent(decl->runs_on);
  decl->attr().has_component = outer->has_component;
  decl->attr().vexa_component_type = component;
  Push(decl, decl->runs_on, outer);
  Push(decl, decl->with_spec, place);
  if (auto* function = decl->try_as<T3Function>()) {
    decl->attr().has_return_type = !function->return_type->is<T3NoType>();
    Push(decl, function->return_type, outer);
  } else if (auto* external = decl->try_as<T3ExtFunction>()) {
    Push(decl, external->return_type, outer);
  } else if (auto* testcase = decl->try_as<T3Testcase>()) {
    Push(decl, testcase->system, outer);
  }
  T3Place* inner = Copy(outer);
  if (component->is<T3ComponentType>()) inner->env = ComponentScope(component);
  AddScope(inner, RegisterParameters(decl->fpl));
  PushParameters(decl, decl->fpl, inner, kAsParameters);
  if (decl->is<_T3FunctionBodyDecl>()) VisitBody(decl->as<_T3FunctionBodyDecl>(), inner);
}

// The declarations in front of an altstep's alternatives share a scope with its body.
void PlaceWalk::VisitBody(_T3FunctionBodyDecl* decl, T3Place* place) {
  T3DeclMap* map = RegisterStatements(decl->body);
  auto* altstep = decl->try_as<T3TestStep>();
  if (altstep != nullptr && altstep->decls->is<_T3Decl>()) {
    map = RegisterList(altstep->decls);
    for (auto* stmt : Items<_T3Stmt>(decl->body))
      if (stmt->is<T3DeclStmt>()) RegisterDecl(stmt->as<T3DeclStmt>()->decl, module_name_, map);
  }
  T3Place* inner = WithScope(place, map);
  inner->labelEnv = LabelsOf(_sgT3NoEnv(), decl->body);
  inner->vexa_enclosing_block = decl;
  if (altstep != nullptr) PushDecls(decl, altstep->decls, inner, kInBehaviour);
  PushStatements(decl, decl->body, inner);
}

void PlaceWalk::VisitControlPart(T3ControlPart* decl, T3Place* place) {
  T3Place* inner = WithScope(place, RegisterStatements(decl->body));
  inner->labelEnv = LabelsOf(_sgT3NoEnv(), decl->body);
  inner->vexa_owner = decl;
  inner->vexa_enclosing_block = decl;
  PushStatements(decl, decl->body, inner);
  Push(decl, decl->with_spec, place);
}

// The kinds of types that own what lies below them; false for the others.
// An inner dimension is a reference to a declaration by now, but stands where the outer one does.
void PlaceWalk::PushInnerDimension(T3ArrayType* array, T3Place* place) {
  auto* reference = array->type->try_as<T3TypeReference>();
  auto* name = reference == nullptr ? nullptr : reference->reference->try_as<T3Identifier>();
  const auto inner = name == nullptr ? array_names_.end() : array_names_.find(name->id);
  if (inner == array_names_.end() || inner->second->type->place != nullptr) return;
  Push(inner->second, inner->second->type, place);
}

bool PlaceWalk::VisitType(T3Tree_Node* node, T3Place* place) {
  if (auto* array = node->try_as<T3ArrayType>()) PushInnerDimension(array, place);
  if (node->is<T3ComponentType>()) {
    VisitComponent(node->as<T3ComponentType>(), place);
    return true;
  }
  const bool owner = node->is<T3SignatureType>() || node->is<_T3StructuredType>() || node->is<T3PortType>() ||
                     node->is<T3EnumType>();
  if (!owner) return false;
  T3Place* inner = Copy(place);
  inner->vexa_owner = node;
  if (auto* signature = node->try_as<T3SignatureType>()) {
    PushParameters(signature, signature->fpl, inner, kAsParameters);
    Push(signature, signature->exceptions, inner);
    Push(signature, signature->return_type, inner);
  } else {
    PushChildren(node, inner);
  }
  return true;
}

void PlaceWalk::VisitComponent(T3ComponentType* type, T3Place* place) {
  Push(type, type->extends, place);
  T3Place* inner = WithScope(place, RegisterMembers(type));
  inner->vexa_owner = type;
  PushDecls(type, type->decls, inner, kInComponent);
}

using ChangingPlaces = T3Kinds<T3DeclStmt, T3ForStmt, T3CallStmt, T3BlockStmt, T3IfStmt, T3WhileStmt,
                               T3DoWhileStmt, T3AltStmt, T3InterleaveStmt>;
// What stands in them has their place.
using KeepingPlaces =
    T3Kinds<T3InvocationStmt, _T3ConfStmt, T3DoneStmt, T3KilledStmt, T3TimeoutStmt, T3SendStmt,
            _T3SendingPortClientStmt, _T3ReceivingPortStmt, _T3CheckStmt, T3ClearStmt, T3HaltStmt,
            T3StartStmt, T3StopStmt, T3KillStmt, T3SetVerdictStmt, T3DeactivateStmt, T3SUTStmt, T3AssignStmt,
            T3LogStmt, T3RetStmt, T3LabelStmt, T3GotoStmt, T3RepeatStmt, T3BreakStmt, T3ContinueStmt>;
static_assert(T3Covers<_T3Stmt, ChangingPlaces, KeepingPlaces>());

// What stands in a chain of `else if` is enclosed by its head, however long it is.
bool ContinuesChain(T3Tree_Node* node) {
  auto* before = node->is<T3IfStmt>() ? node->parent->try_as<T3IfStmt>() : nullptr;
  return before != nullptr && before->else_stmt == node && !node->as<_T3Stmt>()->next->is<_T3Stmt>();
}

// The kinds of statements that change places below them; false for the others.
bool PlaceWalk::VisitStatement(T3Tree_Node* node, T3Place* place) {
  if (auto* decl = node->try_as<T3DeclStmt>()) {
    PushDecls(decl, decl->decl, place, kInBehaviour);
    return true;
  }
  if (node->is<T3ForStmt>()) {
    VisitFor(node->as<T3ForStmt>(), place);
    return true;
  }
  if (node->is<T3CallStmt>()) {
    VisitCall(node->as<T3CallStmt>(), place);
    return true;
  }
  const bool encloses = node->is<T3BlockStmt>() || node->is<T3IfStmt>() || node->is<_T3LoopStmt>() ||
                        node->is<T3AltStmt>() || node->is<T3InterleaveStmt>();
  if (!encloses) return false;
  T3Place* inner = place;
  if (!ContinuesChain(node)) {
    inner = Copy(place);
    inner->vexa_enclosing_block = node;
  }
  if (auto* block = node->try_as<T3BlockStmt>()) {
    AddScope(inner, RegisterStatements(block->body));
    inner->labelEnv = LabelsOf(place->labelEnv, block->body);
    PushStatements(node, block->body, inner);
  } else if (auto* branch = node->try_as<T3IfStmt>()) {
    Push(node, branch->condition, place);
    PushBranch(node, branch->else_stmt, inner);
    PushBranch(node, branch->then_stmt, inner);
  } else if (auto* loop = node->try_as<_T3LoopStmt>()) {
    inner->vexa_break_continue_owner = node;
    Push(node, loop->condition, place);
    PushBranch(node, loop->body, inner);
  } else if (auto* alt = node->try_as<T3AltStmt>()) {
    inner->vexa_break_continue_owner = node;
    inner->enclosing_alt = node;
    Push(node, alt->alts, inner);
    PushBranch(node, alt->else_branch, inner);
  } else {
    inner->vexa_break_continue_owner = node;
    inner->inside_interleave = true;
    Push(node, node->as<T3InterleaveStmt>()->alts, inner);
  }
  return true;
}

void PlaceWalk::VisitFor(T3ForStmt* stmt, T3Place* place) {
  T3Place* header = WithScope(place, RegisterStatements(stmt->init));
  header->vexa_enclosing_block = stmt;
  T3Place* init = Copy(header);
  init->labelEnv = LabelsOf(place->labelEnv, stmt->init);
  T3Place* body = Copy(header);
  body->vexa_break_continue_owner = stmt;
  Push(stmt, stmt->condition, header);
  Push(stmt, stmt->step, header);
  PushStatements(stmt, stmt->init, init);
  PushBranch(stmt, stmt->body, body);
}

void PlaceWalk::VisitCall(T3CallStmt* stmt, T3Place* place) {
  Push(stmt, stmt->port, place);
  Push(stmt, stmt->template_value, place);
  Push(stmt, stmt->recipient, place);
  Push(stmt, stmt->timeout, place);
  T3Place* inner = Copy(place);
  inner->vexa_enclosing_block = stmt;
  inner->vexa_break_continue_owner = stmt;
  inner->enclosing_alt = stmt;
  inner->in_call_stmt = true;
  inner->call_port_decl = QuietPort(stmt->port, place->env);
  inner->call_signature_type = QuietSignature(stmt->template_value, place->env);
  Push(stmt, stmt->body, inner);
}

void PlaceWalk::VisitAlt(_T3Alt* alt, T3Place* place) {
  Push(alt, alt->guard, place);
  if (auto* guarded = alt->try_as<T3GuardedAlt>())
    Push(alt, guarded->operation, WithScope(place, RegisterStatements(guarded->operation)));
  else
    Push(alt, alt->as<T3TestStepRefAlt>()->test_step, place);
  PushBranch(alt, alt->body, place);
}

// Groups share the map of their module.
T3DeclMap* PlaceWalk::RegisterModule(T3Module* module) {
  if (!module->definition_part->is<_T3Decl>()) return nullptr;
  T3DeclMap* map = nullptr;
  RegisterDecl(module, module->name, map);
  for (auto* decl : DeclsInGroups(module->definition_part)) {
    RegisterDecl(decl, module->name, map);
    if (auto* type = decl->try_as<T3TypeDecl>(); type != nullptr && IsWrittenElsewhere(type))
      array_names_[type->name] = type;
  }
  return module->definition_part->as<_T3Decl>()->cold().declsOut = map;
}

T3DeclMap* PlaceWalk::RegisterList(T3Tree_Node* list) {
  if (!list->is<_T3Decl>()) return nullptr;
  T3DeclMap*& map = list->as<_T3Decl>()->cold().declsOut;
  if (map != nullptr) return map;
  for (auto* decl : Items<_T3Decl>(list)) RegisterDecl(decl, module_name_, map);
  return map;
}

// The maps of components that extend others, by the numbers of their types.
std::unordered_map<uint32_t, std::unique_ptr<T3DeclMap>>& g_extended =
    *new std::unordered_map<uint32_t, std::unique_ptr<T3DeclMap>>;
const ModuleCache kExtended{[] { g_extended.clear(); }, ModuleCache::Holds::ForRun};

T3DeclMap* PlaceWalk::RegisterMembers(T3ComponentType* component) {
  if (!T3Is<T3TypeItem>(component->extends)) return RegisterList(component->decls);
  std::unique_ptr<T3DeclMap>& kept = g_extended[component->number];
  if (kept != nullptr) return kept.get();
  kept = std::make_unique<T3DeclMap>();
  T3DeclMap* map = kept.get();
  for (auto* decl : Items<_T3Decl>(component->decls)) RegisterDecl(decl, module_name_, map);
  map->Inherit(MembersOf(component), module_name_);
  return map;
}

T3DeclMap* PlaceWalk::RegisterStatements(T3Tree_Node* list) {
  T3DeclMap* map = nullptr;
  for (auto* stmt : Items<_T3Stmt>(list)) {
    if (!stmt->is<T3DeclStmt>()) continue;
    T3Tree_Node* decl = stmt->as<T3DeclStmt>()->decl;
    for (auto* at : Items<_T3Decl>(decl)) RegisterDecl(at, module_name_, map);
  }
  return map;
}

T3DeclMap* PlaceWalk::RegisterParameters(T3Tree_Node* list) {
  if (!list->is<_T3FormalPar>()) return nullptr;
  T3DeclMap* map = nullptr;
  for (auto* par : Items<_T3FormalPar>(list)) RegisterDecl(par, module_name_, map);
  return map;
}

// All behaviours of a module that run on one component share its scope.
T3Tree_Node* PlaceWalk::ComponentScope(T3Tree_Node* component) {
  T3Tree_Node*& scope = component_scopes_[component];
  if (scope == nullptr) scope = MakeMapEnv(module_env_, RegisterMembers(component->as<T3ComponentType>()));
  return scope;
}

T3Tree_Node* PlaceWalk::QuietDef(T3Tree_Node* reference, T3Tree_Node* env) {
  if (reference->is<T3Parameterization>()) reference = reference->as<T3Parameterization>()->base;
  if (auto* id = reference->try_as<T3Identifier>()) return IdentifyQuietly(env, id->id, 0);
  auto* qualifier = reference->try_as<T3Qualifier>();
  if (qualifier == nullptr || !qualifier->base->is<T3Identifier>()) return _sgT3NoDecl();
  const tIdent module = qualifier->base->as<T3Identifier>()->id;
  return IdentifyQuietly(env, qualifier->id, module == module_name_ ? 0 : module);
}

// Follows references, imports and subtypes; aliases that lead in a circle end as no type.
T3Tree_Node* PlaceWalk::QuietType(T3Tree_Node* type, T3Tree_Node* env) {
  for (int steps = 0; steps < kMaximumAliases; ++steps) {
    if (auto* sub = type->try_as<T3SubType>()) {
      type = sub->parent;
      continue;
    }
    if (!type->is<T3TypeReference>()) return type;
    T3Tree_Node* def = QuietDef(type->as<T3TypeReference>()->reference, env);
    if (def->is<_T3ImportDecl>()) def = def->as<_T3ImportDecl>()->attr().def_aux;
    if (!T3Is<T3TypeDecl>(def)) return gT3ErrorType;
    env = EnvOf(def);
    type = def->as<T3TypeDecl>()->type;
  }
  return gT3ErrorType;
}

T3Tree_Node* PlaceWalk::QuietComponent(T3Tree_Node* runs_on) {
  if (runs_on->is<T3NoType>()) return gT3NoType;
  T3Tree_Node* type = QuietType(runs_on, module_env_);
  return type->is<T3ComponentType>() ? type : gT3ErrorType;
}

T3Tree_Node* PlaceWalk::QuietPort(T3Tree_Node* port, T3Tree_Node* env) {
  while (port->is<T3Subscription>()) port = port->as<T3Subscription>()->base;
  T3Tree_Node* def = QuietDef(port, env);
  return def->is<T3NoDecl>() ? nullptr : def;
}

// The signature of a call: that of the template's type, or of the template that it refers to.
T3Tree_Node* PlaceWalk::QuietSignature(T3Tree_Node* value, T3Tree_Node* env) {
  for (int steps = 0; steps < kMaximumAliases; ++steps) {
    auto* definition = value->try_as<T3TemplateDef>();
    if (definition == nullptr) return nullptr;
    if (!definition->parent->is<T3NoType>()) {
      T3Tree_Node* type = QuietType(definition->parent, env);
      return type->is<T3SignatureType>() ? type : nullptr;
    }
    T3Tree_Node* def = QuietDef(definition->constraint, env);
    if (def->is<_T3ImportDecl>()) def = def->as<_T3ImportDecl>()->attr().def_aux;
    if (T3Is<_T3TypedFormal>(def)) {
      T3Tree_Node* type = QuietType(def->as<_T3TypedFormal>()->type, env);
      return type->is<T3SignatureType>() ? type : nullptr;
    }
    if (!T3Is<T3TemplateDecl>(def)) return nullptr;
    env = EnvOf(def);
    value = def->as<T3TemplateDecl>()->definition;
  }
  return nullptr;
}

void PlaceWalk::WalkRoot() {
  module_ = root_->module;
  module_name_ = module_->as<T3Module>()->name;
  T3Place* place = new (gT3AST.AllocAttributes(sizeof(T3Place))) T3Place;
  place->env = MakeMapEnv(_sgT3NoMapEnv(), RegisterList(root_->builtin));
  place->labelEnv = _sgT3NoEnv();
  place->groupEnv = _sgT3NoEnv();
  place->vexa_my_module = module_;
  place->vexa_module_name = module_name_;
  place->vexa_owner = module_;
  place->vexa_enclosing_block = _sgT3NoStmt();
  place->vexa_break_continue_owner = _sgT3NoStmt();
  place->enclosing_alt = _sgT3NoStmt();
  root_->place = place;
  PushDecls(root_, root_->aux_types, place, 0);
  PushDecls(root_, root_->builtin, place, 0);
  PushElement(root_, SlotOf(root_, root_->module), module_, place);
  Drain();
  std::swap(stack_, array_decls_);
  Drain();
  SetAddressType();
}

// The first definition of `address` that reaches the module is what its address type means.
void PlaceWalk::SetAddressType() {
  auto* address = gT3AddressType->try_as<T3Address>();
  const T3NodeList definitions = AddressDefinitions(module_);
  if (address != nullptr && !definitions.empty())
    address->attr().address_type_definition_inh = definitions.front();
}

void PlaceWalk::WalkSubtree(T3Tree_Node* subtree, const T3Place* like) {
  module_ = like->vexa_my_module;
  module_name_ = like->vexa_module_name;
  module_env_ = root_->module->as<T3Module>()->definition_part->place->env;
  T3Tree_Node* parent = subtree->parent;
  const uint16_t slot = subtree->child_slot;
  T3Place* place = Copy(like);
  subtree->place = place;
  Visit(subtree, place);
  Drain();
  subtree->parent = parent;
  subtree->child_slot = slot;
}
}  // namespace

void SetPlaces(T3Tree_Node* root) {
  PlaceWalk(root).WalkRoot();
}

void SetPlacesLike(T3Tree_Node* subtree, const T3Tree_Node* like) {
  if (like->place == nullptr) internal_error_ast("T3Places", __LINE__, "SetPlacesLike", subtree);
  T3Tree_Node* root = like->place->vexa_my_module->as<T3Module>()->attr().root;
  PlaceWalk(root).WalkSubtree(subtree, like->place);
}
