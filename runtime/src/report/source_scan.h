// The statements and blocks of a source file, so that a report also knows what was never reached. It looks at
// the text alone: braces, brackets and what begins behind them.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace lumos {

struct SourceBlock {
  size_t function;          // its number
  size_t number;            // of the statement, or alternative, that it belongs to
  unsigned long statement;  // line of that
  unsigned long opener;     // line of its brace
  unsigned long end;        // line of the brace that closes it
  unsigned long first;      // line of the first statement in it; 0 for none
  bool is_way;              // one of several: of if, alt, select
  bool may_be_none;         // an if: where its last block is no "else", no way may be taken
  bool is_else;
  bool is_interleaved;  // one that an interleave holds
};

struct SourceFunction {
  std::string name;
  unsigned long line, first;  // of its name, of its first statement
};

struct SourceScan {
  std::map<unsigned long, size_t> statements;  // lines, and how many begin there
  std::vector<SourceBlock> blocks;
  std::vector<SourceFunction> functions;
};

SourceScan scan_source(std::string_view text);

}  // namespace lumos
