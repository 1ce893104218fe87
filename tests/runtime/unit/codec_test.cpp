#include <algorithm>
#include <cstdlib>
#include <mutex>
#include <sstream>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include "codec/bits.h"
#include "codec/families.h"
#include "codec/raw_plan.h"
#include "codec/text_plan.h"
#include "support.h"
#include "transport/channel.h"
#include "transport/framing.h"
#include "transport/link_spec.h"

using namespace lumos;
using namespace lumos::testing;

namespace {

std::string shown(const std::string& octets) {
  std::string text;
  for (const unsigned char c : octets) text += {"0123456789ABCDEF"[c >> 4], "0123456789ABCDEF"[c & 15]};
  return text;
}

// Fields in a row: number, bits, and the order.
struct Bits {
  uint64_t number;
  unsigned count;
  BitOrder order;
};

TEST(Bits, FieldsFillOctets) {
  constexpr BitOrder low = {}, high = {true, false, false, false}, network = {true, true, false, false},
                     last = {false, true, false, false}, bits = {false, false, true, false},
                     mirrored = {false, false, false, true};
  const std::vector<std::pair<std::vector<Bits>, const char*>> cases = {
      {{{1, 4, low}, {2, 4, low}}, "21"},
      {{{1, 4, high}, {2, 4, high}}, "12"},
      {{{258, 16, low}}, "0201"},
      {{{258, 16, last}}, "0102"},
      {{{10, 4, network}, {291, 12, network}}, "A123"},
      {{{10, 4, low}, {291, 12, low}}, "3A12"},
      {{{1, 1, low}, {0x1FF, 9, low}}, "FF03"},
      {{{1, 1, high}, {0x0FF, 9, network}}, "BFC0"},
      {{{0x12, 8, bits}}, "48"},
      {{{1, 8, mirrored}}, "80"},
      {{{1, 3, low}, {1, 3, high}}, "21"},
      {{{~0ull, 64, network}, {0, 1, network}}, "FFFFFFFFFFFFFFFF00"},
      {{{0x123, 12, mirrored}}, "480C"},
      {{{1, 4, last}, {0xABC, 12, last}}, "A1BC"},
  };
  for (const auto& [fields, octets] : cases) {
    BitSink sink;
    for (const Bits& f : fields) sink.put(f.number, f.count, f.order);
    EXPECT_EQ(shown(sink.octets()), octets);
    BitSource source(sink.octets());
    for (const Bits& f : fields) {
      uint64_t number = 0;
      ASSERT_TRUE(source.get(number, f.count, f.order, SIZE_MAX));
      EXPECT_EQ(number, f.number) << octets;
    }
    uint64_t more;
    EXPECT_FALSE(source.get(more, 8, low, SIZE_MAX));
    // As digits they take the same bits.
    BitSink digits;
    for (const Bits& f : fields) {
      std::string text;
      for (unsigned i = f.count; i-- > 0;) text += (f.number >> i & 1) ? '1' : '0';
      digits.put_digits(text, f.order);
    }
    EXPECT_EQ(shown(digits.octets()), octets);
  }
}

TEST(Attributes, FaultsNameTypeFieldAndWord) {
  using Variants = std::vector<lumo_encoding_attr_struct_t>;
  TypeTable inner("Inner", lumo_type_kind_union, {mandatory("u", lumo_integer_type)});
  const struct {
    const char *text, *field, *error;
  } cases[] = {
      {"FIELDLENGHT(8)", "a", ", field a: the word 'FIELDLENGHT' is not known"},
      {"rest of it", nullptr, ": the word 'rest of it' is not known"},
      {"FIELDLENGTH(8), FIELDLENGTH(9)", "a",
       ", field a: the word FIELDLENGTH(9) is wrong or contradicts another"},
      {"FIELDLENGTH(x)", "a", ", field a: the word FIELDLENGTH(x) is wrong or contradicts another"},
      {"FIELDLENGTH(8) + 1", "a", ", field a: the word FIELDLENGTH(8)+ 1 is wrong or contradicts another"},
      {"FIELDLENGTH(65)", "a", ", field a: the word FIELDLENGTH does not fit the type"},
      {"FIELDLENGTH(variable)", "a", ", field a: the word FIELDLENGTH(variable) does not fit the type"},
      {"FIELDLENGTH(12), EXTENSION_BIT(yes)", "a", ", field a: the word EXTENSION_BIT needs whole octets"},
      {"FIELDLENGTH(8)", nullptr, ": the word FIELDLENGTH does not fit the type"},
      {"REPEATABLE(yes)", "u", ", field u: the word REPEATABLE does not fit the type"},
      {"LENGTHTO(z)", "a", ", field a: the word LENGTHTO names z, which is no field"},
      {"LENGTHTO(b)", nullptr, ": the word LENGTHTO stands at no field"},
      {"LENGTHTO(a", "a", ", field a: the text \"LENGTHTO(a\" has a parenthesis or quote without an end"},
      {"LENGTHTO(b)", "s", ", field s: the word LENGTHTO does not fit the type"},
      {"LENGTHTO(b), LENGTHINDEX(u.u)", "a", ", field a: the word LENGTHINDEX names u.u, which is no number"},
      {"UNIT(bits)", "a", ", field a: the word UNIT is nothing without LENGTHTO"},
      {"UNIT(elements), LENGTHTO(b)", "a", ", field a: the word UNIT(elements) counts b, which is no list"},
      {"PRESENCE(a = 'x')", "b",
       ", field b: the word PRESENCE compares a with 'x', which is no value of its type"},
      {"PRESENCE(s = '00'O)", "b", ", field b: the word PRESENCE names a field that does not come before"},
      {"CROSSTAG(v, a = 1)", "u", ", field u: the word CROSSTAG names v, which is no field"},
      {"CROSSTAG(u, a = 1)", "s", ", field s: the word CROSSTAG does not fit the type"},
      {"TAG(b, c = 1)", nullptr, ": the word TAG names c, which is no field"},
      {"TAG(v, c = 1)", "u", ", field u: the word TAG names v, which is no field"},
      {"EXTENSION_BIT_GROUP(yes, b, a)", nullptr,
       ": the word EXTENSION_BIT_GROUP names its last field first"},
      {"POINTERTO(a)", "b", ", field b: the word POINTERTO leads to a field that comes before"},
      {"FORCEOMIT(a)", nullptr, ": the word FORCEOMIT names a, which is not optional"},
  };
  std::deque<TypeTable> tables;  // plans are known by their types
  for (const auto& c : cases) {
    TypeTable& table =
        tables.emplace_back("T", lumo_type_kind_record,
                            std::vector{mandatory("a", lumo_integer_type), optional("b", lumo_integer_type),
                                        mandatory("s", lumo_octetstring_type), mandatory("u", inner)});
    const lumo_type_t type = table;
    Variants variants = {{c.text, false, c.field}};
    type->variant_attributes = variants.data();
    lumo_attributes_register(variants.data(), variants.size(), nullptr);
    std::vector<std::string> errors;
    raw_plan(type, errors);
    ASSERT_FALSE(errors.empty()) << c.error;
    EXPECT_EQ(errors[0], std::string("type Test.T") + c.error);
  }
}

TEST(Attributes, FaultsOfTokensToo) {
  const struct {
    const char *text, *field, *error;
  } cases[] = {
      {"SEPARATOR(' ')", "a", ", field a: the word SEPARATOR does not fit the type"},
      {"TEXT_CODING(repeatable=yes)", "s",
       ", field s: the word TEXT_CODING(repeatable) does not fit the type"},
      {"TEXT_CODING(convert=upper)", "a", ", field a: the word TEXT_CODING(convert) does not fit the type"},
      {"TEXT_CODING(length=3)", nullptr, ": the word TEXT_CODING(length) does not fit the type"},
      {"TEXT_CODING(just=centre)", "a",
       ", field a: the word TEXT_CODING(just=centre) is not known, wrong or there twice"},
      {"BEGIN('x','[')", "s", ", field s: the word BEGIN('x','[') is not known, wrong or there twice"},
      {"END(,,)", nullptr, ": the word END(,,) is not known, wrong or there twice"},
      {"begin('x')", "s", ", field s: the word begin('x') is not known, wrong or there twice"},
  };
  std::deque<TypeTable> tables;
  for (const auto& c : cases) {
    const lumo_type_t type = tables.emplace_back(
        "T", lumo_type_kind_record,
        std::vector{mandatory("a", lumo_integer_type), mandatory("s", lumo_charstring_type)});
    lumo_encoding_attr_struct_t row = {c.text, false, c.field};
    type->variant_attributes = &row;
    lumo_attributes_register(&row, 1, nullptr);
    std::vector<std::string> errors;
    text_plan(type, errors);
    ASSERT_FALSE(errors.empty()) << c.error;
    EXPECT_EQ(errors[0], std::string("type Test.T") + c.error);
  }
}

TEST(Framing, StreamsAreCutIntoMessages) {
  using Messages = std::vector<std::string>;
  const struct {
    FramingSpec framing;
    std::string stream;
    Messages messages;
    Cut then;
  } cases[] = {
      {Framing::line, "a\r\n\nbc", {"a", ""}, Cut::more},
      {Framing::len16, std::string("\0\2ab\0\0\0\5x", 10), {"ab", ""}, Cut::more},
      {Framing::len32, std::string("\0\0\0\1a\xff\0\0\0", 9), {"a"}, Cut::wrong},
      {Framing::tpkt, std::string("\3\0\0\6ab\4", 7), {"ab"}, Cut::wrong},
      {Framing::tpkt, std::string("\3\0\0\3", 4), {}, Cut::wrong},
      {Framing::ber,
       std::string("\x30\2ab\x3f\x81\1\x81\1c\x30\x82\1", 13),
       {std::string("\x30\2ab"), std::string("\x3f\x81\1\x81\1c")},
       Cut::more},
      {Framing::ber, "\x30\x80", {}, Cut::wrong},
      {*framing_named("length:1:2"),
       std::string("x\0\4ay\0\3z\0\2", 10),
       {std::string("x\0\4a", 4), std::string("y\0\3", 3)},
       Cut::wrong},
      {*framing_named("length:0:1:3"), std::string("\2abcd\xfd", 6), {"\2abcd"}, Cut::more},
      {*framing_named("varint:1"), std::string("x\1ay\x80\1", 6), {"x\1a"}, Cut::more},
      {*framing_named("varint:0"), "\xff\xff\xff\x7f", {}, Cut::wrong},
      {*framing_named("varint:0"), "\xff\xff\xff\xff", {}, Cut::wrong},
  };
  for (const auto& c : cases) {
    std::string_view stream = c.stream;
    std::string message;
    Messages messages;
    Cut cut;
    while ((cut = cut_message(c.framing, stream, message)) == Cut::message) messages.push_back(message);
    EXPECT_EQ(messages, c.messages);
    EXPECT_EQ(cut, c.then) << shown(c.stream);
  }
}

TEST(Links, AddressesAreReadExactly) {
  LinkSpec spec;
  for (const char* good :
       {"p=udp:127.0.0.1:53", "p udp:h:53", "p = udp:h:53", "p[1]=udp:[::1]:53,local=:54", "p=udp:,local=h:1",
        "p=tcp:host:80,framing=crlf", "p=tcp-listen::80", "p=tcp:h:1,framing=length:1:3",
        "p=tcp:h:1,framing=length:2:2:6", "p=tcp:h:1,framing=varint:1", "p=file:/dev/tty,framing=line",
        "p=file:in,out=out", "p=loopback:"})
    EXPECT_TRUE(read_link_spec(good, spec)) << good;
  std::istringstream all(
      "|p|p=|p | "
      "udp:h:1|p=udp|=udp:h:1|p=udp:|p=udp:h|p=udp:h:x|p=udp:h:70000|p=udp:::1:53|p=tcp:h:1,framing=x|p=tcp:"
      "h:1,framing=length|p=tcp:h:1,framing=length:1:5|p=tcp:h:1,framing=varint:|p=tcp:h:1,framing=len16:2|p="
      "udp:h:1,framing=line|p=sctp:h:1|p=file:|p=loopback:x|p=tcp:h:1,|p=loopback:,framing=line|p=tcp-listen:"
      ":1,local=h:2");
  for (std::string bad; std::getline(all, bad, '|');) EXPECT_FALSE(read_link_spec(bad, spec)) << bad;
}

// --- channels, against peers of the test's own

struct Heard {
  std::mutex lock;
  std::vector<std::string> messages, faults;
  size_t lost = 0;

  ChannelEvents events() {
    return {[this](std::string message, std::string) {
              std::lock_guard<std::mutex> hold(lock);
              messages.push_back(std::move(message));
            },
            [this](std::string text, Trouble trouble) {
              std::lock_guard<std::mutex> hold(lock);
              faults.push_back(std::move(text));
              lost += trouble == Trouble::lost;
            },
            [] { return false; }};
  }
  std::vector<std::string> told() {
    std::lock_guard<std::mutex> hold(lock);
    return faults;
  }
  // Within two seconds.
  bool waits_for(size_t count, size_t lost_count) {
    for (int i = 0; i < 200; ++i, usleep(10000)) {
      std::lock_guard<std::mutex> hold(lock);
      if (messages.size() >= count && lost >= lost_count) return true;
    }
    return false;
  }
};

std::unique_ptr<Channel> opened(const std::string& link, Heard& heard) {
  LinkSpec spec;
  std::string error;
  auto channel = read_link_spec(link, spec) ? open_channel(spec, heard.events(), error) : nullptr;
  EXPECT_TRUE(channel) << link << error;
  return channel;
}

int raw_socket(uint16_t port, bool listens) {
  const int fd = socket(AF_INET, SOCK_STREAM, 0), yes = 1;
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  auto* generic = reinterpret_cast<sockaddr*>(&address);
  setsockopt(fd, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
  const bool good = listens ? bind(fd, generic, sizeof address) == 0 && listen(fd, 5) == 0
                            : connect(fd, generic, sizeof address) == 0;
  EXPECT_TRUE(good);
  return fd;
}

TEST(Channels, PeersThatSendNoMoreAreAnswered) {
  Heard heard;
  const auto server = opened("p=tcp-listen:127.0.0.1:27541,framing=len16", heard);
  const int peer = raw_socket(27541, false);
  // Slowly, in pieces.
  for (const char c : std::string_view("\0\2ab\0\1c", 7)) {
    ASSERT_EQ(write(peer, &c, 1), 1);
    usleep(1000);
  }
  shutdown(peer, SHUT_WR);
  ASSERT_TRUE(heard.waits_for(2, 0));
  usleep(50000);
  std::string error;
  ASSERT_TRUE(server->send("xy", "", error)) << error;
  char answer[4];
  ASSERT_EQ(recv(peer, answer, 4, MSG_WAITALL), 4);
  EXPECT_EQ(std::string_view(answer, 4), std::string_view("\0\2xy", 4));
  // What is sent behind a reset is told to be lost.
  const linger at_once = {1, 0};
  setsockopt(peer, SOL_SOCKET, SO_LINGER, &at_once, sizeof at_once);
  close(peer);
  if (server->send("z", "", error)) {
    EXPECT_TRUE(heard.waits_for(2, 1));
  }
}

TEST(Channels, WhatAPeerDoesNotTakeIsBoundedAndTold) {
  Heard heard;
  const int listening = raw_socket(27542, true);
  auto client = opened("p=tcp:127.0.0.1:27542", heard);
  const std::string message(1 << 20, 'x');
  std::string error;
  size_t sent = 0;
  while (sent < 200 && client->send(message, "", error)) ++sent;
  EXPECT_GE(sent, 64u);
  EXPECT_LT(sent, 100u);
  EXPECT_NE(error.find("the peer takes nothing"), std::string::npos) << error;
  client.reset();
  close(listening);
}

TEST(Channels, PipesThatAreReadLateGetAll) {
  Heard heard;
  const std::string path = ::testing::TempDir() + "lumos_fifo";
  unlink(path.c_str());
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  const auto file = opened("p=file:/dev/null,out=" + path, heard);
  std::string error, got(300000, ' ');
  ASSERT_TRUE(file->send(std::string(got.size(), 'x'), "", error)) << error;
  const int reader = open(path.c_str(), O_RDONLY);
  size_t taken = 0;
  for (ssize_t n = 1; taken < got.size() && n > 0; taken += static_cast<size_t>(n))
    n = read(reader, &got[taken], got.size() - taken);
  EXPECT_EQ(taken, got.size());
  close(reader);
  unlink(path.c_str());
}

std::string refusal(const std::string& link) {
  Heard heard;
  LinkSpec spec;
  std::string error;
  EXPECT_TRUE(read_link_spec(link, spec)) << link;
  EXPECT_FALSE(open_channel(spec, heard.events(), error)) << link;
  return error;
}

TEST(Channels, DatagramsOfAllSizesAndAddressesThatAreTaken) {
  Heard heard, other, refused;
  const auto nobody = opened("p=udp:127.0.0.1:27546", refused);
  const auto right = opened("p=udp:,local=127.0.0.1:27543", heard),
             left = opened("p=udp:localhost:27543,local=:0", other);
  const auto server = opened("p=tcp-listen:localhost:27544", other);
  std::string error;
  for (size_t n = 1; n < 3; ++n) {
    EXPECT_TRUE(nobody->send("x", "", error)) << error;
    for (int i = 0; i < 200 && refused.told().size() < n; ++i) usleep(10000);
  }
  EXPECT_EQ(refused.told(), std::vector<std::string>(2, "a datagram for 127.0.0.1:27546: Connection refused"));
  for (const size_t n : {0, 1, 65507}) EXPECT_TRUE(left->send(std::string(n, 'x'), "", error)) << n << error;
  ASSERT_TRUE(heard.waits_for(3, 0));
  EXPECT_EQ(heard.messages[0] + heard.messages[1], "x");
  EXPECT_EQ(heard.messages[2].size(), 65507u);
  EXPECT_FALSE(left->send(std::string(65508, 'x'), "", error));
  EXPECT_EQ(error, "sending to 127.0.0.1:27543: Message too long");
  EXPECT_TRUE(right->send("y", "", error) && other.waits_for(1, 0)) << error;
  EXPECT_EQ(refusal("p=udp:,local=127.0.0.1:27543"), "address 127.0.0.1:27543: Address already in use");
  EXPECT_EQ(refusal("p=tcp-listen:127.0.0.1:27544"), "address 127.0.0.1:27544: Address already in use");
  EXPECT_EQ(refusal("p=udp:no.such.host.invalid:1").find("address no.such.host.invalid:1: "), 0u);
}

TEST(Channels, SerialLinesHandOverOctetsAsTheyAre) {
  Heard heard;
  const int master = posix_openpt(O_RDWR | O_NOCTTY);
  ASSERT_TRUE(master >= 0 && grantpt(master) == 0 && unlockpt(master) == 0);
  const auto line = opened(std::string("p=file:") + ptsname(master), heard);
  const std::string octets("a\r\n\3\4\x11\x7f\0\xff", 9);
  std::string error;
  ASSERT_EQ(write(master, octets.data(), octets.size()), static_cast<ssize_t>(octets.size()));
  ASSERT_TRUE(heard.waits_for(1, 0) && line->send(octets, "", error)) << error;
  EXPECT_EQ(heard.messages[0], octets);
  char back[9];
  ASSERT_EQ(read(master, back, 9), 9);
  EXPECT_EQ(std::string(back, 9), octets);
  close(master);
}

TEST(Channels, EndsAreToldEachOnce) {
  Heard heard;
  const auto server = opened("p=tcp-listen:127.0.0.1:27545,framing=line", heard);
  const int first = raw_socket(27545, false), second = raw_socket(27545, false);
  ASSERT_EQ(write(second, "half", 4), 4);
  close(first);
  close(second);
  for (int i = 0; i < 200 && heard.told().size() < 3; ++i) usleep(10000);
  const std::vector<std::string> told = heard.told();
  EXPECT_EQ(told.size(), 3u);
  EXPECT_EQ(
      std::count_if(told.begin(), told.end(), [](const auto& t) { return t.ends_with(" sends no more"); }),
      2);
  EXPECT_EQ(heard.lost, 0u);
}

}  // namespace
