// How what is being generated is meant: scopes that stand while it is, and what they depend on.
#pragma once

#include "frontend/T3Tree.h"

namespace cg {
/// Stands while statements are written that run only on a condition: what the module is initialized with must
/// not be made there.
class Conditional {
 public:
  Conditional();
  Conditional(const Conditional&) = delete;
  Conditional& operator=(const Conditional&) = delete;
  ~Conditional();
};
bool IsConditional();

/// Stands while the left side of an assignment is evaluated: fields that are missing are made on the way.
class LeftSide {
 public:
  LeftSide();
  LeftSide(const LeftSide&) = delete;
  LeftSide& operator=(const LeftSide&) = delete;
  ~LeftSide();
};
bool IsLeftSide();
/// Stands while an index on the left side is evaluated, which is read only.
class ReadSide {
 public:
  ReadSide();
  ReadSide(const ReadSide&) = delete;
  ReadSide& operator=(const ReadSide&) = delete;
  ~ReadSide();

 private:
  int left_sides_;
  int probes_;
};
/// Stands while it is asked whether something is there: what is missing on the way is no fault.
class Probe {
 public:
  Probe();
  Probe(const Probe&) = delete;
  Probe& operator=(const Probe&) = delete;
  ~Probe();
};
bool IsProbe();

/// Stand while references to templates mean the template, and while they mean its value, which is the rule.
class TemplateMode {
 public:
  TemplateMode();
  TemplateMode(const TemplateMode&) = delete;
  TemplateMode& operator=(const TemplateMode&) = delete;
  ~TemplateMode();

 private:
  bool before_;
};
class ValueMode {
 public:
  ValueMode();
  ValueMode(const ValueMode&) = delete;
  ValueMode& operator=(const ValueMode&) = delete;
  ~ValueMode();

 private:
  bool before_;
};
bool IsTemplateMode();

/// A declared template, or the import of one.
bool IsTemplateDecl(T3Tree_Node* decl);
/// True for a matching mechanism, a reference to a template, and a compound value with one of them in it.
bool HoldsTemplate(T3Tree_Node* node);
/// `infinity`, also with a minus.
bool IsInfinityExpression(T3Tree_Node* node);
}  // namespace cg
