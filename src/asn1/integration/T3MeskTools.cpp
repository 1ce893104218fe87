// The external tools as child processes.
#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "asn1/front/FilePrefix.h"
#include "asn1/integration/T3Mesk.h"
#include "driver/options/T3CommandLine.h"
#include "driver/diagnostics/T3Error.h"
#include "driver/modules/T3Global.h"
#include "support/rFsearch.h"
#include "support/rSystem.h"

namespace mesk {
namespace {
constexpr const char* kChannels = "VEXA-ASN-1-std-channels.txt";
constexpr size_t kBlock = 4095;
constexpr useconds_t kWaitMicroseconds = 5000;
constexpr int kTriesInSilence = 200;

// The tools are installed beside the compiler: they are found there where PATH does not lead to others, and
// also where the compiler was called by a link.
void ExtendPath() {
  static const bool extended = [] {
    const char* path = GetEnvVar("PATH");
    std::string all = (path == nullptr ? std::string() : std::string(path) + ':') + orv_dir + "/bin";
    std::error_code error;
    const auto self = std::filesystem::read_symlink("/proc/self/exe", error);
    if (!error) all += ':' + self.parent_path().string();
    return setenv("PATH", all.c_str(), 1) == 0;
  }();
  static_cast<void>(extended);
}

// Our own standard channels, to which a child's are compared.
struct Channels {
  int out = -1, error = -1;
};

const Channels& OwnChannels() {
  static const Channels own{dup(STDOUT_FILENO), dup(STDERR_FILENO)};
  return own;
}

void CopyChannels() {
  FILE* file = std::fopen(kChannels, "rb");
  if (file == nullptr) return;
  char block[kBlock];
  for (size_t n; (n = std::fread(block, 1, sizeof block, file)) > 0;) std::fwrite(block, 1, n, stdout);
  std::fclose(file);
  std::fflush(stdout);
}

std::string Joined(const std::vector<std::string>& words) {
  std::string text;
  for (const std::string& word : words) text += (text.empty() ? "" : " ") + word;
  return text;
}

int Wait(pid_t child, const std::string& name) {
  int status = 0;
  while (waitpid(child, &status, 0) < 0) {
    if (errno == EINTR) continue;
    std::fprintf(stderr, "VEXA-ASN-1: failed waiting for \"%s\": %s\n", name.c_str(), std::strerror(errno));
    return -1;
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

[[noreturn]] void RunChild(const std::string& program, const std::vector<std::string>& arguments,
                           int channels) {
  if (channels >= 0) {
    dup2(channels, STDOUT_FILENO);
    dup2(channels, STDERR_FILENO);
  }
  std::vector<char*> words;
  for (const std::string& word : arguments) words.push_back(const_cast<char*>(word.c_str()));
  words.push_back(nullptr);
  execv(program.c_str(), words.data());
  constexpr char text[] = "VEXA-ASN-1: exec failed\n";
  if (write(STDERR_FILENO, text, sizeof text - 1) < 0) _exit(1);
  _exit(1);
}

int vexa_binary_invoke(const std::vector<std::string>& arguments) {
  if (OwnChannels().out < 0 || OwnChannels().error < 0) {
    vexa_error("VEXA-ASN-1: failed copying standard channels.", NoPosition);
    return -1;
  }
  const int channels = open(kChannels, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
  if (channels < 0) std::fputs("VEXA-ASN-1: failed connection creation to sub process\n", stderr);
  const char* path = GetEnvVar("PATH");
  const std::string program = searchpath(arguments[0], path == nullptr ? "" : path);
  if (program.empty()) {
    std::fprintf(stderr, "VEXA-ASN-1: failed to find %s in path\n", arguments[0].c_str());
    if (channels >= 0) close(channels);
    return -1;
  }
  std::fflush(stdout);
  std::fflush(stderr);
  const pid_t child = fork();
  if (child == 0) RunChild(program, arguments, channels);
  if (channels >= 0) close(channels);
  if (child < 0) {
    std::fprintf(stderr, "VEXA-ASN-1: failed creating new process, errno = %d.\n", errno);
    std::fprintf(stderr, "VEXA-ASN-1: arguments: '%s'\n", Joined(arguments).c_str());
    return -1;
  }
  const int status = Wait(child, arguments[0]);
  CopyChannels();
  return status;
}
}  // namespace

// The name of a socket, which ends with the process: a lock of the folder itself may be held by who has
// started us.
void HoldWorkingFolder() {
  static const int holder = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  struct stat folder = {};
  if (holder < 0 || stat(".", &folder) != 0) return;
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  // a zero in front makes it a name without a file
  std::snprintf(address.sun_path + 1, sizeof address.sun_path - 1, "orvane-asn1-%ju-%ju",
                static_cast<uintmax_t>(folder.st_dev), static_cast<uintmax_t>(folder.st_ino));
  const auto* name = reinterpret_cast<const sockaddr*>(&address);
  for (int tries = 1; bind(holder, name, sizeof address) != 0 && errno == EADDRINUSE; ++tries) {
    if (tries == kTriesInSilence)
      std::fprintf(stderr, "waiting for another compiler that works on ASN.1 in this folder\n");
    usleep(kWaitMicroseconds);
  }
}

int ShellInvoke(const std::string& command) {
  ExtendPath();
  std::fflush(stdout);
  return rSystem(command);
}

bool Binary_invoke(const std::vector<std::string>& arguments) {
  ExtendPath();
  const int status = vexa_binary_invoke(arguments);
  if (status < 0) vexa_error("Failed invoking external components", NoPosition);
  return status == 0;
}

std::string ShellQuoted(const std::string& word) {
  std::string quoted = "'";
  for (const char c : word) {
    if (c == '\'')
      quoted += "'\\''";
    else
      quoted += c;
  }
  return quoted + "'";
}

std::string mesk_vexa_verbosity() {
  constexpr int kMost = 2;
  return "-VERBOSE=" + std::to_string(std::min(static_cast<int>(gT3CommandLine.CommonVerbosity()), kMost));
}

std::string vexa_asn_1_filename_prefix(const std::string& source) {
  return asn1::FilePrefixOf(source);
}

std::string vexa_rehyphenize(std::string name) {
  std::replace(name.begin(), name.end(), '_', '-');
  return name;
}

std::vector<std::string> AsnSources() {
  std::vector<std::string> sources;
  for (const file_argument_t& file : gT3CommandLine.files)
    if (file.language == language_asn1) sources.emplace_back(gIdents.GetCStr(file.name));
  return sources;
}

std::vector<std::string> SourceDirectoryOptions() {
  std::vector<std::string> options;
  for (const std::string& source : AsnSources()) options.push_back("-A=" + rDirName(source));
  return options;
}

std::vector<std::string> BackendWords(const std::string& option_file, const std::string& directory,
                                      const std::vector<std::string>& prefixes) {
  std::vector<std::string> words{option_file, "-S=" + directory, "-PREFIXLEN=32"};
  words.insert(words.end(), prefixes.begin(), prefixes.end());
  return words;
}
}  // namespace mesk
