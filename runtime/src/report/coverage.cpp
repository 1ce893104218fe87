// Which lines and branches of the source were reached, in the form of lcov's tracefiles.
#include "report/coverage.h"

#include <sys/mman.h>

#include <algorithm>
#include <atomic>
#include <cinttypes>
#include <cstring>
#include <fstream>
#include <iterator>
#include <map>
#include <new>
#include <string>
#include <unordered_map>
#include <vector>

#include "report/report_file.h"
#include "report/reports.h"
#include "report/source_scan.h"
#include "value/location.h"

namespace lumos {

namespace {

using Count = LineCount::Count;
using Column = std::pair<unsigned long, uint32_t>;
struct Lines {
  std::vector<Count> by_number;
  std::map<Column, Count> columns;  // of what is not the first on its line
};

constexpr unsigned long most_lines = 10000000, lines_of_page = 256;
constexpr size_t box_size = 1 << 28;  // of which only what is used takes memory

// What the process counts, and where.
CountBox* own_box = nullptr;

// Counts, behind which the name of their file stands.
struct Page {
  unsigned long first;
  uint32_t column, size;
  size_t name_size;
  Count* counts() { return reinterpret_cast<Count*>(this + 1); }
  const Count* counts() const { return reinterpret_cast<const Count*>(this + 1); }
  std::string_view name() const { return {reinterpret_cast<const char*>(counts() + size), name_size}; }
  static size_t octets(size_t size, size_t name) {
    return (sizeof(Page) + size * sizeof(Count) + name + 15) / 16 * 16;
  }
};
struct Pages {
  std::vector<Page*> lines;
  std::map<Column, Page*> columns;
};

}  // namespace

struct CountBox::Shared {
  std::atomic<size_t> used;
  alignas(16) char pages[1];
};

// The pages of a process in its box.
struct Counting {
  // By the text's address: generated code always gives the same one.
  std::unordered_map<const char*, Pages> by_address;
  std::map<std::string, Pages, std::less<>> by_name;
  const char* last_file = nullptr;
  Pages* last_pages = nullptr;

  // Null where there is no room.
  static Page* new_page(std::string_view file, const Column& first, size_t lines) {
    if (!own_box->shared_) return nullptr;
    CountBox::Shared& box = *own_box->shared_;
    const size_t begin = box.used, octets = Page::octets(lines, file.size());
    if (box_size - sizeof box - begin < octets) return nullptr;
    Page* page =
        new (box.pages + begin) Page{first.first, first.second, static_cast<uint32_t>(lines), file.size()};
    std::memcpy(static_cast<void*>(page->counts() + lines), file.data(), file.size());
    box.used = begin + octets;
    return page;
  }
  static Page* page_of(Pages& pages, const char* file, unsigned long line) {
    const size_t number = line / lines_of_page;
    if (number < pages.lines.size() && pages.lines[number]) return pages.lines[number];
    if (line >= most_lines) return nullptr;
    if (number >= pages.lines.size()) pages.lines.resize(number + 1);
    return pages.lines[number] = new_page(file, {number * lines_of_page, 0}, lines_of_page);
  }
  static Count* count_of(Pages& pages, const char* file, unsigned long line, uint32_t column) {
    if (!column) {
      Page* page = page_of(pages, file, line);
      return page ? page->counts() + line % lines_of_page : nullptr;
    }
    Page*& page = pages.columns[{line, column}];
    if (!page) page = new_page(file, {line, column}, 1);
    return page ? page->counts() : nullptr;
  }
};

namespace {

Counting& counting() {
  static auto& all = *new Counting;
  return all;
}

void count(const char* file, unsigned long line, uint32_t column, bool is_block) {
  static Counting& counts = counting();
  if (file != counts.last_file) {
    counts.last_file = file;
    counts.last_pages = &counts.by_address[file];
  }
  Count* c = Counting::count_of(*counts.last_pages, file, line, column);
  if (c) ++(is_block ? c->blocks : c->hits);
}

void add(Count& sum, const Count& more) {
  sum.hits += more.hits;
  sum.blocks += more.blocks;
}

std::map<std::string, Lines> all_counts() {
  std::map<std::string, Lines> all;
  own_box->each([&](const LineCount& page) {
    Lines& sum = all[std::string(page.file)];
    if (page.column) return add(sum.columns[{page.first, page.column}], *page.counts);
    sum.by_number.resize(std::max<size_t>(sum.by_number.size(), page.first + page.size));
    for (size_t i = 0; i < page.size; ++i) add(sum.by_number[page.first + i], page.counts[i]);
  });
  return all;
}

// Paths are those of the compilation, which is mostly done where the executable lies.
std::string found(const std::string& path) {
  if (std::ifstream(path) || path[0] == '/') return path;
  char* program = realpath("/proc/self/exe", nullptr);
  std::string beside = program ? program : "";
  std::free(program);
  beside = beside.substr(0, beside.rfind('/') + 1) + path;
  return std::ifstream(beside) ? beside : path;
}

std::string absolute(const std::string& path) {
  char* full = realpath(path.c_str(), nullptr);
  std::string text = full ? full : path;
  std::free(full);
  return text;
}

// One file of the source.
class FileCoverage {
 public:
  FileCoverage(const std::string& given, const Lines& lines, ReportFile& out) : lines_(lines), out_(out) {
    const std::string path = found(given);
    std::ifstream in(path);
    const std::string text{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    scan_ = scan_source(text);
    out_.write("SF:" + absolute(path) + "\n");
  }
  void write() {
    sum_up();
    functions();
    branches();
    lines();
    out_.write("end_of_record\n");
  }

 private:
  Count of(const SourcePlace& place) const {
    const auto known = sums_.find(place);
    return known != sums_.end() ? known->second : Count();
  }
  // What is first on its line has no column; what was counted under one belongs to what began last before it.
  void sum_up() {
    for (size_t line = 1; line < lines_.by_number.size(); ++line)
      if (const SourcePlace* first = scan_.first_on(line)) add(sums_[*first], lines_.by_number[line]);
    for (const auto& [place, count] : lines_.columns)
      if (const SourcePlace* begin = scan_.last_before({place.first, place.second});
          begin && begin != scan_.first_on(place.first))
        add(sums_[*begin], count);
  }

  void functions() {
    size_t reached = 0;
    for (const SourceFunction& f : scan_.functions)
      out_.write("FN:" + std::to_string(f.line) + "," + f.name + "\n");
    for (const SourceFunction& f : scan_.functions) {
      const uint64_t hits = of(f.first).hits;
      reached += hits > 0;
      out_.write("FNDA:" + std::to_string(hits) + "," + f.name + "\n");
    }
    out_.format("FNF:%zu\nFNH:%zu\n", scan_.functions.size(), reached);
  }
  uint64_t entered(const SourceBlock& b) const {
    const size_t first = b.first.line;
    const bool is_apart = first && first != b.entry.line && first != b.opener.line;
    return is_apart ? of(b.first).hits : of(b.entry).blocks;
  }
  // The blocks of one statement are its ways; where an "else" is missing that is one more.
  void branches() {
    std::map<SourcePlace, std::vector<const SourceBlock*>> ways;
    for (const SourceBlock& b : scan_.blocks)
      if (b.is_way) ways[b.statement].push_back(&b);
    size_t found = 0, reached = 0, number = 0;
    unsigned long last = 0;
    for (const auto& [place, blocks] : ways) {
      const uint64_t hits = of(place).hits;
      uint64_t taken_at_all = 0;
      for (const SourceBlock* b : blocks) taken_at_all += entered(*b);
      // What stands before its alternatives is not always told, but they are.
      const bool was_reached = hits > 0 || taken_at_all > 0;
      if (place.line != last) number = 0;
      last = place.line;
      auto put = [&, line = place.line](uint64_t taken) {
        out_.write("BRDA:" + std::to_string(line) + ",0," + std::to_string(number++) + "," +
                   (was_reached ? std::to_string(taken) : "-") + "\n");
        ++found;
        reached += taken > 0;
      };
      for (const SourceBlock* b : blocks) put(entered(*b));
      if (blocks.back()->may_be_none && !blocks.back()->is_else)
        put(hits > taken_at_all ? hits - taken_at_all : 0);
    }
    out_.format("BRF:%zu\nBRH:%zu\n", found, reached);
  }
  // A line was reached as often as that on it which was reached most often.
  void lines() {
    std::map<unsigned long, uint64_t> all;
    for (const SourcePlace& place : scan_.statements) all[place.line] = 0;
    for (const SourcePlace& place : scan_.begins)
      if (const auto known = all.find(place.line); known != all.end())
        known->second = std::max(known->second, of(place).hits);
    for (size_t i = 1; scan_.statements.empty() && i < lines_.by_number.size(); ++i)
      if (lines_.by_number[i].hits) all[i] = lines_.by_number[i].hits;
    size_t reached = 0;
    for (const auto& [line, hits] : all) {
      reached += hits > 0;
      out_.format("DA:%lu,%" PRIu64 "\n", line, hits);
    }
    out_.format("LF:%zu\nLH:%zu\n", all.size(), reached);
  }

  const Lines& lines_;
  ReportFile& out_;
  SourceScan scan_;
  std::map<SourcePlace, Count> sums_;
};

class Coverage : public Reporter {
 public:
  explicit Coverage(const std::string& path) : file_(path) {
    if (file_.is_open()) count_lines();
  }
  bool is_open() const { return file_.is_open(); }
  void run_ends(const Results&) override {
    file_.write("TN:\n");
    for (const auto& [path, lines] : all_counts())
      if (!path.empty()) FileCoverage(path, lines, file_).write();
    file_.complete();
  }

 private:
  ReportFile file_;
};

}  // namespace

CountBox::CountBox() {
  void* memory =
      mmap(nullptr, box_size, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  shared_ = memory == MAP_FAILED ? nullptr : new (memory) Shared;
}

CountBox::~CountBox() {
  if (shared_) munmap(static_cast<void*>(shared_), box_size);
}

// What a process left behind that ended at once may be anything.
void CountBox::each(const std::function<void(const LineCount&)>& act) const {
  const size_t used = shared_ ? std::min<size_t>(shared_->used, box_size - sizeof(Shared)) : 0;
  for (size_t begin = 0; begin + sizeof(Page) <= used;) {
    const Page& page = *reinterpret_cast<const Page*>(shared_->pages + begin);
    const size_t left = used - begin;
    if (page.size > lines_of_page || page.name_size > left || page.first >= most_lines ||
        Page::octets(page.size, page.name_size) > left)
      return;
    act({page.name(), page.first, page.column, page.counts(), page.size});
    begin += Page::octets(page.size, page.name_size);
  }
}

void count_lines() {
  count_into(*new CountBox);
  line_counter = count;
}

bool counts_lines() {
  return own_box != nullptr;
}

void clear_counts() {
  const auto clear = [](Page* page) {
    if (page) std::fill_n(page->counts(), page->size, Count());
  };
  for (auto& [file, pages] : counting().by_address) {
    for (Page* page : pages.lines) clear(page);
    for (auto& [column, page] : pages.columns) clear(page);
  }
}

void count_into(CountBox& box) {
  own_box = &box;
  counting() = Counting();
}

void add_counts(const CountBox& box) {
  box.each([](const LineCount& from) {
    const std::string name(from.file);
    Pages& pages = counting().by_name[name];
    for (size_t i = 0; i < from.size; ++i)
      if (Count* c = Counting::count_of(pages, name.c_str(), from.first + i, from.column))
        add(*c, from.counts[i]);
  });
}

std::unique_ptr<Reporter> make_coverage(const std::string& path) {
  auto made = std::make_unique<Coverage>(path);
  if (!made->is_open()) return nullptr;
  return made;
}

}  // namespace lumos
