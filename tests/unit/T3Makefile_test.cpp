#include "build/T3GenMakefile.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "build/T3Makefile.h"
#include "driver/options/T3CommandLine.h"
#include "driver/modules/T3Global.h"
#include "frontend/T3GlobalASTNodes.h"
#include "frontend/T3Tree.h"

namespace {

namespace fs = std::filesystem;

std::string Contents(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

void Write(const fs::path& path, const std::string& text) {
  std::ofstream(path, std::ios::binary) << text;
}

const std::string kTools =
    "CC = cc\nCC_OUT_FLAG = \"-o \"\nCC_INCLUDE_PATH_FLAG = -I\nCC_COMPILE_FLAG = \"-c \"\n"
    "CC_DEFINE_FLAG = -D\nLD = ld\nLD_OUT_FLAG = \"-o \"\nLD_LIBRARY_PATH_FLAG = -L\n"
    "LD_LIBRARY_FLAG = -l\nAR = ar\nAR_FLAGS = rcs\n";

/// A fresh folder as output and project directory, an empty command line, an empty module table, a Unix
/// host and a fixed time.
class MakefileTest : public testing::Test {
 protected:
  void SetUp() override {
    std::string pattern = fs::temp_directory_path() / "orvane_makefile_XXXXXX";
    ASSERT_NE(nullptr, mkdtemp(pattern.data()));
    folder_ = pattern;
    saved_command_line_ = gT3CommandLine;
    saved_modules_ = gT3ModuleMap;
    gT3CommandLine = T3CommandLine();
    gT3CommandLine.project_directory = folder_;
    gT3CommandLine.root_module_given = true;
    gT3CommandLine.root_module = "Root";
    gT3CommandLine.generate_makefile = true;
    gT3CommandLine.overwrite_makefile = true;
    gT3CommandLine.mcfg_file = Path("test.mcfg");
    setenv("SOURCE_DATE_EPOCH", "0", 1);
    setenv("OSTYPE", "linux", 1);
  }
  void TearDown() override {
    unsetenv("SOURCE_DATE_EPOCH");
    unsetenv("OSTYPE");
    gT3CommandLine = saved_command_line_;
    gT3ModuleMap = saved_modules_;
    fs::remove_all(folder_);
  }

  std::string Path(const std::string& name) const { return (folder_ / name).string(); }

  module_argument_t& AddModule(const std::string& name, const std::string& source, bool is_asn1 = false) {
    const tIdent ident = gIdents.MakeIdent(name);
    auto* node = gT3AST.MakeT3Tree(T3Kind::T3Module)->as<T3Module>();
    node->name = ident;
    node->filename = gIdents.MakeIdent(source);
    node->representation = is_asn1 ? _sgT3Asn1() : _sgT3TTCN_3();
    gT3ModuleMap[ident] = node;
    module_argument_t argument;
    argument.name = ident;
    argument.language = is_asn1 ? language_asn1 : language_ttcn3;
    gT3CommandLine.modules.push_back(argument);
    return gT3CommandLine.modules.back();
  }

  /// Hands the options of each argument to its module, runs the stage, and keeps what it printed.
  bool Run() {
    for (module_argument_t& argument : gT3CommandLine.modules) {
      gT3ModuleMap[argument.name]->as<T3Module>()->options = new ModuleOptions(argument.options);
    }
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    const bool result = GenerateMakefile("/opt/orvane");
    std::fflush(stdout);
    std::fflush(stderr);
    printed_ = testing::internal::GetCapturedStdout() + testing::internal::GetCapturedStderr();
    return result;
  }

  /// The words of a value of the written makefile.
  std::string Value(const std::string& name) const {
    std::istringstream lines(Contents(Path("makefile")));
    std::string line;
    while (std::getline(lines, line)) {
      const size_t sign = line.find("= ");
      if (sign != std::string::npos && line.substr(0, line.find_first_of(" =")) == name)
        return line.substr(sign + 2);
    }
    return "no " + name;
  }

  /// Runs with one module Root and these lines in the MCFG file, and gives the words of a value.
  std::string ValueFor(const std::string& lines, const std::string& name) {
    Write(Path("test.mcfg"), kTools + lines);
    if (gT3CommandLine.modules.empty()) AddModule("Root", "root.ttcn");
    EXPECT_TRUE(Run()) << printed_;
    return Value(name);
  }

  std::string Failure(const std::string& reason) const {
    return "Generating MakeFile/MainFile\nMakefile/MainFile generation failed: \"" + reason + "\"\n";
  }

  static T3Tree_Node* _sgT3Asn1() {
    static T3Tree_Node* const node = gT3AST.MakeT3Tree(T3Kind::T3MESK);
    return node;
  }

  fs::path folder_;
  std::string printed_;
  T3CommandLine saved_command_line_;
  T3ModuleMap saved_modules_;
};

TEST_F(MakefileTest, NothingAskedForNothingDone) {
  gT3CommandLine.generate_makefile = false;
  EXPECT_TRUE(Run());
  EXPECT_EQ("", printed_);
}

TEST_F(MakefileTest, WordsOfTheGroups) {
  struct {
    const char* lines;
    const char* value;
    std::string words;
  } const cases[] = {
      {"USER_SRCS = a.c x/b.c c.cpp d.cc e e.c.old f.c.c /y/g.x.c", "USER_SRCS",
       "a.c x/b.c c.cpp d.cc e e.c.old f.c.c /y/g.x.c "},
      {"USER_SRCS = a.c x/b.c c.cpp d.cc e e.c.old f.c.c /y/g.x.c", "USER_SRCS_OBJS",
       "a.o b.o c.cpp.o d.cc.o e.o e.c.old.o f.c.o g.x.o "},
      {"USER_SRCS = \"my dir/my file.c\"", "USER_SRCS_OBJS", "my\\ file.o "},
      {"CC_OBJ_EXT = obj\nUSER_SRCS = a.c", "USER_SRCS_OBJS", "a.obj "},
      {"CC_OBJ_EXT =\nUSER_SRCS = a.c", "USER_SRCS_OBJS", "a "},
      {"USER_INCLUDE_DIRS = a \"b c\" <ORV_DIR>/x", "USER_INCLUDE_PATHS", "-Ia -Ib\\ c -I/opt/orvane/x "},
      {"USER_LIBRARY_DIRS = a \"b c\"", "USER_LIBRARY_PATHS", "-La -Lb\\ c "},
      {"USER_OBJS = a.o \"b c.o\"", "USER_OBJS", "a.o b\\ c.o "},
      {"USER_LIBS = -( libx.so.2 m -)", "USER_LIBS", " -lx.so -lm  "},
      {"LD_REP_IMPORT_PREFIX = -Wl,-(\nLD_REP_IMPORT_SUFFIX = -Wl,-)\nRTS_LIBS = -( liblumos.a -) ",
       "RTS_LIBS", "-Wl,-( -llumos -Wl,-) "},
      {"USER_CC_FLAGS = -g \"-D X\"", "USER_CC_FLAGS", "-g -D X "},
      // a list that is set to nothing names no path, file or library
      {"USER_INCLUDE_DIRS =\nUSER_LIBRARY_DIRS = <missing>", "USER_INCLUDE_PATHS", ""},
      {"USER_SRCS =", "USER_SRCS_OBJS", ""},
      {"USER_LIBS =", "USER_LIBS", ""},
      {"ASN1_SRCS = x.c", "ASN1_SRCS", "no ASN1_SRCS"},
      {"TCI_LIBS = x", "TCI_LIBS", "no TCI_LIBS"},
      {"CFLAGS = -O3", "CFLAGS", ""},
      {"CC_FLAGS = -O3 -g", "CFLAGS", "-O3 -g "},
      {"CC = a b", "CC", "ab "},
      {"MSC_LOGGING = yes\nXML_LOGGING = YES\nRTS_CC_FLAGS = -g", "RTS_CC_FLAGS",
       "-g -DLUMO_MSC96_EVENT_LOG -DLUMO_XML_EVENT_LOG "},
      {"MSC_LOGGING = Yes\nXML_LOGGING = true", "RTS_CC_FLAGS", ""},
      {"GENERATED_INCLUDE_DIRS = a", "GENERATED_INCLUDE_PATHS", "-Ia -I" + folder_.string() + "/. "},
      {"<SECTION=DEFAULT_NO_TRI>\nUSER_OBJS = a\n<SECTION=DEFAULT_TRI>\nUSER_OBJS += b", "USER_OBJS", "b "},
  };
  for (const auto& c : cases) EXPECT_EQ(c.words, ValueFor(c.lines, c.value)) << c.lines;
}

TEST_F(MakefileTest, NamesOfModulesFiles) {
  Write(Path("test.mcfg"), kTools);
  fs::create_directories(folder_ / "b dir");
  AddModule("Other", "src/other.ttcn").options.directory.Set(Path("b dir"));
  AddModule("Root", "src/root.ttcn").options.output.Set("base");
  AddModule("Analysed", "src/analysed.ttcn").options.action.Set(action_analyse);
  AddModule("Asn", "src/spec.v1.asn", true);
  AddModule("Bare", "bare", true).options.directory.Set(Path("b dir"));
  gT3CommandLine.asn1_files = true;
  for (const char* name :
       {"Asncod.c", "Asnt3asn.c", "Asnper.ext", "Asnt3asn.h", "Asn.def", "Asnbi.typ", "spec.v1.lst",
        "spec.v1.stx.t3a", "spec.v1.def", "Rootcod.c", "b dir/Bareper.c", "b dir/.lst"}) {
    Write(Path(name), "");
  }
  ASSERT_TRUE(Run()) << printed_;
  const std::string escaped = folder_.string() + "/b\\ dir/";
  EXPECT_EQ(
      escaped + "Other.c base.c Asn.c Asncod.c Asnt3asn.c " + escaped + "Bare.c " + escaped + "Bareper.c ",
      Value("GENERATED_SRCS"));
  EXPECT_EQ("Other.o base.o Asn.o Asncod.o Asnt3asn.o Bare.o Bareper.o ", Value("GENERATED_OBJS"));
  EXPECT_EQ(escaped + "Other.h base.h Asn.h Asnper.ext Asnt3asn.h " + escaped + "Bare.h ",
            Value("GENERATED_HDRS"));
  EXPECT_EQ(escaped +
                "Other.t3a base.t3a Analysed.t3a Asn.t3a Asn.def Asnbi.typ spec.v1.lst spec.v1.stx.t3a " +
                escaped + "Bare.t3a ",
            Value("GENERATED_AUXILIARIES"));
  EXPECT_EQ("-I" + folder_.string() + "/. -I" + folder_.string() + "/b\\ dir ",
            Value("GENERATED_INCLUDE_PATHS"));
  EXPECT_NE(std::string::npos, Contents(Path("makefile")).find("\nall: clean_rts base\n"));
  EXPECT_NE(std::string::npos, printed_.find("Generating MakeFile/MainFile\n"));
}

TEST_F(MakefileTest, NameOfTheTarget) {
  struct {
    const char* lines;
    const char* target;
  } const cases[] = {
      {"", "Root"},
      {"LD_EXE_EXT = exe", "Root.exe"},
      {"LD_EXE_EXT =", "Root"},
      {"BUILD_LIBRARY = yes", "Root.a"},
      {"BUILD_LIBRARY = YES\nAR_EXT = lib", "Root.lib"},
      {"BUILD_LIBRARY = yes\nAR_EXT =", "Root"},
      {"BUILD_LIBRARY = true", "Root"},
      {"ETS_NAME = suite.x\nBUILD_LIBRARY = yes", "suite.x"},
      {"ETS_NAME = <ORV_DIR>/bin/suite", "/opt/orvane/bin/suite"},
  };
  for (const auto& c : cases) {
    ValueFor(c.lines, "CC");
    EXPECT_NE(std::string::npos,
              Contents(Path("makefile")).find("\nall: clean_rts " + std::string(c.target) + "\n"))
        << c.lines;
  }
}

TEST_F(MakefileTest, TargetsThatTheMakefileHasItself) {
  Write(Path("test.mcfg"), kTools + "ETS_NAME = clean\n");
  AddModule("Root", "root.ttcn");
  EXPECT_FALSE(Run());
  EXPECT_EQ(Failure("the target of the makefile cannot be named \"clean\""), printed_);
}

TEST_F(MakefileTest, Backups) {
  struct {
    const char* name;
    const char* backup;
  } const cases[] = {
      {"makefile", "makefile.bak"}, {"suite.mk", "suite.bak"}, {"a.b.mk", "a.b.bak"},
      {"old.bak", "old.bak.bak"},   {".mk", ".bak"},
  };
  AddModule("Root", "root.ttcn").options.directory.Set(Path("out.dir"));
  fs::create_directory(folder_ / "out.dir");
  for (const auto& c : cases) {
    Write(Path("test.mcfg"), kTools + "MAKEFILE_NAME = " + c.name);
    const std::string path = Path("out.dir/") + c.name, backup = Path("out.dir/") + c.backup;
    Write(path, "first");
    Write(backup == path ? path : backup, "older");
    EXPECT_TRUE(Run()) << printed_;
    EXPECT_TRUE(
        Contents(path).starts_with("# Generated by Orvane, TTCN-3 to C Compiler, 3.3.0.2.17499\n"
                                   "# Generated at Thu Jan  1 00:00:00 1970\n\nCC   "));
    EXPECT_EQ("first", Contents(backup));
  }
}

TEST_F(MakefileTest, AnExistingMakefileIsKept) {
  gT3CommandLine.overwrite_makefile = false;
  ValueFor("", "CC");
  Write(Path("makefile"), "first");
  EXPECT_FALSE(Run());
  EXPECT_EQ(Failure("there already exists a makefile and the 'do not overwrite' flag was specified"),
            printed_);
  EXPECT_EQ("first", Contents(Path("makefile")));
  EXPECT_FALSE(fs::exists(Path("makefile.bak")));
}

TEST_F(MakefileTest, ABackupThatCannotBeMadeStops) {
  ValueFor("", "CC");
  Write(Path("makefile"), "first");
  fs::create_directories(folder_ / "makefile.bak" / "full");
  EXPECT_FALSE(Run());
  EXPECT_EQ(Failure(""), printed_);
  EXPECT_EQ("first", Contents(Path("makefile")));
  fs::remove(folder_ / "makefile.bak" / "full");
  EXPECT_TRUE(Run()) << "an empty folder is a backup that can be removed";
  EXPECT_EQ("first", Contents(Path("makefile.bak")));
}

TEST_F(MakefileTest, Failures) {
  EXPECT_FALSE(Run());
  EXPECT_EQ(Failure("no modules to generate for"), printed_);

  AddModule("Other", "other.ttcn");
  EXPECT_FALSE(Run());
  EXPECT_EQ(Failure("non-existent root module"), printed_);

  gT3CommandLine.root_module = "Other";
  EXPECT_FALSE(Run());
  EXPECT_EQ(Failure("could not open '" + Path("test.mcfg") + "'"), printed_);

  gT3CommandLine.mcfg_file.clear();
  EXPECT_FALSE(Run());
  EXPECT_EQ(Failure("could not open '" + Path("make_linux.mcfg") + "'"), printed_);

  gT3CommandLine.mcfg_file = folder_;
  EXPECT_FALSE(Run());
  EXPECT_EQ(Failure("could not open '" + folder_.string() + "'"), printed_);

  gT3CommandLine.mcfg_file = Path("test.mcfg");
  Write(Path("test.mcfg"), "<A> = x<B>\n<B> = y<A>\nUSER_LIBS = <A>\n");
  EXPECT_FALSE(Run());
  EXPECT_EQ(Failure("the placeholder <A> reaches itself"), printed_);

  Write(Path("test.mcfg"), kTools);
  gT3CommandLine.modules[0].options.directory.Set(Path("test.mcfg"));
  EXPECT_FALSE(Run());
  EXPECT_EQ(Failure("could not open '" + Path("test.mcfg/makefile") + "'"), printed_);

  gT3CommandLine.force_main = true;
  EXPECT_FALSE(Run());
  EXPECT_EQ(Failure("could not create \"main_driver.c\""), printed_);

  gT3CommandLine.tri_mode = 3;
  EXPECT_FALSE(Run());
  EXPECT_EQ(Failure("MakeFile/MainFile generation - Illegal TRI code"), printed_);

  gT3CommandLine.tri_mode = 0;
  setenv("OSTYPE", "vax", 1);
  EXPECT_FALSE(Run());
  EXPECT_EQ(0U, printed_.find(
                    "Generating MakeFile/MainFile\nMakefile/MainFile generation failed: \"Error: could not "
                    "determine the correct host type for 'vax': unknown host type.\n"));
  EXPECT_EQ(1, std::distance(fs::directory_iterator(folder_), fs::directory_iterator()))
      << "only the MCFG file";
}

TEST_F(MakefileTest, MainFileAlone) {
  gT3CommandLine.generate_makefile = false;
  gT3CommandLine.force_main = true;
  gT3CommandLine.root_module_given = false;
  gT3CommandLine.common.verbosity.Set(verbosity_level_t::Progress);
  AddModule("First", "first.ttcn").options.output.Set("base");
  Write(Path("main_driver.c"), "old");
  EXPECT_TRUE(Run()) << printed_;
  EXPECT_NE(std::string::npos,
            printed_.find(
                "MakeFile/MainFile generation - The file \"main_driver.c\", with \"main\" function, has been "
                "generated.\n"));
  EXPECT_NE(std::string::npos, printed_.find("Root module not specified - using \"base\" as root"));
  EXPECT_NE(std::string::npos, Contents(Path("main_driver.c")).find("#include \"base.h\"\n"));
  EXPECT_EQ(1, std::distance(fs::directory_iterator(folder_), fs::directory_iterator()));
}

TEST_F(MakefileTest, TheWarningAboutTheRootComesOnce) {
  gT3CommandLine.root_module_given = false;
  gT3CommandLine.force_main = true;
  ValueFor("", "CC");
  const std::string warning = "Root module not specified - using \"Root\" as root";
  const size_t first = printed_.find(warning);
  ASSERT_NE(std::string::npos, first) << printed_;
  EXPECT_EQ(std::string::npos, printed_.find(warning, first + 1));
}

// A hundred thousand sources: what the makefile knows by name is found without a search.
TEST_F(MakefileTest, ManySources) {
  std::string lines = "USER_SRCS =";
  for (int i = 0; i < 100'000; ++i) lines += " s" + std::to_string(i) + ".c";
  EXPECT_TRUE(ValueFor(lines, "USER_SRCS_OBJS").ends_with(" s99999.o "));
}

}  // namespace
