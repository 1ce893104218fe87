// One run of the compiler: finds and parses the sources, resolves them, writes the syntax files.
#pragma once

#include <map>
#include <optional>
#include <utility>

#include "mesk/Ast.h"
#include "mesk/Options.h"

namespace mesk {

class Compilation {
 public:
  explicit Compilation(const Options& options) : options_(options) {}
  /// The exit status.
  int run();

 private:
  std::string locate(const std::string& name);
  bool parseFile(const std::string& path);
  void parseSources();
  void parseImports();
  void checkOutputs();
  bool write(const std::string& path, const std::string& contents);
  bool writeAll();

  const Options& options_;
  Reporter reporter_;
  Arena arena_;
  std::deque<SourceFile> files_;
  std::deque<std::vector<Token>> tokens_;
  std::set<std::string> parsed_;
  std::vector<std::unique_ptr<Module>> modules_;
  std::optional<std::map<std::string, std::pair<bool, std::string>>> by_prefix_;  // made when first asked
};

}  // namespace mesk
