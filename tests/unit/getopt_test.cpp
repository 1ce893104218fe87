// The option scanner.
#include "support/rGetopt.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {
struct Step {
  int code;
  std::string argument;
  std::string message;

  bool operator==(const Step&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Step& step) {
  return out << '{' << step.code << ", \"" << step.argument << "\", \"" << step.message << "\"}";
}

class Scan {
 public:
  explicit Scan(std::vector<const char*> words) : words_(std::move(words)) {
    words_.insert(words_.begin(), "program");
    rOptind = 0;
    rOptreset();
  }

  Step Next(const char* options) {
    const int code = rGetopt(static_cast<int>(words_.size()), words_.data(), options);
    return {code, rOptarg != nullptr ? rOptarg : "", rOptmsg != nullptr ? rOptmsg : ""};
  }

  std::vector<Step> All(const char* options) {
    std::vector<Step> steps;
    do steps.push_back(Next(options));
    while (steps.back().code != -1 && steps.size() < 20);
    return steps;
  }

 private:
  std::vector<const char*> words_;
};

const Step kEnd{-1, "", ""};

TEST(Getopt, ReadsClustersAndArgumentsInTheSameOrTheNextWord) {
  const std::vector<Step> expected{
      {'w', "", ""}, {'a', "", ""}, {'v', "3", ""}, {'v', "4", ""}, {'w', "", ""}, {'v', "w", ""}, kEnd};
  EXPECT_EQ(Scan({"-wa", "-v3", "-v", "4", "-wvw"}).All("wav:"), expected);
}

TEST(Getopt, PlainArgumentEndsTheScanOrIsReturned) {
  EXPECT_EQ(Scan({"x", "-a"}).All("a"), std::vector<Step>{kEnd});
  EXPECT_EQ(Scan({"x", "-a"}).All("+a"), std::vector<Step>{kEnd});
  EXPECT_EQ(rOptind, 1);
  const std::vector<Step> expected{{1, "x", ""}, {'a', "", ""}, {1, "", ""}, kEnd};
  EXPECT_EQ(Scan({"x", "-a", ""}).All("-a"), expected);
}

TEST(Getopt, ReportsFaultsAndClearsTheMessageAtTheNextCall) {
  const std::vector<Step> expected{{'?', "", "illegal option character"},
                                   {'a', "", ""},
                                   {'?', "", "required argument missing for option"},
                                   kEnd};
  EXPECT_EQ(Scan({"-xa", "-v"}).All("av:"), expected);
  Scan listed({"-?", "-y"});
  EXPECT_EQ(listed.Next("?"), (Step{'?', "", ""}));
  EXPECT_EQ(listed.Next("?"), (Step{'?', "", "illegal option character"}));
  EXPECT_EQ(rOptopt, 'y');
}

TEST(Getopt, DashAloneAndDoubleDashEndTheScan) {
  EXPECT_EQ(Scan({"-", "-a"}).All("-a"), std::vector<Step>{kEnd});
  EXPECT_EQ(rOptind, 1);
  EXPECT_EQ(Scan({"--", "-a"}).All("-a"), std::vector<Step>{kEnd});
  EXPECT_EQ(rOptind, 2);
}

TEST(Getopt, AReaderHandsOverInTheMiddleOfACluster) {
  Scan scan({"-aMb", "-c", "x"});
  EXPECT_EQ(scan.Next("aM").code, 'a');
  EXPECT_EQ(scan.Next("aM").code, 'M');
  rOptreset();
  EXPECT_EQ(scan.Next("-bc:").code, 'b');
  EXPECT_EQ(scan.Next("-bc:"), (Step{'c', "x", ""}));
  EXPECT_EQ(scan.Next("-bc:"), kEnd);
}

TEST(Getopt, OptionsOfTwoCharacters) {
  const char* options = "a!xa!y:bc!z";
  const std::vector<Step> expected{{rGetoptCode('a', 'x'), "", ""},
                                   {'b', "", ""},
                                   {rGetoptCode('a', 'y'), "value", ""},
                                   {'?', "", "missing second option character"},
                                   {'?', "", "illegal option character"},
                                   {'b', "", ""},
                                   kEnd};
  EXPECT_EQ(Scan({"-axb", "-ayvalue", "-c", "-cb"}).All(options), expected);
}

TEST(Getopt, OptionalArgumentsAndEqualSigns) {
  const std::vector<Step> plain{{'o', "", ""}, {'o', "=x", ""}, {'r', "=y", ""}, kEnd};
  EXPECT_EQ(Scan({"-o", "-o=x", "-r=y"}).All("o::r:"), plain);
  rGetoptArgumentWithEqual = rGetoptOptionalWithEqual = true;
  const std::vector<Step> equal{{'o', "", ""}, {'o', "x", ""}, {'r', "y", ""}, {'r', "z", ""}, kEnd};
  EXPECT_EQ(Scan({"-o", "-o=x", "-r=y", "-r", "z"}).All("o::r:"), equal);
  rGetoptArgumentWithEqual = rGetoptOptionalWithEqual = false;
}
}  // namespace
