// The makefile that builds a test suite, and the C file with its `main` function.
//
// Combines the MCFG file, the conventions of the host and its tools, and the list of files that a
// compilation produced. All failures are thrown as std::string.
#pragma once

#include <string>
#include <vector>

#include "build/MGCompiler.h"
#include "build/MGConfig.h"
#include "build/MGHostType.h"
#include "build/MGMakefile.h"
#include "driver/options/T3Options.h"

class T3Makefile {
 public:
  /// What the makefile has to know of a module of the command line.
  struct Module {
    std::string _output_dir;
    /// The base name of the module's generated files.
    std::string _output_file;
    /// The path of the source file.
    std::string _source_name;
    compiler_action_t _action = action_compile;
    bool _is_asn1 = false;
  };

  T3Makefile(const std::string& output_dir, const std::string& project_dir, const std::string& root_module,
             const std::vector<Module>& modules, bool has_asn1);

  /// The base name of the root module's generated files; without this call it is the module's name.
  void set_root_file(const std::string& root_file) { _root_file = root_file; }
  /// The section of the MCFG file that holds.
  void set_tri(const std::string& tri) { _tri = tri; }
  void set_version(const std::string& version, const std::string& tool);
  /// Whether an existing makefile may be replaced; it is kept as a backup then.
  void set_overwrite(bool overwrite) { _overwrite = overwrite; }
  /// Chooses dialect and host, and enters the installation directory as a placeholder.
  void init(const std::string& orv_dir, const std::string& makefile_kind, const std::string& host_name);

  /// Reads the MCFG file and writes the makefile, and the main file where it is asked for.
  void generate();
  /// Writes the main file into the output directory. Returns its name, without the directory.
  std::string generate_main_function_file();
  /// Reads the MCFG file and tells which files generate() will write, or which the main file alone is. This
  /// object is not good for generate() then.
  std::vector<std::string> outputs(bool with_makefile);
  const std::string& output_dir() const { return _output_dir; }

 private:
  enum class TargetKind { Executable = 0, Library = 1 };

  /// The values of one group of sources with what is made from them.
  struct Group {
    unsigned int include_paths = 0;
    unsigned int library_paths = 0;
    unsigned int srcs = 0;
    unsigned int objs = 0;
    unsigned int srcs_objs = 0;
    unsigned int libs = 0;
    unsigned int cc_flags = 0;
  };
  using Words = std::vector<std::string>;

  // The MCFG file and the tools
  void read_config();
  void load_tools();
  std::string extension(const std::string& key, const std::string& host_extension) const;
  bool is_yes(const std::string& key) const;
  TargetKind get_target_kind() const;
  bool main_function_file_generation_enabled() const;

  // The values of the makefile
  void add_values();
  unsigned int add_item(const std::string& name, const std::string& key);
  unsigned int add_items(const std::string& name, const std::string& key);
  Words paths(const std::string& key) const;
  Words include_paths(const std::string& key) const;
  Words library_paths(const std::string& key) const;
  Words libraries(const std::string& key) const;
  Group add_group(const std::string& prefix);
  void add_tci_values();
  void add_generated_values();
  void add_defines();

  // The files that the compilation produced
  std::string short_name(const Module& module, const std::string& file) const;
  std::string full_name(const Module& module, const std::string& file) const;
  void add_file(Words& words, const Module& module, const std::string& file) const;
  void add_existing(Words& words, const Module& module, const std::string& base, const char* suffix) const;
  Words generated_srcs() const;
  Words generated_hdrs() const;
  Words generated_auxiliaries() const;
  Words generated_output_dirs_as_include_paths() const;
  std::string source_stem(const Module& module) const;
  std::string change_ext(const std::string& source, const std::string& ext) const;
  Words change_ext(const Words& sources, const std::string& ext) const;

  // The targets
  std::string target_name() const;
  std::string settle_target_name();
  void add_clean_commands();
  void add_clean_command(unsigned int target, unsigned int value);
  void add_dependencies();
  void add_link_line();
  void add_archive_line();
  void add_build_rules(const Group& group);
  std::string reference(unsigned int value) const { return _makefile.value_reference(value); }

  // The files that are written
  std::string makefile_name() const;
  void write_makefile();
  std::string backup_name(const std::string& path) const;
  void create_makefile(const std::string& path) const;
  void check_root_module();
  std::string tci_main() const;
  std::string plain_main() const;

  std::string _tri;
  bool _has_asn1;
  bool _overwrite = false;
  std::string _output_dir;
  std::string _project_dir;
  std::string _root_module;
  std::string _root_file;
  std::vector<Module> _modules;
  Compiler _compiler;
  Linker _linker;
  std::string _archiver;
  std::string _archiver_out_flag;
  std::string _archive_ext;
  HostType _host;
  Config _config;
  Makefile _makefile;

  bool _root_warning_given = false;
  /// The main file's name, or empty where none belongs to the makefile.
  std::string _main_file;
  unsigned int _cc = 0, _cflags = 0, _ld = 0, _ldflags = 0, _ar = 0, _arflags = 0;
  unsigned int _tci_libs = 0, _debugger_libs = 0;
  unsigned int _generated_hdrs = 0, _generated_auxiliaries = 0;
  Group _user, _rts, _asn1, _generated;
  unsigned int _all_target = 0, _clean_rts_target = 0, _target = 0, _clean_target = 0;
};
