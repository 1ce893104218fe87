// What a report says of events, put together quickly: each piece is written to its place behind the others,
// for which there is room once and for all.
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

  void put(std::string_view text) {
    char* place = room(text.size());
    if (!text.empty()) std::memcpy(place, text.data(), text.size());
    used_ += text.size();
  }
  void put(char c) {
    *room(1) = c;
    ++used_;
  }
  void put_json(std::string_view text) { end_at(write_json(room(json_room(text.size())), text)); }
  void put_hex(std::string_view octets) { end_at(write_hex(room(2 * octets.size()), octets)); }
  void put_number(uint64_t number) { end_at(write_number(room(number_room), number)); }
  void put_seconds(int64_t nanoseconds) { end_at(write_seconds(room(seconds_room), nanoseconds)); }
  // "Suite.ttcn:17" with its quotes.
  void put_json_place(std::string_view file, unsigned long line) {
    put_json(base_name(file));
    if (file.empty()) return;
    room_[used_ - 1] = ':';
    put_number(line);
    put('"');
  }

 private:
  char* room(size_t most) {
    if (room_.size() - used_ < most) room_.resize(2 * room_.size() + most);
    return room_.data() + used_;
  }
  void end_at(const char* end) { used_ = static_cast<size_t>(end - room_.data()); }

  std::vector<char> room_ = std::vector<char>(1024);
  size_t used_ = 0;
};

}  // namespace lumos
