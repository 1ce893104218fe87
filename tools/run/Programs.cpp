#include "run/Programs.h"

#include <fcntl.h>
#include <sched.h>
#include <spawn.h>
#include <sys/auxv.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <sstream>

#include "run/FileStates.h"

namespace run {

namespace {

[[noreturn]] void Fail(const std::string& what, int error) {
  throw what + ": " + std::strerror(error);
}

/// The words of a command as the system takes them.
std::vector<char*> Vector(const std::vector<std::string>& words) {
  std::vector<char*> vector;
  for (const std::string& word : words) vector.push_back(const_cast<char*>(word.c_str()));
  vector.push_back(nullptr);
  return vector;
}

/// Text of another process, in memory since a disk may be full. Without memory it holds nothing.
class HeldText {
 public:
  explicit HeldText(Errors errors)
      : descriptor_(errors == Errors::BehindOutput ? memfd_create("errors", MFD_CLOEXEC) : -1) {}
  ~HeldText() {
    if (descriptor_ >= 0) close(descriptor_);
  }
  HeldText(const HeldText&) = delete;
  /// Where it is written; negative where nothing is held.
  int Descriptor() const { return descriptor_; }
  std::string Text() const {
    std::string text;
    char block[4096];
    for (ssize_t n; (n = pread(descriptor_, block, sizeof block, static_cast<off_t>(text.size()))) > 0;)
      text.append(block, static_cast<size_t>(n));
    return text;
  }

 private:
  int descriptor_;
};

constexpr std::array<int, 3> kEndings = {SIGINT, SIGTERM, SIGHUP};
volatile std::sig_atomic_t gEnding;
volatile pid_t gListener;

void PassOn(int signal) {
  gEnding = signal;
  if (gListener > 0) kill(gListener, signal);
}

/// While it lives, signals that ask for the end go to the listener; then they end this process.
class EndingsPassed {
 public:
  EndingsPassed() {
    struct sigaction action = {};
    action.sa_handler = PassOn;
    for (size_t i = 0; i < kEndings.size(); ++i) {
      sigaction(kEndings[i], nullptr, &before_[i]);
      if (before_[i].sa_handler != SIG_IGN) sigaction(kEndings[i], &action, nullptr);
    }
  }
  ~EndingsPassed() {
    gListener = 0;
    for (size_t i = 0; i < kEndings.size(); ++i) sigaction(kEndings[i], &before_[i], nullptr);
    if (gEnding != 0) raise(gEnding);
  }
  EndingsPassed(const EndingsPassed&) = delete;
  void Listen(pid_t child) {
    gListener = child;
    if (gEnding != 0) kill(child, gEnding);
  }

 private:
  std::array<struct sigaction, kEndings.size()> before_ = {};
};

/// `errors` is the descriptor for standard error; negative for the one of this process.
pid_t Start(const std::vector<std::string>& command, const std::filesystem::path& output, int errors) {
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, output.c_str(), O_WRONLY | O_CREAT | O_TRUNC,
                                   0666);
  if (errors >= 0) posix_spawn_file_actions_adddup2(&actions, errors, STDERR_FILENO);
  pid_t child = -1;
  const int error =
      posix_spawnp(&child, command.front().c_str(), &actions, nullptr, Vector(command).data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  if (error != 0) Fail("could not start " + command.front(), error);
  return child;
}

}  // namespace

std::filesystem::path Installation() {
  std::error_code error;
  std::filesystem::path self = std::filesystem::read_symlink("/proc/self/exe", error);
  // roots of their own may lack /proc
  if (error) self = std::filesystem::canonical(reinterpret_cast<const char*>(getauxval(AT_EXECFN)));
  return self.parent_path().parent_path();
}

std::filesystem::path FindProgram(const std::string& program) {
  const char* path = std::getenv("PATH");
  std::istringstream folders(path == nullptr ? "" : path);
  for (std::string folder; std::getline(folders, folder, ':');)
    if (const std::string place = folder + "/" + program; access(place.c_str(), X_OK) == 0) return place;
  return {};
}

bool IsInstalled(const std::string& program) {
  return !FindProgram(program).empty();
}

unsigned Processors() {
  cpu_set_t usable;
  if (sched_getaffinity(0, sizeof usable, &usable) != 0) return 1;
  return static_cast<unsigned>(std::max(CPU_COUNT(&usable), 1));
}

int RunProgram(const std::vector<std::string>& command, const std::filesystem::path& output, Errors errors) {
  const HeldText held(errors);
  EndingsPassed endings;
  const pid_t child = Start(command, output, held.Descriptor());
  endings.Listen(child);
  int status = 0;
  while (waitpid(child, &status, 0) < 0)
    if (errno != EINTR) Fail("no end of " + command.front(), errno);
  if (status != 0) std::cerr << ReadFile(output);
  std::cerr << held.Text() << std::flush;
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

OpenProgram::OpenProgram(const std::filesystem::path& path)
    : name_(path.string()), file_(open(name_.c_str(), O_RDONLY | O_CLOEXEC)) {
  if (file_ < 0) Fail(name_, errno);
}

OpenProgram::~OpenProgram() {
  close(file_);
}

void OpenProgram::Become(const std::string& name, const std::vector<std::string>& arguments) const {
  std::vector<std::string> command = {name};
  command.insert(command.end(), arguments.begin(), arguments.end());
  fexecve(file_, Vector(command).data(), environ);
  Fail("could not run " + name_, errno);
}

}  // namespace run
