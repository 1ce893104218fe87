// The templates with parameters along chains of templates that modify one another. What lies between them in
// long chains is passed over, so that a chain costs what is asked of it.
#pragma once

#include "frontend/T3Tree.h"

/// A template with parameters, and the definition that modifies it or one that does so in turn.
struct T3ChainLink {
  T3TemplateDef* modifying = nullptr;
  T3TemplateDecl* modified = nullptr;
  /// The number of links from here to the end of the chain; 0 where none is left.
  size_t length = 0;
};

/// To be asked for a definition that has been merged.
T3ChainLink FirstChainLink(T3TemplateDef* definition);
T3ChainLink NextChainLink(const T3ChainLink& link);
/// The length of the links to the template that a formal parameter belongs to; 0 for any other parameter, and
/// for those of chains that have not been asked for.
size_t ChainLengthAt(T3Tree_Node* formal);
/// What is given for a parameter along the chain of a definition; null where nothing is.
T3Tree_Node* GivenAlongChain(T3TemplateDef* definition, T3Tree_Node* formal);
