// The messages at the ports of the system, as a capture of the network. Each is a datagram from a made-up
// address for the test system to one for the system under test, or back, so that any reader of captures shows
// it; the port numbers tell the system's ports apart, in the order in which they came up.
#include <map>

#include "report/report_file.h"
#include "report/reports.h"

namespace lumos {

namespace {

constexpr uint32_t test_system = 0x0A000001, under_test = 0x0A000002;  // 10.0.0.1, 10.0.0.2
constexpr size_t headers = 28, most_octets = 65535 - headers;

void put_native(Row& row, uint32_t number) {
  row.put({reinterpret_cast<const char*>(&number), sizeof number});
}

void put_ip_header(Row& row, uint32_t length, bool outward) {
  constexpr uint32_t version = 0x4500, life_and_udp = 64 << 8 | 17;
  uint32_t sum = version + length + life_and_udp;
  for (uint32_t address : {test_system, under_test}) sum += (address >> 16) + (address & 0xFFFF);
  while (sum >> 16) sum = (sum & 0xFFFF) + (sum >> 16);
  row.put_big(version, 2);
  row.put_big(length, 2);
  row.put_big(0, 4);
  row.put_big(life_and_udp, 2);
  row.put_big(~sum & 0xFFFF, 2);
  row.put_big(outward ? test_system : under_test, 4);
  row.put_big(outward ? under_test : test_system, 4);
}

class Pcap : public Reporter {
 public:
  explicit Pcap(const std::string& path) : file_(path) {
    put_native(rows_, 0xA1B23C4D);  // times have nanoseconds
    put_native(rows_, 2 | 4 << 16);
    put_native(rows_, 0);
    put_native(rows_, 0);
    put_native(rows_, 262144);
    put_native(rows_, 101);  // raw IP
    if (is_open()) file_.write_rows(rows_);
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
  void run_ends(const std::vector<Result>&) override {
    file_.write_rows(rows_);
    file_.complete();
  }

 private:
  uint32_t number_of(std::string_view port) {
    const auto known = ports_.find(port);
    if (known != ports_.end()) return known->second;
    return ports_[std::string(port)] = static_cast<uint32_t>(50001 + ports_.size() % 15000);
  }
  void packet(const Event& e, bool outward, std::string_view octets) {
    octets = octets.substr(0, most_octets);
    const uint32_t port = number_of(e.peer);
    const int64_t wall = run_start().wall + e.time;
    const auto length = static_cast<uint32_t>(headers + octets.size());
    for (const int64_t number : {wall / 1000000000, wall % 1000000000, int64_t(length), int64_t(length)})
      put_native(rows_, static_cast<uint32_t>(number));
    put_ip_header(rows_, length, outward);
    for (const uint32_t number : {port, port, length - 20, 0U}) rows_.put_big(number, 2);  // no checksum
    rows_.put(octets);
    file_.write_rows(rows_, enough_rows);
  }
  Row rows_;
  ReportFile file_;
  std::map<std::string, uint32_t, std::less<>> ports_;
};

}  // namespace

std::unique_ptr<Reporter> make_pcap(const std::string& path) {
  auto made = std::make_unique<Pcap>(path);
  if (!made->is_open()) return nullptr;
  return made;
}

}  // namespace lumos
