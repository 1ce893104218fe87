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
using Lines = std::vector<Count>;  // by number

constexpr unsigned long most_lines = 10000000, lines_of_page = 256;
constexpr size_t box_size = 1 << 28;  // of which only what is used takes memory

// What the process counts, and where.
CountBox* own_box = nullptr;

}  // namespace

// The counts of neighbouring lines of a file, whose name stands behind them.
struct CountPage {
  unsigned long first;
  size_t name_size;
  Count counts[lines_of_page];
  std::string_view name() const { return {reinterpret_cast<const char*>(this + 1), name_size}; }
  static size_t size_for(size_t name) { return (sizeof(CountPage) + name + 15) / 16 * 16; }
};
using CountPages = std::vector<CountPage*>;

struct CountBox::Shared {
  std::atomic<size_t> used;
  alignas(16) char pages[1];
};

// The pages of a process in its box.
struct Counting {
  // By the text's address: generated code always gives the same one.
  std::unordered_map<const char*, CountPages> by_address;
  std::map<std::string, CountPages, std::less<>> by_name;
  const char* last_file = nullptr;
  CountPages* last_pages = nullptr;

  // Null where there is no room.
  static CountPage* new_page(std::string_view file, unsigned long first) {
    if (!own_box->shared_) return nullptr;
    CountBox::Shared& box = *own_box->shared_;
    const size_t begin = box.used, size = CountPage::size_for(file.size());
    if (box_size - sizeof box - begin < size) return nullptr;
    CountPage* page = reinterpret_cast<CountPage*>(box.pages + begin);
    page->first = first;
    page->name_size = file.size();
    std::memcpy(static_cast<void*>(page + 1), file.data(), file.size());
    box.used = begin + size;
    return page;
  }
  static CountPage* page_of(CountPages& pages, const char* file, unsigned long line) {
    const size_t number = line / lines_of_page;
    if (number < pages.size() && pages[number]) return pages[number];
    if (line >= most_lines) return nullptr;
    if (number >= pages.size()) pages.resize(number + 1);
    return pages[number] = new_page(file, number * lines_of_page);
  }
};

namespace {

Counting& counting() {
  static auto& all = *new Counting;
  return all;
}

void count(const char* file, unsigned long line, bool is_block) {
  static Counting& counts = counting();
  if (file != counts.last_file) {
    counts.last_file = file;
    counts.last_pages = &counts.by_address[file];
  }
  CountPage* page = Counting::page_of(*counts.last_pages, file, line);
  if (!page) return;
  Count& c = page->counts[line % lines_of_page];
  ++(is_block ? c.blocks : c.hits);
}

std::map<std::string, Lines> all_counts() {
  std::map<std::string, Lines> all;
  own_box->each([&](const LineCount& page) {
    Lines& sum = all[std::string(page.file)];
    sum.resize(std::max<size_t>(sum.size(), page.first + page.size));
    for (size_t i = 0; i < page.size; ++i) {
      sum[page.first + i].hits += page.counts[i].hits;
      sum[page.first + i].blocks += page.counts[i].blocks;
    }
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
    functions();
    branches();
    lines();
    out_.write("end_of_record\n");
  }

 private:
  Count of(unsigned long line) const { return line < lines_.size() ? lines_[line] : Count(); }

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
    return b.first && b.first != b.statement && b.first != b.opener ? of(b.first).hits
                                                                    : of(b.statement).blocks;
  }
  // The blocks of one statement are its ways; where an "else" is missing that is one more.
  void branches() {
    std::map<unsigned long, std::vector<const SourceBlock*>> ways;
    for (const SourceBlock& b : scan_.blocks)
      if (b.is_way) ways[b.statement].push_back(&b);
    size_t found = 0, reached = 0;
    for (const auto& way : ways) {
      const unsigned long line = way.first;
      const std::vector<const SourceBlock*>& blocks = way.second;
      // What stands before its alternatives is not always told, but they are.
      const bool was_reached =
          of(line).hits > 0 ||
          std::any_of(blocks.begin(), blocks.end(), [&](const SourceBlock* b) { return entered(*b) > 0; });
      uint64_t taken_at_all = 0;
      size_t number = 0;
      auto put = [&](uint64_t taken) {
        out_.write("BRDA:" + std::to_string(line) + ",0," + std::to_string(number++) + "," +
                   (was_reached ? std::to_string(taken) : "-") + "\n");
        ++found;
        reached += taken > 0;
      };
      for (const SourceBlock* b : blocks) {
        put(entered(*b));
        taken_at_all += entered(*b);
      }
      if (blocks.back()->may_be_none && !blocks.back()->is_else)
        put(of(line).hits > taken_at_all ? of(line).hits - taken_at_all : 0);
    }
    out_.format("BRF:%zu\nBRH:%zu\n", found, reached);
  }
  void lines() {
    std::vector<unsigned long> all = scan_.statements;
    for (unsigned long i = 1; all.empty() && i < lines_.size(); ++i)
      if (lines_[i].hits) all.push_back(i);
    size_t reached = 0;
    for (unsigned long line : all) {
      const uint64_t hits = of(line).hits;
      reached += hits > 0;
      out_.format("DA:%lu,%" PRIu64 "\n", line, hits);
    }
    out_.format("LF:%zu\nLH:%zu\n", all.size(), reached);
  }

  const Lines& lines_;
  ReportFile& out_;
  SourceScan scan_;
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
  for (size_t begin = 0; begin + sizeof(CountPage) <= used;) {
    const CountPage& page = *reinterpret_cast<const CountPage*>(shared_->pages + begin);
    if (page.name_size > used - begin - sizeof(CountPage) || page.first >= most_lines) return;
    act({page.name(), page.first, page.counts, lines_of_page});
    begin += CountPage::size_for(page.name_size);
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
  for (auto& [file, pages] : counting().by_address)
    for (CountPage* page : pages)
      if (page) std::memset(page->counts, 0, sizeof page->counts);
}

void count_into(CountBox& box) {
  own_box = &box;
  counting() = Counting();
}

void add_counts(const CountBox& box) {
  box.each([](const LineCount& from) {
    const std::string name(from.file);
    CountPage* page = Counting::page_of(counting().by_name[name], name.c_str(), from.first);
    for (size_t i = 0; page && i < from.size; ++i) {
      page->counts[i].hits += from.counts[i].hits;
      page->counts[i].blocks += from.counts[i].blocks;
    }
  });
}

std::unique_ptr<Reporter> make_coverage(const std::string& path) {
  auto made = std::make_unique<Coverage>(path);
  if (!made->is_open()) return nullptr;
  return made;
}

}  // namespace lumos
