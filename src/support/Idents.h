// Interned names. Two names are equal exactly when their identifiers are.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string_view>
#include <vector>

#include "support/StringM.h"

using tIdent = long;

/// The identifier of the empty name.
inline constexpr tIdent NoIdent = 1;

/// The table of names. One instance, gIdents, lives to the end of the process; identifiers are never
/// taken back. Narrow and wide names are kept apart.
class Idents {
 public:
  Idents();

  tIdent MakeIdent(std::string_view text);
  tIdent MakeIdent(const char* text, int length) {
    return MakeIdent(std::string_view(text, static_cast<size_t>(length)));
  }
  tIdent MakeIdent(const wchar_t* text);
  tIdent MakeIdent(const wchar_t* text, int length);

  /// The text of a narrow identifier, ended by a zero. An identifier outside the table is reported as
  /// the compiler's own fault (code 12) and yields the empty text.
  const char* GetCStr(tIdent ident) const;
  const wchar_t* GetWCStr(tIdent ident) const;
  /// The number of characters.
  int GetLength(tIdent ident) const;
  std::string_view GetString(tIdent ident) const;
  tStringRef GetStringRef(tIdent ident) const;
  /// The largest identifier made so far.
  tIdent MaxIdent() const { return static_cast<tIdent>(entries_.size()) - 1; }
  bool IsWide(tIdent ident) const;
  void WriteIdent(FILE* stream, tIdent ident) const;
  void WriteWIdent(FILE* stream, tIdent ident) const;

  /// The hash of a name, before the reduction to the number of buckets.
  static uint32_t Hash(std::string_view text);

 private:
  struct Entry {
    tStringRef string;
    uint32_t hash;
    int32_t length;
    int32_t next;
  };
  bool Valid(tIdent ident) const { return ident > 0 && ident < static_cast<tIdent>(entries_.size()); }
  void Grow();

  std::vector<Entry> entries_;
  std::vector<int32_t> buckets_;
  std::vector<int32_t> wide_buckets_;
  std::vector<bool> wide_;
};

inline Idents& gIdents = *new Idents;
