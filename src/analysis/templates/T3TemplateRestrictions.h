// Restrictions of templates: what may be assigned to a variable, given for a parameter, or changed by a
// modification, where only one value, one or none, or any but none is allowed.
#pragma once

#include <span>

#include "analysis/walk/T3Eval.h"

/// Rules that note what TemplateRestrictionsCheck has to look at.
std::span<const T3Rule> RestrictionRules();
