#include <gtest/gtest.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "asn1/front/AsnFault.h"
#include "asn1/front/AsnOptions.h"
#include "asn1/front/SyntaxTree.h"

namespace asn1 {
namespace {

// The options that were refused, one behind the other.
std::string Refused(AsnOptions& options, const std::vector<std::string>& texts,
                    const std::vector<std::string>& names = {"file"}) {
  std::string refused;
  for (const std::string& text : texts) options.Record(text);
  options.Apply(names, [&](const std::string& text) {
    refused += text + ";";
    return false;
  });
  return refused;
}

std::string Refused(const std::string& text) {
  AsnOptions options;
  return Refused(options, {text});
}

// The pieces between bars.
std::vector<std::string> Split(const std::string& text) {
  std::istringstream stream(text);
  std::vector<std::string> pieces;
  for (std::string piece; std::getline(stream, piece, '|');) pieces.push_back(piece);
  return pieces;
}

TEST(AsnOptions, FormsThatAreTaken) {
  for (const std::string& text : Split(
             "verbose=2|TYP=yes|TYP=1|REAL=0|REAL=128|STANDARD-VERSION=1990|STANDARD-VERSION=1994|"
             "DEFINITION-CATEGORY=other|DEFINITION-CATEGORY=255|XREF=True|XREF=0|NAMELEN=8|NAMELEN=128|"
             "DEFINITELEN=no|DEFINITELEN=definite-definitecomps|DEFINITELEN=3|EXTENSIONS=save|"
             "SPLIT=2147483647|COD=1|COD=none:combined:2|INT=U32|INT=optimize|N=16|CHOICE=0|"
             "REALLIM={1,10,32767}|ENCF=01010101|ALTMAX=8|C-GENERATION=REAL,EXTERNAL-N|ALLOW|// comment|"
             "BEO=// 7|INFO=any thing|ENTRY=Type|ENTRY=17:Type|ENTRY=sdu:Type|ENTRY=Type:PDU|TPREF=A-b_c|"
             "CLCONV=Type:HL|VNAME=v:x|FSUFF=_f|PREFIX=Mod-1:a_b:c-d|PREFIX=M|$Id: x $|ADE-PREFIX=browser|"
             "DECIMALS=127"))
    EXPECT_EQ(Refused(text), "") << text;
}

TEST(AsnOptions, FormsThatAreRefused) {
  for (const std::string& text : Split(
             "TYP=2|TYP=|TYP|TYP=01|REAL=33|STANDARD-VERSION=1992|DEFINITION-CATEGORY=4|"
             "DEFINITION-CATEGORY=254|XREF=2|NAMELEN=7|NAMELEN=129|NAMELEN=x|SPLIT=2147483648|SPLIT=-1|COD=3|"
             "COD=1:1:1:1|INT=V32|INT=33|N=U16|REALLIM={1,2,3}|REALLIM={1,10,32768}|REALLIM=1|ENCF=2|"
             "ENCF=010101010|ALTMAX=9|C-GENERATION=REAL,NONE|ENTRY=type|ENTRY=18:Type|ENTRY=A:B|ENTRY=|"
             "TPREF=a b|TPREF=type:x|VNAME=V:x|TCONV=LU|TCONV=X|TNAME=Ty_pe:x|PREFIX=1:a:b|PREFIX=a:b:c:d|"
             "PREFIX=:a|PREFIX=a b|UNKNOWN=1|UNKNOWN|DECIMALS=128|XPREF=a"))
    EXPECT_EQ(Refused(text), text + ";") << text;
}

TEST(AsnOptions, Values) {
  AsnOptions options;
  EXPECT_EQ(
      Refused(options, {"definitelen=indefinite", "real=64", "C=Out Dir", "c-generation=real,commontime",
                        "C-GENERATION=DATETIMEZ", "entry=7:Some-Type", "ENTRY=Pdu:sdu"}),
      "");
  EXPECT_EQ(options.Number("DEFINITELEN", 9), 0);
  EXPECT_EQ(options.Number("REAL", 9), 64);
  EXPECT_EQ(options.Number("NAMELEN", 9), 9);
  EXPECT_EQ(options.Text("C"), "Out Dir");
  EXPECT_TRUE(options.testCGenerationOption(1));
  EXPECT_FALSE(options.testCGenerationOption(2));
  EXPECT_EQ(options.entries(), (std::set<std::string>{"Pdu", "Some-Type"}));
}

TEST(AsnOptions, Scopes) {
  AsnOptions options;
  EXPECT_EQ(
      Refused(options, {"BEGIN-SCOPE=other", "TPREF=A", "PREFIX=M:f:g", "END-SCOPE", "begin-scope=x:file:y",
                        "VPREF=B", "END-SCOPE", "OPREF=C", "BEGIN-SCOPE=other", "WRONG=1"}),
      "");
  EXPECT_EQ(options.getFixRec(kNamesTypes, "T").prefix, "");
  EXPECT_EQ(options.getFixRec(kNamesValues, "v").prefix, "B");
  EXPECT_EQ(options.getFixRec(kNamesObjects, "o").prefix, "C");
  // A module's prefixes are known before anything else, in whichever scope they stand.
  EXPECT_EQ(options.prefixes().at("M").generation_prefix, "g");
}

TEST(AsnOptions, PrefixesHaveDefaultsAndALength) {
  AsnOptions options;
  options.set_prefix_length(4);
  testing::internal::CaptureStdout();
  EXPECT_EQ(Refused(options, {"PREFIX=A-b", "PREFIX=B:long-file", "PREFIX=C::long-gen", "PREFIX=D:d:e"}), "");
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "WARNING : A file prefix 'long-file' is longer than 4 characters.\n"
            "          Truncating it to 4 characters.\n          Check value of the PREFIXLEN option.\n"
            "WARNING : A generation prefix 'long-gen' is longer than 4 characters.\n"
            "          Truncating it to 4 characters.\n          Check value of the PREFIXLEN option.\n");
  EXPECT_EQ(options.prefixes().at("A_b").file_prefix, "A-b");
  EXPECT_EQ(options.prefixes().at("B").generation_prefix, "long");
  EXPECT_EQ(options.prefixes().at("C").file_prefix, "C");
  EXPECT_EQ(options.prefixes().at("C").generation_prefix, "long");
  EXPECT_EQ(options.prefixes().at("D").generation_prefix, "e");
}

class Folder : public testing::Test {
 protected:
  void SetUp() override {
    path_ = std::filesystem::temp_directory_path() / ("orvane_asn1_" + std::to_string(::getpid()));
    std::filesystem::create_directories(path_);
  }
  void TearDown() override { std::filesystem::remove_all(path_); }
  std::string Write(const std::string& name, const std::string& text) {
    std::ofstream(path_ / name, std::ios::binary) << text;
    return (path_ / name).string();
  }
  std::string Place() const { return path_.string() + "/"; }

  std::filesystem::path path_;
};

// What a run of the words writes to standard output.
std::string Output(const std::vector<std::string>& words, AsnCommandLine& line) {
  testing::internal::CaptureStdout();
  line = parseCmdLineParams(words);
  return testing::internal::GetCapturedStdout();
}

// What is written to standard error before the end, with the status in front.
template <class Call>
std::string Ending(const Call& call) {
  testing::internal::CaptureStderr();
  int status = 0;
  try {
    call();
  } catch (const AsnExit& ends) {
    status = ends.status;
  }
  return std::to_string(status) + testing::internal::GetCapturedStderr();
}

using AsnCommandLines = Folder;

TEST_F(AsnCommandLines, PrefixesAreCutAndChecked) {
  AsnCommandLine line;
  EXPECT_EQ(Output({"abcdefg", "a.b"}, line),
            "WARNING : File prefix 'abcdefg' longer than 5 characters.\n"
            "          Truncating it to 5 characters.\n          Check value of the PREFIXLEN option.\n"
            "\nERROR : Invalid file prefix: a.b\n");
  EXPECT_EQ(line.file_prefixes, std::vector<std::string>{"abcde"});
  for (const char* faulty : {"-PREFIXLEN=0", "-PREFIXLEN=33", "-PREFIXLEN=x", "-PREFIXLEN=07"})
    EXPECT_EQ(Output({faulty}, line), "\nWARNING : Argument ignored: " + std::string(faulty + 1) + "\n");
}

TEST_F(AsnCommandLines, OptionFiles) {
  const std::string file =
      Write("o.txt",
            "# a\n// b\n(* c\n-- d\n$e$\n\n  -TYP=1  \nfixed\n-BEGIN-SCOPE=a\n-BEGIN-SCOPE=b\n"
            "-END-SCOPE\n-END-SCOPE\n-PREFIXLEN=9\n-BEGIN-SCOPE=c\n-end-of-options\n-DEF=1\n");
  AsnCommandLine line;
  EXPECT_EQ(Output({"+" + file}, line),
            "\nWARNING : Unexpected -BEGIN-SCOPE: option file " + file +
                "\n\nWARNING : Unexpected -END-SCOPE: option file " + file +
                "\n\nWARNING : Argument ignored: PREFIXLEN=9\n          In option file  : " + file +
                "\n\nWARNING : -END-SCOPE expected: option file " + file + "\n");
  EXPECT_EQ(line.file_prefixes, std::vector<std::string>{"fixed"});
  EXPECT_EQ(line.options.front(), "TYP=1");
  EXPECT_EQ(line.options.back(), "BEGIN-SCOPE=c");
}

TEST_F(AsnCommandLines, OptionFilesThatAreMissing) {
  EXPECT_EQ(
      Ending([] { parseCmdLineParams({"+"}); }),
      "2\nFATAL ERROR : Can not open file for reading\n              (No option file name specified)\n\n");
  EXPECT_EQ(Ending([] { parseCmdLineParams({"+/no/such"}); }),
            "2\nFATAL ERROR : Can not open file for reading\n              /no/such\n\n");
  EXPECT_EQ(Ending([] { fatalError(99); }), "2\nFATAL ERROR : Unexpected error code\n\n");
}

// A syntax file with a header, records of imports and 8-bit texts only.
std::string TreeFile(const std::vector<std::string>& texts, const std::vector<int>& imports = {},
                     int version = kFormatVersion, int first_version = kFormatVersion) {
  MNode header{};
  header.version_first = static_cast<uint16_t>(first_version);
  header.version = static_cast<uint16_t>(version);
  header.name = header.file_prefix = 1;
  header.counts[kMNode] = static_cast<int32_t>(1 + imports.size());
  header.counts[kString8] = static_cast<int32_t>(texts.size());
  std::string file(reinterpret_cast<const char*>(&header), sizeof header);
  for (const int text : imports) {
    MNode import{};
    import.name = import.file_prefix = text;
    file.append(reinterpret_cast<const char*>(&import), sizeof import);
  }
  for (const std::string& text : texts) {
    const auto units = static_cast<uint16_t>(text.size() + 1);
    file.append(reinterpret_cast<const char*>(&units), sizeof units);
    file.append(text.c_str(), text.size() + 1);
  }
  return file;
}

class SyntaxFiles : public Folder {
 protected:
  std::string Read(const std::string& prefix) {
    trees_.clear();
    trees_.findOrCreateModRec(prefix, "").named_by_user = true;
    return Ending([&] { trees_.readAllSyntaxTrees(Place()); });
  }
  SyntaxTrees trees_;
};

TEST_F(SyntaxFiles, Versions) {
  Write("m.stx", TreeFile({"m"}));
  EXPECT_EQ(Read("m"), "0");
  Write("m.stx", TreeFile({"m"}, {}, kFormatVersion, 100));
  EXPECT_EQ(Read("m"), "0");
  Write("m.stx", TreeFile({"m"}, {}, 207, 207));
  EXPECT_EQ(Read("m"),
            "2\nFATAL ERROR : Not a valid syntax tree\n              m: Syntax tree generated by MESK "
            "version 2.07, "
            "expected 2.13\n\n");
  Write("m.stx", TreeFile({"m"}, {}, 207));
  EXPECT_EQ(Read("m"), "2\nFATAL ERROR : Not a valid syntax tree\n              m\n\n");
  EXPECT_EQ(printVersionStri("a ", 213, 0, "b"), "a 2.13b");
  EXPECT_EQ(printVersionStri("a ", 213, 7, "b"), "a 2.13.7b");
}

TEST_F(SyntaxFiles, Strings) {
  Write("m.stx", TreeFile({"m", std::string(kMaxStringUnits - 1, 'x')}));
  EXPECT_EQ(Read("m"), "0");
  EXPECT_EQ(getStri(*trees_.find("m"), 2).size(), kMaxStringUnits - 1);
  EXPECT_EQ(getStri(*trees_.find("m"), 0), "");
  Write("m.stx", TreeFile({"m", std::string(kMaxStringUnits, 'x')}));
  EXPECT_EQ(Read("m"), "2\nFATAL ERROR : Not a valid syntax tree\n              m\n\n");
  std::string file = TreeFile({"m", "x"});
  std::memset(file.data() + file.size() - 4, 0, 2);
  Write("m.stx", file);
  EXPECT_EQ(Read("m"), "2\nFATAL ERROR : Not a valid syntax tree\n              m\n\n");
  Write("m.stx", TreeFile({"m", "x"}).substr(0, 100));
  EXPECT_EQ(Read("m"), "2\nFATAL ERROR : Not a valid syntax tree\n              m\n\n");
}

TEST_F(SyntaxFiles, Imports) {
  Write("m.stx", TreeFile({"m", "n", "ISO8824"}, {2, 3}));
  EXPECT_EQ(Read("m"), "2\nFATAL ERROR : Syntax tree not found\n              m\n\n");
  Write("n.stx", TreeFile({"n", "m"}, {2}));  // each other
  EXPECT_EQ(Read("m"), "0");
  ModRec& module = *trees_.find("m");
  EXPECT_EQ(&getModPtr(module, 1), &module);
  EXPECT_EQ(getModPtr(module, 2).name, "n");
  EXPECT_EQ(trees_.find("ISO8824")->state, kPredefined);
  EXPECT_EQ(Ending([&] { getModPtr(module, 3); }),
            "2\nFATAL ERROR : Syntax tree inconsistent\n              m\n\n");
  EXPECT_EQ(Ending([&] { getModPtr(module, 9); }),
            "2\nFATAL ERROR : Can not read record from syntax tree\n\n");
  Write("n.stx", "");
  EXPECT_EQ(Read("m"), "2\nFATAL ERROR : Not a valid syntax tree\n              m\n\n");
  Write("m.stx", TreeFile({"m", "../n"}, {2}));
  EXPECT_EQ(Read("m"), "2\nFATAL ERROR : Syntax tree inconsistent\n              m\n\n");
}
}  // namespace
}  // namespace asn1
