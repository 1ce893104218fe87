#include "codec/bits.h"

#include <algorithm>

namespace lumos {

namespace {

unsigned mask(unsigned count) {
  return (1u << count) - 1;
}

// Octets of strings come in their order, whatever is begun; within one the bits follow the order of fields.
BitOrder order_within(BitOrder order) {
  order.octets_last = order.fields_msb;
  return order;
}

// Whole octets at a place of their own, of which most messages consist, go at once.
bool is_whole(const BitPlace& place, unsigned count, BitOrder order) {
  return place.is_aligned() && count % 8 == 0 && !order.bits_msb && !order.mirrored;
}

}  // namespace

uint64_t mirror(uint64_t number, unsigned count) {
  uint64_t mirrored = 0;
  for (unsigned i = 0; i < count; ++i) mirrored |= (number >> i & 1) << (count - 1 - i);
  return mirrored;
}

unsigned BitPlace::take(unsigned count, bool from_top) {
  const unsigned at = from_top ? high - count : low;
  (from_top ? high : low) += from_top ? -count : count;
  last_octet = octet;
  last_bit = from_top ? at : at + count - 1;
  if (high == low) {
    ++octet;
    low = 0;
    high = 8;
  }
  return at;
}

void BitPlace::take_octets(size_t count, bool from_top) {
  if (count == 0) return;
  octet += count;
  last_octet = octet - 1;
  last_bit = from_top ? 0 : 7;
}

void BitSink::set_last_bit(bool one) {
  if (place.last_octet >= octets_.size()) return;
  auto& octet = reinterpret_cast<unsigned char&>(octets_[place.last_octet]);
  octet = static_cast<unsigned char>((octet & ~(1u << place.last_bit)) | unsigned(one) << place.last_bit);
}

bool BitSource::last_bit() const {
  return place.last_octet < octets_.size() &&
         (static_cast<unsigned char>(octets_[place.last_octet]) >> place.last_bit & 1);
}

void BitSink::put_chunk(BitPlace& at, unsigned chunk, unsigned count, BitOrder order) {
  if (order.bits_msb) chunk = static_cast<unsigned>(mirror(chunk, count));
  if (at.octet == octets_.size()) octets_ += '\0';
  auto& octet = reinterpret_cast<unsigned char&>(octets_[at.octet]);
  const unsigned shift = at.take(count, order.fields_msb);
  octet = static_cast<unsigned char>((octet & ~(mask(count) << shift)) | chunk << shift);
}

void BitSink::put_at(BitPlace& at, uint64_t number, unsigned count, BitOrder order) {
  if (order.mirrored) number = mirror(number, count);
  while (count > 0) {
    const unsigned n = std::min(count, at.high - at.low);
    const uint64_t rest = order.octets_last ? number >> (count - n) : number;
    put_chunk(at, static_cast<unsigned>(rest & mask(n)), n, order);
    if (!order.octets_last) number >>= n;
    count -= n;
  }
}

void BitSink::put(uint64_t number, unsigned count, BitOrder order) {
  if (!is_whole(place, count, order) || place.octet != octets_.size())
    return put_at(place, number, count, order);
  char octets[8];
  for (unsigned done = 0; done < count; done += 8)
    octets[done / 8] = static_cast<char>(number >> (order.octets_last ? count - 8 - done : done));
  octets_.append(octets, count / 8);
  place.take_octets(count / 8, order.fields_msb);
}

void BitSink::overwrite(BitPlace at, uint64_t number, unsigned count, BitOrder order) {
  put_at(at, number, count, order);
}

void BitSink::put_octet(unsigned char octet, BitOrder order) {
  if (place.is_aligned() && !order.bits_msb) {
    octets_ += static_cast<char>(octet);
    place.take_octets(1, order.fields_msb);
  } else {
    put(octet, 8, order_within(order));
  }
}

void BitSink::put_octets(std::string_view octets, BitOrder order) {
  if (place.is_aligned() && !order.bits_msb && !order.octets_last) {
    octets_ += octets;
    return place.take_octets(octets.size(), order.fields_msb);
  }
  for (size_t i = 0; i < octets.size(); ++i)
    put_octet(static_cast<unsigned char>(octets[order.octets_last ? octets.size() - 1 - i : i]), order);
}

void BitSink::put_digits(std::string_view digits, BitOrder order) {
  while (!digits.empty()) {
    const auto n = static_cast<unsigned>(std::min<size_t>(digits.size(), place.high - place.low));
    const bool from_left = order.octets_last != order.mirrored;
    const std::string_view part = digits.substr(from_left ? 0 : digits.size() - n, n);
    from_left ? digits.remove_prefix(n) : digits.remove_suffix(n);
    unsigned chunk = 0;
    for (const char digit : part) chunk = chunk << 1 | (digit == '1');
    if (order.mirrored) chunk = static_cast<unsigned>(mirror(chunk, n));
    put_chunk(place, chunk, n, order);
  }
}

void BitSink::clear() {
  octets_.clear();
  place = {};
}

unsigned BitSource::get_chunk(unsigned count, BitOrder order) {
  const auto octet = static_cast<unsigned char>(octets_[place.octet]);
  const unsigned chunk = octet >> place.take(count, order.fields_msb) & mask(count);
  return order.bits_msb ? static_cast<unsigned>(mirror(chunk, count)) : chunk;
}

bool BitSource::get(uint64_t& number, unsigned count, BitOrder order, size_t limit) {
  if (place.bits() + count > std::min(limit, size())) return false;
  number = 0;
  if (is_whole(place, count, order)) {
    for (unsigned done = 0; done < count; done += 8) {
      const uint64_t octet = static_cast<unsigned char>(octets_[place.octet + done / 8]);
      number |= octet << (order.octets_last ? count - 8 - done : done);
    }
    place.take_octets(count / 8, order.fields_msb);
    return true;
  }
  for (unsigned done = 0; done < count;) {
    const unsigned n = std::min(count - done, place.high - place.low);
    const uint64_t chunk = get_chunk(n, order);
    number = order.octets_last ? number << n | chunk : number | chunk << done;
    done += n;
  }
  if (order.mirrored) number = mirror(number, count);
  return true;
}

bool BitSource::get_digits(std::string& digits, size_t count, BitOrder order, size_t limit) {
  if (count > size() || place.bits() + count > std::min(limit, size())) return false;
  const size_t start = digits.size();
  digits.resize(start + count);
  const bool from_left = order.octets_last != order.mirrored;
  for (size_t done = 0; done < count;) {
    const auto n = static_cast<unsigned>(std::min<size_t>(count - done, place.high - place.low));
    unsigned chunk = get_chunk(n, order);
    if (order.mirrored) chunk = static_cast<unsigned>(mirror(chunk, n));
    char* at = &digits[start + (from_left ? done : count - done - n)];
    for (unsigned i = 0; i < n; ++i) at[i] = (chunk >> (n - 1 - i) & 1) ? '1' : '0';
    done += n;
  }
  return true;
}

bool BitSource::get_octet(unsigned char& octet, BitOrder order, size_t limit) {
  uint64_t number;
  if (!get(number, 8, order_within(order), limit)) return false;
  octet = static_cast<unsigned char>(number);
  return true;
}

bool BitSource::skip(size_t count, BitOrder order, size_t limit) {
  if (count > size() || place.bits() + count > std::min(limit, size())) return false;
  while (count > 0) {
    const auto n = static_cast<unsigned>(std::min<size_t>(count, place.high - place.low));
    place.take(n, order.fields_msb);
    count -= n;
  }
  return true;
}

}  // namespace lumos
