#include "analysis/inference/T3PatternReferences.h"

#include <cctype>
#include <optional>
#include <vector>

#include "analysis/names/T3Names.h"
#include "analysis/types/T3Constants.h"
#include "analysis/types/T3References.h"
#include "analysis/types/T3Types.h"
#include "analysis/walk/T3Subtree.h"

namespace {
struct PatternReference {
  size_t begin = 0;
  size_t end = 0;
  std::vector<tIdent> names;  // with a point between them
  bool of_characters = false;
};

// The names between the braces, if there is nothing else.
std::vector<tIdent> NamesIn(std::string_view text) {
  std::vector<tIdent> names;
  for (size_t at = 0; at <= text.size();) {
    const size_t point = std::min(text.find('.', at), text.size());
    const std::string name(text.substr(at, point - at));
    if (name.empty() || std::isalpha(static_cast<unsigned char>(name[0])) == 0) return {};
    for (const char c : name)
      if (std::isalnum(static_cast<unsigned char>(c)) == 0 && c != '_') return {};
    names.push_back(gIdents.MakeIdent(name));
    at = point + 1;
  }
  return names;
}

// Behind a set of characters, in which braces are characters.
size_t BehindSet(std::string_view text, size_t at) {
  for (++at; at < text.size() && text[at] != ']'; ++at)
    if (text[at] == '\\') ++at;
  return at;
}

std::optional<PatternReference> NextReference(std::string_view text, size_t at) {
  for (; at < text.size(); ++at) {
    const bool escapes = text[at] == '\\';
    const bool of_characters = escapes && text.substr(at, 3) == "\\N{";
    if (text[at] == '[') at = BehindSet(text, at);
    if (escapes && text.substr(at, 3) == "\\q{") at = text.find('}', at);
    if (escapes && !of_characters) ++at;
    if (at >= text.size()) break;
    if (!of_characters && (escapes || text[at] != '{')) continue;
    const size_t open = of_characters ? at + 2 : at;
    const size_t close = text.find('}', open);
    if (close == std::string_view::npos) break;
    PatternReference found{at, close + 1, NamesIn(text.substr(open + 1, close - open - 1)), of_characters};
    if (!found.names.empty()) return found;
  }
  return std::nullopt;
}

bool IsObject(T3Tree_Node* decl) {
  return decl->is<T3ConstDecl>() || decl->is<T3ExtConstDecl>() || decl->is<T3ModuleParDecl>() ||
         decl->is<T3VarDecl>() || decl->is<_T3FormalPar>() || decl->is<T3TemplateDecl>();
}

// What the first name means, or the second behind the name of a module.
T3Tree_Node* Meaning(const PatternReference& reference, T3Tree_Node* at) {
  const tIdent first = reference.names.front();
  T3Tree_Node* decl = BehindImport(IdentifyQuietly(at->place->env, first, 0));
  if (IsObject(decl) || reference.names.size() == 1) return decl;
  const bool own = first == at->place->vexa_module_name;
  return BehindImport(IdentifyQuietly(at->place->env, reference.names[1], own ? 0 : first));
}

// ---- Types ----

std::string PatternOfType(T3Tree_Node* type);

std::string Escaped(T3Tree_Node* characters) {
  std::string text;
  for (const char c : ConstCharValue(characters).value_or("")) {
    if (std::ispunct(static_cast<unsigned char>(c)) != 0) text += '\\';
    text += c;
  }
  return text;
}

std::string PatternOfItem(T3Tree_Node* item) {
  if (auto* range = item->try_as<T3ValueRange>())
    return "[" + Escaped(range->lb) + "-" + Escaped(range->ub) + "]";
  if (auto* pattern = item->try_as<T3CharStringMatch>())
    return "(" + ConstCharValue(pattern->pattern).value_or("*") + ")";
  T3Tree_Node* decl = DefQuietly(item);
  return T3Is<T3TypeDecl>(decl) ? PatternOfType(decl->as<T3TypeDecl>()->type) : Escaped(item);
}

std::string PatternOfType(T3Tree_Node* type) {
  if (auto* reference = type->try_as<T3TypeReference>()) {
    T3Tree_Node* decl = DefQuietly(reference->reference);
    return T3Is<T3TypeDecl>(decl) ? PatternOfType(decl->as<T3TypeDecl>()->type) : "?";
  }
  auto* subtype = type->try_as<T3SubType>();
  if (subtype == nullptr) return "?";
  auto* list = subtype->constraint->try_as<T3ValueList>();
  const bool is_item = subtype->constraint->is<T3ValueRange>() || subtype->constraint->is<T3CharStringMatch>();
  if (list == nullptr)
    return is_item ? PatternOfItem(subtype->constraint) : PatternOfType(subtype->parent);
  std::string text;
  for (auto* at : Items<T3ValueListItem>(list->values))
    text += (text.empty() ? "(" : "|") + PatternOfItem(at->value);
  return text + ")";
}

// ---- Parts ----

T3Tree_Node* Literal(std::string_view text, tPosition position) {
  return gT3AST.mT3CharStringLiteral(position, gStringM.PutString("\"" + std::string(text) + "\""));
}

T3Tree_Node* Named(const PatternReference& reference, tPosition position) {
  T3Tree_Node* node = gT3AST.mT3Identifier(position, reference.names.front());
  for (size_t i = 1; i < reference.names.size(); ++i)
    node = gT3AST.mT3Qualifier(position, node, reference.names[i]);
  return node;
}

// The operand in the place of a reference. What means nothing here is told as it would be elsewhere.
T3Tree_Node* Operand(const PatternReference& reference, T3CharStringLiteral* literal) {
  T3Tree_Node* decl = Meaning(reference, literal);
  if (!reference.of_characters || !decl->is<T3TypeDecl>()) return Named(reference, literal->position);
  return Literal(PatternOfType(decl->as<T3TypeDecl>()->type), literal->position);
}

void ResolveInLiteral(T3CharStringLiteral* literal) {
  const std::string_view written = StringM::StGetString(literal->value);
  if (written.size() < 2 || written.find('{') == std::string_view::npos) return;
  const std::string text(written.substr(1, written.size() - 2));
  T3Tree_Node* parts = nullptr;
  size_t done = 0;
  const auto append = [&](T3Tree_Node* part) {
    parts = parts == nullptr ? part : gT3AST.mT3Concatenate(literal->position, parts, part);
  };
  for (auto found = NextReference(text, 0); found; found = NextReference(text, found->end)) {
    append(Literal(std::string_view(text).substr(done, found->begin - done), literal->position));
    append(Operand(*found, literal));
    done = found->end;
  }
  if (parts == nullptr) return;
  append(Literal(std::string_view(text).substr(done), literal->position));
  ReplaceChild(literal, parts);
  SetPlacesLike(parts, literal);
}
}  // namespace

void ResolvePatternReferences(T3Tree_Node* pattern) {
  if (pattern->place == nullptr) return;
  T3Tree_Node* at = pattern;
  for (; at->is<T3Concatenate>(); at = at->as<T3Concatenate>()->left)
    if (auto* literal = at->as<T3Concatenate>()->right->try_as<T3CharStringLiteral>())
      ResolveInLiteral(literal);
  if (auto* literal = at->try_as<T3CharStringLiteral>()) ResolveInLiteral(literal);
}
