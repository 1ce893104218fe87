#include "tci.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <sstream>

#include "text/log.h"
#include "text/log_file.h"
#include "suite/params.h"
#include "suite/suite.h"

// A suite without registry links too; what only main files with control call is not there then.
#pragma weak t3tci_get_modules_info
#pragma weak tciControlTerminated

namespace lumos {

namespace {

SuiteOptions options;
lumo_module_entry_t root = nullptr;
int status = 0;

lumo_module_entry_t registry() {
  return t3tci_get_modules_info ? t3tci_get_modules_info() : nullptr;
}

lumo_module_entry_t find_module(const char* name) {
  for (lumo_module_entry_t entry = registry(); entry && entry->name; ++entry)
    if (!std::strcmp(entry->name, name)) return entry;
  return nullptr;
}

void print_registry() {
  for (lumo_module_entry_t entry = registry(); entry && entry->name; ++entry)
    std::printf("module %s\n", entry->name);
}

bool choose_root(const char* name) {
  root = find_module(name);
  if (!root) {
    std::fprintf(stderr, "the suite holds no module '%s'\n", name);
    return false;
  }
  return register_root(reinterpret_cast<lumo_register_function_t>(root->register_function));
}

// True if the options ask for something that ends the process at once.
bool only_tells(int argc, char* argv[]) {
  if (options.help) print_suite_help(argc > 0 ? argv[0] : "suite");
  if (!options.help && options.list) print_registry();
  std::fflush(stdout);
  return options.help || options.list;
}

// --- the server

struct Command {
  const char* word;
  const char* help;
  bool (*run)(const std::string& argument);
};

bool need_root() {
  if (root) return true;
  std::printf("error: no root module is chosen\n");
  return false;
}

bool run_chosen(const std::string& testcase) {
  if (!need_root()) return true;
  SuiteOptions chosen;
  if (!testcase.empty()) chosen.testcases.push_back(testcase);
  std::printf("done %d\n", run_registered(chosen, root->name));
  return true;
}

bool show_commands(const std::string&);

const Command commands[] = {
    {"help", "list the commands", show_commands},
    {"modules", "list the modules",
     [](const std::string&) {
       print_registry();
       return true;
     }},
    {"root", "NAME: choose the root module",
     [](const std::string& name) {
       std::printf(choose_root(name.c_str()) ? "ok\n" : "error: no such module\n");
       return true;
     }},
    {"testcases", "list the test cases of the root module and its imports",
     [](const std::string&) {
       if (need_root()) list_modules();
       return true;
     }},
    {"param", "NAME=VALUE: set a module parameter",
     [](const std::string& text) {
       std::printf(add_parameter(text) ? "ok\n" : "error: not NAME=VALUE\n");
       return true;
     }},
    {"control", "run the control part", [](const std::string&) { return run_chosen(""); }},
    {"run", "NAME: run a test case", run_chosen},
    {"quit", "end the server", [](const std::string&) { return false; }},
};

bool show_commands(const std::string&) {
  for (const Command& c : commands) std::printf("%s %s\n", c.word, c.help);
  return true;
}

bool obey(const std::string& line) {
  std::istringstream in(line);
  std::string word, argument;
  in >> word >> argument;
  if (word.empty()) return true;
  for (const Command& c : commands)
    if (word == c.word) return c.run(argument);
  std::printf("error: unknown command '%s'\n", word.c_str());
  return true;
}

}  // namespace

}  // namespace lumos

using namespace lumos;

lumo_boolean_t tciInit(int argc, char* argv[]) {
  options = SuiteOptions();
  options.is_supervised = true;
  root = nullptr;
  status = 0;
  if (!read_suite_options(argc, argv, options)) return false;
  if (only_tells(argc, argv)) std::exit(0);
  if (registry()) return true;
  std::fprintf(stderr, "the suite holds no registry of modules\n");
  return false;
}

void tciRootModule(const char* module_name) {
  if (!choose_root(module_name)) std::exit(2);
}

void tciStartControl() {
  status = root ? run_registered(options, root->name) : 2;
  if (tciControlTerminated) tciControlTerminated();
}

void tciFinalize() {
  close_log_files();
  std::fflush(stdout);
  if (status) std::exit(status);
}

int tciStartTestsuiteServer(int argc, char* argv[]) {
  options = SuiteOptions();
  if (!read_suite_options(argc, argv, options)) return 2;
  if (only_tells(argc, argv)) return 0;
  std::string line;
  bool go_on = true;
  while (go_on && std::getline(std::cin, line)) {
    go_on = obey(line);
    std::fflush(stdout);
  }
  close_log_files();
  return 0;
}
