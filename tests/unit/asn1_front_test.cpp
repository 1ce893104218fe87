#include <gtest/gtest.h>

#include <sstream>

#include "asn1/front/AsnOptions.h"

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
  for (const std::string& text :
       Split("verbose=2|TYP=yes|TYP=1|REAL=0|REAL=128|STANDARD-VERSION=1990|STANDARD-VERSION=1994|"
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
  for (const std::string& text :
       Split("TYP=2|TYP=|TYP|TYP=01|REAL=33|STANDARD-VERSION=1992|DEFINITION-CATEGORY=4|"
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

}  // namespace
}  // namespace asn1
