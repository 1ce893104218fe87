// Where in a generated source the code of behaviours and of their blocks begins, in the order of the source
// that it was made of. Calls say on which line of the code they stand, so what shares a line of the source is
// told apart by these.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace lumos {

struct CodeBlock {
  unsigned long line;       // of the code, where the block is entered
  unsigned long statement;  // where the statement before it in the text says that it is reached; 0 for none
  unsigned long end;        // of the source, where its brace is closed; 0 for a block of the code only
  bool is_interleaved;      // there may be copies, for each order of what an interleave holds
};

struct CodeStatement {
  unsigned long line, source;  // where the code says that a line of the source is reached
  bool is_counted;             // not where a block ends, or what was reached before goes on waiting
};

struct CodeFunction {
  std::string name, file;         // as in the source, and the source's file
  unsigned long line = 0;         // of the source
  unsigned long body = 0;         // of the code, where the body is entered; 0 for none
  std::vector<CodeBlock> blocks;  // those that have braces in the source
  std::vector<CodeStatement> statements;
};

struct CodeScan {
  std::vector<CodeFunction> functions;
  std::vector<unsigned long> entries;  // lines where any block is entered, also one that the source has not
};

CodeScan scan_code(std::string_view text);

}  // namespace lumos
