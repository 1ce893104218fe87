// The messages at the ports of the system, as a capture of the network. Each is a datagram from a made-up
// address for the test system to one for the system under test, or back, so that any reader of captures shows
// it; the port numbers tell the system's ports apart, in the order in which they came up.
#include <map>

#include "report/report_file.h"
#include "report/reports.h"

namespace lumos {

namespace {

class Octets {
 public:
  void big(uint32_t number, int size) {
    for (int i = size - 1; i >= 0; --i) text_ += static_cast<char>(number >> (8 * i));
  }
  void native(uint32_t number) { text_.append(reinterpret_cast<const char*>(&number), sizeof number); }
  void add(std::string_view octets) { text_ += octets; }
  std::string& text() { return text_; }

 private:
  std::string text_;
};

constexpr uint32_t test_system = 0x0A000001, under_test = 0x0A000002;  // 10.0.0.1, 10.0.0.2
constexpr size_t headers = 28, most_octets = 65535 - headers;

uint32_t checksum(std::string_view header) {
  uint32_t sum = 0;
  for (size_t i = 0; i + 1 < header.size(); i += 2)
    sum += static_cast<uint32_t>(static_cast<unsigned char>(header[i])) << 8 |
           static_cast<unsigned char>(header[i + 1]);
  while (sum >> 16) sum = (sum & 0xFFFF) + (sum >> 16);
  return ~sum & 0xFFFF;
}

std::string ip_header(size_t length, bool outward) {
  auto header = [&](uint32_t sum) {
    Octets h;
    h.big(0x4500, 2);
    h.big(static_cast<uint32_t>(length), 2);
    h.big(0, 4);
    h.big(64 << 8 | 17, 2);
    h.big(sum, 2);
    h.big(outward ? test_system : under_test, 4);
    h.big(outward ? under_test : test_system, 4);
    return h.text();
  };
  return header(checksum(header(0)));
}

class Pcap : public Reporter {
 public:
  explicit Pcap(const std::string& path) : file_(path) {
    Octets h;
    h.native(0xA1B23C4D);  // times have nanoseconds
    h.native(2 | 4 << 16);
    h.native(0);
    h.native(0);
    h.native(262144);
    h.native(101);  // raw IP
    if (file_.is_open()) file_.write(h.text());
  }
  bool is_open() const { return file_.is_open(); }

  bool wants_events() const override { return true; }
  bool wants_log() const override { return false; }
  void event(const Event& e) override {
    const bool outward = e.kind == EventKind::send;
    if (!outward && e.kind != EventKind::arrive) return;
    if (e.peer.compare(0, 7, "system:")) return;
    packet(e, outward, e.octets.empty() && outward ? e.text : e.octets);
  }
  void run_ends(const std::vector<Result>&) override { file_.complete(); }

 private:
  uint32_t number_of(std::string_view port) {
    return ports_.try_emplace(std::string(port), static_cast<uint32_t>(50001 + ports_.size() % 15000))
        .first->second;
  }
  void packet(const Event& e, bool outward, std::string_view octets) {
    octets = octets.substr(0, most_octets);
    const uint32_t port = number_of(e.peer);
    const int64_t wall = run_start().wall + e.time;
    const auto length = static_cast<uint32_t>(headers + octets.size());
    Octets p;
    p.native(static_cast<uint32_t>(wall / 1000000000));
    p.native(static_cast<uint32_t>(wall % 1000000000));
    p.native(length);
    p.native(length);
    p.add(ip_header(length, outward));
    p.big(port, 2);
    p.big(port, 2);
    p.big(static_cast<uint32_t>(8 + octets.size()), 2);
    p.big(0, 2);  // no checksum
    p.add(octets);
    file_.write(p.text());
  }
  ReportFile file_;
  std::map<std::string, uint32_t> ports_;
};

}  // namespace

std::unique_ptr<Reporter> make_pcap(const std::string& path) {
  auto made = std::make_unique<Pcap>(path);
  if (!made->is_open()) return nullptr;
  return made;
}

}  // namespace lumos
