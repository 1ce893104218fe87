// The support library: identifiers, positions, files that must not outlive the process.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "support/Idents.h"
#include "support/Position.h"
#include "support/TemporaryFiles.h"
#include "support/rFsearch.h"

namespace {
TEST(Idents, GrowthKeepsEarlierIdentifiers) {
  Idents table;
  std::vector<tIdent> made;
  const auto name = [](int i) { return "name" + std::to_string(i); };
  for (int i = 0; i < 5000; ++i) made.push_back(table.MakeIdent(name(i)));
  for (int i = 0; i < 5000; ++i) {
    EXPECT_EQ(table.MakeIdent(name(i)), made[static_cast<size_t>(i)]);
    EXPECT_EQ(table.GetCStr(made[static_cast<size_t>(i)]), name(i));
  }
  EXPECT_EQ(table.MaxIdent(), 5002);
}

TEST(Positions, FormAndItsReading) {
  tPosition position;
  position.File = static_cast<uint32_t>(gIdents.MakeIdent("dir/a \"b\".ttcn"));
  position.Line = 12;
  position.Column = 3;
  EXPECT_EQ(FormatPosition(position), "\"dir/a \"b\".ttcn\":  12,  3");
  EXPECT_EQ(ReadPosition(FormatPosition(position)), position);
  position.Line = 123456;
  position.Column = 65535;
  EXPECT_EQ(FormatPosition(position), "\"dir/a \"b\".ttcn\":123456,65535");
  EXPECT_EQ(ReadPosition(FormatPosition(position)), position);
  for (const char* text :
       {"", "\"", "\"a\"", "a:1,2", "\"a\":1", "\"a\":1,2 ", "\"a\":1,2x", "\"a\":1,70000"})
    EXPECT_EQ(ReadPosition(text), NoPosition) << text;
}

TEST(Paths, PartsOfAPath) {
  const struct {
    const char *path, *directory, *base;
  } cases[] = {
      {"a/b/c.asn", "a/b", "c.asn"},
      {"c.asn", ".", "c.asn"},
      {"/c.asn", "/", "c.asn"},
      {"a\\b\\c", "a\\b", "c"},
      {"a/b//", "a", "b"},
      {"a//b", "a", "b"},
      {"/", "/", ""},
      {"", ".", ""},
      {"a/", ".", "a"},
      {"/a/b", "/a", "b"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(rDirName(c.path), c.directory) << c.path;
    EXPECT_EQ(rBaseName(c.path), c.base) << c.path;
  }
}

class Files : public testing::Test {
 protected:
  void SetUp() override {
    char name[] = "/tmp/orvane-files-XXXXXX";
    folder_ = mkdtemp(name);
  }
  void TearDown() override { std::filesystem::remove_all(folder_); }
  std::string Path(const char* name) const { return folder_ + '/' + name; }
  std::string Content(const char* name) const {
    std::ifstream stream(Path(name));
    std::ostringstream text;
    text << stream.rdbuf();
    return text.str();
  }
  size_t Count() const {
    return static_cast<size_t>(std::distance(std::filesystem::directory_iterator(folder_), {}));
  }
  std::string folder_;
};

TEST_F(Files, OutputTakesItsPlaceOnlyWhenCommitted) {
  std::ofstream(Path("out")) << "old";
  {
    OutputFile file;
    ASSERT_TRUE(file.Open(Path("out")));
    std::fputs("new", file.stream());
    std::fflush(file.stream());
    EXPECT_EQ(Content("out"), "old");
  }
  EXPECT_EQ(Content("out"), "old");
  OutputFile file;
  ASSERT_TRUE(file.Open(Path("out")));
  std::fputs("new", file.stream());
  EXPECT_TRUE(file.Commit());
  EXPECT_EQ(Content("out"), "new");
  EXPECT_EQ(Count(), 1u);
}

TEST_F(Files, OutputKeepsLinksAndPermissions) {
  std::ofstream(Path("target")) << "old";
  chmod(Path("target").c_str(), 0640);
  std::filesystem::create_symlink("target", Path("link"));
  OutputFile file;
  ASSERT_TRUE(file.Open(Path("link")));
  std::fputs("new", file.stream());
  EXPECT_TRUE(file.Commit());
  EXPECT_EQ(Content("target"), "new");
  EXPECT_TRUE(std::filesystem::is_symlink(Path("link")));
  struct stat status {};
  stat(Path("target").c_str(), &status);
  EXPECT_EQ(status.st_mode & 0777, 0640u);
}

TEST_F(Files, TemporaryFilesGoWithTheProcess) {
  EXPECT_EXIT(
      {
        CatchSignals();
        TemporaryFile file(folder_, "a");
        TemporaryFile other(folder_, "b");
        std::exit(Count() == 2 ? 4 : 5);
      },
      testing::ExitedWithCode(4), "");
  EXPECT_EQ(Count(), 0u);
  for (const int number : {SIGINT, SIGTERM, SIGHUP})
    EXPECT_EXIT(
        {
          CatchSignals();
          TemporaryFile file(folder_, "a");
          TemporaryFile removed(folder_, "b");
          removed.Remove();
          std::raise(number);
        },
        testing::KilledBySignal(number), "");
  EXPECT_EQ(Count(), 0u);
}
}  // namespace
