#include <gtest/gtest.h>

#include <unistd.h>

#include <string>

#include "driver/diagnostics/Errors.h"
#include "driver/options/T3CommandLine.h"
#include "frontend/T3ParserDefs.h"
#include "frontend/T3Scanner.h"

namespace {
// What a scan delivers, one line for each token: name, line and column, and value.
class ScannerTest : public testing::Test {
 protected:
  void SetUp() override {
    stream_ = tmpfile();
    before_ = gErrors.SetStream(stream_);
    gCurrentFilename = gIdents.MakeIdent("m.ttcn");
  }

  void TearDown() override {
    gErrors.SetStream(before_);
    fclose(stream_);
    gT3CommandLine.strict = false;
  }

  static std::string Value(T3Token token, const T3Scanner_tScanAttribute& attribute) {
    if (token == T3Token::identifier) return "=" + std::string(gIdents.GetCStr(attribute.ident));
    if (token == T3Token::boolean_value) return attribute.boolean ? "=T" : "=F";
    if (kT3TokenClass[static_cast<size_t>(token)] == T3TokenClass::value_token)
      return "=" + std::string(StringM::StGetString(attribute.string));
    return "";
  }

  std::string Scan(const std::string& text, bool positions = false) {
    T3Scanner scanner;
    scanner.BeginText(text);
    std::string result;
    for (;;) {
      const T3Token token = scanner.GetToken();
      if (token == T3Token::EndOfFile) break;
      const T3Scanner_tScanAttribute& attribute = scanner.Attribute();
      if (!result.empty()) result += ' ';
      result += yyGetTokenName(static_cast<unsigned short>(token)) + Value(token, attribute);
      if (positions)
        result +=
            "@" + std::to_string(attribute.Position.Line) + ":" + std::to_string(attribute.Position.Column);
    }
    EXPECT_EQ(T3Token::EndOfFile, scanner.GetToken());
    scanner.CloseFile();
    return result;
  }

  // The diagnostics since the last call.
  std::string Messages() {
    fflush(stream_);
    rewind(stream_);
    std::string text;
    for (int c; (c = fgetc(stream_)) != EOF;) text += static_cast<char>(c);
    rewind(stream_);
    if (ftruncate(fileno(stream_), 0) != 0) ADD_FAILURE();
    return text;
  }

 private:
  FILE* stream_ = nullptr;
  FILE* before_ = nullptr;
};

TEST_F(ScannerTest, EveryKeywordAndSymbolIsItsToken) {
  std::string text;
  std::string expected;
  for (int i = 1; i < kT3TokenCount; ++i) {
    if (kT3TokenClass[i] == T3TokenClass::value_token) continue;
    text += std::string(kT3TokenText[i]) + " ";
    expected += (expected.empty() ? "" : " ") + std::string(kT3TokenText[i]);
  }
  EXPECT_EQ(expected, Scan(text));
  EXPECT_EQ("", Messages());
}

TEST_F(ScannerTest, NamesThatResembleKeywords) {
  EXPECT_EQ("identifier=truex identifier=pattern1 identifier=Module identifier=int2intx identifier=sizeoftyp",
            Scan("truex pattern1 Module int2intx sizeoftyp"));
  EXPECT_EQ("boolean_value=T boolean_value=F identifier=a_1", Scan("true false a_1"));
  EXPECT_EQ("__MODULE__ identifier=x", Scan("__MODULE__x"));
}

TEST_F(ScannerTest, Strings) {
  EXPECT_EQ("cstring_freetext=\"a\"b\" cstring_freetext=\"\" cstring_freetext=\"\"\"",
            Scan("\"a\"\"b\" \"\" \"\"\"\""));
  EXPECT_EQ("cstring_freetext=\"a\nb\"@1:1 identifier=c@2:4", Scan("\"a\nb\" c", true));
  EXPECT_EQ("cstring_freetext=\"\xc3\xa4\\n\"", Scan("\"\xc3\xa4\\n\""));
}

TEST_F(ScannerTest, PatternText) {
  EXPECT_EQ("pattern@1:1 pattern_text=\"a\n\"b\"@2:9 identifier=c@3:5",
            Scan("pattern\n\t\"a\n\\\"b\"c", true));
  EXPECT_EQ("pattern pattern_text=\"a\"b\\d\"\"", Scan("pattern \"a\\\"b\\d\"\"\""));
  EXPECT_EQ("pattern pattern_text=\"\\\\\" ;", Scan("pattern\"\\\\\";"));
  EXPECT_EQ("pattern cstring_freetext=\"a\\\" identifier=b", Scan("pattern /**/ \"a\\\" b"));
}

TEST_F(ScannerTest, PositionsCountTabsAndComments) {
  EXPECT_EQ("identifier=a@1:9 identifier=b@1:17 identifier=c@3:4", Scan("\ta\tb // x \t\n/* \n */c", true));
  EXPECT_EQ("identifier=a@1:1 identifier=b@1:9", Scan("a      \tb", true));
  EXPECT_EQ("identifier=a@1:1 identifier=b@1:17", Scan("a       \tb", true));
}

TEST_F(ScannerTest, CommentsNestUnlessStrict) {
  EXPECT_EQ("identifier=y", Scan("/* /* */ x */ y"));
  EXPECT_EQ(
      "m.ttcn(1) : column 4 : Warning     treating '/*' as beginning of nested comment, consider that it's "
      "a non-standard extension\n",
      Messages());
  gT3CommandLine.strict = true;
  EXPECT_EQ("identifier=x * / identifier=y", Scan("/* /* */ x */ y"));
  EXPECT_EQ("identifier=z", Scan("/*/*/ z"));
  EXPECT_EQ("", Messages());
}

}  // namespace
