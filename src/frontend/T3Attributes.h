// The passes that reshape a parsed tree before analysis: each declaration gets the `with` attributes that
// hold for it, array types and types written inside others get declarations of their own.
#pragma once

#include <algorithm>
#include <map>
#include <utility>
#include <vector>

#include "frontend/T3Tree.h"

/// The text of a `with` attribute with its double quotes, and whether it overrides those further inside.
struct T3AttributeText {
  tStringRef text = gStringM.EmptyString();
  bool override = false;
};
/// What the statements of one kind say of one thing. Several say something only where variants are gathered;
/// none means no attribute.
struct T3AttributeValue {
  std::vector<T3AttributeText> texts;

  bool IsEmpty() const { return texts.empty(); }
  bool Overrides() const {
    return std::any_of(texts.begin(), texts.end(), [](const T3AttributeText& text) { return text.override; });
  }
};
using T3AttributeMap = std::map<tIdent, T3AttributeValue>;
/// What the entries of a map were before an inner level came; the empty attribute for none.
using T3HiddenAttributes = std::vector<std::pair<tIdent, T3AttributeValue>>;

/// The texts by which the encodings of ASN.1 are named.
extern tStringRef vexa_encoder_BER, vexa_encoder_BER_INDEFINITE_LENGTH_variation,
    vexa_encoder_PER_BASIC_ALIGNED, vexa_encoder_PER_BASIC_UNALIGNED;
/// Makes them; once.
void BeginT3Attributes();

/// The unqualified attribute of a kind, or an empty one; the qualified ones go to `map` by their names.
/// Reports what is given twice, unless all is to be gathered.
T3AttributeValue CollectAttributes(T3Tree_Node* with_list, t3_with_attribute_t kind, T3AttributeMap* map,
                                   bool gather = false);
/// Whether the variants where an encoding is in force are gathered: those that describe messages bit by bit
/// or word by word do so in many statements.
bool GathersVariants(const T3AttributeValue& encode);
/// A new `with` list of one kind: the attribute of the whole, then the qualified ones by descending name.
T3Tree_Node* CreateWithSpec(const T3AttributeValue& value, t3_with_attribute_t kind,
                            const T3AttributeMap& map, const tPosition& position);
/// Hangs `b` behind the last element of `a`.
T3Tree_Node* AppendWithSpec(T3Tree_Node* a, T3Tree_Node* b);
T3AttributeValue JoinGlobalAttributes(const T3AttributeValue& outer, const T3AttributeValue& inner);
/// Enters what an inner level says into the map of the outer one, except what the outer one overrides.
/// Returns what it takes to undo that.
T3HiddenAttributes JoinAttributeMaps(T3AttributeMap* map, const T3AttributeMap& inner);
void RestoreAttributeMap(T3AttributeMap* map, const T3HiddenAttributes& hidden);

/// Distributes `with` attributes over groups, types and imports. Once for each module.
void PreprocessAttributes(T3Tree_Node* module);
/// Gives each array type a declaration in front of the module's declaration in which it stands.
void ExplicifyArrayTypes(T3Tree_Node* module);
/// Gives each nested type a declaration in front of the module's declaration in which it stands. `root` is
/// a T3Builtin or a module.
void ExplicifyInlinedTypes(T3Tree_Node* root);
