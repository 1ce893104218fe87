// The stream of a RAW encoding: octets that are filled bit by bit. What the words FIELDORDER, BYTEORDER,
// BITORDER and BITORDERINFIELD do to a field is decided here and nowhere else.
//
// A field is cut into chunks: one for what is free in the octet that was begun, then one for each further
// octet. octets_last takes the chunks from the most significant end of the field, else they come from the
// least significant end; fields_msb puts a chunk at the most significant end of what is free in its octet;
// bits_msb mirrors each chunk, and mirrored the whole field.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace lumos {

struct BitOrder {
  bool fields_msb = false;
  bool octets_last = false;
  bool bits_msb = false;
  bool mirrored = false;
};

// A place in the stream: the bits from low to high, exclusively, of this octet are free.
struct BitPlace {
  size_t octet = 0;
  unsigned low = 0;
  unsigned high = 8;
  // Where the bit stands that was taken last.
  size_t last_octet = 0;
  unsigned last_bit = 0;

  size_t bits() const { return octet * 8 + (8 - (high - low)); }
  bool is_aligned() const { return high - low == 8; }
  // Takes up to so many bits of the octet; returns where the lowest of them stands.
  unsigned take(unsigned count, bool from_top);
  // Takes whole octets, of an aligned place.
  void take_octets(size_t count, bool from_top);
};

// Where a field of a record lies.
struct BitSpan {
  BitPlace start, end;
  bool present;
};

// A field of digits '0' and '1', the most significant first, may have any length; a number has at most 64
// bits.
class BitSink {
 public:
  BitPlace place;

  void put(uint64_t number, unsigned count, BitOrder order);
  void put_digits(std::string_view digits, BitOrder order);
  // As put, but over what stands at that place.
  void overwrite(BitPlace at, uint64_t number, unsigned count, BitOrder order);
  void put_octet(unsigned char octet, BitOrder order);
  // All of a string, turned where the last octet comes first.
  void put_octets(std::string_view octets, BitOrder order);
  // The bit that was put last.
  void set_last_bit(bool one);
  std::string& octets() { return octets_; }
  void clear();

 private:
  void put_at(BitPlace& at, uint64_t number, unsigned count, BitOrder order);
  void put_chunk(BitPlace& at, unsigned chunk, unsigned count, BitOrder order);

  std::string octets_;
};

// Reads within [0, limit) bits; whoever asks for more than remaining() gets false and nothing happens.
class BitSource {
 public:
  BitPlace place;

  explicit BitSource(std::string_view octets) : octets_(octets) {}
  bool get(uint64_t& number, unsigned count, BitOrder order, size_t limit);
  // Appends the digits.
  bool get_digits(std::string& digits, size_t count, BitOrder order, size_t limit);
  bool get_octet(unsigned char& octet, BitOrder order, size_t limit);
  bool last_bit() const;
  bool skip(size_t count, BitOrder order, size_t limit);
  size_t size() const { return octets_.size() * 8; }
  std::string_view octets() const { return octets_; }

 private:
  unsigned get_chunk(unsigned count, BitOrder order);

  std::string_view octets_;
};

uint64_t mirror(uint64_t number, unsigned count);

}  // namespace lumos
