#include "support/Idents.h"

#include <cstring>
#include <cwchar>

#include "support/Global.h"
#include "support/StringM.h"

namespace {
constexpr size_t kFirstEntries = 1024;
constexpr int kFirstBits = 10;

// Some bytes of a text as a number.
template <class Number>
inline uint64_t Load(const char* at) {
  Number bytes;
  std::memcpy(&bytes, at, sizeof bytes);
  return bytes;
}

// A text of less than eight bytes as a number, which no other one of its length has.
inline uint64_t ShortText(const char* at, size_t length) {
  if (length >= 4) return Load<uint32_t>(at) << 32 | Load<uint32_t>(at + length - 4);
  if (length == 0) return 0;
  return Load<uint8_t>(at) << 16 | Load<uint8_t>(at + length / 2) << 8 | Load<uint8_t>(at + length - 1);
}

inline uint64_t Mix(uint64_t h, uint64_t word) {
  h = (h ^ word) * 0x9e3779b97f4a7c15u;
  return h ^ h >> 32;
}

// The last character decides the last bits, and the others all else. The last eight bytes that are looked at
// may hold some that were before.
inline uint32_t Hash(std::string_view text) {
  if (text.empty()) return 0;
  const char* at = text.data();
  const size_t length = text.size() - 1;
  uint64_t h = text.size();
  if (length < 8) {
    h = Mix(h, ShortText(at, length));
  } else {
    for (const char* const last = at + length - 8; at < last; at += 8) h = Mix(h, Load<uint64_t>(at));
    h = Mix(h, Load<uint64_t>(text.data() + length - 8));
  }
  return static_cast<uint32_t>(h) << 4 ^ static_cast<unsigned char>(text.back());
}

inline bool IsSame(const char* a, const char* b, size_t length) {
  if (length < 8) return ShortText(a, length) == ShortText(b, length);
  for (size_t at = 0; at + 8 < length; at += 8)
    if (Load<uint64_t>(a + at) != Load<uint64_t>(b + at)) return false;
  return Load<uint64_t>(a + length - 8) == Load<uint64_t>(b + length - 8);
}
}  // namespace

Idents::Table::Table() : slots(size_t{1} << kFirstBits), shift(32 - kFirstBits) {}

// The slot of the name of this hash for which `same` holds, or the free one in which it belongs.
template <class Same>
inline Idents::Slot& Idents::Table::Find(uint32_t hash, const Same& same) {
  const size_t mask = slots.size() - 1;
  for (size_t at = Place(hash);; at = (at + 1) & mask) {
    Slot& slot = slots[at];
    if (slot.ident == kFree || (slot.hash == hash && same(slot.ident))) return slot;
  }
}

// Half of the slots stay free. The hash is in the slots, so that growing reads no entry.
void Idents::Table::Added() {
  if (++used * 2 <= slots.size()) return;
  const std::vector<Slot> old = std::move(slots);
  slots = std::vector<Slot>(old.size() * 2);
  --shift;
  for (const Slot& slot : old)
    if (slot.ident != kFree) Find(slot.hash, [](int32_t) { return false; }) = slot;
}

Idents::Idents() {
  entries_.reserve(kFirstEntries);
  entries_.push_back({nullptr, 0, false});
  MakeIdent("");
  MakeIdent(L"");
}

tIdent Idents::Enter(Table& table, Slot& slot, uint32_t hash, const Entry& entry) {
  slot = {hash, static_cast<int32_t>(entries_.size())};
  const tIdent ident = slot.ident;
  entries_.push_back(entry);
  table.Added();
  return ident;
}

tIdent Idents::MakeIdent(std::string_view text) {
  const uint32_t hash = Hash(text);
  Slot& slot = narrow_.Find(hash, [&](int32_t ident) {
    const Entry& entry = entries_[static_cast<size_t>(ident)];
    return static_cast<size_t>(entry.length) == text.size() &&
           IsSame(StringM::StGetCStr(entry.string), text.data(), text.size());
  });
  if (slot.ident != kFree) return slot.ident;
  const tStringRef string = gStringM.PutString(text);
  return Enter(narrow_, slot, hash, {string, static_cast<int32_t>(*string), false});
}

tIdent Idents::MakeIdent(const wchar_t* text) {
  return MakeIdent(text, static_cast<int>(std::wcslen(text)));
}

tIdent Idents::MakeIdent(const wchar_t* text, int length) {
  uint32_t hash = 0;
  for (int i = 0; i < length; ++i) hash = static_cast<uint32_t>(Mix(hash, static_cast<uint32_t>(text[i])));
  Slot& slot = wide_.Find(hash, [&](int32_t ident) {
    const Entry& entry = entries_[static_cast<size_t>(ident)];
    return entry.length == length &&
           std::wmemcmp(StringM::StGetWCStr(entry.string), text, static_cast<size_t>(length)) == 0;
  });
  if (slot.ident != kFree) return slot.ident;
  const tStringRef string = gStringM.PutWString(text, static_cast<size_t>(length));
  return Enter(wide_, slot, hash, {string, static_cast<int32_t>(*string), true});
}

bool Idents::IsWide(tIdent ident) const {
  return Valid(ident) && entries_[static_cast<size_t>(ident)].wide;
}

tStringRef Idents::GetStringRef(tIdent ident) const {
  return Valid(ident) ? entries_[static_cast<size_t>(ident)].string : gStringM.EmptyString();
}

const char* Idents::GetCStr(tIdent ident) const {
  return StringM::StGetCStr(GetStringRef(ident));
}

const wchar_t* Idents::GetWCStr(tIdent ident) const {
  return StringM::StGetWCStr(Valid(ident) ? entries_[static_cast<size_t>(ident)].string
                                          : gStringM.EmptyWString());
}

int Idents::GetLength(tIdent ident) const {
  return Valid(ident) ? entries_[static_cast<size_t>(ident)].length : 0;
}

std::string_view Idents::GetString(tIdent ident) const {
  return StringM::StGetString(GetStringRef(ident));
}

void Idents::WriteIdent(FILE* stream, tIdent ident) const {
  if (!Valid(ident)) {
    gSupportFault(kFaultBadIdent, ident);
    return;
  }
  StringM::WriteString(stream, entries_[static_cast<size_t>(ident)].string);
}

void Idents::WriteWIdent(FILE* stream, tIdent ident) const {
  if (!Valid(ident)) {
    gSupportFault(kFaultBadIdent, ident);
    return;
  }
  StringM::WriteWString(stream, entries_[static_cast<size_t>(ident)].string);
}
