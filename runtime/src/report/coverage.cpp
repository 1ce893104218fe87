// Which lines and branches of the source were reached, in the form of lcov's tracefiles.
#include "report/coverage.h"

#include <algorithm>
#include <atomic>
#include <cinttypes>
#include <cstring>
#include <fstream>
#include <map>
#include <optional>
#include <sstream>
#include <string>
#include <tuple>
#include <unordered_map>
#include <vector>

#include "report/code_scan.h"
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
  bool is_code;
  Count counts[lines_of_page];
  std::string_view name() const { return {reinterpret_cast<const char*>(this + 1), name_size}; }
  static size_t size_for(size_t name) { return (sizeof(CountPage) + name + 15) / 16 * 16; }
};
using CountPages = std::vector<CountPage*>;

struct CountBox::Contents {
  std::atomic<size_t> used;
  alignas(16) char pages[1];
};

// The pages of files of one kind.
struct CountedFiles {
  // By the text's address: generated code always gives the same one.
  std::unordered_map<const char*, CountPages> by_address;
  std::map<std::string, CountPages, std::less<>> by_name;
  // Where it was counted last.
  const char* last_file = nullptr;
  unsigned long first = 0;  // line of the page
  CountPage* last_page = nullptr;
};

// The pages of a process in its box.
struct Counting {
  CountedFiles sources, code;

  // Null where there is no room.
  static CountPage* new_page(std::string_view file, unsigned long first, bool is_code) {
    if (!own_box->shared_) return nullptr;
    CountBox::Contents& box = *own_box->shared_;
    const size_t begin = box.used, size = CountPage::size_for(file.size());
    if (box_size - sizeof box - begin < size) return nullptr;
    CountPage* page = reinterpret_cast<CountPage*>(box.pages + begin);
    page->first = first;
    page->name_size = file.size();
    page->is_code = is_code;
    std::memcpy(static_cast<void*>(page + 1), file.data(), file.size());
    box.used = begin + size;
    return page;
  }
  static CountPage* page_of(CountPages& pages, const char* file, unsigned long line, bool is_code) {
    const size_t number = line / lines_of_page;
    if (number < pages.size() && pages[number]) return pages[number];
    if (line >= most_lines) return nullptr;
    if (number >= pages.size()) pages.resize(number + 1);
    return pages[number] = new_page(file, number * lines_of_page, is_code);
  }
};

namespace {

Counting* the_counting = nullptr;

Counting& counting() {
  if (!the_counting) the_counting = new Counting;
  return *the_counting;
}

// False where there is no room.
bool move_to(CountedFiles& files, const char* file, unsigned long line, bool is_code) {
  files.last_page = Counting::page_of(files.by_address[file], file, line, is_code);
  files.last_file = files.last_page ? file : nullptr;
  files.first = files.last_page ? files.last_page->first : 0;
  return files.last_page;
}

template <uint64_t Count::*of>
void count_in(CountedFiles& files, const char* file, unsigned long line, bool is_code) {
  const bool is_there = file == files.last_file && line - files.first < lines_of_page;
  if (!is_there && !move_to(files, file, line, is_code)) return;
  ++(files.last_page->counts[line - files.first].*of);
}

template <uint64_t Count::*of>
void count_at(Counting& counts, const CountedPlace& place) {
  count_in<of>(counts.sources, place.file, place.line, false);
  if (place.code) count_in<of>(counts.code, place.code, place.code_line, true);
}

void count(const CountedPlace& place, bool is_block) {
  is_block ? count_at<&Count::blocks>(*the_counting, place) : count_at<&Count::hits>(*the_counting, place);
}

using LinesOfFiles = std::map<std::string, Lines>;

LinesOfFiles all_counts(bool of_code) {
  LinesOfFiles all;
  own_box->each([&](const LineCount& page) {
    if (page.is_code != of_code) return;
    Lines& sum = all[std::string(page.file)];
    sum.resize(std::max<size_t>(sum.size(), page.first + page.size));
    for (size_t i = 0; i < page.size; ++i) {
      sum[page.first + i].hits += page.counts[i].hits;
      sum[page.first + i].blocks += page.counts[i].blocks;
    }
  });
  return all;
}

Count at(const Lines& lines, unsigned long line) {
  return line < lines.size() ? lines[line] : Count();
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

std::string text_of(const std::string& path) {
  std::ostringstream text;
  text << std::ifstream(path).rdbuf();
  return std::move(text).str();
}

// What the code of a function counted: how often it was called, and of the blocks in it that have braces, in
// their order, how often they were entered and what stands before them was reached.
struct FunctionCount {
  uint64_t calls = 0;
  struct Block {
    uint64_t entered = 0, before = 0;
  };
  // By where they end in the source, and whether they are copies.
  std::map<std::pair<unsigned long, bool>, std::vector<Block>> blocks;
};
// What the code counted for a line of the source: each time, what belongs to statements, and of the places in
// the code the one that was reached most often.
struct ReachedLine {
  uint64_t all = 0, of_statements = 0, most = 0;
};
struct CodeCounts {
  // By file, name and line in the source.
  std::map<std::tuple<std::string, std::string, unsigned long>, FunctionCount> functions;
  std::map<std::string, std::map<unsigned long, ReachedLine>> lines;  // by file
};

// Nothing where the code is no longer what was compiled.
void add_code(const std::string& path, const Lines& lines, CodeCounts& all) {
  const CodeScan scan = scan_code(text_of(found(path)));
  uint64_t known = 0, counted = 0;
  for (const unsigned long line : scan.entries) known += at(lines, line).blocks;
  for (const Count& c : lines) counted += c.blocks;
  if (known != counted) return;
  for (const CodeFunction& f : scan.functions) {
    FunctionCount& count = all.functions[{f.file, f.name, f.line}];
    count.calls += at(lines, f.body).blocks;
    for (const CodeBlock& b : f.blocks)
      count.blocks[{b.end, b.is_interleaved}].push_back(
          {at(lines, b.line).blocks, at(lines, b.statement).hits});
    for (const CodeStatement& s : f.statements) {
      ReachedLine& line = all.lines[f.file][s.source];
      const uint64_t hits = at(lines, s.line).hits;
      line.all += hits;
      if (!s.is_counted) continue;
      line.of_statements += hits;
      line.most = std::max(line.most, hits);
    }
  }
}

// One file of the source.
class FileCoverage {
 public:
  FileCoverage(const std::string& given, const Lines& lines, const CodeCounts& code, ReportFile& out)
      : lines_(lines), out_(out) {
    const std::string path = found(given);
    scan_ = scan_source(text_of(path));
    if (const auto place = code.lines.find(given); place != code.lines.end()) reached_ = place->second;
    code_.resize(scan_.functions.size());
    in_code_.resize(scan_.blocks.size());
    for (size_t i = 0; i < code_.size(); ++i) code_[i] = counts_of(given, scan_.functions[i], code);
    find_blocks();
    path_ = absolute(path);
    lines_told_ = scan_.statements;
    for (unsigned long i = 1; scan_.statements.empty() && i < lines_.size(); ++i)
      if (lines_[i].hits) lines_told_[i] = 1;
  }
  // Nothing of a file without behaviour.
  void write() {
    if (lines_told_.empty() && scan_.functions.empty()) return;
    out_.write("SF:" + path_ + "\n");
    functions();
    branches();
    lines();
    out_.write("end_of_record\n");
  }

 private:
  using BlockCount = FunctionCount::Block;
  Count of(unsigned long line) const { return at(lines_, line); }
  static const FunctionCount* counts_of(const std::string& file, const SourceFunction& f,
                                        const CodeCounts& code) {
    const auto found = code.functions.find({file, f.name, f.line});
    return found == code.functions.end() ? nullptr : &found->second;
  }
  // The blocks of a function that end on the same line go with those of its code by their order, and one of
  // an interleave with its copies.
  void find_blocks() {
    std::map<std::pair<size_t, std::pair<unsigned long, bool>>, std::vector<size_t>> blocks;
    for (size_t i = 0; i < scan_.blocks.size(); ++i) {
      const SourceBlock& b = scan_.blocks[i];
      blocks[{b.function, {b.end, b.is_interleaved}}].push_back(i);
    }
    for (const auto& [place, numbers] : blocks) {
      if (!code_[place.first]) continue;
      const auto found = code_[place.first]->blocks.find(place.second);
      if (found != code_[place.first]->blocks.end())
        find_in_code(found->second, place.second.second && numbers.size() == 1, numbers);
    }
  }
  void find_in_code(const std::vector<BlockCount>& code, bool are_copies,
                    const std::vector<size_t>& numbers) {
    if (!are_copies && code.size() != numbers.size()) return;
    for (size_t i = 0; i < code.size(); ++i) {
      std::optional<BlockCount>& sum = in_code_[numbers[are_copies ? 0 : i]];
      if (!sum) sum.emplace();
      sum->entered += code[i].entered;
      sum->before += code[i].before;
    }
  }

  void functions() {
    size_t reached = 0;
    for (const SourceFunction& f : scan_.functions)
      out_.write("FN:" + std::to_string(f.line) + "," + f.name + "\n");
    for (size_t i = 0; i < code_.size(); ++i) {
      const SourceFunction& f = scan_.functions[i];
      const uint64_t calls = code_[i] ? code_[i]->calls : of(f.first).hits;
      reached += calls > 0;
      out_.write("FNDA:" + std::to_string(calls) + "," + f.name + "\n");
    }
    out_.format("FNF:%zu\nFNH:%zu\n", scan_.functions.size(), reached);
  }

  bool has_own_line(const SourceBlock& b) const {
    return b.first && b.first != b.statement && b.first != b.opener && statements_of(b.first) == 1;
  }
  size_t statements_of(unsigned long line) const {
    const auto place = scan_.statements.find(line);
    return place == scan_.statements.end() ? 0 : place->second;
  }
  uint64_t entered(size_t block) const {
    const SourceBlock& b = scan_.blocks[block];
    return in_code_[block]   ? in_code_[block]->entered
           : has_own_line(b) ? hits_of(b.first)
                             : of(b.statement).blocks;
  }
  // The blocks of one statement are its ways; where an "else" is missing that is one more. Those of a line
  // have numbers.
  void branches() {
    std::map<std::pair<unsigned long, size_t>, std::vector<size_t>> ways;
    for (size_t i = 0; i < scan_.blocks.size(); ++i)
      if (const SourceBlock& b = scan_.blocks[i]; b.is_way) ways[{b.statement, b.number}].push_back(i);
    unsigned long last = 0;
    size_t number = 0;
    for (const auto& [statement, blocks] : ways) {
      number = statement.first == last ? number + 1 : 0;
      last = statement.first;
      write_ways(last, number, taken_of(blocks));
    }
    out_.format("BRF:%zu\nBRH:%zu\n", branches_, branches_taken_);
  }
  std::vector<uint64_t> taken_of(const std::vector<size_t>& blocks) const {
    std::vector<uint64_t> taken;
    uint64_t all = 0;
    bool are_apart = true;
    for (const size_t i : blocks) {
      taken.push_back(entered(i));
      all += taken.back();
      are_apart = are_apart && (in_code_[i] || has_own_line(scan_.blocks[i]));
    }
    const SourceBlock& b = scan_.blocks[blocks.back()];
    // What cannot be told apart is one way; always, where that is due to the source, so that runs can be
    // added.
    if (!are_apart && (all || code_[b.function])) return {of(b.statement).blocks};
    if (b.may_be_none && !b.is_else) taken.push_back(not_taken(blocks.back(), all));
    return taken;
  }
  uint64_t not_taken(size_t last, uint64_t taken) const {
    const std::optional<BlockCount>& code = in_code_[last];
    const uint64_t reached = code ? code->before : hits_of(scan_.blocks[last].statement);
    if (code) taken = code->entered;
    return reached > taken ? reached - taken : 0;
  }
  void write_ways(unsigned long line, size_t number, const std::vector<uint64_t>& taken) {
    // What stands before its alternatives is not always told, but they are.
    const bool was_reached =
        of(line).hits > 0 || std::any_of(taken.begin(), taken.end(), [](uint64_t n) { return n > 0; });
    for (size_t i = 0; i < taken.size(); ++i) {
      out_.write("BRDA:" + std::to_string(line) + "," + std::to_string(number) + "," + std::to_string(i) +
                 "," + (was_reached ? std::to_string(taken[i]) : "-") + "\n");
      branches_taken_ += taken[i] > 0;
    }
    branches_ += taken.size();
  }
  // How often the statement was reached that begins there; of several the one that was reached most often.
  uint64_t hits_of(unsigned long line) const {
    const auto place = reached_.find(line);
    if (place == reached_.end() || place->second.all != of(line).hits) return of(line).hits;
    return statements_of(line) > 1 ? place->second.most : place->second.of_statements;
  }
  void lines() {
    size_t reached = 0;
    for (const auto& [line, statements] : lines_told_) {
      const uint64_t hits = hits_of(line);
      reached += hits > 0;
      out_.format("DA:%lu,%" PRIu64 "\n", line, hits);
    }
    out_.format("LF:%zu\nLH:%zu\n", lines_told_.size(), reached);
  }

  const Lines& lines_;
  ReportFile& out_;
  SourceScan scan_;
  std::string path_;
  std::map<unsigned long, size_t> lines_told_;      // and how many statements begin there
  std::map<unsigned long, ReachedLine> reached_;    // what is known of the code
  std::vector<const FunctionCount*> code_;          // by function; null where it is not known
  std::vector<std::optional<BlockCount>> in_code_;  // by block; null where it is not known
  size_t branches_ = 0, branches_taken_ = 0;
};

class Coverage : public Reporter {
 public:
  explicit Coverage(const std::string& path) : file_(path) {
    is_open_ = file_.is_open() && count_lines();
  }
  bool is_open() const { return is_open_; }
  void run_ends(const Results&) override {
    file_.write("TN:\n");
    CodeCounts code;
    for (const auto& [path, lines] : all_counts(true)) add_code(path, lines, code);
    for (const auto& [path, lines] : all_counts(false))
      if (!path.empty()) FileCoverage(path, lines, code, file_).write();
    file_.complete();
  }

 private:
  ReportFile file_;
  bool is_open_;
};

}  // namespace

CountBox::CountBox() : shared_(box_size) {}
CountBox::~CountBox() = default;

// What a process left behind that ended at once may be anything.
void CountBox::each(const std::function<void(const LineCount&)>& act) const {
  const size_t used = shared_ ? std::min<size_t>(shared_->used, box_size - sizeof(Contents)) : 0;
  for (size_t begin = 0; begin + sizeof(CountPage) <= used;) {
    const CountPage& page = *reinterpret_cast<const CountPage*>(shared_->pages + begin);
    if (page.name_size > used - begin - sizeof(CountPage) || page.first >= most_lines) return;
    act({page.name(), page.is_code, page.first, page.counts, lines_of_page});
    begin += CountPage::size_for(page.name_size);
  }
}

bool count_lines() {
  count_into(*new CountBox);
  line_counter = count;
  return own_box->is_made();
}

bool counts_lines() {
  return own_box != nullptr;
}

void clear_counts() {
  for (CountedFiles* files : {&counting().sources, &counting().code})
    for (auto& [file, pages] : files->by_address)
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
    CountedFiles& files = from.is_code ? counting().code : counting().sources;
    CountPage* page = Counting::page_of(files.by_name[name], name.c_str(), from.first, from.is_code);
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
