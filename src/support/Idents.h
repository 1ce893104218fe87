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

 private:
  struct Entry {
    tStringRef string;
    int32_t length;
    bool wide;
  };
  static constexpr int32_t kFree = 0;
  struct Slot {
    uint32_t hash = 0;
    int32_t ident = kFree;
  };
  /// Names by their hash: a new name costs one look at memory that nobody has looked at lately.
  struct Table {
    Table();
    template <class Same>
    Slot& Find(uint32_t hash, const Same& same);
    /// Tells that a free slot was filled.
    void Added();
    /// The last character of a name decides the last bits of its hash: names that are numbered one behind the
    /// other are neighbours.
    size_t Place(uint32_t hash) const {
      return (((hash >> 4) * 0x9e3779b1u >> shift) + (hash & 15)) & (slots.size() - 1);
    }

    std::vector<Slot> slots;
    int shift;
    size_t used = 0;
  };
  bool Valid(tIdent ident) const { return ident > 0 && ident < static_cast<tIdent>(entries_.size()); }
  tIdent Enter(Table& table, Slot& slot, uint32_t hash, const Entry& entry);

  std::vector<Entry> entries_;
  Table narrow_;
  Table wide_;
};

inline Idents& gIdents = *new Idents;
