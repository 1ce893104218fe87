// Report files of the compiler's own faults: the check of a parsed tree, and a node that no walk expects.
#include "driver/diagnostics/T3Error.h"
#include "frontend/T3Tree.h"
#include "support/TemporaryFiles.h"

namespace {
// A stream that is closed at the end, whatever happens in between.
struct ReportStream {
  explicit ReportStream(const std::string& path) : stream(std::fopen(path.c_str(), "w")) {}
  ReportStream(const ReportStream&) = delete;
  ReportStream& operator=(const ReportStream&) = delete;
  ~ReportStream() {
    if (stream != nullptr) std::fclose(stream);
  }
  FILE* stream;
};

// The name is told even where the file could not be made.
std::string MakeReportFile() {
  const std::string name = MakeTemporaryFile(".", "ERR.");
  return name.empty() ? "./ERR.XXXXXX" : name;
}

bool Checks(T3Tree_Node* node, FILE* report) {
  gT3AST.SetCheckReport(report);
  const bool passed = gT3AST.CheckT3Tree(node);
  gT3AST.SetCheckReport(stderr);
  return passed;
}
}  // namespace

// A file is made only where there is something to tell.
void vexa_checktree(T3Tree_Node* node) {
  if (Checks(node, nullptr)) return;
  const std::string path = MakeReportFile();
  {
    const ReportStream report(path);
    Checks(node, report.stream == nullptr ? stderr : report.stream);
  }
  throw internal_exception("T3Error", __LINE__, "Invalid AST",
                           "Error report has been written to " + path + "\n");
}

void internal_error_ast(const char* file, int line, const char* function, T3Tree_Node* node) {
  const std::string path = MakeReportFile();
  {
    const ReportStream report(path);
    if (report.stream != nullptr) gT3AST.WriteT3Tree(report.stream, node);
  }
  throw internal_exception(file, line, function,
                           "Unexpected AST node, error report has been written to " + path);
}
