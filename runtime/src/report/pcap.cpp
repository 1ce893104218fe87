// The messages at the ports of the system, as a capture of the network. Each is a datagram from a made-up
// address for the test system to one for the system under test, or back, so that any reader of captures shows
// it; the port numbers tell the system's ports apart, in the order in which they came up.
#include <arpa/inet.h>

#include <algorithm>
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

constexpr uint32_t life_and_udp = 64 << 8 | 17;

// Sum of the header of IP, whose length alone varies; both addresses are always in it.
uint32_t header_sum(uint32_t length) {
  uint32_t sum = 0x4500 + length + life_and_udp;
  for (uint32_t address : {test_system, under_test}) sum += (address >> 16) + (address & 0xFFFF);
  while (sum >> 16) sum = (sum & 0xFFFF) + (sum >> 16);
  return ~sum & 0xFFFF;
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
    if (is_open()) file_.pass_on();
  }
  bool is_open() const { return file_.is_open(); }

  bool wants_events() const override { return true; }
  bool wants_log() const override { return false; }
  void event(const Event& e) override {
    const bool outward = e.spot->kind == EventKind::send;
    if (!outward && e.spot->kind != EventKind::arrive) return;
    const auto way = ways_.of(*e.spot);
    if (way.second) way.first = way_of(*e.spot, outward);
    if (way.first.ports) packet(e, way.first, e.octets.data() ? e.octets : e.text);
  }
  void run_ends(const Results&) override {
    file_.complete();
  }

 private:
  // Of messages of a spot, as it stands in their headers.
  struct Way {
    uint32_t from = 0, to = 0;
    uint32_t ports = 0;  // 0 where they go not to the system
  };
  Way way_of(const Spot& spot, bool outward) {
    if (spot.peer.compare(0, 7, "system:")) return {};
    const uint32_t port = number_of(spot.peer);
    return {htonl(outward ? test_system : under_test), htonl(outward ? under_test : test_system),
            htonl(port << 16 | port)};
  }
  uint32_t number_of(std::string_view port) {
    const auto known = ports_.find(port);
    if (known != ports_.end()) return known->second;
    return ports_[std::string(port)] = static_cast<uint32_t>(50001 + ports_.size() % 15000);
  }
  void packet(const Event& e, const Way& way, std::string_view octets) {
    const size_t all = headers + octets.size();
    octets = octets.substr(0, most_octets);
    const int64_t wall = run_start().wall + e.time;
    const auto length = static_cast<uint32_t>(headers + octets.size());
    const uint32_t words[] = {static_cast<uint32_t>(wall / 1000000000),
                              static_cast<uint32_t>(wall % 1000000000),
                              length,  // what was kept of it
                              static_cast<uint32_t>(std::min<size_t>(all, UINT32_MAX)),
                              htonl(0x4500U << 16 | length),
                              0,
                              htonl(life_and_udp << 16 | header_sum(length)),
                              way.from,
                              way.to,
                              way.ports,
                              htonl((length - 20) << 16)};
    rows_.put({reinterpret_cast<const char*>(words), sizeof words});
    rows_.put(octets);
    file_.pass_on();
  }
  ReportFile file_;
  Row& rows_ = file_.rows();
  MadeOf<Way> ways_;
  std::map<std::string, uint32_t, std::less<>> ports_;
};

}  // namespace

std::unique_ptr<Reporter> make_pcap(const std::string& path) {
  auto made = std::make_unique<Pcap>(path);
  if (!made->is_open()) return nullptr;
  return made;
}

}  // namespace lumos
