// What a template may be used for: sent as a value, or only received.
#pragma once

#include "frontend/T3Tree.h"

// The status of a template: the higher, the worse for sending.
inline constexpr int kStatusPlain = 0;
inline constexpr int kStatusReference = 1;
inline constexpr int kStatusMatching = 2;
inline constexpr int kStatusUndefined = 3;

struct T3TemplateStatus {
  int value = kStatusPlain;
  /// Something that modifies another template has not been merged yet, and counts as a reference: which
  /// fields are left is not known before.
  bool awaits_merge = false;
  /// A chain of references was too long to be followed, and counts as one.
  bool is_cut_off = false;
};

/// Whether an operation carries a parameter of a signature: `in` goes with calls, `out` with replies, `inout`
/// with both.
bool FieldValueIsRelevant(T3Tree_Node* parameter, vexa_template_mode_t mode);
/// The status of a template definition or expression in an operation. `deep`: actual parameters count too.
T3TemplateStatus CollectTemplateStatus(T3Tree_Node* node, bool deep, vexa_template_mode_t mode);
