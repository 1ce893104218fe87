#include "build/T3Makefile.h"

#include "build/T3GenMakefile.h"

#include <filesystem>
#include <fstream>
#include <set>

#include "driver/options/T3CommandLine.h"
#include "driver/diagnostics/T3Error.h"

namespace {

/// What the ASN.1 tools and the glue generator may leave beside a module's own files.
constexpr const char* kAsn1Sources[] = {"cod.c", "bicod.c", "pec.c", "pdc.c", "per.c", "tst.c", "t3asn.c"};
constexpr const char* kAsn1Headers[] = {"cod.ext", "bicod.ext", "pec.ext", "pdc.ext",
                                        "per.ext", "tst.ext",   "t3asn.h"};
constexpr const char* kAsn1ModuleFiles[] = {".def",   ".stx",   ".tab",   ".typ",
                                            "bi.def", "bi.stx", "bi.tab", "bi.typ"};
constexpr const char* kAsn1SourceFiles[] = {".lst", ".stx", ".stx.t3a", "bi.lst"};

/// The items joined with one blank between them.
std::string Joined(const std::vector<std::string>& items) {
  std::string line;
  for (const std::string& item : items) line += (line.empty() ? "" : " ") + item;
  return line;
}

}  // namespace

std::vector<std::string> Asn1OutputSuffixes() {
  std::vector<std::string> suffixes(std::begin(kAsn1Sources), std::end(kAsn1Sources));
  suffixes.insert(suffixes.end(), std::begin(kAsn1Headers), std::end(kAsn1Headers));
  return suffixes;
}

T3Makefile::T3Makefile(const std::string& output_dir, const std::string& project_dir,
                       const std::string& root_module, const std::vector<Module>& modules, bool has_asn1)
    : _has_asn1(has_asn1),
      _output_dir(output_dir),
      _project_dir(project_dir),
      _root_module(root_module),
      _root_file(root_module),
      _modules(modules) {}

void T3Makefile::set_version(const std::string& version, const std::string& tool) {
  _makefile.set_version(version, tool, "");
}

void T3Makefile::init(const std::string& orv_dir, const std::string& makefile_kind,
                      const std::string& host_name) {
  _makefile.init(makefile_kind);
  _host.init(host_name);
  _config.add_default_value("<ORV_DIR>", orv_dir);
}

void T3Makefile::generate() {
  read_config();
  load_tools();
  add_values();
  add_defines();
  for (const std::string& file : _config.items("INCLUDE"))
    _makefile.add_include(file.find(' ') == std::string::npos ? file : _host.fix_path(file));
  const std::string target = settle_target_name();
  _all_target = _makefile.add_target("all");
  _clean_rts_target = _makefile.add_target("clean_rts");
  _target = _makefile.add_target(target);
  _clean_target = _makefile.add_target("clean");
  add_clean_commands();
  add_dependencies();
  get_target_kind() == TargetKind::Library ? add_archive_line() : add_link_line();
  add_build_rules(_user);
  add_build_rules(_rts);
  if (_has_asn1) add_build_rules(_asn1);
  add_build_rules(_generated);
  write_makefile();
}

void T3Makefile::read_config() {
  std::string path = gT3CommandLine.mcfg_file;
  if (path.empty()) path = _project_dir + _host.slash() + _host.config_name();
  std::ifstream in(path, std::ios::binary);
  std::error_code ignored;
  if (!in || std::filesystem::is_directory(path, ignored)) throw "could not open '" + path + "'";
  _config.read_config_file(in, _tri);
}

void T3Makefile::load_tools() {
  _compiler.set(_config.item("CC"));
  _compiler.set_out_flag(_config.item("CC_OUT_FLAG"));
  _compiler.set_include_flag(_config.item("CC_INCLUDE_PATH_FLAG"));
  _compiler.set_compile_flag(_config.item("CC_COMPILE_FLAG"));
  _compiler.set_define_flag(_config.item("CC_DEFINE_FLAG"));
  _compiler.set_obj_ext(extension("CC_OBJ_EXT", _host.obj_ext()));
  _linker.set(_config.item("LD"));
  _linker.set_out_flag(_config.item("LD_OUT_FLAG"));
  _linker.set_library_path_flag(_config.item("LD_LIBRARY_PATH_FLAG"));
  _linker.set_library_flag(_config.item("LD_LIBRARY_FLAG"));
  _linker.set_repeated_import(_config.item("LD_REP_IMPORT_PREFIX"), _config.item("LD_REP_IMPORT_SUFFIX"));
  _linker.set_exe_ext(extension("LD_EXE_EXT", _host.exe_ext()));
  _archiver = _config.item("AR");
  _archiver_out_flag = _config.item("AR_OUT_FLAG");
  _archive_ext = extension("AR_EXT", _host.lib_ext());
}

/// The extension that `key` names, with its point; a key that is there and empty means none.
std::string T3Makefile::extension(const std::string& key, const std::string& host_extension) const {
  if (!_config.item_defined(key)) return host_extension;
  const std::string word = _config.item(key);
  return word.empty() ? "" : "." + word;
}

bool T3Makefile::is_yes(const std::string& key) const {
  const std::string word = _config.item(key);
  return word == "yes" || word == "YES";
}

T3Makefile::TargetKind T3Makefile::get_target_kind() const {
  return is_yes("BUILD_LIBRARY") ? TargetKind::Library : TargetKind::Executable;
}

bool T3Makefile::main_function_file_generation_enabled() const {
  if (get_target_kind() == TargetKind::Library) return false;
  return gT3CommandLine.force_main || is_yes("MAINFILE");
}

void T3Makefile::add_values() {
  _cc = add_item("CC", "CC");
  _cflags = add_items("CFLAGS", "CC_FLAGS");
  _ld = add_item("LD", "LD");
  _ldflags = add_items("LDFLAGS", "LD_FLAGS");
  _ar = add_item("AR", "AR");
  _arflags = add_items("ARFLAGS", "AR_FLAGS");
  _user = add_group("USER");
  _rts = add_group("RTS");
  if (gT3CommandLine.tci) add_tci_values();
  if (_has_asn1) _asn1 = add_group("ASN1");
  add_generated_values();
}

unsigned int T3Makefile::add_item(const std::string& name, const std::string& key) {
  return _makefile.add_value(name, _config.item(key));
}

unsigned int T3Makefile::add_items(const std::string& name, const std::string& key) {
  return _makefile.add_value(name, _config.items(key));
}

/// The words of a list of paths. An entry without text names no path, and a flag glued to it would take
/// the next word of the command as its argument.
T3Makefile::Words T3Makefile::paths(const std::string& key) const {
  Words words = _config.items(key);
  std::erase(words, "");
  return _host.fix_path(words);
}

T3Makefile::Words T3Makefile::include_paths(const std::string& key) const {
  Words words = paths(key);
  for (std::string& word : words) word = _compiler.include_path(word);
  return words;
}

T3Makefile::Words T3Makefile::library_paths(const std::string& key) const {
  Words words = paths(key);
  for (std::string& word : words) word = _linker.library_path(word);
  return words;
}

T3Makefile::Words T3Makefile::libraries(const std::string& key) const {
  Words words = paths(key);
  for (std::string& word : words) word = _linker.library(_host.fix_lib(word));
  return words;
}

T3Makefile::Group T3Makefile::add_group(const std::string& prefix) {
  Group group;
  group.include_paths =
      _makefile.add_value(prefix + "_INCLUDE_PATHS", include_paths(prefix + "_INCLUDE_DIRS"));
  group.library_paths =
      _makefile.add_value(prefix + "_LIBRARY_PATHS", library_paths(prefix + "_LIBRARY_DIRS"));
  group.srcs = _makefile.add_value(prefix + "_SRCS", paths(prefix + "_SRCS"));
  group.objs = _makefile.add_value(prefix + "_OBJS", paths(prefix + "_OBJS"));
  group.srcs_objs = _makefile.add_value(prefix + "_SRCS_OBJS",
                                        change_ext(_makefile.values(group.srcs), _compiler.obj_ext()));
  group.libs = _makefile.add_value(prefix + "_LIBS", libraries(prefix + "_LIBS"));
  group.cc_flags = add_items(prefix + "_CC_FLAGS", prefix + "_CC_FLAGS");
  return group;
}

/// The registry of modules is generated beside them, and goes first.
void T3Makefile::add_tci_values() {
  _makefile.add_value("GENERATED_SRCS", "ts_modules.c");
  _makefile.add_value("GENERATED_HDRS", "ts_modules.h");
  const std::string name = gT3CommandLine.test_management ? "TCI_REMOTE_LIBS" : "TCI_LIBS";
  _tci_libs = _makefile.add_value(name, libraries(name));
}

void T3Makefile::add_generated_values() {
  _generated.srcs = _makefile.add_value("GENERATED_SRCS", generated_srcs());
  if (main_function_file_generation_enabled()) {
    _main_file = generate_main_function_file();
    _makefile.add_value(_generated.srcs, _main_file);
  }
  _generated_hdrs = _makefile.add_value("GENERATED_HDRS", generated_hdrs());
  _generated.srcs_objs = _makefile.add_value(
      "GENERATED_OBJS", change_ext(_makefile.values(_generated.srcs), _compiler.obj_ext()));
  _generated.cc_flags = add_items("GENERATED_CC_FLAGS", "GENERATED_CC_FLAGS");
  _generated.include_paths =
      _makefile.add_value("GENERATED_INCLUDE_PATHS", include_paths("GENERATED_INCLUDE_DIRS"));
  _makefile.add_value("GENERATED_INCLUDE_PATHS", generated_output_dirs_as_include_paths());
  _generated_auxiliaries = _makefile.add_value("GENERATED_AUXILIARIES", generated_auxiliaries());
}

void T3Makefile::add_defines() {
  if (is_yes("MSC_LOGGING")) _makefile.add_value(_rts.cc_flags, _compiler.define("LUMO_MSC96_EVENT_LOG"));
  if (is_yes("XML_LOGGING")) _makefile.add_value(_rts.cc_flags, _compiler.define("LUMO_XML_EVENT_LOG"));
  if (!gT3CommandLine.debug) return;
  _makefile.add_value(_rts.cc_flags, _compiler.define("LUMO_DEBUG"));
  _debugger_libs = _makefile.add_value("DEBUGGER_LIBS", libraries("DEBUGGER_LIBS"));
}

/// The name by which the makefile knows a file of a module: make runs in the makefile's directory.
std::string T3Makefile::short_name(const Module& module, const std::string& file) const {
  return module._output_dir == _output_dir ? file : full_name(module, file);
}

std::string T3Makefile::full_name(const Module& module, const std::string& file) const {
  return module._output_dir + _host.slash() + file;
}

void T3Makefile::add_file(Words& words, const Module& module, const std::string& file) const {
  words.push_back(_host.fix_path(short_name(module, file)));
}

void T3Makefile::add_existing(Words& words, const Module& module, const std::string& base,
                              const char* suffix) const {
  std::error_code ignored;
  if (std::filesystem::exists(full_name(module, base + suffix), ignored))
    add_file(words, module, base + suffix);
}

T3Makefile::Words T3Makefile::generated_srcs() const {
  Words words;
  for (const Module& module : _modules) {
    if (!WillGenerateCode(module._action)) continue;
    add_file(words, module, module._output_file + ".c");
    if (!module._is_asn1) continue;
    for (const char* suffix : kAsn1Sources) add_existing(words, module, module._output_file, suffix);
  }
  return words;
}

T3Makefile::Words T3Makefile::generated_hdrs() const {
  Words words;
  for (const Module& module : _modules) {
    if (!WillGenerateCode(module._action)) continue;
    add_file(words, module, module._output_file + ".h");
    if (!module._is_asn1) continue;
    for (const char* suffix : kAsn1Headers) add_existing(words, module, module._output_file, suffix);
  }
  return words;
}

T3Makefile::Words T3Makefile::generated_auxiliaries() const {
  Words words;
  for (const Module& module : _modules) {
    add_file(words, module, module._output_file + ".t3a");
    if (!module._is_asn1) continue;
    for (const char* suffix : kAsn1ModuleFiles) add_existing(words, module, module._output_file, suffix);
    const std::string stem = source_stem(module);
    if (stem.empty()) continue;
    for (const char* suffix : kAsn1SourceFiles) add_existing(words, module, stem, suffix);
  }
  return words;
}

T3Makefile::Words T3Makefile::generated_output_dirs_as_include_paths() const {
  std::set<std::string> directories;
  for (const Module& module : _modules) directories.insert(_host.fix_path(module._output_dir));
  Words words;
  for (const std::string& directory : directories) words.push_back(_compiler.include_path(directory));
  return words;
}

/// The source file's name without directory and extension; empty for a name without an extension, beside
/// which the tools leave nothing.
std::string T3Makefile::source_stem(const Module& module) const {
  const size_t slash = module._source_name.rfind(_host.slash());
  const std::string name =
      slash == std::string::npos ? module._source_name : module._source_name.substr(slash + 1);
  const size_t dot = name.rfind('.');
  return dot == std::string::npos ? "" : name.substr(0, dot);
}

/// The object of a source, which has no directory: objects land where make runs.
std::string T3Makefile::change_ext(const std::string& source, const std::string& ext) const {
  std::string name = source;
  const std::string quote = _host.quoute();
  const bool quoted = !quote.empty() && name.size() > 1 && name.starts_with(quote) && name.ends_with(quote);
  if (quoted) name = name.substr(1, name.size() - 2);
  const size_t slash = name.rfind(_host.slash());
  if (slash != std::string::npos) name = name.substr(slash + 1);
  if (name.ends_with(".c")) name.resize(name.size() - 2);
  name += ext;
  return quoted ? _host.fix_path(name) : name;
}

T3Makefile::Words T3Makefile::change_ext(const Words& sources, const std::string& ext) const {
  Words objects;
  for (const std::string& source : sources) objects.push_back(change_ext(source, ext));
  return objects;
}

std::string T3Makefile::target_name() const {
  const std::string name = _config.item("ETS_NAME");
  if (!name.empty()) return name;
  return get_target_kind() == TargetKind::Library ? _root_file + _archive_ext : _linker.exe_ext(_root_file);
}

std::string T3Makefile::settle_target_name() {
  if (_config.item("ETS_NAME").empty()) check_root_module();
  std::string name = target_name();
  for (const char* own : {"all", "clean_rts", "clean"}) {
    if (name == own) throw "the target of the makefile cannot be named \"" + name + "\"";
  }
  return name;
}

void T3Makefile::add_clean_command(unsigned int target, unsigned int value) {
  if (_makefile.has_values(value)) _makefile.add_build_line(target, _host.rm_cmd(reference(value)));
}

void T3Makefile::add_clean_commands() {
  add_clean_command(_clean_rts_target, _rts.srcs_objs);
  if (!_main_file.empty()) _makefile.add_build_line(_clean_target, _host.rm_cmd(_main_file));
  _makefile.add_build_line(_clean_target, _host.rm_cmd(_makefile.target_name(_target)));
  add_clean_command(_clean_target, _user.srcs_objs);
  add_clean_command(_clean_target, _rts.srcs_objs);
  if (_has_asn1) add_clean_command(_clean_target, _asn1.srcs_objs);
  add_clean_command(_clean_target, _generated.srcs);
  add_clean_command(_clean_target, _generated_hdrs);
  add_clean_command(_clean_target, _generated.srcs_objs);
  add_clean_command(_clean_target, _generated_auxiliaries);
}

void T3Makefile::add_dependencies() {
  _makefile.add_dependency(_all_target, _makefile.target_name(_clean_rts_target));
  _makefile.add_dependency(_all_target, _makefile.target_name(_target));
  std::vector<unsigned int> objects = {_user.objs, _user.srcs_objs};
  if (get_target_kind() == TargetKind::Executable) {
    objects.insert(objects.end(), {_rts.objs, _rts.srcs_objs});
    if (_has_asn1) objects.insert(objects.end(), {_asn1.objs, _asn1.srcs_objs});
  }
  objects.push_back(_generated.srcs_objs);
  for (unsigned int value : objects) _makefile.add_dependency(_target, reference(value));
}

void T3Makefile::add_archive_line() {
  const std::string& target = _makefile.target_name(_target);
  // an empty last item leaves one blank behind the last word
  _makefile.add_build_line(_target, Joined({reference(_ar), reference(_arflags), _archiver_out_flag + target,
                                            reference(_user.objs), reference(_user.srcs_objs),
                                            reference(_generated.srcs_objs), ""}));
}

void T3Makefile::add_link_line() {
  Words items = {reference(_ld), _linker.out(_makefile.target_name(_target)), reference(_ldflags),
                 reference(_user.library_paths)};
  const auto add = [&](std::initializer_list<unsigned int> values) {
    for (unsigned int value : values) items.push_back(reference(value));
  };
  if (_has_asn1) add({_asn1.library_paths});
  add({_rts.library_paths, _rts.objs, _rts.srcs_objs});
  if (_has_asn1) add({_asn1.objs, _asn1.srcs_objs});
  add({_user.objs, _user.srcs_objs, _generated.srcs_objs});
  if (gT3CommandLine.tci) add({_tci_libs});
  if (gT3CommandLine.debug) add({_debugger_libs});
  if (_has_asn1) add({_asn1.libs});
  add({_rts.libs, _user.libs});
  items.emplace_back();
  _makefile.add_build_line(_target, Joined(items));
}

void T3Makefile::add_build_rules(const Group& group) {
  const Words sources = _makefile.values(group.srcs);
  const Words objects = _makefile.values(group.srcs_objs);
  const std::string head =
      Joined({reference(_cc), reference(_cflags), reference(group.cc_flags), reference(group.include_paths)});
  for (size_t i = 0; i < objects.size(); ++i) {
    const unsigned int object = _makefile.add_target(objects[i]);
    _makefile.add_dependency(object, sources[i]);
    _makefile.add_build_line(object,
                             Joined({head, _compiler.compile(sources[i]), _compiler.out(objects[i])}));
  }
}
