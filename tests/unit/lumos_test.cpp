// The vocabulary, and texts cut into pieces.
#include "generator/text/LUMOS.h"

#include <gtest/gtest.h>

#include <fstream>
#include <regex>
#include <set>
#include <sstream>

#include "generator/text/T3CodeDefs.h"

namespace {
std::string ReadFile(const std::string& path) {
  std::ifstream stream(path);
  std::ostringstream text;
  text << stream.rdbuf();
  return text.str();
}
}  // namespace

TEST(Vocabulary, EveryWordStandsInTheRunTimeHeader) {
  const std::string header = ReadFile(ORVANE_SOURCE_DIR "/runtime/include/lumos.h");
  const std::regex identifier("[A-Za-z_][A-Za-z_0-9]*");
  std::set<std::string> words(std::sregex_token_iterator(header.begin(), header.end(), identifier),
                              std::sregex_token_iterator());
  ASSERT_GT(words.size(), 400u);
  // what the ASN.1 side declares in its own header
  words.insert("t3asn_STATIC_asn_1_null_type");
#define T3_WORD(constant, text) EXPECT_TRUE(words.count(text)) << text << " is not declared";
#define T3_C_WORD(constant, text)
#include "generator/text/T3CodeDefs.def"
#undef T3_WORD
#undef T3_C_WORD
}

TEST(SliceString, CutsAtTheLimitAndBehindAnEscape) {
  EXPECT_EQ("abc", SliceString("abc", 3));
  EXPECT_EQ("abc\"\n\"def\"\n\"g", SliceString("abcdefg", 3));
  EXPECT_EQ("ab\\n\"\n\"cd", SliceString("ab\\ncd", 3));
  EXPECT_EQ("ab\\n", SliceString("ab\\n", 3));
  EXPECT_EQ("", SliceString("", 3));
}

TEST(SliceString, LeavesEscapesAndBrokenTrigraphsWhole) {
  for (size_t n = 1; n <= 4; ++n) EXPECT_EQ("\\012\"\n\"3", SliceString("\\0123", n)) << n;
  EXPECT_EQ("ab\\012\"\n\"cd", SliceString("ab\\012cd", 4));
  EXPECT_EQ("ab\\7\"\n\"89", SliceString("ab\\789", 3));
  // what stands behind an escaped backslash may begin an escape of its own
  EXPECT_EQ("a\\\\\\n\"\n\"cd", SliceString("a\\\\\\ncd", 3));
  EXPECT_EQ("a\\\\012\"\n\"345", SliceString("a\\\\012345", 6));
  EXPECT_EQ("?\" \"?\"\n\"abcde", SliceString("?\" \"?abcde", 5));
  for (size_t n = 2; n <= 4; ++n) EXPECT_EQ(0U, SliceString("?\" \"?b", n).find("?\" \"")) << n;
}
