// The evaluation of one module: a walk over its tree that infers each outermost expression from its context,
// reads the types of declarations, and calls the rules of each node after its children.
// ARCHITECTURE.md lists which unit computes which attributes.
#pragma once

#include <span>

#include "frontend/T3Tree.h"

/// A rule of a kind, or of all kinds of a class. It is called for each node after its children, in source
/// order; rules of one node run in the order of the tables, a class before its kinds.
struct T3Rule {
  T3Kind kind;
  void (*check)(T3Tree_Node* node);
};

/// Every unit of rules gives one table, which T3EvalRules.cpp lists.
std::span<const T3Rule> NameRules();
std::span<const T3Rule> TypeRules();
std::span<const T3Rule> DeclarationRules();
std::span<const T3Rule> ExpressionRules();
std::span<const T3Rule> StatementRules();
std::span<const T3Rule> CallRules();
std::span<const T3Rule> OperatorRules();
std::span<const T3Rule> FieldRules();
std::span<const T3Rule> PortRules();
std::span<const T3Rule> ValueRules();
std::span<const T3Rule> PlaceRules();
std::span<const T3Rule> TemplateRules();
std::span<const T3Rule> InitializationRules();
std::span<const T3Rule> SubtypeRules();

/// The rules for the nodes of a kind, in their order.
std::span<void (*const)(T3Tree_Node*)> ChecksOf(T3Kind kind);

/// Prepares what the children of a node read: infers an outermost expression from the context that `parent`
/// is, and sets what a construct inherits from its statement.
using T3EnterRule = void (*)(T3Tree_Node* node, T3Tree_Node* parent);
/// How the nodes of a kind are entered; null where there is nothing to do.
T3EnterRule EnterRuleOf(T3Kind kind);
/// True for the kinds below which the walk passes over some children: names that mean nothing in this
/// language.
bool PicksChildren(T3Kind parent);
/// Whether a child below such a parent is walked.
bool IsWalked(T3Tree_Node* node, T3Tree_Node* parent);

/// What stands in a subtype or a reference to a type is no value of a type: from here to the rules of that
/// type, no constant is noted for the check of subtypes.
void EnterType();

/// Finds the variables of a behaviour, control part or component that are read before they have a value; this
/// is told where they stand.
void EnterBody(T3Tree_Node* node);

/// Walks a subtree; `parent` is the context of its root.
void EvaluateSubtree(T3Tree_Node* root, T3Tree_Node* parent);
