#include "generator/text/CGLiteralTable.h"

#include <cerrno>
#include <cstdlib>
#include <map>
#include <optional>
#include <tuple>

#include "generator/text/CGKeptTexts.h"
#include "support/NumberMap.h"

namespace {
struct KindValueType {
  t3_literal_kind_t kind;
  int64_t value;
  /// The running number of the type's node, or 0.
  uint32_t type;

  bool operator<(const KindValueType& other) const {
    return std::tie(kind, value, type) < std::tie(other.kind, other.value, other.type);
  }
};

// The literals that are shared, and by the numbers of their nodes the others.
std::map<KindValueType, std::string_view>& Table() {
  static auto& table = *new std::map<KindValueType, std::string_view>;
  return table;
}

NumberMap<std::string_view>& Names() {
  static auto& names = *new NumberMap<std::string_view>;
  return names;
}

// Empty for a number of more than 64 bits: it must not share the place of another.
std::optional<int64_t> ValueOf(T3Tree_Node* literal) {
  if (auto* boolean = literal->try_as<T3BooleanLiteral>()) return boolean->value;
  if (auto* verdict = literal->try_as<T3VerdictLiteral>()) return static_cast<int64_t>(verdict->value);
  errno = 0;
  const long long value = std::strtoll(StringM::StGetCStr(literal->as<T3IntLiteral>()->value), nullptr, 10);
  return errno == 0 ? std::optional<int64_t>(value) : std::nullopt;
}

std::optional<KindValueType> KeyOf(T3Tree_Node* literal) {
  const t3_literal_kind_t kind = LiteralKind(literal);
  if (kind == literal_not_cachable) return std::nullopt;
  const std::optional<int64_t> value = ValueOf(literal);
  if (!value) return std::nullopt;
  const T3Tree_Node* type = literal->as<_T3Expression>()->attr().expression_local_type;
  return KindValueType{kind, *value, type == nullptr ? 0 : type->number};
}
}  // namespace

t3_literal_kind_t LiteralKind(T3Tree_Node* literal) {
  switch (literal->kind) {
    case T3Kind::T3IntLiteral:
      return literal_integer;
    case T3Kind::T3BooleanLiteral:
      return literal_boolean;
    case T3Kind::T3VerdictLiteral:
      return literal_verdict;
    default:
      return literal_not_cachable;
  }
}

void ResetLiteralTable() {
  Table().clear();
  Names().clear();
}

std::string_view FindLiteral(T3Tree_Node* literal) {
  if (const auto key = KeyOf(literal)) {
    const auto found = Table().find(*key);
    return found == Table().end() ? std::string_view() : found->second;
  }
  const std::string_view* name = Names().Find(literal->number);
  return name == nullptr ? std::string_view() : *name;
}

void AddLiteral(T3Tree_Node* literal, std::string_view text) {
  const auto key = KeyOf(literal);
  (key ? Table()[*key] : Names()[literal->number]) = CGKeep(text);
}
