#include "build/MGConfig.h"

#include <gtest/gtest.h>

#include <ctime>
#include <sstream>

namespace {

Config Read(const std::string& text, const std::string& section = "WANTED") {
  Config config;
  std::istringstream in(text);
  config.read_config_file(in, section);
  return config;
}

/// The words of K, each in square brackets, or "undefined".
std::string Words(const Config& config, const std::string& key = "K") {
  if (!config.item_defined(key)) return "undefined";
  std::string words;
  for (const std::string& word : config.items(key)) words += "[" + word + "]";
  return words;
}

std::string Failure(const Config& config, const std::string& key) {
  try {
    (void)config.items(key);
  } catch (const std::string& text) {
    return text;
  }
  return "no failure";
}

TEST(Config, Lines) {
  struct {
    const char* text;
    const char* words;
  } const cases[] = {
      {"", "undefined"},
      {"K = a", "[a]"},
      {" \t K\t=\ta\t", "[a]"},
      {"K=a", "[a]"},
      {"K+=a", "[a]"},
      {"K = a b\r\nK += c\r\n", "[a][b][c]"},
      {"K = a\nK = b", "[b]"},
      {"k = a", "undefined"},
      {"KK = a", "undefined"},
      // lines that do not fit
      {"K", "undefined"},
      {"K  ", "undefined"},
      {"K a", "undefined"},
      {"K + = a", "undefined"},
      {"K -= a", "undefined"},
      {"K+ = a", "undefined"},
      {"// K = a", "undefined"},
      {"  // K = a", "undefined"},
      // the operator ends at its sign
      {"K == a", "[=][a]"},
      {"K +=+= a", "[+=][a]"},
      // nothing behind the operator
      {"K =", "[]"},
      {"K =\t \r", "[]"},
      {"K += ", "[]"},
      {"K = a\nK =", "[a][]"},
      {"K = a\nK +=", "[a][]"},
      // comments
      {"K = a // b", "[a]"},
      {"K = a //", "[a]"},
      {"K = a//b", "[a//b]"},
      {"K = http://b c", "[http://b][c]"},
      {"K = a\nK = // b", "undefined"},
      {"K = \"//a\" //b", "[//a]"},
      {"K = / /a", "[/][/a]"},
      // quotes
      {"K = \"-o \"", "[-o ]"},
      {"K = \"a b\" c", "[a b][c]"},
      {"K = \"a\"b", "[a][b]"},
      {"K = \"a\"\"b\"", "[a][b]"},
      {"K = \"a\"//b", "[a]"},
      {"K = a\"b c\"", "[a\"b][c\"]"},
      {"K = \"a b", "[a b]"},
      {"K = \"a b\r\n", "[a b]"},
      {"K = \"", "undefined"},
      {"K = a\nK = \"\"", "undefined"},
      {"K = \"\" a", "[a]"},
      {"K = \" \"", "[ ]"},
      {"K = \"a // b\"", "[a // b]"},
      // backslashes stay
      {"K = a\\ b c", "[a\\ b][c]"},
      {"K = \\ b", "[\\ b]"},
      {"K = \"a\\\" b\" c", "[a\\\" b][c]"},
      {"K = a\\\\ b", "[a\\\\ b]"},
      {"K = a\\", "[a\\]"},
      {"K = a \\\nK += b", "[a][\\][b]"},
      {"K = \"a\\\"", "[a\\\"]"},
      // a carriage return counts at the end only, and once
      {"K = a\rb", "[a\rb]"},
      {"K = a\r\r\n", "[a\r]"},
  };
  for (const auto& c : cases) EXPECT_EQ(c.words, Words(Read(c.text))) << c.text;
}

TEST(Config, Sections) {
  struct {
    const char* text;
    const char* words;
  } const cases[] = {
      {"<SECTION=WANTED>\nK = a\n</SECTION>", "[a]"},
      {"<SECTION=OTHER>\nK = a\n</SECTION>", "undefined"},
      {"K = a\n<SECTION=OTHER>\nK = b\n", "[a]"},
      {"K = a\n<SECTION=WANTED>\nK = b\n", "[b]"},
      {"<SECTION=WANTED>\nK = b\n</SECTION>\nK = a", "[a]"},
      {"<SECTION=OTHER>\n</SECTION>\nK = a", "[a]"},
      {"<SECTION=OTHER>\n<SECTION=WANTED>\nK = a", "[a]"},
      {"<SECTION=WANTED>\n<SECTION=OTHER>\nK = a", "undefined"},
      {"<SECTION=WANTED>\n<SECTION=OTHER>\n</SECTION>\nK = a", "[a]"},
      {" \t<SECTION=OTHER> rest is ignored\nK = a", "undefined"},
      {"<SECTION=OTHER> K = b\n  </SECTION> K = c\nK += a", "[a]"},
      {"<SECTION=WANTED>x\nK = a", "[a]"},
      {"<SECTION= WANTED>\nK = a", "undefined"},
      {"<SECTION=wanted>\nK = a", "undefined"},
      {"<SECTION=>\nK = a", "undefined"},
      // without an end the tag is ignored
      {"<SECTION=OTHER\nK = a", "[a]"},
      {"<SECTION=OTHER>\n<SECTION=WANTED\nK = a", "undefined"},
      // not quite a tag: an item line
      {"<SECTION =OTHER>\nK = a", "[a]"},
      {"</SECTION >\nK = a", "[a]"},
  };
  for (const auto& c : cases) EXPECT_EQ(c.words, Words(Read(c.text))) << c.text;
}

TEST(Config, ItemJoinsAndDefaults) {
  const Config config = Read("K = a b\nK += c\nE =\nF = <none>");
  EXPECT_EQ("abc", config.item("K", "d"));
  EXPECT_EQ("", config.item("E"));
  EXPECT_EQ("d", config.item("E", "d"));
  EXPECT_EQ("d", config.item("F", "d"));
  EXPECT_EQ("d", config.item("missing", "d"));
  EXPECT_TRUE(config.item_defined("E"));
  EXPECT_FALSE(config.item_defined("missing"));
  EXPECT_EQ((std::vector<std::string>{""}), config.items("E", "d"));
  EXPECT_EQ((std::vector<std::string>{""}), config.items("F", "d"));
  EXPECT_EQ((std::vector<std::string>{"d"}), config.items("missing", "d"));
  EXPECT_TRUE(config.items("missing").empty());
}

TEST(Config, DefaultValueReplaces) {
  Config config = Read("K = a b");
  config.add_default_value("K", "x y");
  EXPECT_EQ("[x y]", Words(config));
  std::istringstream later("K += z");
  config.read_config_file(later, "WANTED");
  EXPECT_EQ("[x y][z]", Words(config));
}

TEST(Config, Placeholders) {
  struct {
    const char* text;
    const char* words;
  } const cases[] = {
      {"K = <ORV_DIR>/include", "[/opt/orvane/include]"},
      {"<ORV_DIR> = /home\nK = <ORV_DIR>/include", "[/home/include]"},
      {"K = <ORV_DIR>/include\n<ORV_DIR> = /home", "[/home/include]"},
      {"K = a<missing>b <missing>", "[ab][]"},
      {"<A> = x y\nK = <A>-<A>", "[xy-xy]"},
      {"<A> = 1<B>3\n<B> = 2\nK = 0<A>4", "[01234]"},
      {"<A> = >\nK = a<A>>b", "[a>>b]"},
      {"K = a>b", "[a>b]"},
      // a name without an end is the rest of the text
      {"<A = x\nK = a<A", "[ax]"},
      {"K = a<b c", "[a][c]"},
      // a name runs from the first bracket to the next closing one
      {"<A<B> = x\nK = a<A<B>>", "[ax>]"},
      {"<> = x\nK = <>", "[x]"},
      {"<A> = x\nK = \"<A> <A>\"", "[x x]"},
      {"<a> = x\nK = <A>", "[]"},
  };
  for (const auto& c : cases) {
    Config config;
    config.add_default_value("<ORV_DIR>", "/opt/orvane");
    std::istringstream in(c.text);
    config.read_config_file(in, "WANTED");
    EXPECT_EQ(c.words, Words(config)) << c.text;
  }
}

TEST(Config, PlaceholdersThatReachThemselvesStop) {
  EXPECT_EQ("the placeholder <A> reaches itself", Failure(Read("<A> = x<A>\nK = <A>"), "K"));
  EXPECT_EQ("the placeholder <A> reaches itself",
            Failure(Read("<A> = <B>\n<B> = <C>\n<C> = <A>\nK = <A>"), "K"));
  EXPECT_EQ("the placeholder <B> reaches itself",
            Failure(Read("<A> = <B>\n<B> = a<B\nK = <A>\n<B = <B>"), "K"));
  EXPECT_EQ("no failure", Failure(Read("<A> = <A>\nK = x"), "K")) << "nobody asked for it";
}

TEST(Config, PlaceholdersThatGrowBeyondMeasureStop) {
  std::string doubling = "K = <0>\n", chain = "K = <0>\n";
  for (int i = 0; i < 2000; ++i) {
    const std::string line = "<" + std::to_string(i) + "> = ";
    const std::string next = "<" + std::to_string(i + 1) + ">";
    if (i < 60) doubling += line + next + next + "\n";
    chain += line + next + "\n";
  }
  EXPECT_EQ("no failure", Failure(Read(doubling), "K")) << "nothing, many times";
  EXPECT_NE(std::string::npos, Failure(Read(doubling + "<60> = x"), "K").find("is too long"));
  EXPECT_EQ("the placeholder <1000> is nested too deeply", Failure(Read(chain), "K"));
}

// Ten megabytes of every kind of line, and ten of noise. The limit of processor time is far above what a
// reader that looks at each character once needs, and far below what one needs that does not.
TEST(Config, LargeFiles) {
  const std::clock_t start = std::clock();
  std::string many, noise;
  for (int i = 0; many.size() < 5'000'000; ++i) many += "K += w" + std::to_string(i) + " \"q\" <A> // c\n";
  many += "<A> = x\nL = ";
  while (many.size() < 10'000'000) many += "<A>y";
  const Config config = Read(many);
  EXPECT_LT(300'000U, config.items("K").size());
  EXPECT_LT(1'000'000U, config.item("L").size());
  unsigned state = 1;
  while (noise.size() < 10'000'000) noise += static_cast<char>((state = state * 1664525 + 1013904223) >> 24);
  const Config binary = Read(noise + "\nK = a");
  EXPECT_EQ("[a]", Words(binary));
  const std::string quotes(5'000'000, '"'), brackets(5'000'000, '<');
  EXPECT_TRUE(Read("K = " + quotes).items("K").empty());
  EXPECT_EQ("[]", Words(Read("K = " + brackets)));
  EXPECT_GT(30 * CLOCKS_PER_SEC, std::clock() - start);
}

}  // namespace
