// The statements and blocks of a source file, so that a report also knows what was never reached. It looks at
// the text alone: braces, brackets and what begins behind them.
#pragma once

#include <compare>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace lumos {

struct SourcePlace {
  unsigned long line = 0;  // 0 for none
  uint32_t column = 0;     // counted from 1, in octets
  auto operator<=>(const SourcePlace&) const = default;
};

struct SourceBlock {
  SourcePlace statement;  // of the statement, or alternative, that it belongs to
  SourcePlace entry;      // where a run stands when it enters the block
  SourcePlace opener;     // of its brace
  SourcePlace first;      // of the first statement in it
  bool is_way;            // one of several: of if, alt, select
  bool may_be_none;       // an if: where its last block is no "else", no way may be taken
  bool is_else;
};

struct SourceFunction {
  std::string name;
  unsigned long line;  // of its name
  SourcePlace first;   // of its first statement
};

struct SourceScan {
  std::vector<SourcePlace> statements;  // those whose lines are counted
  // Of all statements and alternatives, and of all that a run stands at between them, in order.
  std::vector<SourcePlace> begins, places;
  std::vector<SourceBlock> blocks;
  std::vector<SourceFunction> functions;
  // Of these places; null if there is none.
  const SourcePlace* first_on(unsigned long line) const;
  const SourcePlace* last_before(const SourcePlace& place) const;
};

SourceScan scan_source(std::string_view text);

}  // namespace lumos
