// The support library: identifiers, positions, sets, files that must not outlive the process.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>

#include "support/DynArray.h"
#include "support/Idents.h"
#include "support/Position.h"
#include "support/Sets.h"
#include "support/StringM.h"
#include "support/TemporaryFiles.h"
#include "support/rFsearch.h"
#include "support/rSystem.h"

namespace {
TEST(Idents, TheSameTextIsTheSameIdentifier) {
  EXPECT_EQ(gIdents.MakeIdent("same"), gIdents.MakeIdent(std::string("same")));
  EXPECT_NE(gIdents.MakeIdent("same"), gIdents.MakeIdent("Same"));
  EXPECT_EQ(gIdents.MakeIdent(""), NoIdent);
  EXPECT_NE(gIdents.MakeIdent(L"same"), gIdents.MakeIdent("same"));
  EXPECT_EQ(gIdents.MakeIdent(L"same"), gIdents.MakeIdent(L"same"));
}

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

TEST(Idents, UnknownIdentifierHasTheEmptyText) {
  EXPECT_STREQ(gIdents.GetCStr(-1), "");
  EXPECT_STREQ(gIdents.GetCStr(0), "");
  EXPECT_EQ(gIdents.GetLength(1L << 40), 0);
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

TEST(Positions, OrderIsFileThenLineThenColumn) {
  const auto at = [](uint32_t file, uint32_t line, uint16_t column) {
    tPosition position;
    position.File = file;
    position.Line = line;
    position.Column = column;
    return position;
  };
  EXPECT_EQ(Compare(at(2, 9, 9), at(3, 1, 1)), -1);
  EXPECT_EQ(Compare(at(2, 2, 1), at(2, 1, 9)), 1);
  EXPECT_EQ(Compare(at(2, 2, 1), at(2, 2, 9)), -1);
  EXPECT_EQ(Compare(at(2, 2, 9), at(2, 2, 9)), 0);
}

std::set<tSetElmt> Members(const tSet& set) {
  std::set<tSetElmt> members;
  ForallDo(set, [&members](tSetElmt element) { members.insert(element); });
  return members;
}

tSet SetOf(tSetElmt max_element, std::initializer_list<tSetElmt> members) {
  tSet set = MakeSet(max_element);
  for (const tSetElmt member : members) Include(set, member);
  return set;
}

TEST(Sets, MembersAndBounds) {
  tSet set = SetOf(100, {5, 31, 32, 100});
  EXPECT_EQ(Card(set), 4);
  EXPECT_EQ(Size(set), 101);
  EXPECT_TRUE(set.IsElement(32));
  EXPECT_FALSE(set.IsElement(33) || set.IsElement(-1) || set.IsElement(101));
  Exclude(set, 5);
  EXPECT_EQ(Minimum(set), 31);
  Exclude(set, 100);
  EXPECT_EQ(Maximum(set), 32);
  EXPECT_EQ(Extract(set), 31);
  EXPECT_EQ(Extract(set), 32);
  EXPECT_EQ(Extract(set), -1);
  EXPECT_TRUE(IsEmpty(set));
  EXPECT_EQ(Maximum(set), -1);
  Include(set, 101);
  Include(set, -1);
  EXPECT_EQ(Card(set), 0);
}

TEST(Sets, Operations) {
  const tSet a = SetOf(70, {1, 40, 70});
  const tSet b = SetOf(70, {1, 2, 69});
  tSet set = a;
  Union(set, b);
  EXPECT_EQ(Members(set), (std::set<tSetElmt>{1, 2, 40, 69, 70}));
  Difference(set, a);
  EXPECT_EQ(Members(set), (std::set<tSetElmt>{2, 69}));
  Assign(set, a);
  Intersection(set, b);
  EXPECT_EQ(Members(set), (std::set<tSetElmt>{1}));
  Assign(set, a);
  SymDiff(set, b);
  EXPECT_EQ(Members(set), (std::set<tSetElmt>{2, 40, 69, 70}));
  EXPECT_TRUE(IsSubset(SetOf(70, {40}), a));
  EXPECT_FALSE(IsSubset(a, SetOf(70, {40})));
  EXPECT_TRUE(SetOf(70, {40}).IsStrictSubset(a));
  EXPECT_FALSE(a.IsStrictSubset(a));
  EXPECT_TRUE(IsEqual(a, SetOf(90, {1, 40, 70})));
  AssignElmt(set, 9);
  EXPECT_EQ(Members(set), (std::set<tSetElmt>{9}));
  AssignEmpty(set);
  EXPECT_TRUE(IsEmpty(set));
  tSet small = SetOf(33, {0, 33});
  Complement(small);
  EXPECT_EQ(Card(small), 32);
  EXPECT_EQ(Minimum(small), 1);
  EXPECT_EQ(Maximum(small), 32);
  ResizeSet(small, 4);
  EXPECT_EQ(Members(small), (std::set<tSetElmt>{1, 2, 3, 4}));
}

TEST(Sets, Quantifiers) {
  const tSet set = SetOf(50, {2, 4, 41});
  const auto even = [](tSetElmt element) { return element % 2 == 0; };
  EXPECT_TRUE(Exists(set, even));
  EXPECT_FALSE(Forall(set, even));
  EXPECT_FALSE(Exists1(set, even));
  EXPECT_TRUE(Exists1(set, [](tSetElmt element) { return element == 41; }));
  EXPECT_TRUE(Forall(MakeSet(50), even));
}

TEST(Sets, TextForm) {
  FILE* stream = std::tmpfile();
  WriteSet(stream, SetOf(50, {2, 4, 41}));
  WriteSet(stream, MakeSet(3));
  std::fputs(" { 7 ,8}{9", stream);
  std::rewind(stream);
  tSet set = MakeSet(50);
  EXPECT_TRUE(ReadSet(stream, set));
  EXPECT_EQ(Members(set), (std::set<tSetElmt>{2, 4, 41}));
  EXPECT_TRUE(ReadSet(stream, set));
  EXPECT_TRUE(IsEmpty(set));
  EXPECT_TRUE(ReadSet(stream, set));
  EXPECT_EQ(Members(set), (std::set<tSetElmt>{7, 8}));
  EXPECT_FALSE(ReadSet(stream, set));
  std::fclose(stream);
}

TEST(Paths, PartsOfAPath) {
  const struct {
    const char* path;
    const char* directory;
    const char* base;
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

TEST(Arrays, ElementsAreKeptWhenTheArrayGrows) {
  EXPECT_EQ(AlignedSize(1), 1u);
  EXPECT_EQ(AlignedSize(3), 4u);
  EXPECT_EQ(AlignedSize(7), 8u);
  EXPECT_EQ(AlignedSize(9), 16u);
  void* memory = nullptr;
  unsigned long count = 3;
  MakeArray(&memory, &count, sizeof(int));
  EXPECT_EQ(count, 4u);
  static_cast<int*>(memory)[3] = 42;
  ExtendArray(&memory, &count, sizeof(int));
  EXPECT_EQ(count, 8u);
  EXPECT_EQ(static_cast<int*>(memory)[3], 42);
  EXPECT_EQ(static_cast<int*>(memory)[7], 0);
  ShrinkArray(&memory, &count, 4, sizeof(int));
  EXPECT_EQ(count, 4u);
  EXPECT_EQ(static_cast<int*>(memory)[3], 42);
  ReleaseArray(&memory, &count, sizeof(int));
  EXPECT_EQ(memory, nullptr);
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

TEST_F(Files, OutputThatCannotBeWrittenIsTold) {
  OutputFile file;
  EXPECT_FALSE(file.Open(Path("no/such/folder")));
  ASSERT_TRUE(file.Open("/dev/full"));
  std::fputs("text", file.stream());
  EXPECT_FALSE(file.Commit());
}

TEST_F(Files, FullDiskLeavesTheOldFile) {
  std::ofstream(Path("out")) << "old";
  EXPECT_EXIT(
      {
        CatchSignals();
        rlimit limit{};
        limit.rlim_cur = limit.rlim_max = 100;
        setrlimit(RLIMIT_FSIZE, &limit);
        OutputFile file;
        if (!file.Open(Path("out"))) std::exit(1);
        for (int i = 0; i < 1000; ++i) std::fputs("0123456789", file.stream());
        std::exit(file.Commit() ? 2 : 3);
      },
      testing::ExitedWithCode(3), "");
  EXPECT_EQ(Content("out"), "old");
  EXPECT_EQ(Count(), 1u);
}

TEST_F(Files, ProgramsAreSearchedAlongAPath) {
  std::filesystem::create_directories(Path("a/tool"));
  std::filesystem::create_directory(Path("b"));
  std::ofstream(Path("b/plain")) << "x";
  std::ofstream(Path("b/tool")) << "x";
  chmod(Path("b/tool").c_str(), 0755);
  const std::string path = Path("a") + ':' + Path("none") + ':' + Path("b");
  EXPECT_EQ(searchpath("tool", path), Path("b/tool"));
  EXPECT_EQ(searchpath("plain", path), "");
  EXPECT_EQ(searchpath("", path), "");
  EXPECT_EQ(searchpath(Path("b/tool"), ""), Path("b/tool"));
}

TEST(System, CommandsTellTheirStatus) {
  EXPECT_EQ(rSystem("exit 3"), 3);
  EXPECT_EQ(rSystem("true"), 0);
  EXPECT_EQ(rSystem("kill -9 $$"), 128 + 9);
}

TEST(System, NoFileTakesThePlaceOfAStandardStream) {
  EXPECT_EXIT(
      {
        for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) close(stream);
        OccupyStandardStreams();
        const int file = open("/dev/null", O_RDONLY);
        std::exit(file > STDERR_FILENO ? 4 : 5);
      },
      testing::ExitedWithCode(4), "");
  // Streams that are open stay what they are.
  EXPECT_EXIT(
      {
        OccupyStandardStreams();
        std::fputs("told", stderr);
        std::exit(4);
      },
      testing::ExitedWithCode(4), "told");
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
