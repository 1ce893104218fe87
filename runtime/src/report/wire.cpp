#include "report/wire.h"

#include <unistd.h>

#include <cstring>

#include "report/coverage.h"

namespace lumos {

namespace {

enum class Tag : char { begin = 'b', event = 'e', end = 'r', coverage = 'c' };

class Wire : public Reporter {
 public:
  Wire(int descriptor, bool with_events) : descriptor_(descriptor), with_events_(with_events) {}
  bool wants_events() const override { return with_events_; }

  void test_case_begins(const std::string& module, const std::string& name, Time begin) override {
    tag(Tag::begin);
    text(module);
    text(name);
    number(static_cast<uint64_t>(begin));
  }
  void event(const Event& e) override {
    tag(Tag::event);
    number(static_cast<uint64_t>(e.kind));
    number(static_cast<uint64_t>(e.time));
    for (const std::string* s : {&e.component, &e.place.file, &e.name, &e.peer, &e.text, &e.octets}) text(*s);
    number(e.place.line);
    if (buffer_.size() > most_buffered) flush();
  }
  void test_case_ends(const Result& r) override {
    each_count([&](const LineCount& c) {
      tag(Tag::coverage);
      text(c.file);
      for (uint64_t n : {uint64_t(c.line), c.hits, c.blocks}) number(n);
    });
    tag(Tag::end);
    for (const std::string* s : {&r.module, &r.name, &r.reason, &r.place.file}) text(*s);
    for (uint64_t n : {uint64_t(r.place.line), uint64_t(r.verdict), uint64_t(r.begin), uint64_t(r.duration)})
      number(n);
    flush();
  }
  void run_ends(const std::vector<Result>&) override { flush(); }

 private:
  static constexpr size_t most_buffered = 1 << 16;
  void tag(Tag t) { buffer_ += static_cast<char>(t); }
  void number(uint64_t n) { buffer_.append(reinterpret_cast<const char*>(&n), sizeof n); }
  void text(const std::string& s) {
    number(s.size());
    buffer_ += s;
  }
  void flush() {
    for (size_t done = 0; done < buffer_.size();) {
      const ssize_t n = ::write(descriptor_, buffer_.data() + done, buffer_.size() - done);
      if (n <= 0) break;
      done += static_cast<size_t>(n);
    }
    buffer_.clear();
  }
  int descriptor_;
  bool with_events_;
  std::string buffer_;
};

// Reads what is there; where the text is cut off, is_good ends.
class Unwire {
 public:
  explicit Unwire(std::string_view text) : text_(text) {}
  bool is_good = true;
  bool at_end() const { return text_.empty(); }
  char tag() {
    const char c = text_[0];
    text_.remove_prefix(1);
    return c;
  }
  uint64_t number() {
    uint64_t n = 0;
    if (text_.size() < sizeof n) return cut_off();
    std::memcpy(&n, text_.data(), sizeof n);
    text_.remove_prefix(sizeof n);
    return n;
  }
  std::string text() {
    const uint64_t size = number();
    if (size > text_.size()) return cut_off(), "";
    std::string s(text_.substr(0, size));
    text_.remove_prefix(size);
    return s;
  }

 private:
  uint64_t cut_off() {
    is_good = false;
    text_ = {};
    return 0;
  }
  std::string_view text_;
};

void tell_event_of(Unwire& in) {
  Event e;
  e.kind = static_cast<EventKind>(in.number());
  e.time = static_cast<Time>(in.number());
  for (std::string* s : {&e.component, &e.place.file, &e.name, &e.peer, &e.text, &e.octets}) *s = in.text();
  e.place.line = in.number();
  if (in.is_good) tell(e);
}

void read_result(Unwire& in, Result& r) {
  for (std::string* s : {&r.module, &r.name, &r.reason, &r.place.file}) *s = in.text();
  r.place.line = in.number();
  r.verdict = static_cast<lumo_verdict_t>(in.number());
  r.begin = static_cast<Time>(in.number());
  r.duration = static_cast<Time>(in.number());
}

}  // namespace

std::unique_ptr<Reporter> make_wire(int descriptor, bool with_events) {
  return std::make_unique<Wire>(descriptor, with_events);
}

bool tell_from_wire(std::string_view text, Result& result) {
  Unwire in(text);
  bool has_result = false;
  while (!in.at_end()) {
    switch (static_cast<Tag>(in.tag())) {
      case Tag::begin: {
        const std::string module = in.text(), name = in.text();
        tell_begin(module, name, static_cast<Time>(in.number()));
        break;
      }
      case Tag::event:
        tell_event_of(in);
        break;
      case Tag::coverage: {
        const std::string file = in.text();
        const unsigned long line = in.number();
        const uint64_t hits = in.number();
        add_count(file, line, hits, in.number());
        break;
      }
      case Tag::end:
        read_result(in, result);
        has_result = in.is_good;
        break;
    }
  }
  return has_result;
}

}  // namespace lumos
