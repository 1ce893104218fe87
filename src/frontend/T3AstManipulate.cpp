#include "frontend/T3AstManipulate.h"

#include "driver/diagnostics/T3Error.h"
#include "frontend/T3GlobalASTNodes.h"

T3Tree_Node* LinkIfStmt(T3Tree_Node* statement, T3Tree_Node* last) {
  if (!T3Is<T3IfStmt>(statement)) return last;
  T3Tree_Node* node = statement;
  for (;;) {
    auto* branch = node->try_as<T3IfStmt>();
    if (branch == nullptr) yyAbort("LinkIfStmt");
    if (!T3Is<T3IfStmt>(branch->next)) {
      branch->else_stmt = last;
      return statement;
    }
    node = branch->next;
    branch->else_stmt = node;
    branch->next = _sgT3NoStmt();
  }
}

void PropagateWithStmt(T3Tree_Node* first, T3Tree_Node* with) {
  for (auto* decl = first->try_as<_T3Decl>(); decl != nullptr; decl = decl->next->try_as<_T3Decl>())
    decl->with_spec = with;
}

T3Tree_Node* DuplicateList(T3Tree_Node* list) {
  T3Tree_Node* head = _sgT3NoTypeItem();
  T3Tree_Node** link = &head;
  for (auto* item = list->try_as<T3TypeItem>(); item != nullptr; item = item->next->try_as<T3TypeItem>()) {
    auto* copy = gT3AST.mT3TypeItem(NoPosition, _sgT3NoTypeItem(), item->type);
    *link = copy;
    link = &copy->next;
  }
  return head;
}

void PortCheckAttrPort(T3Tree_Node* operation) {
  auto* check = operation->try_as<T3CheckReceive>();
  if (check == nullptr) return;
  if (auto* inner = check->receive_statement->try_as<_T3PortStmt>()) inner->port = check->port;
}

T3Tree_Node* MangleArrayTypes(T3Tree_Node* dimensions, T3Tree_Node* element) {
  T3Tree_Node* result = element;
  while (dimensions != nullptr) {
    auto* array = dimensions->as<T3ArrayType>();
    dimensions = array->type;
    array->type = result;
    result = array;
  }
  return result;
}
