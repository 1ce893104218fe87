// What matching costs: the usual templates, and the worst ones that are known. Each is measured in sizes that
// double, and the library fits the growth.
#include <benchmark/benchmark.h>

#include "support.h"
#include "template/templates.h"

using namespace lumos;
using namespace lumos::testing;

namespace {

struct Bench : Types {
  TempScope scope;

  static Value list_of(lumo_type_t type, size_t size, const std::function<Value(size_t)>& item,
                       bool is_template) {
    Value list = is_template ? dynamic(type) : make_root(type, lumo_temp_alloc_c);
    lumo_value_set_vector_size(list, size, nullptr);
    for (size_t i = 0; i < size; ++i) lumo_value_assign_vector_element(list, i, item(i), nullptr);
    return list;
  }
  Value numbers(lumo_type_t type, size_t size) {
    return list_of(
        type, size, [](size_t i) { return number(i); }, false);
  }
  static Value number(size_t n) { return integer(static_cast<lumo_long_integer_t>(n)); }
  static Value up_to(size_t n) {
    Value range = dynamic(lumo_integer_type);
    lumo_template_set_value_range(range, integer(0), number(n), false, nullptr);
    return range;
  }
  static Value items(lumo_type_t type, lumo_value_list_kind_t kind, size_t size,
                     const std::function<Value(size_t)>& item) {
    std::vector<lumo_value_t> values;
    for (size_t i = 0; i < size; ++i) values.push_back(item(i));
    values.push_back(nullptr);
    Value list = dynamic(type);
    lumo_template_set_value_list(list, kind, values.data(), false, nullptr);
    return list;
  }
  static Value pattern(const std::string& text) {
    Value p = dynamic(lumo_charstring_type);
    lumo_template_set_string_pattern(p, testing::text(text.c_str()), false, nullptr);
    return p;
  }
};

using Make = void (*)(Bench&, size_t size, Value& pattern, Value& value);

void Match(benchmark::State& state, Make make, bool fits) {
  Bench bench;
  Value pattern = nullptr, value = nullptr;
  make(bench, static_cast<size_t>(state.range(0)), pattern, value);
  for (auto _ : state) {
    TempScope scope;
    if (match_value(pattern, value) != fits) state.SkipWithError("another result");
  }
  state.SetComplexityN(state.range(0));
}

void Record(Bench& bench, size_t, Value& pattern, Value& value) {
  static std::deque<std::string> names;
  std::vector<lumo_field_info_t> fields;
  for (int i = 0; i < 20; ++i)
    fields.push_back(mandatory(names.emplace_back("f" + std::to_string(i)).c_str(),
                               i % 2 ? lumo_charstring_type : lumo_integer_type));
  static TypeTable type("Record", lumo_type_kind_record, fields);
  pattern = dynamic(type);
  value = make_root(type, lumo_temp_alloc_c);
  for (unsigned long i = 0; i < 20; ++i) {
    lumo_value_assign_vector_element(value, i, i % 2 ? text("some text") : integer(7), nullptr);
    Value part = i % 4 == 0 ? bench.up_to(10) : i % 2 ? text("some text") : integer(7);
    lumo_value_assign_vector_element(pattern, i, part, nullptr);
  }
}

// All elements in the opposite order.
void Permutation(Bench& bench, size_t size, Value& pattern, Value& value) {
  value = bench.numbers(bench.list, size);
  pattern = Bench::list_of(
      bench.list, size, [&](size_t i) { return Bench::number(size - 1 - i); }, true);
  lumo_template_set_permutation(pattern, 0, size - 1, nullptr);
}

// Each element may go to all items but those before it: earlier partners change theirs.
void Contested(Bench& bench, size_t size, Value& pattern, Value& value) {
  value = bench.numbers(bench.list, size);
  pattern = Bench::list_of(
      bench.list, size, [&](size_t i) { return Bench::up_to(size - 1 - i); }, true);
  lumo_template_set_permutation(pattern, 0, size - 1, nullptr);
}

// One partner is missing, which shows when all have been tried.
void Impossible(Bench& bench, size_t size, Value& pattern, Value& value) {
  value = bench.numbers(bench.list, size);
  const auto item = [&](size_t i) { return Bench::up_to(i + 1 < size ? size - 2 : 0); };
  pattern = Bench::list_of(
      bench.list, size, [&](size_t i) { return i == 1 ? Bench::up_to(0) : item(i); }, true);
  lumo_template_set_permutation(pattern, 0, size - 1, nullptr);
}

void Subset(Bench& bench, size_t size, Value& pattern, Value& value) {
  value = bench.numbers(bench.bag, size / 2);
  pattern = Bench::items(bench.bag, lumo_value_list_subset_c, size, Bench::number);
}

void Superset(Bench& bench, size_t size, Value& pattern, Value& value) {
  value = bench.numbers(bench.bag, size);
  pattern = Bench::items(bench.bag, lumo_value_list_superset_c, size / 2,
                         [](size_t i) { return Bench::number(2 * i); });
}

// The last of the values.
void ValueList(Bench&, size_t size, Value& pattern, Value& value) {
  value = Bench::number(size - 1);
  pattern = Bench::items(lumo_integer_type, lumo_value_list_normal_c, size, Bench::number);
}

// *, 0, *, 0, ... against zeros and a last element that none takes.
void Stars(Bench& bench, size_t size, Value& pattern, Value& value) {
  value = Bench::list_of(
      bench.list, size, [](size_t) { return Bench::number(0); }, false);
  const auto item = [&](size_t i) {
    return i == size / 5 ? Bench::number(1) : i % 2 ? Bench::number(0) : lumo_anyornone_value_c;
  };
  pattern = Bench::list_of(bench.list, size / 5 + 1, item, true);
}

// As many templates as elements, and * behind them.
void OpenEnd(Bench& bench, size_t size, Value& pattern, Value& value) {
  value = bench.numbers(bench.list, size);
  const auto item = [&](size_t i) { return i < size ? Bench::up_to(i) : lumo_anyornone_value_c; };
  pattern = Bench::list_of(bench.list, size + 1, item, true);
}

// Two sets, equal in the opposite order.
void EqualSets(Bench& bench, size_t size, Value& pattern, Value& value) {
  value = bench.numbers(bench.bag, size);
  pattern = Bench::list_of(
      bench.bag, size, [&](size_t i) { return Bench::number(size - 1 - i); }, false);
}

void PlainPattern(Bench&, size_t size, Value& pattern, Value& value) {
  value = text((std::string(size, 'a') + "needle").c_str());
  pattern = Bench::pattern("*needle");
}

void StarredPattern(Bench&, size_t size, Value& pattern, Value& value) {
  value = text(std::string(size, 'a').c_str());
  pattern = Bench::pattern("*a*a*a*a*a*a*a*a*b");
}

void NestedRepetitions(Bench&, size_t size, Value& pattern, Value& value) {
  value = text(std::string(size, 'a').c_str());
  pattern = Bench::pattern("(((a+)+)+)+b");
}

// Lists in lists, with * at each level.
void Nested(Bench&, size_t size, Value& pattern, Value& value) {
  static std::deque<TypeTable> types;
  lumo_type_t type = lumo_integer_type;
  value = Bench::number(1);
  pattern = Bench::number(2);
  for (size_t i = 0; i < size; ++i) {
    type = types.emplace_back("Nested", lumo_type_kind_recordof,
                              std::vector{mandatory(lumo_type_array_contained_type_c, type)});
    Value inner = value, wanted = pattern;
    value = Bench::list_of(
        type, 1, [&](size_t) { return inner; }, false);
    const auto item = [&](size_t n) { return n % 2 ? wanted : lumo_anyornone_value_c; };
    pattern = Bench::list_of(type, 3, item, true);
  }
}

#define MATCH(make, fits, least, most) \
  BENCHMARK_CAPTURE(Match, make, make, fits)->RangeMultiplier(2)->Range(least, most)->Complexity()
BENCHMARK_CAPTURE(Match, Record, Record, true)->Arg(20);
MATCH(Permutation, true, 250, 2000);
MATCH(Contested, true, 250, 2000);
MATCH(Impossible, false, 250, 2000);
MATCH(Subset, true, 250, 2000);
MATCH(Superset, true, 250, 2000);
MATCH(ValueList, true, 250, 2000);
MATCH(Stars, false, 250, 2000);
MATCH(OpenEnd, true, 250, 2000);
MATCH(EqualSets, true, 250, 2000);
MATCH(PlainPattern, true, 2500, 20000);
MATCH(StarredPattern, false, 2500, 20000);
MATCH(NestedRepetitions, false, 2500, 20000);
MATCH(Nested, false, 25, 200);

}  // namespace

BENCHMARK_MAIN();
