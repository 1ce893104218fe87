// The model of generated files: exact texts of all builders, order of positions, spilling, splitting, and
// what is left on disk after success and failure.
#include "FileAPI/CFile.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>

#include "driver/diagnostics/T3Exception.h"

namespace {
namespace fs = std::filesystem;

std::string ReadFile(const fs::path& path) {
  std::ifstream stream(path);
  std::ostringstream text;
  text << stream.rdbuf();
  return text.str();
}

// Each test runs in a folder of its own.
class FileApi : public testing::Test {
 protected:
  void SetUp() override {
    before_ = fs::current_path();
    std::string name = (fs::temp_directory_path() / "fileapi.XXXXXX").string();
    ASSERT_NE(nullptr, mkdtemp(name.data()));
    fs::current_path(name);
  }
  void TearDown() override {
    const fs::path folder = fs::current_path();
    fs::current_path(before_);
    fs::remove_all(folder);
  }
  // The names of all files in the folder, in order.
  static std::string Files() {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(".")) names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    std::string text;
    for (const auto& name : names) text += name + " ";
    return text;
  }
  // The source and header that a generator's text makes.
  static std::string SourceOf(const std::function<void(CFile&)>& generate) {
    CFile file("", "t.h", "t.c", false, CFile::kNoLineLimit);
    generate(file);
    file.end();
    return ReadFile("t.c");
  }
  static std::string HeaderOf(const std::function<void(CFile&)>& generate) {
    SourceOf(generate);
    return ReadFile("t.h");
  }
  static std::string Body(const std::function<void(CFunction&)>& generate) {
    return SourceOf([&](CFile& file) {
      auto function = file.beginFunction("void", "f", {}, "", false);
      generate(*function);
      function->end();
    });
  }

 private:
  fs::path before_;
};

std::string Failure(const std::function<void()>& call) {
  try {
    call();
  } catch (const internal_exception& exception) {
    const std::string text = exception.what();
    return text.substr(text.find(") - ") + 4);
  } catch (const std::string& text) {
    return "text: " + text;
  }
  return "none";
}
}  // namespace

TEST_F(FileApi, PositionsFollowTheirOrderWhateverTheOrderOfFilling) {
  CFile file("", "a.b.h", "a.c", true, CFile::kNoLineLimit);
  file.setHeaderMessage({"/*", " */"});
  auto function = file.beginFunction("int", "f", {"int a", "int b"}, "adds", true);
  function->_return("a + b");
  function->end();
  file.addExternalFunctionDeclConditionally("X", "void", "g", {});
  file.addVariable("int", "shared", false);
  file.addVariableWithInit("bool", "done", "false", true);
  file.addConstant("int", "c", "1", false);
  file.addExternalConstant("void *", "magic");
  file.addIfDefDefine("Y", "size", "1", "2");
  file.addDefine("name", "value");
  file.addInclude("other.h", false, false);
  file.addInclude("lumos.h", false, true);
  file.end();
  EXPECT_EQ(
      "/*\n */\n\n#ifndef __a_b.h\n#define __a_b.h\n\n"
      "#include \"other.h\"\n#include <lumos.h>\n\n"
      "#ifdef Y\n#define size 1\n#else\n#define size 2\n#endif\n#define name value\n\n"
      "extern int shared;\n\n"
      "extern const int c;\nextern const void * magic;\n\n"
      "extern int f(int a, int b);\n\n#endif\n",
      ReadFile("a.b.h"));
  EXPECT_EQ(
      "/*\n */\n\n#include \"a.b.h\"\n\n"
      "#ifdef X\nextern void g();\n#endif\n\n\n"
      "int shared;\nstatic bool done = false;\n\n"
      "const int c = 1;\n\n"
      "/* adds */\nint f(int a, int b)\n{\n\n  return a + b;\n}\n\n\n",
      ReadFile("a.c"));
  EXPECT_EQ((std::vector<std::string>{"a.c", "a.b.h"}), file.generatedFiles());
  EXPECT_EQ((std::vector<std::string>{"other.h", "a.b.h"}), file.localHeaders());
  EXPECT_EQ("a.b.h a.c ", Files());
}

TEST_F(FileApi, StatementsAreIndentedByScope) {
  EXPECT_EQ(
      "\nstatic void f();\n\nstatic void f()\n{\n  int v0 = 1;\n  long x;\n"
      "\n  v0 = 2;\n  g(v0, 3);\n  v0 = g();\n"
      "  if (a) {\n    b = 1;\n  }\n  else if (c) {\n    d;\n  }\n  else {\n    return 0;\n  }\n"
      "  if (g(1)) {\n  }\n"
      "  while (e) {\n    break;\n  }\n"
      "  do {\n    goto _l0;\n  } while (h);\n"
      "  for (i = 0; i < 3; ++i) {\n  }\n"
      "  switch (k) {\n    case 1:\n      break;\n    default:\n      return 2;\n  }\n"
      "#ifdef P\n  /* note */\n#else\n#endif\n#ifndef Q\n#endif\n_l0:\n"
      "  {\n    m;\n  } {\n    NULL, NULL\n  }\n}\n\n\n",
      Body([](CFunction& f) {
        const std::string v = f.declare("int", "", "1");
        f.declare("long", "x");
        f.assign(v, "2");
        f.call("g", {v, "3"});
        f.callAndAssign(v, "g", {});
        f.beginIf("a");
        f.assign("b", "1");
        f.endIf();
        f.beginElseIf("c");
        f.addLine("d;");
        f.endIf();
        f.beginElse();
        f._return("0");
        f.endIf();
        f.beginIf("g", {"1"});
        f.endIf();
        f.beginWhile("e");
        f.addBreak();
        f.endWhile();
        f.beginDoWhile();
        const std::string label = f.getNewLabel();
        f.addGoto(label);
        f.endDoWhile("h");
        f.beginFor("i", "0", "i < 3", "++i");
        f.endFor();
        f.beginSwitch("k");
        f.addCase("1");
        f.addBreak();
        f.addDefault();
        f._return("2");
        f.endSwitch();
        f.beginIfDef("P");
        f.addComment("note");
        f.beginElsePP();
        f.endIfPP();
        f.beginIfNDef("Q");
        f.endIfPP();
        f.addLabel(label);
        f.beginBlock();
        f.addLine("m;");
        f.endBlock();
        f.dummyDecl();
      }));
}

TEST_F(FileApi, TemporaryVariablesAreUsedAgainByType) {
  Body([](CFunction& f) {
    const std::string a = f.getTmpVariable("int");
    const std::string b = f.getTmpVariable("int");
    EXPECT_NE(a, b);
    f.releaseTmpVariable(a);
    EXPECT_NE(a, f.getTmpVariable("long"));
    EXPECT_EQ(a, f.getTmpVariable("int"));
    EXPECT_TRUE(f.isTmpVariable(b));
    EXPECT_FALSE(f.isTmpVariable("x"));
    f.releaseTmpVariable(b);
    EXPECT_TRUE(f.isTmpVariable(b));
    EXPECT_EQ("Can not release an unused variable", Failure([&] { f.releaseTmpVariable(b); }));
    EXPECT_EQ("Variable to release could not be found", Failure([&] { f.releaseTmpVariable("x"); }));
    EXPECT_EQ("type missing", Failure([&] { f.getTmpVariable(""); }));
  });
}

TEST_F(FileApi, StructuresAndArraysAreDeclaredAhead) {
  const auto generate = [](CFile& file) {
    auto array = file.beginArray("row_t", "rows", true);
    array->addRow({"1", "NULL"});
    array->beginLevel();
    array->addElement("2");
    array->addElement("3");
    array->endLevel();
    EXPECT_EQ(2u, array->count());
    array->end();
    auto exported = file.beginArray("int", "", false);
    EXPECT_EQ("v0", exported->name());
    exported->addElement("7");
    exported->end();
    auto structure = file.beginStructure("type_t", "s", false, true);
    structure->addMember("1");
    structure->addMember("2");
    structure->end();
    auto line = file.beginStructure("type_t", "l", true, false);
    line->addMember("1");
    line->addMember("2");
    line->end();
  };
  EXPECT_EQ(
      "\nstatic row_t rows[2];\n\nstatic type_t s;\n\n"
      "static type_t s = \n  {\n    1,\n    2\n  };\n\n"
      "type_t l = \n  { 1, 2\n  };\n\n\n"
      "static row_t rows[] =\n{\n  { 1, NULL },\n  {\n    2,\n    3\n  }\n};\n\n"
      "int v0[] =\n{\n  7\n};\n\n\n",
      SourceOf(generate));
  EXPECT_EQ("\n#ifndef __t_h\n#define __t_h\n\nextern type_t l;\n\nextern int v0[1];\n\n#endif\n",
            HeaderOf(generate));
}

TEST_F(FileApi, UnbalancedArrayAndMissingFileAreFaults) {
  CFile file("", "t.h", "t.c", false, CFile::kNoLineLimit);
  auto array = file.beginArray("int", "a", true);
  array->beginLevel();
  EXPECT_EQ("Inconsistent size information", Failure([&] { array->end(); }));
  CArray orphan(nullptr, "int", "a", true);
  EXPECT_EQ("No file object to flush to", Failure([&] { orphan.end(); }));
  CFunction function(nullptr, "void", "f", {}, "", true);
  EXPECT_EQ("No file", Failure([&] { function.end(); }));
  EXPECT_EQ("Illegal file handle", Failure([] { CEnumeration(nullptr, "e", true, true).end(); }));
}

TEST_F(FileApi, EnumerationsResolveEarlierMembersAndVanishWhenEmpty) {
  const auto generate = [](CFile& file) {
    auto plain = file.beginEnumeration("colour", true, true);
    plain->addMember("red", 3);
    plain->addMember("green", CEnumeration::kNoValue);
    plain->addMember("rouge", "red");
    plain->addMember("vert", "green");
    plain->end();
    file.beginEnumeration("empty", true, false)->end();
    auto own = file.beginEnumeration("own", false, false);
    own->addMember("one");
    own->end();
  };
  EXPECT_EQ(
      "\n#ifndef __t_h\n#define __t_h\n\n"
      "typedef enum\n{\n  red = 3,\n  green,\n  rouge = 3,\n  vert = green\n} colour;\n\n\n#endif\n",
      HeaderOf(generate));
  EXPECT_EQ("\nenum own\n{\n  one\n} ;\n\n\n", SourceOf(generate));
}

TEST_F(FileApi, LongTextSpillsAndReadsTheSame) {
  const auto generate = [](int lines) {
    return [lines](CFunction& f) {
      for (int i = 0; i < lines; ++i) f.call("g", {std::to_string(i)});
      EXPECT_EQ(lines > 1000, Files().find("ccg") != std::string::npos) << Files();
    };
  };
  const std::string small = Body(generate(500));
  const std::string large = Body(generate(20000));
  EXPECT_EQ("t.c t.h ", Files());
  std::string expected = "static void f();\n\nstatic void f()\n{\n";
  for (int i = 0; i < 20000; ++i) expected += "\n  g(" + std::to_string(i) + ");";
  EXPECT_EQ("\n" + expected + "\n}\n\n\n", large);
  EXPECT_EQ(small.substr(0, 4000), large.substr(0, 4000));
}

TEST_F(FileApi, WhatCannotBeRemovedIsTold) {
  const auto told = [](const char* path) {
    testing::internal::CaptureStderr();
    CFile::remove(path);
    return testing::internal::GetCapturedStderr();
  };
  std::ofstream("here") << "text";
  fs::create_directory("full");
  std::ofstream("full/inside") << "text";
  EXPECT_EQ("", told("here"));
  EXPECT_EQ("CFile::remove - No such file or directory\n", told("here"));
  EXPECT_EQ("CFile::remove - error when removing file\n", told("full"));
}

TEST_F(FileApi, BuildersThatAreNotEndedLeaveNothing) {
  EXPECT_EQ("\n", SourceOf([](CFile& file) {
              auto function = file.beginFunction("void", "lost", {}, "", false);
              for (int i = 0; i < 2000; ++i) function->call("g", {});
            }));
  EXPECT_EQ("t.c t.h ", Files());
}

TEST_F(FileApi, AddingToAnEndedBuilderIsAFault) {
  Body([](CFunction&) {});
  CFile file("", "t.h", "t.c", false, CFile::kNoLineLimit);
  auto function = file.beginFunction("void", "f", {}, "", false);
  function->end();
  EXPECT_EQ("Add on ended CSection: \n", Failure([&] { function->assign("a", "b"); }));
}

TEST_F(FileApi, UniqueNamesAndLabelsShareOneCounter) {
  CFile file("", "t.h", "t.c", false, CFile::kNoLineLimit);
  EXPECT_EQ("v0", file.uniqueName());
  EXPECT_EQ("_l1", file.uniqueLabel());
  EXPECT_EQ("x2", file.uniqueName("x"));
}

TEST_F(FileApi, SourceIsSplitBetweenBuildersOnly) {
  CFile file("", "t.h", "t.c", true, 12);
  for (const char* name : {"a", "b", "c"}) {
    auto function = file.beginFunction("void", name, {}, "", true);
    function->call("g", {});
    function->end();
  }
  file.end();
  const std::string body = "()\n{\n\n  g();\n}\n\n";
  EXPECT_EQ("\n#include \"t.h\"\n\nvoid a" + body, ReadFile("t.c"));
  EXPECT_EQ("#include \"t.h\"\nvoid b" + body, ReadFile("t0.c"));
  EXPECT_EQ("#include \"t.h\"\nvoid c" + body + "\n", ReadFile("t1.c"));
  EXPECT_EQ((std::vector<std::string>{"t.c", "t.h", "t0.c", "t1.c"}), file.generatedFiles());
}

TEST_F(FileApi, DirectoriesAreMadeAndFailureIsToldByText) {
  CFile("out/deep", "t.h", "t.c", false, CFile::kNoLineLimit).end();
  EXPECT_TRUE(fs::exists("out/deep/t.c"));
  std::ofstream("plain") << "x";
  EXPECT_EQ("text: could not create directory plain",
            Failure([] { CFile("plain", "t.h", "t.c", false, CFile::kNoLineLimit); }));
}

TEST_F(FileApi, InvalidFileWritesNothing) {
  std::ofstream("t.c") << "old";
  CFile file("", "t.h", "t.c", false, CFile::kNoLineLimit);
  file.addVariable("int", "x", true);
  file.invalidate();
  file.end();
  EXPECT_EQ("old", ReadFile("t.c"));
  EXPECT_EQ("t.c ", Files());
}

TEST_F(FileApi, UnwritableFilesAndFullDisksAreFaultsAndKeepTheOldFile) {
  fs::create_directory("t.h");
  EXPECT_EQ("could not create t.h", Failure([] { SourceOf([](CFile&) {}); }));
  fs::remove("t.h");
  std::ofstream("t.c") << "old";
  rlimit limit{};
  getrlimit(RLIMIT_FSIZE, &limit);
  const rlim_t before = limit.rlim_cur;
  const auto handler = std::signal(SIGXFSZ, SIG_IGN);
  limit.rlim_cur = 6000;
  setrlimit(RLIMIT_FSIZE, &limit);
  const std::string in_file = Failure([] {
    SourceOf([](CFile& file) {
      for (int i = 0; i < 900; ++i) file.addVariable("int", "v", true);
    });
  });
  const std::string in_spill = Failure([] {
    Body([](CFunction& f) {
      for (int i = 0; i < 20000; ++i) f.call("g", {});
    });
  });
  limit.rlim_cur = before;
  setrlimit(RLIMIT_FSIZE, &limit);
  std::signal(SIGXFSZ, handler);
  EXPECT_NE(std::string::npos, in_file.find("error when writing file")) << in_file;
  EXPECT_EQ("error when writing file", in_spill);
  EXPECT_EQ("old", ReadFile("t.c"));
  EXPECT_EQ("t.c ", Files());
}
