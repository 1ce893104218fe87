#include "generator/module/CGForms.h"

#include <array>

#include "frontend/T3KindCover.h"
#include "generator/expressions/CGExpressionParts.h"
#include "generator/templates/CGTemplate.h"

namespace {
using Operators = T3Kinds<_T3BinaryExpression, _T3UnaryExpression, _T3ShiftOrRotateExpression>;
using Literals = T3Kinds<T3Omit, T3Infinity, T3IntLiteral, T3FloatLiteral, T3BooleanLiteral, T3VerdictLiteral,
                         T3ObjectIdentifierLiteral, T3CharStringLiteral, T3BitStringLiteral,
                         T3OctStringLiteral, T3HexStringLiteral, T3Null, T3UnivCharLiteral>;
using Functions = T3Kinds<_T3PreDefinedFunction, _T3PreDefinedTemplateFunction, T3Regexp>;
using Matches = T3Kinds<T3Match, T3ValueOf, T3LengthRange, _T3MatchingExpression, ExtraMatchingExpressions>;
using Operations =
    T3Kinds<T3Execute, T3Self, T3MTC, T3System, T3AnyTimer, T3AllTimer, T3AnyPort, T3AllPort, T3AnyComponent,
            T3AllComponent, T3Create, T3Running, T3Alive, T3Read, T3GetVerdict, T3Activate>;
// Each names a template, a behaviour that is called, or something that holds a value.
using References = T3Kinds<T3Identifier, T3Parameterization, T3Qualifier, T3Subscription>;
using Compounds = T3Kinds<T3CompoundValue>;
// Read by the statement, the list or the literal that they are a part of.
using InStatements = T3Kinds<T3NotUsedSymbol, T3NoWait, _T3PortReference, _T3AddressReference>;
// Of nothing, of the parser alone, and what analysis takes for another form.
using NeverGenerated = T3Kinds<T3NoExpression, T3UnivCharStringLiteral, T3ObjIdQualifier>;
static_assert(T3Covers<_T3Expression, Operators, Literals, Functions, Matches, Operations, References,
                       Compounds, InStatements, NeverGenerated>());

bool Reference(T3Tree_Node* node, cg::Mode mode, CFunction& function) {
  return cg::Matching(node, mode, function) || cg::Behaviour(node, mode, function) ||
         cg::Reference(node, mode, function);
}

template <class Kinds>
constexpr void Set(std::array<cg::Form, cg::kForms>& forms, cg::Form form) {
  for (size_t i = 0; i < cg::kForms; ++i)
    if (Kinds::Has(_T3Expression::kFirst + i)) forms[i] = form;
}

constexpr auto kForms = [] {
  std::array<cg::Form, cg::kForms> forms{};
  Set<Operators>(forms, cg::Operator);
  Set<Literals>(forms, cg::Literal);
  Set<Functions>(forms, cg::PreDefinedFunction);
  Set<Matches>(forms, cg::Matching);
  Set<Operations>(forms, cg::Behaviour);
  Set<References>(forms, Reference);
  Set<Compounds>(forms, cg::Compound);
  return forms;
}();
}  // namespace

void CGSetForms() {
  cg::SetForms(kForms, CGInlinedTemplate);
}
