#include "analysis/templates/T3TemplateStatus.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "analysis/types/T3References.h"
#include "analysis/templates/T3PartBehind.h"
#include "analysis/templates/T3TemplateChains.h"
#include "analysis/templates/T3TemplateMerge.h"
#include "analysis/types/T3Parts.h"
#include "analysis/types/T3Types.h"
#include "frontend/T3KindCover.h"
#include "frontend/T3Lists.h"
#include "support/NumberMap.h"
#include "support/ModuleCaches.h"

namespace {
// Templates refer to each other; a chain of references that is longer counts as a reference, and is told.
constexpr int kMaxDepthOfStatus = 6000;

// By the number of a declaration and the question; what is being looked through counts as a reference.
NumberMap<T3TemplateStatus>& g_known = *new NumberMap<T3TemplateStatus>;

struct Collection {
  bool deep;
  vexa_template_mode_t mode;
  /// The signature of the whole template, null inside of its fields.
  T3SignatureType* signature;
  int depth = 0;
  bool awaits_merge = false;
  bool is_cut_off = false;
  /// Those that modify others and are being looked through, the innermost last.
  std::vector<T3TemplateDef*> modifying = {};

  int Of(T3Tree_Node* node);
  int OfDecl(T3TemplateDecl* decl);
  int OfDefinition(T3TemplateDef* definition);
  int OfParameter(T3Tree_Node* formal);
  int OfReference(T3Tree_Node* reference);
  int OfPart(_T3Qualification* part);
  int OfCall(T3Parameterization* call);
  int OfCompound(T3CompoundValue* compound);
  int OfParameters(T3Parameterization* call);
};

int Collection::OfCompound(T3CompoundValue* compound) {
  T3SignatureType* whole = std::exchange(signature, nullptr);
  int status = kStatusPlain;
  if (whole != nullptr && mode != vexa_template_plain) {
    const std::vector<T3Tree_Node*> parameters = MembersOf(whole);
    const auto values = ValuesByPlace(PartsOf(compound, whole), parameters.size());
    for (size_t i = 0; i < parameters.size(); ++i) {
      if (!FieldValueIsRelevant(parameters[i], mode)) continue;
      const bool given = i < values.size() && values[i] != nullptr;
      status = std::max(status, given ? Of(values[i]->value) : kStatusUndefined);
    }
  } else {
    for (auto* at : Items<T3FieldValue>(compound->value)) {
      const bool permuted = at->permutation_kind != t3_permutation_kind_t::No;
      status = std::max({status, permuted ? kStatusMatching : kStatusPlain, Of(at->value)});
    }
  }
  signature = whole;
  return status;
}

int Collection::OfParameters(T3Parameterization* call) {
  T3SignatureType* whole = std::exchange(signature, nullptr);
  int status = kStatusPlain;
  for (auto* at : Items<T3ActualPar>(call->apl)) status = std::max(status, Of(at->expression));
  signature = whole;
  return status;
}

// Each declaration is looked through once, however many refer to it.
int Collection::OfDecl(T3TemplateDecl* decl) {
  const uint64_t key = uint64_t{decl->number} << 4 | (signature != nullptr ? 8 : 0) |
                       static_cast<uint64_t>(mode) << 1 | (deep ? 1 : 0);
  const auto [known, made] = g_known.TryEmplace(key, T3TemplateStatus{kStatusReference});
  if (!made) {
    awaits_merge = awaits_merge || known->awaits_merge;
    is_cut_off = is_cut_off || known->is_cut_off;
    return known->value;
  }
  const bool outside = std::exchange(awaits_merge, false);
  const int status = std::max(Of(decl->definition), kStatusReference);
  g_known[key] = {status, awaits_merge, is_cut_off};
  awaits_merge = awaits_merge || outside;
  return status;
}

// A field or an element; a name behind that of its module is none.
bool IsPart(T3Tree_Node* reference) {
  return reference->is<T3Subscription>() ||
         (reference->is<T3Qualifier>() && !T3Is<T3TemplateDecl>(DefQuietly(reference)));
}

// A name, a call, or a part of what they stand for.
int Collection::OfReference(T3Tree_Node* reference) {
  T3Tree_Node* def = DefQuietly(reference);
  if (T3Is<T3FormalTemplatePar>(def)) return OfParameter(def);
  if (T3Is<T3TemplateDecl>(def)) return OfDecl(def->as<T3TemplateDecl>());
  if (auto* call = reference->try_as<T3Parameterization>()) return OfCall(call);
  return IsPart(reference) ? OfPart(reference->as<_T3Qualification>()) : kStatusPlain;
}

T3Tree_Node* MergedOnly(T3TemplateDecl* decl, T3Parameterization* call) {
  return AwaitsMerge(decl->definition) ? nullptr : WrittenConstraint(decl, call);
}

// A part may be used for what the whole may be used for, unless it is known to be better. What is given for
// the parameters of a call may stand in any part.
int Collection::OfPart(_T3Qualification* part) {
  T3SignatureType* outer = std::exchange(signature, nullptr);
  T3Tree_Node* whole = part->base;
  while (IsPart(whole)) whole = whole->as<_T3Qualification>()->base;
  int status = whole->is<_T3Reference>() ? Of(whole) : kStatusPlain;
  if (status > kStatusReference) {
    T3Tree_Node* value = PartBehind(part, MergedOnly);
    const int own = value->is<_T3Reference>() ? status : Of(value);
    if (awaits_merge && value->is<_T3Reference>())
      status = kStatusReference;
    else if (!deep || own != kStatusReference)
      status = own;
  }
  signature = outer;
  return status;
}

int Collection::OfCall(T3Parameterization* call) {
  T3Tree_Node* def = DefQuietly(call->base);
  if (!T3Is<T3TemplateDecl>(def)) return kStatusPlain;
  const int status = OfDecl(def->as<T3TemplateDecl>());
  return deep ? std::max(status, OfParameters(call)) : status;
}

int Collection::OfDefinition(T3TemplateDef* definition) {
  if (AwaitsMerge(definition)) {
    awaits_merge = true;
    return kStatusReference;
  }
  if (!definition->modifies->is<T3TemplateReference>()) return Of(definition->constraint);
  modifying.push_back(definition);
  const int status = std::max(Of(definition->constraint), kStatusReference);
  modifying.pop_back();
  return status;
}

// The parameter of a template that is modified is what was given for it there, which may be the parameter of
// one that is nearer.
int Collection::OfParameter(T3Tree_Node* formal) {
  for (size_t i = modifying.size(); i-- > 0;)
    if (T3Tree_Node* actual = GivenAlongChain(modifying[i], formal))
      return std::max(Of(actual), kStatusReference);
  return kStatusReference;
}

using Matching = T3Kinds<_T3MatchingExpression, ExtraMatchingExpressions>;
using ByWhatIsBehind = T3Kinds<T3NotUsedSymbol, T3CompoundValue, _T3Reference>;
// Values, whatever their operands are.
using Plain = T3Kinds<T3NoExpression, _T3BinaryExpression, _T3UnaryExpression, _T3ShiftOrRotateExpression,
                      T3Omit, T3Infinity, T3IntLiteral, T3FloatLiteral, T3BooleanLiteral, T3VerdictLiteral,
                      T3ObjectIdentifierLiteral, T3CharStringLiteral, T3UnivCharStringLiteral,
                      T3BitStringLiteral, T3OctStringLiteral, T3HexStringLiteral, T3NoWait, T3Null,
                      T3UnivCharLiteral, T3Match, T3ValueOf, T3LengthRange>;
static_assert(T3Covers<_T3Expression, Matching, ByWhatIsBehind, Plain>());

int Collection::Of(T3Tree_Node* node) {
  is_cut_off = is_cut_off || depth >= kMaxDepthOfStatus;
  if (depth >= kMaxDepthOfStatus) return kStatusReference;
  ++depth;
  int status = kStatusPlain;
  if (node->is<T3NoTemplateDef>())
    status = kStatusReference;
  else if (auto* definition = node->try_as<T3TemplateDef>())
    status = OfDefinition(definition);
  else if (Matching::Has(node))
    status = kStatusMatching;
  else if (node->is<T3NotUsedSymbol>())
    status = kStatusUndefined;
  else if (auto* compound = node->try_as<T3CompoundValue>())
    status = OfCompound(compound);
  else if (node->is<_T3Reference>())
    status = OfReference(node);
  --depth;
  return status;
}
}  // namespace

bool FieldValueIsRelevant(T3Tree_Node* parameter, vexa_template_mode_t mode) {
  auto* typed = T3Is<_T3TypedFormal>(parameter) ? parameter->as<_T3TypedFormal>() : nullptr;
  if (typed == nullptr) return false;
  return typed->pass != (mode == vexa_template_reply ? t3_par_pass_t::In : t3_par_pass_t::Out);
}

T3TemplateStatus CollectTemplateStatus(T3Tree_Node* node, bool deep, vexa_template_mode_t mode) {
  Collection collection{deep, mode, ExpressionBaseType(node)->try_as<T3SignatureType>()};
  const int value = collection.Of(node);
  return {value, collection.awaits_merge, collection.is_cut_off};
}

namespace {
const ModuleCache kTemplateStatusCache{[] { g_known.clear(); }, ModuleCache::Holds::ForTree};
}  // namespace
