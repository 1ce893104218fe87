// The actions that build statements and alternatives.
#include "frontend/T3GlobalASTNodes.h"
#include "frontend/T3ParserActions.h"

namespace t3_actions {

Node PrependPar(Node reversed, Node par) {
  par->as<_T3FormalPar>()->next = reversed;
  return par;
}

Node Block(const tPosition& position, Node items, const tPosition& end) {
  auto* block = t.mT3BlockStmt(position, _sgT3NoStmt(), Reverse(items));
  block->end_position = end;
  return block;
}

Node PrependStatements(Node reversed, Node list) {
  while (auto* statement = list->try_as<_T3Stmt>()) {
    list = statement->next;
    statement->next = reversed;
    reversed = statement;
  }
  return reversed;
}

Node DeclStatements(Node declarations, const tPosition& position) {
  Node list = _sgT3NoStmt();
  tPosition first = position;
  while (auto* decl = declarations->try_as<_T3Decl>()) {
    declarations = decl->next;
    decl->next = _sgT3NoDecl();
    list = t.mT3DeclStmt(first, list, decl);
    if (declarations->is<_T3Decl>()) first = declarations->as<_T3Decl>()->position;
  }
  return Reverse(list);
}

Node ConfigStatement(T3Kind kind, const tPosition& position, Node pair) {
  auto* from = pair->as<T3ConnectStmt>();
  from->position = position;
  if (kind == T3Kind::T3ConnectStmt) return from;
  auto* statement = t.MakeT3Tree(kind)->as<_T3ConfStmt>();
  statement->position = position;
  statement->next = _sgT3NoStmt();
  statement->component_1 = from->component_1;
  statement->port_1 = from->port_1;
  statement->component_2 = from->component_2;
  statement->port_2 = from->port_2;
  return statement;
}

Node PortEnd(const tPosition& position, Node component, Node port) {
  return t.mT3ConnectStmt(position, _sgT3NoStmt(), component, port, component, port);
}

Node PortPair(const tPosition& position, Node a, Node b) {
  auto* first = a->as<T3ConnectStmt>();
  auto* second = b->as<T3ConnectStmt>();
  return t.mT3ConnectStmt(position, _sgT3NoStmt(), first->component_1, first->port_1, second->component_1,
                          second->port_1);
}

Node AllPorts(const tPosition& position) {
  return PortEnd(position, t.mT3AllComponent(position), t.mT3PortAll(position));
}

Node IfStatement(const tPosition& position, Node condition, Node block, Node elseifs, Node otherwise) {
  Node rest = LinkIfStmt(Reverse(elseifs), otherwise);
  return t.mT3IfStmt(position, _sgT3NoStmt(), condition, block, rest);
}

// A case arrives as a T3IfStmt whose `else_stmt` holds its templates. The expression is evaluated anew for
// each template.
Node TranslateSelectCaseConstruct(Node expression, Node cases, Node otherwise) {
  for (auto* branch = cases->try_as<T3IfStmt>(); branch != nullptr;
       branch = branch->next->try_as<T3IfStmt>()) {
    Node condition = nullptr;
    auto* item = branch->else_stmt->try_as<T3TemplateListItem>();
    for (; item != nullptr; item = item->next->try_as<T3TemplateListItem>()) {
      Node match = t.mT3Match(item->position, t.CopyT3Tree(expression), item->expression);
      condition = condition == nullptr ? match : t.mT3Or(item->position, condition, match);
    }
    branch->condition = condition;
    branch->else_stmt = _sgT3NoStmt();
  }
  return LinkIfStmt(cases, otherwise);
}

Node InvocationStatement(const tPosition& position, Node node) {
  if (T3Is<_T3StmtList>(node)) {
    node->as<_T3StmtList>()->position = position;
    return node;
  }
  const char* operation = nullptr;
  switch (node->kind) {
    case T3Kind::T3Create:
      operation = "create";
      break;
    case T3Kind::T3Running:
      operation = "running";
      break;
    case T3Kind::T3Alive:
      operation = "alive";
      break;
    case T3Kind::T3GetVerdict:
      operation = "getverdict";
      break;
    case T3Kind::T3Read:
      operation = "read";
      break;
    default:
      break;
  }
  if (operation != nullptr) {
    Report(ERR_not_allowed_as_call, node, position, operation);
  } else if (!T3Is<T3Parameterization>(node) && !T3Is<T3Execute>(node) && !T3Is<T3Activate>(node) &&
             !T3Is<T3Match>(node) && !T3Is<T3ValueOf>(node)) {
    Report(ERR_expected, node, position, "Invocation");
  }
  return t.mT3InvocationStmt(position, _sgT3NoStmt(), node);
}

Node PrependAlt(Node reversed, Node alternative) {
  alternative->as<_T3Alt>()->next = reversed;
  return alternative;
}

// An [else] branch arrives as an alternative without an operation.
static bool IsElse(Node alternative) {
  auto* guarded = alternative->try_as<T3GuardedAlt>();
  return guarded != nullptr && T3Is<T3NoStmt>(guarded->operation);
}

// Of several [else] branches the blocks are kept as a list, for the analysis to refuse.
Node AltStatement(const tPosition& position, Node alternatives, const tPosition& end) {
  Node otherwise = _sgT3NoStmt();
  Node kept = _sgT3NoAlt();
  while (auto* alternative = alternatives->try_as<_T3Alt>()) {
    alternatives = alternative->next;
    if (IsElse(alternative)) {
      otherwise = PrependStatements(otherwise, alternative->body);
    } else {
      kept = PrependAlt(kept, alternative);
    }
  }
  auto* statement = t.mT3AltStmt(position, _sgT3NoStmt(), Reverse(kept), Reverse(otherwise));
  statement->end_position = end;
  return statement;
}

Node InterleaveStatement(const tPosition& position, Node first, Node tail, const tPosition& end) {
  auto* statement = t.mT3InterleaveStmt(position, _sgT3NoStmt(), PrependAlt(Reverse(tail), first));
  statement->end_position = end;
  return statement;
}

Node AltstepBranch(const tPosition& position, Node guard, Node reference, Node block) {
  if (!T3Is<T3Parameterization>(reference))
    Report(ERR_expected, reference, reference->as<_T3Expression>()->position, "altstep invocation");
  return t.mT3TestStepRefAlt(position, _sgT3NoAlt(), guard, block, reference);
}

Node CallStatement(const tPosition& position, Node value, Node timer, Node recipient, Node body,
                   const tPosition& end) {
  auto* statement = t.mT3CallStmt(position, _sgT3NoStmt(), nullptr, value, recipient);
  statement->timeout = timer;
  statement->body = body;
  statement->end_position = end;
  return statement;
}

Node FinishGetReply(const tPosition& position, Node arguments, Node sender, Node redirect) {
  auto* statement = arguments->as<T3GetReplyStmt>();
  statement->position = position;
  statement->sender = sender;
  statement->redirect = redirect;
  return statement;
}

Node FinishCatch(const tPosition& position, Node arguments, Node sender, Node redirect) {
  if (arguments == nullptr)
    return t.mT3CatchTimeoutStmt(position, _sgT3NoStmt(), nullptr, _sgT3NoTemplateDef(), sender, redirect);
  auto* statement = arguments->as<T3CatchStmt>();
  statement->position = position;
  statement->sender = sender;
  statement->redirect = redirect;
  return statement;
}

}  // namespace t3_actions
