// A text of a log or a report, put together quickly: each piece is written to its place behind the others, for
// which there is room once and for all.
#pragma once

#include <algorithm>
#include <cstring>
#include <string_view>
#include <vector>

#include "text/text_forms.h"

namespace lumos {

class Row {
 public:
  std::string_view text() const { return {room_.data(), used_}; }
  size_t size() const { return used_; }
  void clear() { used_ = 0; }
  void remove_begin(size_t size) {
    used_ -= size;
    std::memmove(room_.data(), room_.data() + size, used_);
  }

  void put(std::string_view text) {
    written(room(text.size()), text);
    used_ += text.size();
  }
  // Where there is room for so many octets; end_at tells how far they went.
  char* room(size_t most) {
    if (room_.size() - used_ < most) room_.resize(2 * room_.size() + most);
    return room_.data() + used_;
  }
  void end_at(const char* end) { used_ = static_cast<size_t>(end - room_.data()); }
  void put(char c) {
    *room(1) = c;
    ++used_;
  }
  void put_json(std::string_view text) { end_at(write_json(room(json_room(text.size())), text)); }
  void put_line(std::string_view text) { end_at(write_line(room(line_room(text.size())), text)); }
  void put_hex(std::string_view octets) { end_at(write_hex(room(2 * octets.size()), octets)); }
  void put_number(uint64_t number) { end_at(write_number(room(number_room), number)); }
  void put_seconds(int64_t nanoseconds) { end_at(write_seconds(room(seconds_room), nanoseconds)); }
  // A point and six digits.
  void put_fraction(uint32_t millionths) {
    char* place = room(7);
    for (int i = 6; i > 0; --i, millionths /= 10) place[i] = static_cast<char>('0' + millionths % 10);
    *place = '.';
    used_ += 7;
  }
  // Leaves the end of what stands from there on, which has so many octets then; it begins with two points.
  void keep_end(size_t begin, size_t size) {
    char* from = room_.data() + begin;
    std::memmove(from, room_.data() + used_ - size, size);
    used_ = begin + size;
    size_t points = 2;
    while (points < size && (static_cast<unsigned char>(from[points]) & 0xC0) == 0x80) ++points;
    std::fill_n(from, points, '.');
  }
  void put_spaces(size_t count) {
    std::fill_n(room(count), count, ' ');
    used_ += count;
  }
  // "Suite.ttcn:17" with its quotes.
  void put_json_place(std::string_view file, unsigned long line) {
    put_json(base_name(file));
    if (file.empty()) return;
    room_[used_ - 1] = ':';
    put_number(line);
    put('"');
  }

 private:
  std::vector<char> room_ = std::vector<char>(1024);
  size_t used_ = 0;
};

}  // namespace lumos
