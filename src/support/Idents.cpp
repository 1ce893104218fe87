#include "support/Idents.h"

#include <cstring>
#include <cwchar>

#include "support/Global.h"
#include "support/StringM.h"

namespace {
constexpr size_t kFirstTable = 1024;
constexpr size_t kFirstBuckets = 256;
constexpr int32_t kEnd = 0;

// The place of a name; the number of buckets is a power of two.
inline size_t Bucket(uint32_t hash, size_t buckets) {
  return hash & (buckets - 1);
}

// One step of the hash: fold in a character, and keep 28 bits.
inline uint32_t Mix(uint32_t h, uint32_t character) {
  h += character;
  if (h > 0xfffffff) h = (h ^ ((h >> 28) << 4)) & 0xfffffff;
  return h;
}
}  // namespace

Idents::Idents() : buckets_(kFirstBuckets, kEnd), wide_buckets_(kFirstBuckets, kEnd) {
  entries_.reserve(kFirstTable);
  entries_.push_back({nullptr, 0, 0, kEnd});
  wide_.push_back(false);
  MakeIdent("");
  MakeIdent(L"");
}

uint32_t Idents::Hash(std::string_view text) {
  uint32_t h = 0;
  uint32_t last = 0;
  for (const char c : text) {
    last = Mix(h, static_cast<unsigned char>(c));
    h = last << 4;
  }
  return last;
}

tIdent Idents::MakeIdent(std::string_view text) {
  const uint32_t hash = Hash(text);
  const size_t bucket = Bucket(hash, buckets_.size());
  for (int32_t i = buckets_[bucket]; i != kEnd; i = entries_[static_cast<size_t>(i)].next) {
    const Entry& entry = entries_[static_cast<size_t>(i)];
    if (entry.hash == hash && static_cast<size_t>(entry.length) == text.size() &&
        std::memcmp(StringM::StGetCStr(entry.string), text.data(), text.size()) == 0)
      return i;
  }
  if (entries_.size() == entries_.capacity()) Grow();
  const auto ident = static_cast<int32_t>(entries_.size());
  int32_t& head = buckets_[Bucket(hash, buckets_.size())];
  const tStringRef string = gStringM.PutString(text);
  entries_.push_back({string, hash, static_cast<int32_t>(*string), head});
  wide_.push_back(false);
  head = ident;
  return ident;
}

tIdent Idents::MakeIdent(const wchar_t* text) {
  return MakeIdent(text, static_cast<int>(std::wcslen(text)));
}

tIdent Idents::MakeIdent(const wchar_t* text, int length) {
  uint32_t h = 0;
  uint32_t hash = 0;
  for (int i = 0; i < length; ++i) {
    hash = Mix(h, static_cast<uint32_t>(text[i]));
    h = hash << 4;
  }
  for (int32_t i = wide_buckets_[Bucket(hash, wide_buckets_.size())]; i != kEnd;
       i = entries_[static_cast<size_t>(i)].next) {
    const Entry& entry = entries_[static_cast<size_t>(i)];
    if (entry.hash == hash && entry.length == length &&
        std::wmemcmp(StringM::StGetWCStr(entry.string), text, static_cast<size_t>(length)) == 0)
      return i;
  }
  if (entries_.size() == entries_.capacity()) Grow();
  const auto ident = static_cast<int32_t>(entries_.size());
  int32_t& head = wide_buckets_[Bucket(hash, wide_buckets_.size())];
  const tStringRef string = gStringM.PutWString(text, static_cast<size_t>(length));
  entries_.push_back({string, hash, static_cast<int32_t>(*string), head});
  wide_.push_back(true);
  head = ident;
  return ident;
}

// Doubles the table and the buckets and enters every name again, the new one at the head of its chain.
void Idents::Grow() {
  entries_.reserve(entries_.capacity() * 2);
  buckets_.assign(buckets_.size() * 2, kEnd);
  wide_buckets_.assign(wide_buckets_.size() * 2, kEnd);
  for (size_t i = 1; i < entries_.size(); ++i) {
    auto& buckets = wide_[i] ? wide_buckets_ : buckets_;
    int32_t& head = buckets[Bucket(entries_[i].hash, buckets.size())];
    entries_[i].next = head;
    head = static_cast<int32_t>(i);
  }
}

bool Idents::IsWide(tIdent ident) const {
  return Valid(ident) && wide_[static_cast<size_t>(ident)];
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
