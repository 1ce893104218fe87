#include "generator/behaviour/CGConfiguration.h"

#include <string>
#include <vector>

#include "analysis/types/T3Bounds.h"
#include "analysis/names/T3Members.h"
#include "analysis/names/T3Names.h"
#include "analysis/types/T3Types.h"
#include "frontend/T3GlobalASTNodes.h"
#include "generator/expressions/CGExpressionParts.h"
#include "generator/text/CGModuleText.h"
#include "generator/text/CGTypeAccess.h"
#include "generator/text/LUMOS.h"
#include "generator/text/T3CodeDefs.h"

namespace {
// Name and index of a port; all of them where it says so.
void AccessPortReference(T3Tree_Node* port, std::vector<std::string>& arguments, CFunction& function) {
  if (auto* name = port->try_as<T3PortIdentifier>()) {
    arguments.emplace_back(Quote(name->name));
    arguments.emplace_back(LUMO_NO_VALUE_C);
  } else if (auto* element = port->try_as<T3PortArrayElement>()) {
    auto* base = element->base->try_as<T3PortIdentifier>();
    if (base == nullptr) cg::NotSupported(port);
    arguments.emplace_back(Quote(base->name));
    arguments.emplace_back(cg::InRTS(element->index, vexa_temp_alloc, function));
  } else {
    arguments.emplace_back(C_NULL);
    arguments.emplace_back(LUMO_NO_VALUE_C);
  }
}

// ---- Mappings of a test case without a system ----

// A mapping is a statement for each port of an array.
constexpr uint64_t kMostMappedPorts = 10000;

T3Tree_Node* MakeIntLiteral(int64_t number, const tPosition& position) {
  auto* literal = gT3AST.mT3IntLiteral(position, gStringM.PutString(std::to_string(number)));
  literal->attr().expression_local_type = literal->attr().expression_base_type = gT3IntegerType;
  return literal;
}

T3Tree_Node* BuildMapStatement(T3Tree_Node* port, T3BlockStmt* body, const tPosition& position) {
  auto* statement = gT3AST.mT3MapStmt(position, _sgT3NoStmt(), gT3AST.mT3MTC(position), port,
                                      gT3AST.mT3System(position), port);
  auto* place = new (gT3AST.AllocAttributes(sizeof(T3Place))) T3Place(*body->place);
  place->vexa_enclosing_block = body;
  statement->place = place;
  return statement;
}

// One for each element of an array.
void BuildMapStatementList(T3PortDecl* decl, T3BlockStmt* body, const tPosition& position,
                           std::vector<T3Tree_Node*>& statements) {
  auto* array = RootType(decl->type)->try_as<T3ArrayType>();
  T3Tree_Node* port = gT3AST.mT3PortIdentifier(position, decl->name);
  if (array == nullptr) {
    statements.push_back(BuildMapStatement(port, body, position));
    return;
  }
  const auto bounds = KnownBounds(array);
  if (!bounds || bounds->Size() > kMostMappedPorts || RootType(array->type)->is<T3ArrayType>())
    cg::NotSupported(decl);
  for (int64_t index = bounds->low; index <= bounds->high; ++index) {
    T3Tree_Node* element = gT3AST.mT3PortArrayElement(position, port, MakeIntLiteral(index, position));
    statements.push_back(BuildMapStatement(element, body, position));
  }
}
}  // namespace

void CGConnection(const char* word, _T3ConfStmt* statement, CFunction& function) {
  std::vector<std::string> arguments;
  const auto add_end = [&](T3Tree_Node* component, T3Tree_Node* port) {
    arguments.emplace_back(component->is<T3NoExpression>() ? LUMO_VALUE_ALL_C
                                                           : cg::InRTS(component, vexa_temp_alloc, function));
    AccessPortReference(port, arguments, function);
  };
  add_end(statement->component_1, statement->port_1);
  add_end(statement->component_2, statement->port_2);
  arguments.emplace_back(VEXA_CONTEXT);
  function.call(word, arguments);
}

void AddMapStatements(T3Testcase* testcase) {
  auto* type = RootType(testcase->runs_on)->try_as<T3ComponentType>();
  auto* body = testcase->body->try_as<T3BlockStmt>();
  if (type == nullptr || body == nullptr) return;
  std::vector<T3Tree_Node*> statements;
  for (T3Tree_Node* decl : MembersOf(type).All())
    if (decl->is<T3PortDecl>())
      BuildMapStatementList(decl->as<T3PortDecl>(), body, testcase->position, statements);
  for (auto at = statements.rbegin(); at != statements.rend(); ++at) {
    (*at)->as<_T3Stmt>()->next = body->body;
    body->body = *at;
  }
}
