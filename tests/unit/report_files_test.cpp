// Report files of the compiler's own faults, and the text of the exceptions that tell of them.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>

#include "driver/diagnostics/T3Error.h"
#include "frontend/T3GlobalASTNodes.h"
#include "frontend/T3Tree.h"

namespace {
class ReportFiles : public testing::Test {
 protected:
  void SetUp() override {
    char name[] = "/tmp/orvane-report-XXXXXX";
    folder_ = mkdtemp(name);
    before_ = std::filesystem::current_path();
    std::filesystem::current_path(folder_);
  }
  void TearDown() override {
    std::filesystem::current_path(before_);
    std::filesystem::remove_all(folder_);
  }

  // The text of the exception, of which `form` must be the whole with the report's name as its first group;
  // then what stands in the report.
  template <class Function>
  static std::string ReportOf(const std::string& form, const Function& function) {
    try {
      function();
    } catch (const internal_exception& exception) {
      std::smatch parts;
      const std::string text = exception.what();
      if (!std::regex_match(text, parts, std::regex(form))) return "exception: " + text;
      std::ifstream stream(parts[1].str());
      std::ostringstream report;
      report << stream.rdbuf();
      return report.str();
    }
    return "no exception";
  }
  bool IsEmpty() const { return std::filesystem::is_empty(folder_); }

  std::string folder_;
  std::filesystem::path before_;
};

T3Tree_Node* Literal(const char* text) {
  return gT3AST.mT3IntLiteral(NoPosition, gStringM.PutString(text));
}

TEST_F(ReportFiles, SoundTreeLeavesNoReport) {
  EXPECT_NO_THROW(vexa_checktree(gT3AST.mT3Plus(NoPosition, Literal("1"), Literal("2"))));
  EXPECT_TRUE(IsEmpty());
}

TEST_F(ReportFiles, CheckTellsWhatIsWrongAndReportsToStandardErrorAgainAfterwards) {
  T3Tree_Node* wrong = gT3AST.mT3Plus(NoPosition, _sgT3NoStmt(), Literal("1"));
  const std::string report =
      ReportOf("\nT3Error:[0-9]+ \\(Invalid AST\\) - Error report has been written to (\\./ERR\\..+)\n",
               [wrong] { vexa_checktree(wrong); });
  EXPECT_NE(report.find("CheckTree error\n"), std::string::npos) << report;
  EXPECT_NE(report.find("type of child : T3NoStmt\n"), std::string::npos);
  testing::internal::CaptureStderr();
  EXPECT_FALSE(gT3AST.CheckT3Tree(wrong));
  EXPECT_NE(testing::internal::GetCapturedStderr().find("CheckTree error\n"), std::string::npos);
}

TEST_F(ReportFiles, UnexpectedNodeIsDumpedWithAllBelowIt) {
  T3Tree_Node* node = gT3AST.mT3Plus(NoPosition, Literal("41"), Literal("42"));
  const std::string report = ReportOf(
      "\nT3Control:17 \\(T3Control::Walk\\) - Unexpected AST node, error report has been written to "
      "(\\./ERR\\..+)",
      [node] { internal_error_ast("T3Control", 17, "T3Control::Walk", node); });
  EXPECT_NE(report.find("T3Plus"), std::string::npos) << report;
  EXPECT_NE(report.find("41"), std::string::npos);
  EXPECT_NE(report.find("42"), std::string::npos);
}
}  // namespace
