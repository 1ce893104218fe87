// The command line: what each option sets, which section takes it, and which option holds for a module.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <sstream>
#include <vector>

#include "driver/options/T3CommandLine.h"
#include "frontend/T3GlobalASTNodes.h"
#include "frontend/T3Tree.h"
#include "support/rGetopt.h"

namespace {
void ReadWords(std::vector<std::string> words, T3CommandLine& line) {
  std::vector<const char*> argv{"orvane"};
  for (const std::string& word : words) argv.push_back(word.c_str());
  rOptind = 0;
  ReadGlobalOpts(static_cast<int>(argv.size()), argv.data(), line);
}

std::vector<std::string> Split(const std::string& text) {
  std::istringstream stream(text);
  std::vector<std::string> words;
  for (std::string word; stream >> word;) words.push_back(word);
  return words;
}

T3CommandLine Read(const std::string& text) {
  T3CommandLine line;
  ReadWords(Split(text), line);
  return line;
}

std::string ModuleNames(const T3CommandLine& line) {
  std::string names;
  for (const module_argument_t& module : line.modules)
    names += std::string(KindToStr(module.language)) + ':' + gIdents.GetCStr(module.name) + ' ';
  return names;
}

// language, file, format and action of each file
std::string Files(const T3CommandLine& line) {
  std::string text;
  for (const file_argument_t& file : line.files) {
    text += std::string(KindToStr(file.language)) + ':' + gIdents.GetCStr(file.name) + ':' +
            FORMAT_SELECTOR[file.options.format] + ':';
    text += (file.options.action.given ? std::to_string(file.options.action.value) : "-") + " ";
  }
  return text;
}

TEST(Options, NumbersOutsideTheirRangeEndInTheHelpText) {
  for (const char* words : {"-v 0", "-v 5", "-v x", "-I 3", "-I -1", "-t 3", "-t -1", "-l -1", "-C BER",
                            "-M -T -v 9 a -F x", "-A -C all,none -F x"})
    EXPECT_EXIT(Read(words), testing::ExitedWithCode(255), "usage: orvane") << words;
  EXPECT_EQ(Read("-I text").GetInitializeCheck(language_ttcn3), 0);
}

TEST(Options, FaultyLinesEndInTheHelpText) {
  for (const char* words : {"-h", "-?", "-M -T -F x", "-M -T a", "-M a", "-M -F x", "-M", "-T -v 4", "-A",
                            "-T x -F y", "-M -T a -A -F x", "-M -T -A b -F x", "-M -T a -M", "-F -v 4 x"})
    EXPECT_EXIT(Read(words), testing::ExitedWithCode(255), "usage: orvane") << words;
  EXPECT_EXIT(Read("-q"), testing::ExitedWithCode(255), "Error: illegal option character q\nusage:");
  EXPECT_EXIT(Read("-v"), testing::ExitedWithCode(255), "Error: required argument missing for option v\n");
  EXPECT_EXIT(Read("-T -C all -F x"), testing::ExitedWithCode(255), "Error: illegal option character C\n");
}

TEST(Options, CodecNamesAddUp) {
  const std::pair<const char*, int> cases[] = {
      {"-C all -C none", 0},
      {"-C none", 0},
      {"-C BER:1997 -C PER-BASIC-ALIGNED:1997", 9},
      {"-C no-translation -C BER:1997", 1},
      {"-C no-translation -C none", 16},
      {"-C no-translation -C all", 15},
      {"-C BER:1997-length-form-3 -C PER-BASIC-UNALIGNED:1997", 6},
      {"-C BER:1997 -C no-translation", 16},
  };
  for (const auto& [words, value] : cases)
    EXPECT_EQ(Read(words).GetCodecGeneration(language_asn1), value) << words;
  const T3CommandLine line = Read("-C BER:1997 -A -C PER-BASIC-ALIGNED:1997 -F x");
  EXPECT_EQ(line.GetCodecGeneration(language_asn1), 8);
  EXPECT_EQ(line.GetCodecGeneration(language_ttcn3), 1);
}

TEST(Options, ModulesTakeTheOptionsGivenBeforeThem) {
  const T3CommandLine line = Read("-M -T a -w b -s -A c -T -d x d -F x.ttcn");
  EXPECT_EQ(ModuleNames(line), "TTCN-3:a TTCN-3:b ASN-1:c TTCN-3:d ");
  EXPECT_FALSE(line.modules[0].options.weak_typing.given);
  EXPECT_TRUE(line.modules[1].options.weak_typing.value);
  // behind the last module of a group: dropped
  EXPECT_FALSE(line.modules[2].options.action.given);
  EXPECT_FALSE(line.modules[3].options.weak_typing.given);
  EXPECT_EQ(line.modules[3].options.directory.value, "x");
  EXPECT_EQ(Files(line), "TTCN-3:x.ttcn:UNKNOWN FORMAT:- ");
}

TEST(Options, FormatAndActionHoldUpToTheNextLanguage) {
  EXPECT_EQ(Files(Read("-F -e UTF-8 a.ttcn b.ttcn -A c.asn d.asn")),
            "TTCN-3:a.ttcn:UTF-8:- TTCN-3:b.ttcn:UTF-8:- ASN-1:c.asn:UNKNOWN FORMAT:- "
            "ASN-1:d.asn:UNKNOWN FORMAT:- ");
  EXPECT_EQ(Files(Read("-F -s a -a b -c c -l d -T e")),
            "TTCN-3:a:UNKNOWN FORMAT:0 TTCN-3:b:UNKNOWN FORMAT:1 TTCN-3:c:UNKNOWN FORMAT:5 "
            "TTCN-3:d:UNKNOWN FORMAT:2 TTCN-3:e:UNKNOWN FORMAT:- ");
  EXPECT_TRUE(Read("-F -A c").asn1_files);
  EXPECT_FALSE(Read("-A -F c").asn1_files);
  EXPECT_EQ(Files(Read("-F -eUCS-2LE a -e UCS-2BE b -e ASCII c -e UCS-2 d")),
            "TTCN-3:a:UCS-2LE:- TTCN-3:b:UCS-2BE:- TTCN-3:c:ASCII:- TTCN-3:d:UCS-2:- ");
}

// The accessors look at the one command line of the process.
class ModuleOption : public testing::Test {
 protected:
  void SetUp() override { gT3CommandLine = T3CommandLine(); }
  void TearDown() override { gT3CommandLine = T3CommandLine(); }

  static T3Module* MakeModule(const char* name, const char* file, const char* clause = "\"TTCN-3\"") {
    T3Module* module =
        gT3AST.mT3Module(NoPosition, _sgT3NoModule(), gIdents.MakeIdent(name), gStringM.PutString(clause), 0,
                         false, false, false, _sgT3NoExpression(), _sgT3NoDecl(), _sgT3NoWith());
    module->filename = gIdents.MakeIdent(file);
    return module;
  }
  static void Take(const std::string& words) { gT3CommandLine = Read(words); }
};

TEST_F(ModuleOption, OutputDirectoryLiesBelowTheProject) {
  const std::pair<const char*, const char*> cases[] = {
      {"-d /tmp/x -p q", "/tmp/x"}, {"-p /p -d out", "/p/out"}, {"-d c:out -p /p", "c:out"},
      {"-d \\out -p /p", "\\out"},  {"-p /p", "/p/."},          {"", "./."},
  };
  for (const auto& [words, directory] : cases) {
    Take(words);
    EXPECT_EQ(GetOutputDir(MakeModule("m", "x")), directory) << words;
  }
  T3CommandLine line;
  ReadWords({"-p", "/p", "-d", ""}, line);
  gT3CommandLine = line;
  EXPECT_EQ(GetOutputDir(MakeModule("m", "x")), "/p/");
}

TEST_F(ModuleOption, OutputIsAPrefixExceptForAModuleOfItsOwn) {
  Take("-o pre");
  T3Module* module = MakeModule("m", "x");
  EXPECT_EQ(GetOutputFile(module), "prem");
  Take("-o pre -T -o grp -F x");
  EXPECT_EQ(GetOutputFile(module), "grpm");
  ModuleOptions block;
  block.output.Set("base");
  module->options = &block;
  EXPECT_EQ(GetOutputFile(module), "base");
  EXPECT_EQ(GetSourceFile(module), "x");
}

}  // namespace
