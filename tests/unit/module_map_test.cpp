// The module table, imports, stamp files.
#include "driver/modules/T3ModuleMap.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <utime.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "driver/diagnostics/Errors.h"
#include "driver/options/T3CommandLine.h"
#include "driver/diagnostics/T3Exception.h"
#include "frontend/T3GlobalASTNodes.h"
#include "frontend/T3Tree.h"

namespace {
T3Tree_Node* Import(const char* module, T3Tree_Node* next, unsigned line) {
  tPosition position;
  position.Line = line;
  position.Column = 1;
  return gT3AST.mT3ImportTypeDecl(position, next, NoIdent, _sgT3NoWith(),
                                  gT3AST.mT3ImportIdentifier(position, gIdents.MakeIdent(module)),
                                  gT3AST.mT3ImportTerminator(position), false, gStringM.EmptyString());
}

T3Tree_Node* Group(T3Tree_Node* body, T3Tree_Node* next) {
  return gT3AST.mT3GroupDecl(NoPosition, next, gIdents.MakeIdent("g"), _sgT3NoWith(), body);
}

T3Module* Module(const char* name, T3Tree_Node* decls, T3Tree_Node* next = _sgT3NoModule()) {
  T3Module* module =
      gT3AST.mT3Module(NoPosition, next, gIdents.MakeIdent(name), gStringM.PutString("\"TTCN-3\""), 1000,
                       false, false, false, _sgT3NoExpression(), decls, _sgT3NoWith());
  module->filename = gIdents.MakeIdent("file.ttcn");
  return module;
}

TEST(ModuleTable, NamesAndFirstImportPositions) {
  T3Module* second = Module("tm_b", Import("tm_x", _sgT3NoDecl(), 9));
  T3Module* first = Module("tm_a", Import("tm_x", Import("tm_b", _sgT3NoDecl(), 4), 3), second);
  T3ModuleMap modules;
  T3ImportPositions positions;
  BuildModuleTable(first, &modules, &positions);
  EXPECT_EQ(modules.size(), 2u);
  EXPECT_EQ(modules[gIdents.MakeIdent("tm_b")], second);
  EXPECT_EQ(positions[gIdents.MakeIdent("tm_x")].Line, 3u);
  EXPECT_EQ(positions[gIdents.MakeIdent("tm_b")].Line, 4u);
  SeparateModules(first);
  EXPECT_TRUE(T3Is<T3NoModule>(first->next));
  EXPECT_TRUE(T3Is<T3NoModule>(second->next));
  EXPECT_NE(first->next, second->next);
}

TEST(ModuleTable, TheFirstModuleOfANameStays) {
  T3Module* second = Module("tm_twice", _sgT3NoDecl());
  T3Module* first = Module("tm_twice", _sgT3NoDecl(), second);
  T3Module* made = Module("tm_made", _sgT3NoDecl(), first);
  made->filename = NoIdent;
  made->representation = gT3AST.mT3MESK(NoPosition);
  T3ModuleMap modules;
  T3ImportPositions positions;
  testing::internal::CaptureStderr();
  BuildModuleTable(made, &modules, &positions);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "Error       Multiply defined module name: \"tm_twice\"\n");
  gErrors.BeginErrors();
  EXPECT_EQ(modules.size(), 1u);
  EXPECT_EQ(modules.begin()->second, first);
}

TEST(ModuleTable, ImportsInGroupsAreDependenciesAtAnyDepth) {
  T3Tree_Node* decls = Import("tm_deep", _sgT3NoDecl(), 1);
  for (int i = 0; i < 100000; ++i) decls = Group(decls, _sgT3NoDecl());
  std::set<tIdent> deps;
  GetModuleDeps(Module("tm_g", Import("tm_top", decls, 2)), &deps);
  EXPECT_EQ(deps, (std::set<tIdent>{gIdents.MakeIdent("tm_deep"), gIdents.MakeIdent("tm_top")}));
}

class Stamps : public testing::Test {
 protected:
  void SetUp() override {
    char name[] = "/tmp/orvane-stamp-XXXXXX";
    folder_ = mkdtemp(name);
    gT3CommandLine = T3CommandLine();
    gT3CommandLine.common.directory.Set(folder_ + "/out");
    module_ = Module("tm_stamp", _sgT3NoDecl());
  }
  void TearDown() override {
    gT3CommandLine = T3CommandLine();
    std::filesystem::remove_all(folder_);
  }
  std::string Content() const {
    std::ifstream stream(TimestampFileName(module_));
    std::ostringstream text;
    text << stream.rdbuf();
    return text.str();
  }
  void Put(const std::string& text) const {
    std::filesystem::create_directory(folder_ + "/out");
    std::ofstream(TimestampFileName(module_)) << text;
  }
  // file_changed, code_generation_necessary, unused_definitions_removed after reading
  std::string Flags() const {
    UpdateBuildAvoidanceInfo(module_);
    return std::string(module_->file_changed ? "changed " : "same ") +
           (module_->code_generation_necessary ? "generate " : "skip ") +
           (module_->unused_definitions_removed ? "removed" : "kept");
  }
  std::string folder_;
  T3Module* module_ = nullptr;
};

TEST_F(Stamps, FlagsFollowTheStamp) {
  EXPECT_EQ(TimestampFileName(module_), folder_ + "/out/tm_stamp.t3a");
  EXPECT_EQ(Flags(), "changed generate kept");
  const std::pair<const char*, const char*> cases[] = {
      {"analysed\n1000\n", "same generate kept"},
      {"compiled\n1000\nunused_definitions_optimized\n", "same skip removed"},
      {"compiled\n1000\nunused_definitions_not_optimized\n", "same skip kept"},
      {"compiled\n999\nunused_definitions_optimized\n", "changed generate removed"},
      {"other\n1000\n", "changed generate kept"},
      {"", "changed generate kept"},
      {"compiled\nmuch\n", "changed generate kept"},
      {"compiled 1000", "same skip kept"},
  };
  for (const auto& [stamp, flags] : cases) {
    Put(stamp);
    EXPECT_EQ(Flags(), flags) << stamp;
  }
}

TEST_F(Stamps, AStampOlderThanTheSourceDoesNotCount) {
  Put("compiled\n1000\n");
  const utimbuf times{999, 999};
  utime(TimestampFileName(module_).c_str(), &times);
  EXPECT_EQ(Flags(), "changed generate kept");
  const utimbuf same{1000, 1000};
  utime(TimestampFileName(module_).c_str(), &same);
  EXPECT_EQ(Flags(), "same skip kept");
}

TEST_F(Stamps, StampTellsTheStage) {
  module_->code_generation_necessary = true;
  UpdateBuildAvoidanceFile(module_, true, stage_analysis);
  EXPECT_EQ(Content(), "analysed\n1000\n");
  T3Tree_Node* root = gT3AST.mT3Builtin(module_, _sgT3NoDecl(), _sgT3NoDecl());
  UpdateBuildAvoidanceFile(root, true, stage_code_generation);
  EXPECT_EQ(Content(), "compiled\n1000\nunused_definitions_not_optimized\n");
  module_->code_generation_necessary = false;
  module_->unused_definitions_removed = true;
  UpdateBuildAvoidanceFile(root, true, stage_analysis);
  EXPECT_EQ(Content(), "compiled\n1000\nunused_definitions_optimized\n");
  ClearOptimizationInfo(module_);
  EXPECT_FALSE(module_->unused_definitions_removed);
  UpdateBuildAvoidanceFile(root, false, stage_analysis);
  EXPECT_FALSE(std::filesystem::exists(TimestampFileName(module_)));
}

TEST_F(Stamps, AnUnwritablePlaceIsNoError) {
  gT3CommandLine.common.directory.Set(folder_ + "/no/such");
  testing::internal::CaptureStdout();
  UpdateBuildAvoidanceFile(module_, true, stage_code_generation);
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "WARNING: Could not create directory \"" + folder_ + "/no/such\"\n");
}
}  // namespace
