// Bit sets over a range of numbers that is fixed when the set is made (and may be resized).
//
// A set keeps its cardinality once counted, and bounds for its first and last element, so that the
// operations look only at the part that is in use. Two sets of one operation are over the same range.
#pragma once

#include <cstdint>
#include <cstdio>
#include <functional>
#include <vector>

using tSetElmt = long;

class tSet {
 public:
  /// The empty set over 0..max_element.
  explicit tSet(tSetElmt max_element = 0);

  tSetElmt MaxElement() const { return max_; }
  /// A new range; members outside it are dropped.
  void Resize(tSetElmt max_element);

  // The other set may have another range: members beyond this set's range are ignored.
  void Union(const tSet& other);
  void Difference(const tSet& other);
  void Intersection(const tSet& other);
  void SymDiff(const tSet& other);
  void Complement();

  // An element outside the range is ignored, and is in no set.
  void Include(tSetElmt element);
  void Exclude(tSetElmt element);
  bool IsElement(tSetElmt element) const {
    return element >= 0 && element <= max_ && (words_[Word(element)] >> Bit(element) & 1) != 0;
  }

  tSetElmt Card() const;
  /// The number of elements of the range.
  tSetElmt Size() const { return max_ + 1; }
  /// The least and the greatest member; -1 for the empty set.
  tSetElmt Minimum() const;
  tSetElmt Maximum() const;
  /// Some member, the least one; -1 for the empty set.
  tSetElmt Select() const { return Minimum(); }
  /// Takes the least member out and returns it; -1 for the empty set.
  tSetElmt Extract();

  bool IsSubset(const tSet& other) const;
  bool IsStrictSubset(const tSet& other) const { return IsSubset(other) && !IsEqual(other); }
  bool IsEqual(const tSet& other) const;
  bool IsEmpty() const { return Minimum() < 0; }

  bool Forall(const std::function<bool(tSetElmt)>& property) const;
  bool Exists(const std::function<bool(tSetElmt)>& property) const;
  /// True when exactly one member has the property.
  bool Exists1(const std::function<bool(tSetElmt)>& property) const;
  /// Each member, in ascending order.
  void ForallDo(const std::function<void(tSetElmt)>& call) const;

  /// Takes the other set's members, as far as they lie in this set's range.
  void Assign(const tSet& other);
  void AssignElmt(tSetElmt element);
  void AssignEmpty();

  /// Reads and writes the form `{1, 4, 7}`. Reading yields false when the text has another form.
  bool Read(FILE* stream);
  void Write(FILE* stream) const;

 private:
  static size_t Word(tSetElmt element) { return static_cast<size_t>(element) / 32; }
  static unsigned Bit(tSetElmt element) { return static_cast<unsigned>(element) % 32; }
  uint32_t OtherWord(const tSet& other, size_t index) const;
  void ClearBeyondRange();
  void ForgetBounds();
  void Narrow() const;

  tSetElmt max_;
  std::vector<uint32_t> words_;
  // -1: not known.
  mutable tSetElmt card_ = 0;
  // No member lies outside first..last; the set is empty when first is beyond last.
  mutable tSetElmt first_;
  mutable tSetElmt last_ = -1;
};

// The operations by their plain names.
inline tSet MakeSet(tSetElmt max_element) {
  return tSet(max_element);
}
inline void ReleaseSet(tSet& set) {
  set = tSet();
}
inline void ResizeSet(tSet& set, tSetElmt max_element) {
  set.Resize(max_element);
}
inline void Union(tSet& set, const tSet& other) {
  set.Union(other);
}
inline void Difference(tSet& set, const tSet& other) {
  set.Difference(other);
}
inline void Intersection(tSet& set, const tSet& other) {
  set.Intersection(other);
}
inline void SymDiff(tSet& set, const tSet& other) {
  set.SymDiff(other);
}
inline void Complement(tSet& set) {
  set.Complement();
}
inline void Include(tSet& set, tSetElmt element) {
  set.Include(element);
}
inline void Exclude(tSet& set, tSetElmt element) {
  set.Exclude(element);
}
inline tSetElmt Card(const tSet& set) {
  return set.Card();
}
inline tSetElmt Size(const tSet& set) {
  return set.Size();
}
inline tSetElmt Minimum(const tSet& set) {
  return set.Minimum();
}
inline tSetElmt Maximum(const tSet& set) {
  return set.Maximum();
}
inline tSetElmt Select(const tSet& set) {
  return set.Select();
}
inline tSetElmt Extract(tSet& set) {
  return set.Extract();
}
inline bool IsSubset(const tSet& set, const tSet& other) {
  return set.IsSubset(other);
}
inline bool IsEqual(const tSet& set, const tSet& other) {
  return set.IsEqual(other);
}
inline bool IsEmpty(const tSet& set) {
  return set.IsEmpty();
}
inline bool Forall(const tSet& set, const std::function<bool(tSetElmt)>& property) {
  return set.Forall(property);
}
inline bool Exists(const tSet& set, const std::function<bool(tSetElmt)>& property) {
  return set.Exists(property);
}
inline bool Exists1(const tSet& set, const std::function<bool(tSetElmt)>& property) {
  return set.Exists1(property);
}
inline void ForallDo(const tSet& set, const std::function<void(tSetElmt)>& call) {
  set.ForallDo(call);
}
inline void Assign(tSet& set, const tSet& other) {
  set.Assign(other);
}
inline void AssignElmt(tSet& set, tSetElmt element) {
  set.AssignElmt(element);
}
inline void AssignEmpty(tSet& set) {
  set.AssignEmpty();
}
inline bool ReadSet(FILE* stream, tSet& set) {
  return set.Read(stream);
}
inline void WriteSet(FILE* stream, const tSet& set) {
  set.Write(stream);
}
