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

TEST(Options, DefaultsHoldWithoutReading) {
  const T3CommandLine line;
  EXPECT_EQ(line.maximum_errors, 100);
  EXPECT_EQ(line.template_description_length, 100);
  EXPECT_EQ(line.project_directory, ".");
  EXPECT_FALSE(line.optimize || line.generate_makefile || line.build_avoidance || line.strict);
  EXPECT_EQ(line.CommonVerbosity(), verbosity_level_t::Stages);
  EXPECT_EQ(line.GetCompilerAction(language_ttcn3), action_compile);
  EXPECT_EQ(line.GetPrefix(language_asn1), "t3_");
  EXPECT_EQ(line.GetDirectory(language_ttcn3), ".");
  EXPECT_EQ(line.GetOutput(language_ttcn3), "");
  EXPECT_EQ(line.GetCodecGeneration(language_asn1), 15);
  EXPECT_FALSE(line.common.codec_generation.given || line.common.output.given ||
               line.common.split_file.given);
}

TEST(Options, UnknownLanguageGetsFixedAnswers) {
  const T3CommandLine line = Read("-v 4 -a -P p -d d -o o -I 2");
  EXPECT_EQ(line.GetVerbosity(language_ttcn2), verbosity_level_t::Errors);
  EXPECT_TRUE(line.GetWeakTyping(language_ttcn2));
  EXPECT_FALSE(line.GetNameEquivalence(language_ttcn2));
  EXPECT_EQ(line.GetCompilerAction(language_ttcn2), action_compile);
  EXPECT_EQ(line.GetSplitFile(language_ttcn2), -1);
  EXPECT_EQ(line.GetPrefix(language_ttcn2), "vexa_");
  EXPECT_EQ(line.GetDirectory(language_ttcn2), ".");
  EXPECT_EQ(line.GetOutput(language_ttcn2), "default");
  EXPECT_EQ(line.GetInitializeCheck(language_ttcn2), 1);
  EXPECT_EQ(line.GetCodecGeneration(language_ttcn2), 15);
  EXPECT_STREQ(KindToStr(static_cast<::language>(7)), "ERROR");
}

TEST(Options, GlobalOptionsSetTheirFields) {
  const T3CommandLine line = Read("-t 2 -m -5 -r root -K -B -G -O -l 7 -i -R -p proj -f my.mcfg -E -D");
  EXPECT_EQ(line.tri_mode, 2u);
  EXPECT_EQ(line.maximum_errors, -5);
  EXPECT_TRUE(line.root_module_given);
  EXPECT_EQ(line.root_module, "root");
  EXPECT_TRUE(line.generate_makefile && line.overwrite_makefile);
  EXPECT_TRUE(line.build_avoidance && line.debug && line.optimize == 1);
  EXPECT_EQ(line.template_description_length, 7);
  EXPECT_TRUE(line.tci && line.test_management && line.force_main && line.strict);
  EXPECT_EQ(line.project_directory, "proj");
  EXPECT_EQ(line.mcfg_file, "my.mcfg");
  EXPECT_TRUE(line.files.empty() && line.modules.empty());
}

TEST(Options, TheLaterMakefileOptionWins) {
  EXPECT_TRUE(Read("-K -k").generate_makefile);
  EXPECT_FALSE(Read("-K -k").overwrite_makefile);
  EXPECT_TRUE(Read("-k -K").overwrite_makefile);
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

TEST(Options, VersionListsTheSourceUnits) {
  EXPECT_EXIT(
      {
        dup2(STDERR_FILENO, STDOUT_FILENO);
        Read("-V -q");
      },
      testing::ExitedWithCode(0), "driver/options/T3CommandLine.cpp 3.3.0.2.17499\n");
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

TEST(Options, GroupsOfALanguageMayAlternate) {
  const T3CommandLine line = Read("-v 1 -T -v 2 -A -v 4 -w -T -a -d out -F x");
  EXPECT_EQ(line.CommonVerbosity(), verbosity_level_t::Errors);
  EXPECT_EQ(line.GetVerbosity(language_ttcn3), verbosity_level_t::Warnings);
  EXPECT_EQ(line.GetVerbosity(language_asn1), verbosity_level_t::Progress);
  EXPECT_TRUE(line.GetWeakTyping(language_asn1));
  EXPECT_FALSE(line.GetWeakTyping(language_ttcn3));
  EXPECT_EQ(line.GetCompilerAction(language_ttcn3), action_analyse);
  EXPECT_EQ(line.GetDirectory(language_asn1), ".");
  EXPECT_EQ(line.GetDirectory(language_ttcn3), "out");
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

TEST(Options, UnknownFormatIsRefused) {
  T3CommandLine line;
  for (const char* word : {"UNKNOWN FORMAT", "utf-8", ""})
    EXPECT_EXIT(ReadWords({"-F", "-e", word, "x"}, line), testing::ExitedWithCode(255),
                std::string("^Error: unknown file format selector \"") + word +
                    "\"; must be ASCII UTF-8 UCS-2 UCS-2BE UCS-2LE\n$");
}

TEST(Options, ReadersKnowTheirLettersOnly) {
  const auto sorted = [](std::string text) {
    std::sort(text.begin(), text.end());
    return text;
  };
  EXPECT_EQ(sorted(OptionString(kReadGlobal)), sorted("Vh?t:m:r:kKv:I:wsacS:P:d:p:o:BiRTAMFC:OGl:f:ED"));
  EXPECT_EQ(sorted(OptionString(kReadT3Group)), sorted("v:I:wsacS:P:d:o:TAMF"));
  EXPECT_EQ(sorted(OptionString(kReadAsn1Group)), sorted("v:I:wsacS:P:d:o:TAMFC:"));
  EXPECT_EQ(sorted(OptionString(kReadModules)), sorted("TAF"));
  EXPECT_EQ(sorted(OptionString(kReadT3Modules)), sorted("-v:I:wsacS:P:d:o:TAF"));
  EXPECT_EQ(sorted(OptionString(kReadFiles)), sorted("-TAe:sacl"));
  EXPECT_EQ(OptionString(kReadFiles)[0], '-');
}

TEST(Options, HelpTextHasItsForm) {
  const std::string text = UsageText("orvane");
  EXPECT_EQ(text.find("usage: orvane (global_option)* [-M ((-T|-A) (module_option)* <module_name>)+]"
                      " -F ((-T|-A) <file_name>+)+]\n\n where global_option is any of module_option except "
                      "'-o' and/or any of the following:\n\t -h                this message\n"),
            0u);
  for (const char* part :
       {"\t -t                TRI based integration\n\t                   valid values are\n",
        "\n\n modules section\n\t -k                generate makefile (keep orig. makefile) (-r required) \n",
        "\n\nmodule_option is any of the following:\n\t -v <number>       verbosity level",
        "\t -d <directory>    output directory (default: \".\")\n",
        "\t                   (none | all | no-translation |\n\t                    BER:1997 | ",
        "\n\n files section\n\t -e <file_format>  the input file uses",
        "\t                   (ASCII | UTF-8 | UCS-2 | UCS-2LE | UCS-2BE | UNKNOWN FORMAT)\n",
        "\t -c                compile for all modules in file\n\n"})
    EXPECT_NE(text.find(part), std::string::npos) << part;
  EXPECT_EQ(text.find("-S"), std::string::npos);
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

TEST_F(ModuleOption, ActionIsAskedOfModuleThenFileThenLanguage) {
  Take("-c -T -a -F -s x.ttcn -T y.ttcn -c x.ttcn");
  EXPECT_EQ(GetAction(MakeModule("m", "x.ttcn")), action_parse);
  EXPECT_EQ(GetAction(MakeModule("m", "y.ttcn")), action_analyse);
  EXPECT_EQ(GetAction(MakeModule("m", "z.ttcn")), action_analyse);
  T3Module* own = MakeModule("m", "x.ttcn");
  ModuleOptions block;
  block.action.Set(action_compile);
  own->options = &block;
  EXPECT_EQ(GetAction(own), action_compile);
}

TEST_F(ModuleOption, TheFirstEntryOfAFileDecides) {
  Take("-F x.ttcn -s x.ttcn");
  EXPECT_EQ(GetAction(MakeModule("m", "x.ttcn")), action_compile);
}

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

TEST_F(ModuleOption, LanguageOfTheModuleChoosesTheGroup) {
  Take("-A -w -P asn_ -C none -v 1 -T -v 4 -F x");
  T3Module* asn1 = MakeModule("a", "a.asn", "\"ASN.1:1997\"");
  asn1->representation = gT3AST.mT3MESK(NoPosition);
  T3Module* ttcn3 = MakeModule("t", "t.ttcn", "\"TTCN-3:2003\"");
  EXPECT_TRUE(GetWeakTyping(asn1));
  EXPECT_FALSE(GetWeakTyping(ttcn3));
  EXPECT_EQ(GetPrefix(asn1), "asn_");
  EXPECT_EQ(GetPrefix(ttcn3), "t3_");
  EXPECT_EQ(GetCodecGeneration(asn1), 0);
  EXPECT_EQ(GetVerbosity(asn1), verbosity_level_t::Errors);
  EXPECT_EQ(GetVerbosity(ttcn3), verbosity_level_t::Progress);
  EXPECT_FALSE(GetNameEquivalence(ttcn3));
}

TEST(Options, OmitCheckFollowsTheEnvironmentWhateverTheValue) {
  unsetenv("TLOG_37767");
  EXPECT_FALSE(GetOmitCheckOpt());
  setenv("TLOG_37767", "", 1);
  EXPECT_TRUE(GetOmitCheckOpt());
  unsetenv("TLOG_37767");
}

TEST(Options, EnclosingQuotes) {
  EXPECT_EQ(RemoveEnclosingQuotes("\"a b\""), "a b");
  EXPECT_EQ(RemoveEnclosingQuotes("\"\""), "");
  EXPECT_EQ(RemoveEnclosingQuotes("\""), "\"");
  EXPECT_EQ(RemoveEnclosingQuotes("\"a"), "\"a");
  EXPECT_EQ(RemoveEnclosingQuotes("a\""), "a\"");
  EXPECT_EQ(RemoveEnclosingQuotes(""), "");
}

TEST(Options, MakeDirWarnsExceptForAnExistingDirectory) {
  char folder[] = "/tmp/orvane-dir-XXXXXX";
  ASSERT_NE(mkdtemp(folder), nullptr);
  const std::string made = std::string(folder) + "/new";
  const mode_t mask = umask(0);
  testing::internal::CaptureStdout();
  MakeDir(made);
  MakeDir(made);
  MakeDir(made + "/a/b");
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "WARNING: Could not create directory \"" + made + "/a/b\"\n");
  umask(mask);
  struct stat status {};
  ASSERT_EQ(stat(made.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0775u);
  rmdir(made.c_str());
  rmdir(folder);
}
}  // namespace
