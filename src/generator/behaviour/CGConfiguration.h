// Connections and mappings of ports.
#pragma once

#include "FileAPI/CFunction.h"
#include "frontend/T3Tree.h"

/// `word` is the call for a connect, disconnect, map or unmap statement.
void CGConnection(const char* word, _T3ConfStmt* statement, CFunction& function);
/// Without a `system` clause the ports of a test case's own component are those of the system: the body
/// begins with a mapping of each.
void AddMapStatements(T3Testcase* testcase);
