#include "asn1/integration/T3Representation.h"

#include <algorithm>
#include <iterator>

#include "frontend/T3GlobalASTNodes.h"
#include "frontend/T3Tree.h"

namespace {
struct Edition {
  T3Kind kind;
  const char* text;
};
constexpr Edition kEditions[] = {
    {T3Kind::T3TTCN_3_Edition1, "\"TTCN-3:2001\""},
    {T3Kind::T3TTCN_3_Edition2, "\"TTCN-3:2003\""},
    {T3Kind::T3TTCN_3_Edition3, "\"TTCN-3:2005\""},
};
constexpr const char* kTtcn3 = "\"TTCN-3\"";
constexpr const char* kAsn1 = "\"ASN.1\"";
constexpr std::string_view kAsn1Editions[] = {"\"ASN.1:1988\"", "\"ASN.1:1994\"", "\"ASN.1:1997\"",
                                              "\"ASN.1:2002\""};
}  // namespace

T3Tree_Node* gT3ASN_1 = nullptr;
T3Tree_Node* gT3MESK = nullptr;
T3Tree_Node* gT3ASN2C = nullptr;

void MakeSharedRepresentations() {
  gT3ASN_1 = gT3AST.mT3ASN_1(NoPosition);
  gT3MESK = gT3AST.mT3MESK(NoPosition);
  gT3ASN2C = gT3AST.mT3ASN2C(NoPosition);
}

T3Tree_Node* RepresentationOf(T3Tree_Node* node) {
  auto* module = node == nullptr ? nullptr : node->try_as<T3Module>();
  if (module == nullptr) return node;
  if (module->representation != nullptr) return module->representation;
  return MakeTTCN3Representation(StringM::StGetString(module->language));
}

const char* T3ReprToString(T3Tree_Node* node) {
  node = RepresentationOf(node);
  if (T3Is<T3ASN_1>(node)) return kAsn1;
  for (const Edition& edition : kEditions)
    if (node != nullptr && node->kind == edition.kind) return edition.text;
  return kTtcn3;
}

::language T3ReprToLanguage(T3Tree_Node* node) {
  return T3Is<T3ASN_1>(RepresentationOf(node)) ? language_asn1 : language_ttcn3;
}

T3Tree_Node* MakeTTCN3Representation(std::string_view text) {
  for (const Edition& edition : kEditions)
    if (text == edition.text) return gT3AST.MakeT3Tree(edition.kind);
  return _sgT3TTCN_3();
}

bool IsTTCN3LanguageSpecification(std::string_view text, bool strict) {
  return std::any_of(std::begin(kEditions), std::end(kEditions),
                     [text](const Edition& edition) { return text == edition.text; }) ||
         (!strict && text == kTtcn3);
}

bool IsASN1LanguageSpecification(std::string_view text, bool strict) {
  return std::find(std::begin(kAsn1Editions), std::end(kAsn1Editions), text) != std::end(kAsn1Editions) ||
         (!strict && text == kAsn1);
}
