// What the actions of the grammar call to build the tree.
#pragma once

#include <string_view>

#include "driver/diagnostics/T3Error.h"
#include "frontend/T3AstManipulate.h"
#include "frontend/T3ParserTables.h"

namespace t3_actions {

using Node = T3Tree_Node*;
inline constexpr T3Tree& t = gT3AST;

inline Node Reverse(Node list) {
  return gT3AST.ReverseT3Tree(list);
}
/// Reports a fault of what a node means at its position, unless a repair touched the node.
void Report(const _vexa_error_message_t& row, Node node, const tPosition& position,
            const char* argument = nullptr);
/// The node that stands where no type is given.
Node NoType();
/// A reference to a type; keeps the position of the name.
Node TypeReference(Node reference);
Node TimerType(const tPosition& position);
inline t3_template_restriction_t Restriction(long n) {
  return static_cast<t3_template_restriction_t>(n);
}
inline t3_par_pass_t Pass(long n) {
  return static_cast<t3_par_pass_t>(n);
}
/// A text of the string store in double quotes.
tStringRef PutInQuotes(std::string_view text);
std::string_view ScopeName(const T3ParserState& state);

void FinishModule(const tPosition& position, tIdent name, Node objid, const T3Value& language,
                  Node definitions, Node control, Node with, const tPosition& end, T3ParserState& state);

// Lists of declarations end in T3NoDecl. Prepend puts the elements of a list in source order in front of a
// reversed one.
Node PrependDecls(Node reversed, Node list);
void GiveWith(Node declarations, Node with);
/// Gives each declaration its type: its own dimensions around the shared element type.
Node TypeItems(Node declarations, Node type);
Node VarItems(Node declarations, Node type, long restriction);
Node VarDecl(const tPosition& position, tIdent name, Node dimensions, Node value);
Node TypeDecl(const tPosition& position, tIdent name, Node type);
Node TemplateDecl(const tPosition& position, long restriction, Node header, Node modifies, Node body);
Node InlineTemplate(const tPosition& position, Node type, Node body, Node modifies);
Node SignatureDecl(const tPosition& position, tIdent name, Node parameters, const T3Value& result,
                   Node exceptions);

// Types: a constraint is a chain of T3SubType whose innermost has no parent yet, or null.
Node Constraint(Node allowed, Node length);
Node SubTypeOf(Node type, Node constraint);
Node Limited(Node type, Node length);
Node FieldType(Node type, Node dimensions, Node constraint);
Node DefinedSubType(Node type, Node dimensions, Node constraint);
Node PortType(const tPosition& position, long kind, Node lists);
Node PortLists(const tPosition& position, Node types, bool in, bool out);
/// Puts the types of one direction in front of those gathered before; null when there are none.
Node MergePortLists(Node reversed, Node more);

// Imports.
Node ImportDecl(const tPosition& position, tIdent name, long kind, const T3ParserState& state);
Node ImportNames(Node names, long kind, const T3ParserState& state);
Node ImportAll(const tPosition& position, t3_import_restr_t restriction, Node exceptions,
               const T3ParserState& state);
Node ImportGroups(Node groups, const T3ParserState& state);
Node NameExceptions(Node names);
/// Gives the exceptions of one kind of import that kind.
Node OfKind(Node exceptions, long kind);
Node Exceptions(Node imports);

// Parameters and statements.
Node PrependPar(Node reversed, Node par);
Node Block(const tPosition& position, Node items, const tPosition& end);
Node PrependStatements(Node reversed, Node list);
Node DeclStatements(Node declarations, const tPosition& position);
Node ConfigStatement(T3Kind kind, const tPosition& position, Node pair);
/// One end of a connection, as a connection with itself, which PortPair takes apart.
Node PortEnd(const tPosition& position, Node component, Node port);
Node PortPair(const tPosition& position, Node a, Node b);
Node AllPorts(const tPosition& position);
Node IfStatement(const tPosition& position, Node condition, Node block, Node elseifs, Node otherwise);
Node TranslateSelectCaseConstruct(Node expression, Node cases, Node otherwise);
Node InvocationStatement(const tPosition& position, Node node);
Node PrependAlt(Node reversed, Node alternative);
Node AltStatement(const tPosition& position, Node alternatives, const tPosition& end);
Node InterleaveStatement(const tPosition& position, Node first, Node tail, const tPosition& end);
Node AltstepBranch(const tPosition& position, Node guard, Node reference, Node block);
Node CallStatement(const tPosition& position, Node value, Node timer, Node recipient, Node body,
                   const tPosition& end);
Node FinishGetReply(const tPosition& position, Node arguments, Node sender, Node redirect);
Node FinishCatch(const tPosition& position, Node arguments, Node sender, Node redirect);
/// Puts the object of an operation (port, timer, component) in; the operation begins where the object does.
Node GiveObject(Node operation, Node object);

// References: a tail is a row of qualifications whose innermost has no base yet, or null.
Node ApplyTail(Node root, Node tail);
Node SubscriptsOn(Node base, Node subscripts);
Node ApplyOperation(Node reference, Node operation);
Node InvocationArgument(Node node);
Node NumberForm(const tPosition& position, tIdent name, Node number);

// Values.
Node MatchAttributes(const tPosition& position, Node value, Node attributes);
/// Appends list b to list a; where one is the end marker, the other.
Node ConcatenateFieldValueList(Node a, Node b);
/// Puts the elements of a list in front of a reversed one.
Node PushFieldValues(Node reversed, Node list);
Node PrependFieldValue(Node first, Node list);
Node FixPermutation(Node elements, Node length);

}  // namespace t3_actions
