// What a message of bit fields costs: a header of 20 fields there and back, as a suite that speaks to the
// outside does it. `allocations` counts those of the heap for a message, `fields` the work.
#include <atomic>
#include <cstdlib>
#include <new>

#include <benchmark/benchmark.h>

#include "../fuzz/wire_types.h"

using namespace lumos;
using namespace lumos::testing;

static std::atomic<size_t> allocations{0};

[[gnu::noinline]] void* operator new(size_t size) {
  ++allocations;
  if (void* memory = std::malloc(size)) return memory;
  throw std::bad_alloc();
}
[[gnu::noinline]] void operator delete(void* memory) noexcept {
  std::free(memory);
}
[[gnu::noinline]] void operator delete(void* memory, size_t) noexcept {
  std::free(memory);
}

namespace {

constexpr const char* names[] = {"version", "kind",   "urgent", "acked", "spare", "id",    "source",
                                 "target",  "length", "offset", "flags", "hops",  "class", "ttl",
                                 "sum",     "first",  "second", "stamp", "more",  "body"};

lumo_type_t header() {
  std::vector<lumo_field_info_t> fields;
  std::vector<std::pair<const char*, const char*>> variants = {{"FIELDORDER(msb), BYTEORDER(last)", nullptr}};
  for (size_t i = 0; i < std::size(names); ++i) {
    const bool is_bits = i == 2 || i == 3 || i == 10, is_octets = i == 15 || i == 19;
    fields.push_back(mandatory(names[i], is_bits     ? lumo_bitstring_type
                                         : is_octets ? lumo_octetstring_type
                                                     : lumo_integer_type));
    constexpr const char* sizes[] = {
        "FIELDLENGTH(4)",  "FIELDLENGTH(2)",  "FIELDLENGTH(1)",  "FIELDLENGTH(1)",  "FIELDLENGTH(8)",
        "FIELDLENGTH(16)", "FIELDLENGTH(16)", "FIELDLENGTH(16)", "FIELDLENGTH(16)", "FIELDLENGTH(13)",
        "FIELDLENGTH(3)",  "FIELDLENGTH(8)",  "FIELDLENGTH(8)",  "FIELDLENGTH(8)",  "FIELDLENGTH(16)",
        "FIELDLENGTH(4)",  "FIELDLENGTH(32)", "FIELDLENGTH(32)", "FIELDLENGTH(8)",  "FIELDLENGTH(variable)"};
    variants.emplace_back(sizes[i], names[i]);
    if (i != 9 && !is_bits && !is_octets && i > 4) variants.emplace_back("BYTEORDER(last)", names[i]);
  }
  variants.emplace_back("LENGTHTO(body)", "length");
  static TypeTable table("Header", lumo_type_kind_record, fields);
  return with_attributes(table, "RAW", variants);
}

void Header(benchmark::State& state) {
  const TempScope outer;
  std::vector<std::string> errors;
  const lumo_type_t type = header();
  Value v = value(type,
                  "{4, 1, '1'B, '0'B, 0, 4711, 1, 2, 0, 100, '101'B, 64, 3, 9, 65535, '01020304'O, 70000, "
                  "123456789, 7, '00112233445566778899AABBCCDDEEFF'O}");
  std::string octets, fault;
  size_t taken = 0;
  const size_t before = allocations;
  for (auto _ : state) {
    const TempScope scope;
    octets.clear();
    if (!v || !encode_value(v, octets, fault) || !decode_value(type, octets, &taken, fault) ||
        taken != octets.size())
      return state.SkipWithError(("not there and back: " + fault).c_str());
  }
  state.SetItemsProcessed(state.iterations());
  state.counters["allocations"] =
      static_cast<double>(allocations - before) / static_cast<double>(state.iterations());
}
BENCHMARK(Header);

}  // namespace

BENCHMARK_MAIN();
