#include "report/wire.h"

#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>

#include "text/row.h"

namespace lumos {

namespace {

enum class Tag : char {
  start = 's',
  begin = 'b',
  spot = 'p',
  event = 'e',
  end = 'r',
  refusal = 'x',
  run_end = 'f'
};

constexpr size_t wire_box_size = 1 << 16;
constexpr int bits_of_use = 20;

}  // namespace

// Where the box begins in the stream and how much is in it stand in one word, so that they fit together at
// any moment.
struct WireBox::Contents {
  std::atomic<uint64_t> state, read;
  std::atomic<bool> is_way;
  std::atomic<int> loss;
  char data[wire_box_size];
};

WireBox::WireBox() = default;
WireBox::~WireBox() = default;

std::string WireBox::rest(uint64_t received) const {
  const uint64_t state = shared_->state, begin = state >> bits_of_use;
  const size_t used = std::min<size_t>(state & ((1 << bits_of_use) - 1), wire_box_size);
  if (received < begin) return {};
  const size_t known = std::min<uint64_t>(received - begin, used);
  return {shared_->data + known, used - known};
}

int WireBox::loss() const {
  return shared_->loss;
}

bool WireBox::is_way() const {
  return shared_->is_way;
}

void WireBox::note_read(uint64_t received) const {
  shared_->read = received;
}

// What goes through the box to the descriptor.
class WireStream {
 public:
  WireStream(const KeptFile& file, WireBox& box) : file_(file), shared_(*box.shared_) { publish(); }
  void put(std::string_view text) {
    while (!text.empty()) {
      const size_t n = std::min(text.size(), wire_box_size - used_);
      std::memcpy(shared_.data + used_, text.data(), n);
      used_ += n;
      publish();
      text.remove_prefix(n);
      if (used_ == wire_box_size) flush();
    }
  }
  // Where so much can be written to before it is taken; null if there is no room at once.
  char* room(size_t size) { return size < wire_box_size - used_ ? shared_.data + used_ : nullptr; }
  void take(size_t size) {
    used_ += size;
    publish();
  }
  void flush() {
    is_broken_ = is_broken_ || (used_ && !file_.find());
    for (size_t done = 0; done < used_ && !is_broken_;) {
      const ssize_t n = write(shared_.data + done, used_ - done);
      if (n > 0) done += static_cast<size_t>(n);
      is_broken_ = n <= 0 && errno != EINTR;
    }
    // What a file has lost stays in the box as long as there is room.
    if (is_broken_ && !file_.is_socket() && used_ < wire_box_size) return;
    begin_ += used_;
    if (is_broken_ && file_.is_socket()) wait_for_reader();
    if (is_broken_ && !file_.is_socket() && !shared_.loss) shared_.loss = errno;
    used_ = 0;
    if (!is_broken_ || file_.is_socket()) publish();
  }

 private:
  ssize_t write(const char* data, size_t size) const {
    return file_.is_socket() ? send(file_.descriptor(), data, size, MSG_NOSIGNAL)
                             : ::write(file_.descriptor(), data, size);
  }
  void wait_for_reader() {
    shared_.is_way = true;
    while (shared_.read < begin_) usleep(1000);
  }
  void publish() { shared_.state.store(begin_ << bits_of_use | used_, std::memory_order_release); }
  KeptFile file_;
  WireBox::Contents& shared_;
  uint64_t begin_ = 0;
  size_t used_ = 0;
  bool is_broken_ = false;
};

namespace {

// Most of what goes over the wire is events, which are one piece each: this and the two texts. Their spots go
// before them, when they are new.
struct EventHead {
  uint64_t slot;
  Time time;
  size_t text, octets;
  uint64_t has_octets;  // no gap behind it that would be written
};

class Wire : public Reporter {
 public:
  Wire(const KeptFile& file, WireBox& box, WireNeeds needs) : stream_(file, box), needs_(needs) {}
  ~Wire() override {
    if (has_ended_) return;
    tag(Tag::refusal);
    pass_on();
    stream_.flush();
  }
  bool wants_events() const override { return needs_.events; }
  bool wants_log() const override { return needs_.log; }
  void run_begins() override {
    tag(Tag::start);
    pass_on();
  }

  void test_case_begins(const Execution& e) override {
    tag(Tag::begin);
    execution(e);
    pass_on();
    flush_in_time(e.begin - run_start().clock);
  }
  void event(const Event& e) override {
    if (sent_.of(*e.spot).second) spot(*e.spot);
    const EventHead head{e.spot->slot, e.time, e.text.size(), e.octets.size(), e.octets.data() != nullptr};
    const size_t size = 1 + sizeof head + head.text + head.octets;
    char* const direct = stream_.room(size);
    char* place = direct ? direct : more(size);
    *place++ = static_cast<char>(Tag::event);
    std::memcpy(place, &head, sizeof head);
    written(written(place + sizeof head, e.text), e.octets);
    direct ? stream_.take(size) : pass_on();
    flush_in_time(e.time);
  }
  void test_case_ends(const Result& r) override {
    tag(Tag::end);
    result(r);
    pass_on();
    flush_in_time(r.begin + r.duration - run_start().clock);
  }
  void flush() override { stream_.flush(); }
  void run_ends(const Results& results) override {
    has_ended_ = true;
    tag(Tag::run_end);
    for (const size_t n : results.counts()) number(n);
    pass_on();
    stream_.flush();
  }

 private:
  // Each time costs the other process a turn.
  void flush_in_time(Time now) {
    constexpr Time often = 50000000;
    if (now - flushed_ < often) return;
    flushed_ = now;
    stream_.flush();
  }
  void execution(const Execution& e) {
    for (const std::string* s : {&e.module, &e.name}) text(*s);
    for (uint64_t n : {uint64_t(e.begin), uint64_t(e.seed.has_value()), e.seed.value_or(0)}) number(n);
  }
  void result(const Result& r) {
    execution(r);
    for (const std::string* s : {&r.reason, &r.place.file}) text(*s);
    for (uint64_t n : {uint64_t(r.place.line), uint64_t(r.verdict), uint64_t(r.duration)}) number(n);
  }
  void spot(const Spot& s) {
    tag(Tag::spot);
    for (uint64_t n : {uint64_t(s.slot), uint64_t(s.kind), uint64_t(s.line)}) number(n);
    for (const std::string* t : {&s.component, &s.file, &s.name, &s.peer}) text(*t);
    pass_on();
  }
  void tag(Tag t) { *more(1) = static_cast<char>(t); }
  void number(uint64_t n) { std::memcpy(more(sizeof n), &n, sizeof n); }
  void text(std::string_view s) {
    number(s.size());
    if (!s.empty()) std::memcpy(more(s.size()), s.data(), s.size());
  }
  char* more(size_t size) {
    if (record_.size() < used_ + size) record_.resize(2 * (used_ + size));
    used_ += size;
    return record_.data() + used_ - size;
  }
  void pass_on() {
    stream_.put({record_.data(), used_});
    used_ = 0;
  }
  WireStream stream_;
  WireNeeds needs_;
  MadeOf<char> sent_;
  bool has_ended_ = false;
  Time flushed_ = 0;
  std::string record_;  // its beginning; the rest is room
  size_t used_ = 0;
};

// Reads what is there; where the text is cut off, is_good ends.
class Unwire {
 public:
  explicit Unwire(std::string_view text) : text_(text) {}
  bool is_good = true;
  size_t left() const { return text_.size(); }
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
  // One of a list.
  uint64_t choice(uint64_t last) {
    const uint64_t n = number();
    return n <= last ? n : cut_off();
  }
  std::string_view piece(uint64_t size) {
    if (size > text_.size()) return cut_off(), "";
    const std::string_view s = text_.substr(0, size);
    text_.remove_prefix(size);
    return s;
  }
  std::string text() { return std::string(piece(number())); }

 private:
  uint64_t cut_off() {
    is_good = false;
    text_ = {};
    return 0;
  }
  std::string_view text_;
};

Execution execution_of(Unwire& in) {
  Execution e;
  for (std::string* s : {&e.module, &e.name}) *s = in.text();
  e.begin = static_cast<Time>(in.number());
  const bool has_seed = in.choice(1);
  const uint64_t seed = in.number();
  if (has_seed) e.seed = seed;
  return e;
}

void take_spot_of(Unwire& in, Spots& spots) {
  const size_t slot = in.choice(spots.size() - 1);
  Saying s;
  s.kind = static_cast<EventKind>(in.choice(static_cast<uint64_t>(EventKind::verdict)));
  s.line = in.number();
  for (std::string_view* text : {&s.component, &s.file, &s.name, &s.peer}) *text = in.piece(in.number());
  if (in.is_good) spots.put(slot, s);
}

void tell_event_of(Unwire& in, const Spots& spots, const WireListener& listener) {
  EventHead head;
  const std::string_view bytes = in.piece(sizeof head);
  if (!in.is_good) return;
  std::memcpy(&head, bytes.data(), sizeof head);
  const std::string_view text = in.piece(head.text), octets = in.piece(head.octets);
  const Spot* spot = spots.at(head.slot);
  in.is_good = in.is_good && spot;
  if (in.is_good) listener.event({spot, head.time, text, head.has_octets ? octets : std::string_view()});
}

Result result_of(Unwire& in) {
  Result r;
  static_cast<Execution&>(r) = execution_of(in);
  for (std::string* s : {&r.reason, &r.place.file}) *s = in.text();
  r.place.line = in.number();
  r.verdict = static_cast<lumo_verdict_t>(in.choice(lumo_verdict_error_c));
  r.duration = static_cast<Time>(in.number());
  return r;
}

void tell_run_end_of(Unwire& in, const WireListener& listener) {
  Results::Counts counts;
  for (size_t& n : counts) n = in.number();
  if (in.is_good) listener.run_ends(Results(counts));
}

// What another process left behind may be anything, so an unknown tag is where it is cut off.
void tell_record_of(Unwire& in, Spots& spots, const WireListener& listener) {
  switch (static_cast<Tag>(in.tag())) {
    case Tag::start:
      return listener.run_begins();
    case Tag::refusal:
      return listener.run_is_refused();
    case Tag::begin:
      if (const Execution e = execution_of(in); in.is_good) listener.test_case_begins(e);
      return;
    case Tag::spot:
      return take_spot_of(in, spots);
    case Tag::event:
      return tell_event_of(in, spots, listener);
    case Tag::run_end:
      return tell_run_end_of(in, listener);
    case Tag::end:
      if (const Result r = result_of(in); in.is_good) listener.test_case_ends(r);
      return;
  }
  in.is_good = false;
}

}  // namespace

std::unique_ptr<Reporter> make_wire(const KeptFile& file, WireBox& box, WireNeeds needs) {
  return std::make_unique<Wire>(file, box, needs);
}

size_t WireReader::tell(std::string_view text) {
  Unwire in(text);
  size_t used = 0;
  while (in.left()) {
    tell_record_of(in, spots_, listener);
    if (!in.is_good) break;
    used = text.size() - in.left();
  }
  return used;
}

}  // namespace lumos
