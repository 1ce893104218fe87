// What a template may be used for: sent as a value, or only received.
#pragma once

#include "frontend/T3Tree.h"

// The status of a template: the higher, the worse for sending.
inline constexpr int kStatusPlain = 0;
inline constexpr int kStatusReference = 1;
inline constexpr int kStatusMatching = 2;
inline constexpr int kStatusUndefined = 3;

/// The parameters that an operation on a signature uses.
enum class vexa_template_mode_t { Message, Call, Reply };

/// The status of a template definition or expression in an operation. `deep`: actual parameters count too.
/// What is made by modifying another template counts as a reference: which fields are left is not known
/// before the two are merged.
int CollectTemplateStatus(T3Tree_Node* node, bool deep, vexa_template_mode_t mode);
/// Forgets what is known of declarations.
void ForgetTemplateStatus();
