// Which lines and branches of the source were reached, in the form of lcov's tracefiles.
#include "report/coverage.h"

#include <algorithm>
#include <cinttypes>
#include <fstream>
#include <iterator>
#include <map>
#include <unordered_map>
#include <vector>

#include "report/report_file.h"
#include "report/reports.h"
#include "report/source_scan.h"
#include "value/location.h"

namespace lumos {

namespace {

struct Count {
  uint64_t hits = 0, blocks = 0;
};
using Lines = std::vector<Count>;  // by number

// By the text's address while counting: generated code always gives the same one.
std::unordered_map<const char*, Lines> counts;
std::map<std::string, Lines> counts_of_others;
const char* last_file = nullptr;
Lines* last_lines = nullptr;
constexpr unsigned long most_lines = 10000000;

Count& at(Lines& lines, unsigned long line) {
  if (line >= lines.size()) lines.resize(line < most_lines ? line + 1 : 1);
  return lines[line < most_lines ? line : 0];
}

void count(const char* file, unsigned long line, bool is_block) {
  if (file != last_file) {
    last_file = file;
    last_lines = &counts[file];
  }
  Count& c = at(*last_lines, line);
  ++(is_block ? c.blocks : c.hits);
}

std::map<std::string, Lines> all_counts() {
  std::map<std::string, Lines> all = counts_of_others;
  for (const auto& [file, lines] : counts) {
    Lines& sum = all[file];
    for (unsigned long i = 1; i < lines.size(); ++i) {
      Count& c = at(sum, i);
      c.hits += lines[i].hits;
      c.blocks += lines[i].blocks;
    }
  }
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
  void run_ends(const std::vector<Result>&) override {
    file_.write("TN:\n");
    for (const auto& [path, lines] : all_counts())
      if (!path.empty()) FileCoverage(path, lines, file_).write();
    file_.complete();
  }

 private:
  ReportFile file_;
};

}  // namespace

void count_lines() {
  line_counter = count;
}

void clear_counts() {
  for (auto& [file, lines] : counts) lines.clear();
  for (auto& [file, lines] : counts_of_others) lines.clear();
  last_file = nullptr;
}

void add_count(const std::string& file, unsigned long line, uint64_t hits, uint64_t blocks) {
  Count& c = at(counts_of_others[file], line);
  c.hits += hits;
  c.blocks += blocks;
}

void each_count(const std::function<void(const LineCount&)>& act) {
  for (const auto& [file, lines] : all_counts()) {
    if (lines.empty()) act({file, 0, 0, 0});
    for (unsigned long i = 1; i < lines.size(); ++i)
      if (lines[i].hits || lines[i].blocks) act({file, i, lines[i].hits, lines[i].blocks});
  }
}

std::unique_ptr<Reporter> make_coverage(const std::string& path) {
  auto made = std::make_unique<Coverage>(path);
  if (!made->is_open()) return nullptr;
  return made;
}

}  // namespace lumos
