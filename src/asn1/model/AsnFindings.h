// What the model has found of the records of one module and keeps with it, so that what many records lead to
// is looked for once. It holds as long as the module's records, which never change once they are read.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "asn1/front/AsnFault.h"
#include "asn1/model/AsnRanges.h"

namespace asn1 {
/// Whether a structure or list holds itself by value, at whatever depth, or others only.
enum class Holding : uint8_t { kUnknown, kOthers, kItself };

struct AsnFindings : BEModMetaRec {
  /// By the number of a record; empty up to the first entry, and false where nothing was found yet.
  template <class Found>
  using ByNumber = std::vector<Found>;

  /// The numbers of records by their names.
  using ByName = std::unordered_map<std::string, int>;

  /// What stands behind references: the types behind those by name and selections, the values.
  ByNumber<AsnType> bases, named;
  ByNumber<AsnValue> values;
  /// What the constraints of types and of those behind them leave.
  ByNumber<std::optional<ConstrainedSet>> numbers, sizes;
  ByNumber<std::optional<Alphabet>> alphabets;
  /// The first types on the way to the base that have constraints, or those at its end.
  ByNumber<AsnType> constrained;
  /// The same for tags as written.
  ByNumber<AsnType> tagged;
  ByNumber<Holding> holding;
  ByNumber<std::optional<int>> control_words;
  ByNumber<std::unique_ptr<ByName>> components;  // of structured types
  /// The first structure or list, of those without a name of their own, with a level and names around it.
  std::optional<ByName> unnamed;
};

/// The findings of a module, made if there are none.
inline AsnFindings& FindingsOf(ModRec& module) {
  if (module.findings == nullptr) module.findings = std::make_unique<AsnFindings>();
  return static_cast<AsnFindings&>(*module.findings);
}

/// The place of what is kept for a record. Valid up to the next call.
template <class Found>
Found& KeptOf(const AsnHandle& record, AsnFindings::ByNumber<Found> AsnFindings::*table) {
  AsnFindings::ByNumber<Found>& kept = FindingsOf(*record.module).*table;
  const auto number = static_cast<size_t>(record.number);
  if (number >= kept.size()) kept.resize(number + 1);
  return kept[number];
}

/// Watches a walk along references: one that comes back to where it was is the fatal error `fault`.
class ChainGuard {
 public:
  ChainGuard(const AsnHandle& start, const char* fault) : mark_(start), fault_(fault) {}
  void Pass(const AsnHandle& at) {
    if (at == mark_) fatalError(kInternal, fault_);
    if (++steps_ < most_) return;
    // The mark moves ever less often, so that each circle has the time to come by.
    mark_ = at;
    most_ *= 2;
  }

 private:
  AsnHandle mark_;
  const char* fault_;
  size_t steps_ = 0, most_ = 1;
};

/// Follows a chain of references to its end, where `step` gives false, or to a record that knows its end
/// already, and gives the end to each on the way. A chain without an end is the fatal error `fault`.
template <class Record, class Step>
Record FindEnd(const Record& start, Step step, AsnFindings::ByNumber<Record> AsnFindings::*ends,
               const char* fault) {
  std::vector<Record> way;
  Record end = start;
  ChainGuard guard(start, fault);
  while (const Record next = step(end)) {
    if (const Record known = KeptOf(end, ends)) {
      end = known;
      break;
    }
    guard.Pass(next);
    way.push_back(end);
    end = next;
  }
  for (const Record& at : way) KeptOf(at, ends) = end;
  return end;
}
}  // namespace asn1
