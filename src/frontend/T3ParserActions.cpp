#include "frontend/T3ParserActions.h"

#include <string>

#include "asn1/integration/T3Representation.h"
#include "driver/options/T3CommandLine.h"
#include "frontend/T3GlobalASTNodes.h"
#include "frontend/T3ParserDefs.h"

namespace t3_actions {

Node NoType() {
  static const Node node = gT3AST.mT3NoType(NoPosition);
  return node;
}

void Report(const _vexa_error_message_t& row, Node node, const tPosition& position, const char* argument) {
  if (gRepairedNodes.contains(node)) return;
  if (argument == nullptr)
    vexa_filtered_error(row, position);
  else
    vexa_filtered_error(row, position, argument);
}

static tPosition PositionOf(Node node) {
  if (auto* expression = node->try_as<_T3Expression>()) return expression->position;
  if (auto* statement = node->try_as<_T3StmtList>()) return statement->position;
  if (auto* definition = node->try_as<_T3TemplateDef>()) return definition->position;
  return NoPosition;
}

Node TypeReference(Node reference) {
  return t.mT3TypeReference(PositionOf(reference), reference);
}

Node TimerType(const tPosition& position) {
  static const tIdent timer = gIdents.MakeIdent("timer");
  return TypeReference(t.mT3Identifier(position, timer));
}

tStringRef PutInQuotes(std::string_view text) {
  std::string quoted;
  quoted.reserve(text.size() + 2);
  quoted.push_back('"');
  quoted.append(text);
  quoted.push_back('"');
  return gStringM.PutString(quoted);
}

std::string_view ScopeName(const T3ParserState& state) {
  if (state.macroScopeIdent == -2) return "control";
  if (state.macroScopeIdent == -1) return "";
  return gIdents.GetString(state.macroScopeIdent);
}

// A language clause that names no edition is worth a warning.
static void CheckLanguage(std::string_view text, const tPosition& position) {
  for (const char* known : {"\"TTCN-3\"", "\"TTCN-3:2001\"", "\"TTCN-3:2003\"", "\"TTCN-3:2005\""})
    if (text == known) return;
  vexa_warning(gT3CommandLine.CommonVerbosity(), "not a valid language specification", position);
}

void FinishModule(const tPosition& position, tIdent name, Node objid, const T3Value& language,
                  Node definitions, Node control, Node with, const tPosition& end, T3ParserState& state) {
  tStringRef text = language.string;
  if (StringM::StLength(text) == 0)
    text = gStringM.PutString("\"TTCN-3\"");
  else
    CheckLanguage(StringM::StGetString(text), language.position);
  Node decls = Reverse(PrependDecls(definitions, control));
  if (objid == nullptr) objid = _sgT3NoExpression();
  auto* module =
      t.mT3Module(position, _sgT3NoModule(), name, text, static_cast<long>(gCurrentFileModificationTime),
                  false, false, false, objid, decls, with);
  module->filename = gCurrentFilename;
  module->representation = MakeTTCN3Representation(StringM::StGetString(text));
  module->end_position = end;
  // A list that begins anew does not hold the module that came last.
  static T3Module* last = nullptr;
  Node* link = T3Is<T3Module>(t.root) && last != nullptr ? &last->next : &t.root;
  while (auto* other = *link == nullptr ? nullptr : (*link)->try_as<T3Module>()) link = &other->next;
  *link = module;
  last = module;
  state.macroScopeIdent = -1;
}

Node PrependDecls(Node reversed, Node list) {
  while (auto* decl = list->try_as<_T3Decl>()) {
    list = decl->next;
    decl->next = reversed;
    reversed = decl;
  }
  return reversed;
}

void GiveWith(Node declarations, Node with) {
  if (T3Is<T3With>(with)) PropagateWithStmt(declarations, with);
}

Node TypeItems(Node declarations, Node type) {
  for (Node node = declarations; auto* decl = node->try_as<_T3InstanceDecl>(); node = decl->next)
    decl->type = MangleArrayTypes(decl->type, type);
  return declarations;
}

Node VarItems(Node declarations, Node type, long restriction) {
  TypeItems(declarations, type);
  if (restriction < 0) return declarations;
  for (Node node = declarations; auto* decl = node->try_as<T3VarDecl>(); node = decl->next) {
    decl->is_template_variable = true;
    decl->templ_restriction = Restriction(restriction);
  }
  return declarations;
}

Node VarDecl(const tPosition& position, tIdent name, Node dimensions, Node value) {
  return t.mT3VarDecl(position, _sgT3NoDecl(), name, _sgT3NoWith(), dimensions, value, false, Restriction(0));
}

Node TypeDecl(const tPosition& position, tIdent name, Node type) {
  return t.mT3TypeDecl(position, _sgT3NoDecl(), name, _sgT3NoWith(), type);
}

Node TemplateDecl(const tPosition& position, long restriction, Node header, Node modifies, Node body) {
  auto* decl = header->as<T3TemplateDecl>();
  decl->position = position;
  Node type = decl->definition;
  decl->definition =
      t.mT3TemplateDef(type->as<_T3Type>()->position, type, body, modifies, Restriction(restriction));
  return decl;
}

Node InlineTemplate(const tPosition& position, Node type, Node body, Node modifies) {
  return t.mT3TemplateDef(position, type, body, modifies, Restriction(0));
}

Node SignatureDecl(const tPosition& position, tIdent name, Node parameters, const T3Value& result,
                   Node exceptions) {
  const bool noblock = result.node == nullptr;
  Node type = t.mT3SignatureType(position, parameters, exceptions, noblock, noblock ? NoType() : result.node);
  return TypeDecl(position, name, type);
}

Node Constraint(Node allowed, Node length) {
  if (allowed == nullptr) return t.mT3SubType(PositionOf(length), nullptr, length);
  Node inner = t.mT3SubType(PositionOf(allowed), nullptr, allowed);
  return length == nullptr ? inner : t.mT3SubType(PositionOf(length), inner, length);
}

Node SubTypeOf(Node type, Node constraint) {
  if (constraint == nullptr) return type;
  const tPosition position = type->as<_T3Type>()->position;
  auto* outer = constraint->as<T3SubType>();
  outer->position = position;
  auto* inner = outer;
  while (inner->parent != nullptr) inner = inner->parent->as<T3SubType>();
  inner->position = position;
  inner->parent = type;
  return constraint;
}

Node Limited(Node type, Node length) {
  return SubTypeOf(type, Constraint(nullptr, length));
}

Node FieldType(Node type, Node dimensions, Node constraint) {
  return MangleArrayTypes(dimensions, SubTypeOf(type, constraint));
}

Node DefinedSubType(Node type, Node dimensions, Node constraint) {
  const tPosition position = type->as<_T3Type>()->position;
  if (constraint == nullptr && dimensions != nullptr) return MangleArrayTypes(dimensions, type);
  if (constraint == nullptr) constraint = t.mT3SubType(position, nullptr, _sgT3NoExpression());
  return MangleArrayTypes(dimensions, SubTypeOf(type, constraint));
}

// The lists of a port were gathered in front of each other.
Node PortType(const tPosition& position, long kind, Node lists) {
  auto* port = lists->as<T3PortType>();
  port->position = position;
  port->port_kind = static_cast<t3_port_kind_t>(kind);
  port->in_list = Reverse(port->in_list);
  port->out_list = Reverse(port->out_list);
  return port;
}

Node PortLists(const tPosition& position, Node types, bool in, bool out) {
  Node out_types = in && out ? DuplicateList(types) : types;
  return t.mT3PortType(position, t3_port_kind_t::Message, in ? types : _sgT3NoTypeItem(),
                       out ? out_types : _sgT3NoTypeItem());
}

static Node PrependTypes(Node reversed, Node list) {
  while (auto* item = list->try_as<T3TypeItem>()) {
    list = item->next;
    item->next = reversed;
    reversed = item;
  }
  return reversed;
}

Node MergePortLists(Node reversed, Node more) {
  auto* lists = more->as<T3PortType>();
  auto* before = reversed == nullptr ? nullptr : reversed->as<T3PortType>();
  lists->in_list = PrependTypes(before == nullptr ? _sgT3NoTypeItem() : before->in_list, lists->in_list);
  lists->out_list = PrependTypes(before == nullptr ? _sgT3NoTypeItem() : before->out_list, lists->out_list);
  return lists;
}

// ---------------------------------------------------------------- imports

static Node FromModule(const T3ParserState& state) {
  return t.mT3ImportIdentifier(state.module_position, state.gModuleId);
}

Node ImportDecl(const tPosition& position, tIdent name, long kind, const T3ParserState& state) {
  Node object = t.mT3ImportIdentifier(position, name);
  Node from = FromModule(state);
  Node next = _sgT3NoDecl();
  Node with = _sgT3NoWith();
  const bool recursive = state.gRecursiveSa;
  tStringRef language = state.gLangSpec;
  switch (kind) {
    case 1:
      return t.mT3ImportTypeDecl(position, next, NoIdent, with, from, object, recursive, language);
    case 2:
      return t.mT3ImportTemplateDecl(position, next, NoIdent, with, from, object, recursive, language);
    case 3:
      return t.mT3ImportConstDecl(position, next, NoIdent, with, from, object, recursive, language);
    case 4:
      return t.mT3ImportTestcaseDecl(position, next, NoIdent, with, from, object, recursive, language);
    case 5:
      return t.mT3ImportTeststepDecl(position, next, NoIdent, with, from, object, recursive, language);
    case 6:
      return t.mT3ImportFunctionDecl(position, next, NoIdent, with, from, object, recursive, language);
    case 7:
      return t.mT3ImportSignatureDecl(position, next, NoIdent, with, from, object, recursive, language);
    case 8:
      return t.mT3ImportModuleParDecl(position, next, NoIdent, with, from, object, recursive, language);
    default:
      break;
  }
  throw internal_exception("T3Parser", __LINE__, "ImportDecl", "unsupported import");
}

Node ImportNames(Node names, long kind, const T3ParserState& state) {
  Node list = _sgT3NoDecl();
  for (auto* item = names->try_as<T3RefItem>(); item != nullptr; item = item->next->try_as<T3RefItem>()) {
    Node decl = ImportDecl(item->position, item->reference->as<T3AttrRefIdentifier>()->id, kind, state);
    list = PrependDecls(list, decl);
  }
  return Reverse(list);
}

Node ImportAll(const tPosition& position, t3_import_restr_t restriction, Node exceptions,
               const T3ParserState& state) {
  return t.mT3ImportAllDecl(position, _sgT3NoDecl(), NoIdent, _sgT3NoWith(), FromModule(state),
                            t.mT3ImportTerminator(position), state.gRecursiveSa, state.gLangSpec, exceptions,
                            restriction);
}

Node ImportGroups(Node groups, const T3ParserState& state) {
  Node list = _sgT3NoDecl();
  for (auto* item = groups->try_as<T3ImportException>(); item != nullptr;
       item = item->next->try_as<T3ImportException>()) {
    Node decl = t.mT3ImportGroupDecl(item->object->as<_T3ImportReference>()->position, _sgT3NoDecl(), NoIdent,
                                     _sgT3NoWith(), FromModule(state), item->object, state.gRecursiveSa,
                                     state.gLangSpec);
    list = PrependDecls(list, decl);
  }
  return Reverse(list);
}

Node NameExceptions(Node names) {
  Node list = _sgT3NoImportException();
  for (auto* item = names->try_as<T3RefItem>(); item != nullptr; item = item->next->try_as<T3RefItem>()) {
    Node object = t.mT3ImportIdentifier(item->position, item->reference->as<T3AttrRefIdentifier>()->id);
    list = t.mT3ImportException(list, t3_import_restr_t::All, object);
  }
  return Reverse(list);
}

Node OfKind(Node exceptions, long kind) {
  auto* item = exceptions->try_as<T3ImportException>();
  for (; item != nullptr; item = item->next->try_as<T3ImportException>())
    static_cast<_T3ImportException*>(item)->kind = static_cast<t3_import_restr_t>(kind);
  return exceptions;
}

static t3_import_restr_t KindOfImport(const T3Tree_Node* decl) {
  switch (decl->kind) {
    case T3Kind::T3ImportGroupDecl:
      return t3_import_restr_t::Group;
    case T3Kind::T3ImportTypeDecl:
      return t3_import_restr_t::Type;
    case T3Kind::T3ImportTemplateDecl:
      return t3_import_restr_t::Template;
    case T3Kind::T3ImportConstDecl:
      return t3_import_restr_t::Const;
    case T3Kind::T3ImportTestcaseDecl:
      return t3_import_restr_t::Testcase;
    case T3Kind::T3ImportTeststepDecl:
      return t3_import_restr_t::Teststep;
    case T3Kind::T3ImportFunctionDecl:
      return t3_import_restr_t::Function;
    case T3Kind::T3ImportSignatureDecl:
      return t3_import_restr_t::Signature;
    default:
      return t3_import_restr_t::ModulePar;
  }
}

Node Exceptions(Node imports) {
  Node list = _sgT3NoImportException();
  for (auto* decl = imports->try_as<_T3ImportDecl>(); decl != nullptr;
       decl = decl->next->try_as<_T3ImportDecl>()) {
    if (auto* all = decl->try_as<T3ImportAllDecl>()) {
      if (T3Is<_T3ImportException>(all->exceptions)) Report(ERR_nested_except, all, all->position);
      list = t.mT3ImportAllException(list, all->import_restr);
    } else {
      list = t.mT3ImportException(list, KindOfImport(decl), decl->object);
    }
  }
  return Reverse(list);
}

// ---------------------------------------------------------------- values

Node MatchAttributes(const tPosition& position, Node value, Node attributes) {
  if (attributes == nullptr) return value;
  auto* match = attributes->as<ExtraMatchingExpressions>();
  match->object = value;
  match->position = position;
  return attributes;
}

Node ConcatenateFieldValueList(Node a, Node b) {
  if (!T3Is<T3FieldValue>(a)) return b;
  if (!T3Is<T3FieldValue>(b)) return a;
  auto* last = a->as<T3FieldValue>();
  while (auto* next = last->next->try_as<T3FieldValue>()) last = next;
  last->next = b;
  return a;
}

Node PushFieldValues(Node reversed, Node list) {
  while (auto* value = list->try_as<T3FieldValue>()) {
    list = value->next;
    value->next = reversed;
    reversed = value;
  }
  return reversed;
}

Node PrependFieldValue(Node first, Node list) {
  first->as<T3FieldValue>()->next = list;
  return first;
}

/// A bound for the elements that are not listed: the given one less the number of those that are.
static Node BoundOfRest(Node bound, size_t listed) {
  const auto reduce = [listed](Node limit) -> Node {
    if (limit->is<T3Infinity>()) return limit;
    const tPosition position = PositionOf(limit);
    return t.mT3Minus(position, limit, t.mT3IntLiteral(position, gStringM.PutString(std::to_string(listed))));
  };
  if (auto* single = bound->try_as<T3SingleBound>())
    return t.mT3SingleBound(single->position, reduce(single->ub));
  auto* range = bound->as<T3RangeBound>();
  return t.mT3RangeBound(range->position, reduce(range->lb), reduce(range->ub));
}

static void SetPermutationKinds(Node elements) {
  bool first = true;
  for (Node node = elements; auto* element = node->try_as<T3FieldValue>(); node = element->next) {
    const bool last = !element->next->is<T3FieldValue>();
    element->permutation_kind = first ? (last ? t3_permutation_kind_t::HeadTail : t3_permutation_kind_t::Head)
                                      : (last ? t3_permutation_kind_t::Tail : t3_permutation_kind_t::Body);
    first = false;
  }
}

// Several `*` mean what one means: one is kept, behind the other elements. A length then limits what it
// stands for.
Node FixPermutation(Node elements, Node length) {
  Node head = _sgT3NoFieldValue();
  Node* link = &head;
  T3FieldValue* any = nullptr;
  size_t listed = 0;
  for (auto* element = elements->try_as<T3FieldValue>(); element != nullptr;) {
    auto* next = element->next->try_as<T3FieldValue>();
    if (element->value->is<T3AnyOrOmit>()) {
      any = element;
    } else {
      ++listed;
      *link = element;
      link = &element->next;
    }
    element = next;
  }
  if (any == nullptr && length != nullptr) {
    const tPosition position = length->as<_T3Bound>()->position;
    any = t.mT3FieldValue(position, _sgT3NoFieldValue(), _sgT3NoFieldSpec(), t.mT3AnyOrOmit(position),
                          t3_permutation_kind_t::No);
  }
  if (any != nullptr && length != nullptr)
    any->value = t.mT3LengthMatch(any->position, any->value, BoundOfRest(length, listed));
  *link = any == nullptr ? _sgT3NoFieldValue() : any;
  if (any != nullptr) any->next = _sgT3NoFieldValue();
  SetPermutationKinds(head);
  return head;
}

// ---------------------------------------------------------------- references

/// Puts `root` under a row of qualifications whose innermost has no base.
static Node PutUnder(Node row, Node root) {
  if (row == nullptr) return root;
  Node node = row;
  const tPosition position = PositionOf(root);
  for (;;) {
    auto* qualification = node->as<_T3Qualification>();
    qualification->position = position;
    if (qualification->base == nullptr) {
      qualification->base = root;
      return row;
    }
    node = qualification->base;
  }
}

Node ApplyTail(Node root, Node tail) {
  return PutUnder(tail, root);
}

// The base may be a qualification that still lacks its own base, so the subscripts alone are walked.
Node SubscriptsOn(Node base, Node subscripts) {
  Node node = subscripts;
  for (;;) {
    auto* subscription = node->as<T3Subscription>();
    subscription->position = PositionOf(base);
    if (subscription->base == nullptr) {
      subscription->base = base;
      return subscripts;
    }
    node = subscription->base;
  }
}

Node GiveObject(Node operation, Node object) {
  const tPosition position = PositionOf(object);
  if (auto* statement = operation->try_as<_T3StmtList>()) statement->position = position;
  if (auto* expression = operation->try_as<_T3Expression>()) expression->position = position;
  if (auto* port = operation->try_as<_T3PortStmt>()) {
    port->port = object;
    PortCheckAttrPort(port);
  } else if (auto* done = operation->try_as<T3DoneStmt>()) {
    done->component = object;
  } else if (auto* killed = operation->try_as<T3KilledStmt>()) {
    killed->component = object;
  } else if (auto* timeout = operation->try_as<T3TimeoutStmt>()) {
    timeout->timer = object;
  } else if (auto* start = operation->try_as<T3StartStmt>()) {
    start->object = object;
  } else if (auto* stop = operation->try_as<T3StopStmt>()) {
    stop->object = object;
  } else if (auto* kill = operation->try_as<T3KillStmt>()) {
    kill->object = object;
  } else if (auto* running = operation->try_as<T3Running>()) {
    running->object = object;
  } else if (auto* alive = operation->try_as<T3Alive>()) {
    alive->object = object;
  } else if (auto* read = operation->try_as<T3Read>()) {
    read->timer = object;
  } else if (auto* create = operation->try_as<T3Create>()) {
    create->component = object;
  } else {
    internal_error_ast("T3Parser", __LINE__, "GiveObject", operation);
  }
  return operation;
}

Node ApplyOperation(Node reference, Node operation) {
  return operation == nullptr ? reference : GiveObject(operation, reference);
}

Node InvocationArgument(Node node) {
  if (T3Is<_T3Expression>(node)) return node;
  Report(ERR_expected, node, PositionOf(node), "Invocation");
  return _sgT3NoExpression();
}

Node NumberForm(const tPosition& position, tIdent name, Node number) {
  Node definition = t.mT3TemplateDef(PositionOf(number), NoType(), number, _sgT3NoTemplateReference(),
                                     t3_template_restriction_t::None);
  Node parameters = t.mT3ActualPar(PositionOf(number), _sgT3NoActualPar(), definition);
  return t.mT3Parameterization(position, t.mT3Identifier(position, name), parameters);
}

}  // namespace t3_actions
