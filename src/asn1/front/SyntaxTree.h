// The syntax files of a run in memory: one ModRec for each ASN.1 module, with its records by number.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "asn1/front/AsnOptions.h"
#include "asn1/front/Records.h"

namespace asn1 {

enum ModuleState { kNotRead = 0, kFailed = 1, kRead = 2, kPredefined = 3 };

struct ModRec;

/// What a back end or the model keeps with a module, a type and so on; made by who keeps it.
struct BEModMetaRec {
  virtual ~BEModMetaRec() = default;
};

/// A module that is imported, as the importing module's file names it.
struct ImportRec {
  std::string name;
  ModRec* module = nullptr;
};

struct ModRec {
  std::string name;  // with its hyphens
  std::string file_prefix;
  std::string generation_prefix;
  std::string source;  // path of the ASN.1 text
  ModuleState state = kNotRead;
  bool named_by_user = false;
  MNode header{};
  std::vector<TNode> types;  // record 1 is element 0; so for the others
  std::vector<VNode> values;
  std::vector<TagRec> tags;
  std::vector<SubRec> constraints;
  std::vector<TedRec> options_read;
  std::vector<SNode> steps;
  std::vector<std::string> strings8;
  std::vector<std::u16string> strings16;
  std::vector<std::u32string> strings32;
  std::vector<ImportRec> imports;  // import record k is element k - 2
  AsnOptions options;
  std::map<int, int> stamps;  // by type number
  std::unique_ptr<BEModMetaRec> meta;
  std::unique_ptr<BEModMetaRec> findings;  // of the model, made when it finds the first
};

/// The records of a module by number, and texts; a number that no record has is a fatal error. Text 0 is
/// empty.
const TNode& tNode(const ModRec& module, int number);
TNode& tNode(ModRec& module, int number);
const VNode& vNode(const ModRec& module, int number);
const SubRec& subRec(const ModRec& module, int number);
const TagRec& tagRec(const ModRec& module, int number);
const SNode& sNode(const ModRec& module, int number);
const std::string& getStri(const ModRec& module, int number);
const std::u16string& getStri16(const ModRec& module, int number);
const std::u32string& getStri32(const ModRec& module, int number);
inline int64_t Int64Of(const int32_t halves[2]) {
  return static_cast<int64_t>(static_cast<uint64_t>(static_cast<uint32_t>(halves[1])) << 32 |
                              static_cast<uint32_t>(halves[0]));
}

/// The module of a reference: 1 is the module itself, from 2 on an import record.
ModRec& getModPtr(ModRec& module, int entry);

/// All modules of the program's run, in the order in which they were named or met.
class SyntaxTrees {
 public:
  /// The module of a file prefix or, where none is given, of a name; made if there is none.
  ModRec& findOrCreateModRec(const std::string& file_prefix, const std::string& name);
  ModRec* find(const std::string& name);
  /// Reads the syntax file of each module that was not read, and of what those import; a failure is a fatal
  /// error.
  void readAllSyntaxTrees(const std::string& directory);
  /// Reads one module and, imports first, what it imports. Returns 0, or 1001 to 1003 with a text in
  /// `message`.
  int readSyntaxTree(ModRec& module, const std::string& directory, std::string& message);
  /// Whether the prefix of each file is printed when it is read.
  void set_tells(bool tells) { tells_ = tells; }
  const std::vector<std::unique_ptr<ModRec>>& all() const { return modules_; }
  void clear() { modules_.clear(); }

 private:
  std::vector<std::unique_ptr<ModRec>> modules_;
  bool tells_ = false;
};

/// A version in the form "%s%d.%02d%s", with the patch level behind the minor number where it is above 0.
std::string printVersionStri(const std::string& before, int version, int patch, const std::string& after);
}  // namespace asn1
