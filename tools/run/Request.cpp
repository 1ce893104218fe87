#include "run/Request.h"

#include <algorithm>
#include <filesystem>
#include <string_view>

namespace run {

namespace {

constexpr const char* kHelp = R"(Usage: orvane-run [options] FILES... [options of the suite]

Compiles the modules in FILES, builds what changed in a folder of its own, and runs the suite. FILES are TTCN-3 modules
(.ttcn, .ttcn3, .3mp), ASN.1 modules (.asn, .asn1), sources of your own (.c, .cc, .cpp, .cxx), objects and archives
(.o, .a). The exit status is that of the suite, or of the step that failed before it.

  -r, --root MODULE       the root module (default: the one with a control part that no other imports)
  -d, --folder FOLDER     where the suite is built (default: .orvane-run)
  -f, --mcfg FILE         the tools (default: the installation's, with tcc where that is installed)
  -G, --debug             a build for debuggers
  -X, --compiler OPTION   one more option for the compiler, with or without its argument
      --ttcn FILE         a TTCN-3 module in a file of another name
      --asn1 FILE         the same of ASN.1
      --build             build and end: the executable is FOLDER/MODULE.run
      --version           print the version and end; behind files: of the suite
  -h, --help              print this and end
  --                      all that follows is the suite's

Values may also stand as in --root=MODULE and -rMODULE. All other arguments are the suite's: `orvane-run FILES... -- --help`
tells them.
)";

using Files = std::vector<std::string> Request::*;

struct Kind {
  std::string_view extension;
  Files files;
};

constexpr Kind kKinds[] = {
    {".ttcn", &Request::ttcn_files}, {".ttcn3", &Request::ttcn_files}, {".3mp", &Request::ttcn_files},
    {".asn", &Request::asn1_files},  {".asn1", &Request::asn1_files},  {".c", &Request::sources},
    {".cc", &Request::sources},      {".cpp", &Request::sources},      {".cxx", &Request::sources},
    {".o", &Request::objects},       {".a", &Request::objects},
};

void AddOption(std::vector<std::string>& options, const std::string& text) {
  const size_t blank = text.find(' ');
  options.push_back(text.substr(0, blank));
  if (blank != std::string::npos) options.push_back(text.substr(blank + 1));
}

struct Option {
  std::string_view letter;
  std::string_view word;
  bool has_argument;
  void (*set)(Request&, const std::string&);
};

template <Files kFiles>
void AddFile(Request& request, const std::string& text) {
  (request.*kFiles).push_back(text.starts_with('-') ? "./" + text : text);
}

constexpr Option kOptions[] = {
    {"-r", "--root", true, [](Request& request, const std::string& text) { request.root = text; }},
    {"-d", "--folder", true, [](Request& request, const std::string& text) { request.folder = text; }},
    {"-f", "--mcfg", true, [](Request& request, const std::string& text) { request.mcfg = text; }},
    {"-G", "--debug", false,
     [](Request& request, const std::string&) { request.compiler_options.push_back("-G"); }},
    {"-X", "--compiler", true,
     [](Request& request, const std::string& text) { AddOption(request.compiler_options, text); }},
    {"-h", "--help", false, [](Request& request, const std::string&) { request.help = true; }},
    {"", "--ttcn", true, AddFile<&Request::ttcn_files>},
    {"", "--asn1", true, AddFile<&Request::asn1_files>},
    {"", "--build", false, [](Request& request, const std::string&) { request.build_only = true; }},
};

/// The option that an argument names, also one with its value: `value` is what stands behind the name then.
const Option* FindOption(std::string_view argument, std::string& value) {
  for (const Option& option : kOptions) {
    for (const std::string_view name : {option.letter, option.word}) {
      if (name.empty() || !argument.starts_with(name)) continue;
      std::string_view rest = argument.substr(name.size());
      if (rest.empty()) return &option;
      const bool is_letter = name == option.letter;
      if (!option.has_argument || !(is_letter || rest.starts_with('='))) continue;
      value = rest.substr(is_letter ? 0 : 1);
      return &option;
    }
  }
  return nullptr;
}

/// The list for a file of this name; null when it is none that can be built.
Files KindOf(const std::string& argument) {
  if (argument.starts_with('-')) return nullptr;
  const std::string extension = std::filesystem::path(argument).extension().string();
  const auto* place = std::ranges::find(kKinds, extension, &Kind::extension);
  return place == std::end(kKinds) ? nullptr : place->files;
}

}  // namespace

std::vector<std::string> Request::Files() const {
  std::vector<std::string> files;
  for (const auto* list : {&ttcn_files, &asn1_files, &sources, &objects})
    files.insert(files.end(), list->begin(), list->end());
  return files;
}

Request ReadRequest(int argc, char** argv) {
  Request request;
  bool own = true;
  for (int i = 1; i < argc; ++i) {
    const std::string argument = argv[i];
    std::string value;
    const Option* option = own ? FindOption(argument, value) : nullptr;
    if (option != nullptr) {
      if (option->has_argument && value.empty() && i + 1 < argc && !argument.ends_with('='))
        value = argv[++i];
      if (option->has_argument && value.empty()) throw "option '" + argument + "' needs a value";
      option->set(request, value);
    } else if (own && argument == "--") {
      own = false;
    } else if (const auto files = own ? KindOf(argument) : nullptr; files != nullptr) {
      (request.*files).push_back(argument);
    } else {
      request.suite_arguments.push_back(argument);
    }
  }
  request.version =
      request.ttcn_files.empty() && request.suite_arguments == std::vector<std::string>{"--version"};
  if (request.build_only && !request.suite_arguments.empty())
    throw "'" + request.suite_arguments.front() +
        "' is neither a file that can be built nor an option of a build";
  if (!request.help && !request.version && request.ttcn_files.empty())
    throw std::string("no TTCN-3 file is given");
  return request;
}

std::string HelpText() {
  return kHelp;
}

std::string VersionText() {
  return std::string(kProgram) + " of Orvane " ORVANE_VERSION "\n";
}

}  // namespace run
