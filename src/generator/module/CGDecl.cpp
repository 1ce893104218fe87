#include "generator/module/CGDecl.h"

#include <vector>

#include "analysis/constants/T3Cycles.h"
#include "analysis/types/T3Constants.h"
#include "analysis/names/T3Names.h"
#include "analysis/flow/T3Unused.h"
#include "driver/diagnostics/T3Error.h"
#include "frontend/T3KindCover.h"
#include "generator/expressions/CGExpressionParts.h"
#include "generator/behaviour/CGFunction.h"
#include "generator/text/CGModuleText.h"
#include "generator/templates/CGTemplate.h"
#include "generator/types/CGType.h"
#include "generator/types/CGValue.h"
#include "generator/text/T3Context.h"
#include "frontend/T3Lists.h"

namespace {
// A module that leaves declarations out must be generated anew when another one changes.
void SetDefinitionsRemoved(T3Tree_Node* decl) {
  if (decl->place == nullptr || !T3Is<T3Module>(decl->place->vexa_my_module)) return;
  decl->place->vexa_my_module->as<T3Module>()->unused_definitions_removed = true;
}

void ImportPass(T3Tree_Node* decl) {
  switch (decl->kind) {
    case T3Kind::T3ImportTypeDecl:
    case T3Kind::T3ImportSignatureDecl:
      if (!IsAsnNullType(decl->as<_T3ImportDecl>()->attr().def_aux)) CGType(decl);
      break;
    case T3Kind::T3ImportTemplateDecl:
      CGTemplateImport(decl);
      break;
    case T3Kind::T3ImportConstDecl:
    case T3Kind::T3ImportModuleParDecl:
    case T3Kind::T3ExtConstDecl:
      CGValue(decl);
      break;
    case T3Kind::T3ImportTestcaseDecl:
    case T3Kind::T3ImportTeststepDecl:
    case T3Kind::T3ImportFunctionDecl:
      CGFunction(decl);
      break;
    default:
      break;
  }
}

void NormalPass(T3Tree_Node* decl) {
  switch (decl->kind) {
    case T3Kind::T3TemplateDecl:
      CGTemplate(decl);
      break;
    case T3Kind::T3ModuleParDecl:
      CGModulePar(decl);
      break;
    case T3Kind::T3TestStep:
    case T3Kind::T3Testcase:
    case T3Kind::T3Function:
    case T3Kind::T3ExtFunction:
    case T3Kind::T3ControlPart:
      CGFunction(decl);
      break;
    default:
      break;
  }
}

// What no code is generated for, and what has no name of its own in C, is told at its place, and no file is written; the other declarations are
// still looked at.
template <class Generation>
void OrReport(T3Tree_Node* decl, const Generation& generation) {
  try {
    generation(decl);
  } catch (const cg::not_supported& fault) {
    gT3Context.invalidateFile();
    vexa_error(fault.reason, fault.position == NoPosition ? PositionOf(decl) : fault.position);
  } catch (const CNameTaken& taken) {
    gT3Context.invalidateFile();
    vexa_error(taken.message(), PositionOf(decl));
  }
}

using OfOtherModules = T3Kinds<_T3ImportDecl, T3ExtConstDecl>;
using Normal = T3Kinds<T3TemplateDecl, T3ModuleParDecl, _T3FunctionDecl, T3ControlPart>;
// They have an order of their own, and come before the others.
using InOrderOfUse = T3Kinds<T3TypeDecl, T3ConstDecl>;
using InComponentsAndBlocks = T3Kinds<T3VarDecl, T3PortDecl>;
static_assert(
    T3Covers<_T3Decl, OfOtherModules, Normal, InOrderOfUse, T3Kinds<T3GroupDecl>, InComponentsAndBlocks>());

void CGDecl1(T3Tree_Node* list, bool isImportPass) {
  for (auto* decl : DeclsInGroups(list)) {
    if (decl->is<T3GroupDecl>()) continue;
    if (InComponentsAndBlocks::Has(decl)) internal_error_ast("CGDecl", __LINE__, "CGDecl1", decl);
    if (!RequiresGeneration(decl)) {
      if (!isImportPass) SetDefinitionsRemoved(decl);
      continue;
    }
    OrReport(decl, isImportPass ? ImportPass : NormalPass);
  }
}

void CollectTypesAndConstants(T3Tree_Node* list, std::vector<T3Tree_Node*>& found) {
  for (auto* decl : DeclsInGroups(list))
    if (InOrderOfUse::Has(decl)) found.push_back(decl);
}

// The order of generation: as analysis has found it, then what it does not know of.
std::vector<T3Tree_Node*> OrderOfGeneration(T3Tree_Node* list) {
  std::vector<T3Tree_Node*> found;
  CollectTypesAndConstants(list, found);
  T3NodeSet waiting(found.begin(), found.end());
  std::vector<T3Tree_Node*> ordered;
  for (T3Tree_Node* decl : orderDependencies(CGCurrentModule()))
    if (waiting.erase(decl) > 0) ordered.push_back(decl);
  for (T3Tree_Node* decl : found)
    if (waiting.count(decl) > 0) ordered.push_back(decl);
  return ordered;
}

void CGGlobalConstants1(T3Tree_Node* decl) {
  if (!T3Is<_T3Decl>(decl)) return;
  if (!RequiresGeneration(decl))
    SetDefinitionsRemoved(decl);
  else if (decl->is<T3TypeDecl>())
    OrReport(decl, CGType);
  else if (decl->is<T3ConstDecl>())
    OrReport(decl, CGValue);
}
}  // namespace

void CGDecl(T3Tree_Node* list) {
  CGDecl1(list, false);
}

void CGImportDecl(T3Tree_Node* list) {
  CGDecl1(list, true);
}

void CGGlobalConstants(T3Tree_Node* list) {
  for (T3Tree_Node* decl : OrderOfGeneration(list)) CGGlobalConstants1(decl);
}
