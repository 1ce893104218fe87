// The ASN.1 path of the compiler: the external tools, their files, the reading of an ASN.1 module and what is
// generated for it.
#pragma once

#include <string>
#include <vector>

struct T3Tree_Node;

/// Runs the tools for all ASN.1 files at its first call, reads the syntax files of the source's modules, and
/// fills the modules of the tree. False after a report; a fault of a syntax file throws asn1::AsnExit.
bool mesk_T3Module_read(const std::string& source);
/// Writes what an ASN.1 module needs beside its declarations. False after a report.
bool mesk_T3Module_generate(T3Tree_Node* module);
/// A type for which codecs are generated, by its name with underscores.
void addMESKEntryType(const std::string& name);
/// A number that tells the entry types noted so far; 0 for none.
unsigned long EntryTypesDigest();
/// Writes the entry types; throws internal_exception where the file cannot be made.
void writeMESKOptionFile(const std::string& path);
/// Removes the option files of the run.
void mesk_RemoveOptionFiles();
/// The syntax files of an ASN.1 source in a directory: that of its first module, and of the others once the
/// tools have run.
std::vector<std::string> SyntaxFilesOf(const std::string& directory, const std::string& source);

// What the units of the path share.
namespace mesk {
/// The file of options for the tools' reading.
inline constexpr const char* kCompilationOptions = "VEXA-ASN-1-compilation-options.txt";

/// Runs one of the tools along PATH; its output follows ours when it has ended. False for a status other than
/// 0.
bool Binary_invoke(const std::vector<std::string>& arguments);
/// What the tools exchange has fixed names in the working folder: until this process ends, others of this program that
/// run ASN.1 tools there wait, and say so after a second.
void HoldWorkingFolder();
/// Runs a command line by the shell with the tools in reach; its exit status.
int ShellInvoke(const std::string& command);
/// A word as the shell takes it for one.
std::string ShellQuoted(const std::string& word);
/// "-VERBOSE=" and the level for the tools.
std::string mesk_vexa_verbosity();
/// The base name of a source without its last four characters, which are its ending, as the tools cut it.
std::string vexa_asn_1_filename_prefix(const std::string& source);
std::string vexa_rehyphenize(std::string name);
/// The option that names the file of the generation's options: "+" and a path.
std::string& GenerationOptionReference();
/// Shell words "-A=" with the directory of each ASN.1 file.
std::vector<std::string> SourceDirectoryOptions();
/// All sources of ASN.1 on the command line.
std::vector<std::string> AsnSources();
/// A file that CloseT3Representation removes.
void RemoveAtEnd(const std::string& path);
/// Words for the start of a back end on the modules of some prefixes.
std::vector<std::string> BackendWords(const std::string& option_file, const std::string& directory,
                                      const std::vector<std::string>& prefixes);
}  // namespace mesk
