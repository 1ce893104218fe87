// The stages of one module's analysis, in the order in which the controller runs them, and the cleanup
// after it. Each stage is a pass over the tree; its unit is named beside it.
#pragma once

#include "frontend/T3Attributes.h"
#include "frontend/T3Tree.h"

// ExplicifyArrayTypes and PreprocessAttributes come first, ExplicifyInlinedTypes behind AddBuiltinTypes.

/// Turns import statements into one declaration for each imported entity (T3Imports).
void PreprocessImports(T3Tree_Node* module);
/// Sets the singletons of the built-in types for a TTCN-3 module; AddBuiltinTypes calls it (T3BuiltinTypes).
void InitBuiltinTypes();
/// The T3Builtin root of a module: the module, the built-in and the auxiliary types (T3BuiltinTypes).
T3Tree_Node* AddBuiltinTypes(T3Tree_Node* module);
/// Merges extended component types; false when that failed (T3Components).
bool ExtendComponents(T3Tree_Node* root);

/// Computes the attributes of a module and checks the rules over them (T3Eval).
class T3Eval {
 public:
  void BeginT3Eval();
  void Evaluate(T3Tree_Node* root);
  void CloseT3Eval();
};
extern T3Eval gT3Eval;

/// True when the module has a cycle of template definitions or modifications (T3Templates).
bool TemplateCyclesFound();
/// Replaces template modifications by whole templates (T3TemplateMerge).
void ExplicifyTemplateModifies(T3Tree_Node* root);
/// Refuses what is sent and may match several values, and what is used otherwise and was not known before the
/// modifications were resolved (T3TemplateRules).
void CheckMatchingExpressionsInSendTemplates(T3Tree_Node* root);
void OmitCheck(T3Tree_Node* root);
/// Holds templates to their restrictions (T3TemplateRestrictions).
void TemplateRestrictionsCheck(T3Tree_Node* root);
/// Checks values against their subtypes (T3Subtypes).
void CheckSubtypes(T3Tree_Node* root);
/// Has that check look at `made` in the place of `written`.
void ReplaceSubtyped(T3Tree_Node* written, T3Tree_Node* made);
/// Lists the fields of `anytype` (T3Types).
void SetAnyTypeInformation(T3Tree_Node* root);

/// Drops the derived data of a module's analysis that no later module reads (T3Memory).
void CleanupAnalysisIntermediateData(T3Tree_Node* module);
