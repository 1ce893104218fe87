// The stage that turns import statements into one declaration for each imported entity.
#include "analysis/names/T3Imports.h"

#include <algorithm>
#include <unordered_map>
#include <unordered_set>

#include "analysis/names/T3DeclMap.h"
#include "analysis/names/T3Names.h"
#include "analysis/walk/T3Stages.h"
#include "driver/options/T3CommandLine.h"
#include "driver/diagnostics/T3Error.h"
#include "driver/modules/T3Global.h"
#include "frontend/T3GlobalASTNodes.h"
#include "frontend/T3Lists.h"
#include "support/ModuleCaches.h"

T3Tree_Node* ASN_1_NULL_DECLARATION = nullptr;

namespace {
// A declaration that an import statement brings. One that several bring has the last `with` list, and comes
// from the module of the last statement that names it, or else of the first that brought it along.
struct Taken {
  T3Tree_Node* decl;
  /// Null for a statement that brings what it names along with others.
  T3Tree_Node* with_spec;
  tIdent from;
  bool along;
};

bool IsAsn1(T3Module* module) {
  return T3Is<T3ASN_1>(module->representation);
}

// What an import statement bars, gathered once for all declarations of a module. A name bars the declaration
// that has it, of whatever kind; the name of a group bars what stands in the group, too.
class Exceptions {
 public:
  explicit Exceptions(T3Tree_Node* list) {
    for (auto* exception : Items<_T3ImportException>(list)) {
      auto* single = exception->try_as<T3ImportException>();
      if (single == nullptr) {
        kinds_.push_back(exception->kind);
        continue;
      }
      if (exception->kind == t3_import_restr_t::Group) groups_.push_back(single->object);
      if (const tIdent name = Ref2Id(single->object); name != NoIdent) names_.insert(name);
    }
  }
  bool Bar(T3Tree_Node* decl) const {
    if (names_.count(decl->as<_T3Decl>()->name) != 0) return true;
    return std::any_of(kinds_.begin(), kinds_.end(),
                       [decl](t3_import_restr_t kind) { return ImportThatKind(decl, kind); });
  }
  // Groups barred as a whole: their declarations are not even looked at.
  T3NodeSet GroupsIn(T3Tree_Node* module) const {
    T3NodeSet barred;
    for (T3Tree_Node* path : groups_) {
      T3Tree_Node* group = FindGroupInModule(module, path);
      if (group->is<T3GroupDecl>()) barred.insert(group);
    }
    return barred;
  }
  bool BarsAllGroups() const {
    return std::find(kinds_.begin(), kinds_.end(), t3_import_restr_t::Group) != kinds_.end();
  }

 private:
  std::vector<t3_import_restr_t> kinds_;
  std::vector<T3Tree_Node*> groups_;
  std::unordered_set<tIdent> names_;
};

// Resolves the import statements of one module.
class ImportStage {
 public:
  explicit ImportStage(T3Module* module) : module_(module) {}
  void CollectImports();
  void RemoveImports();
  void AddImportDecls();

 private:
  void AddImport(_T3ImportDecl* statement);
  void AddImportAll(T3Module* from, T3ImportAllDecl* statement);
  void AddGroup(T3Module* from, _T3ImportDecl* statement);
  void Take(T3Tree_Node* decl, T3Tree_Node* with_spec, bool recursive);
  void ProcessRecursiveImport(T3Tree_Node* decl, T3Tree_Node* with_spec);
  void CheckLanguage(T3Module* from, _T3ImportDecl* statement) const;
  void SortTaken();

  T3Module* module_;
  std::vector<Taken> taken_;
  std::unordered_set<T3Tree_Node*> seen_;
  tIdent null_from_ = NoIdent;
  tIdent current_from_ = NoIdent;
  bool imports_asn1_ = false;
  bool has_imports_ = false;
};

void Note(T3Tree_Node* decl, T3Tree_Node* with_spec) {
  if (!with_spec->is<T3With>()) return;
  T3NodeList*& list = decl->as<_T3Decl>()->cold().attributes_from_importing;
  if (list == nullptr) list = new T3NodeList;
  list->push_back(with_spec);
}

struct DeclAtDepth {
  T3Tree_Node* decl;
  int depth;
};

// Calls for each declaration of a list and of the groups in it; `enter` tells whether a group is entered.
template <class Enter, class Call>
void ForDeclsAndGroups(T3Tree_Node* list, const Enter& enter, const Call& call) {
  std::vector<DeclAtDepth> rest{{list, 0}};
  while (!rest.empty()) {
    const DeclAtDepth place = rest.back();
    rest.pop_back();
    if (!T3Is<_T3Decl>(place.decl)) continue;
    rest.push_back({place.decl->as<_T3Decl>()->next, place.depth});
    if (!place.decl->is<T3GroupDecl>())
      call(place.decl, place.depth);
    else if (enter(place.decl))
      rest.push_back({place.decl->as<T3GroupDecl>()->body, place.depth + 1});
  }
}

void ImportStage::CollectImports() {
  for (auto* decl : DeclsInGroups(module_->definition_part)) {
    auto* statement = decl->try_as<_T3ImportDecl>();
    if (statement == nullptr) continue;
    has_imports_ = true;
    AddImport(statement);
  }
}

// Unlinks the statements in one chain; groups are put on the list of chains still to do.
void Unlink(T3Tree_Node*& head, std::vector<T3Tree_Node**>& chains) {
  T3Tree_Node** link = &head;
  while ((*link)->is<_T3Decl>()) {
    auto* decl = (*link)->as<_T3Decl>();
    if (decl->is<_T3ImportDecl>() && !decl->is<T3ImportAllDecl>()) {
      *link = decl->next;
      continue;
    }
    if (auto* group = decl->try_as<T3GroupDecl>()) chains.push_back(&group->body);
    link = &decl->next;
  }
}

void ImportStage::RemoveImports() {
  if (!has_imports_) return;
  std::vector<T3Tree_Node**> chains{&module_->definition_part};
  while (!chains.empty()) {
    T3Tree_Node** head = chains.back();
    chains.pop_back();
    Unlink(*head, chains);
  }
}

T3Tree_Node* CreateEmptyImportDecl(T3Tree_Node* decl) {
  switch (decl->kind) {
    case T3Kind::T3TypeDecl:
      return gT3AST.MakeT3Tree(T3Is<T3SignatureType>(decl->as<T3TypeDecl>()->type)
                                   ? T3Kind::T3ImportSignatureDecl
                                   : T3Kind::T3ImportTypeDecl);
    case T3Kind::T3TemplateDecl:
      return gT3AST.MakeT3Tree(T3Kind::T3ImportTemplateDecl);
    case T3Kind::T3ConstDecl:
    case T3Kind::T3ExtConstDecl:
      return gT3AST.MakeT3Tree(T3Kind::T3ImportConstDecl);
    case T3Kind::T3ModuleParDecl:
      return gT3AST.MakeT3Tree(T3Kind::T3ImportModuleParDecl);
    case T3Kind::T3TestStep:
      return gT3AST.MakeT3Tree(T3Kind::T3ImportTeststepDecl);
    case T3Kind::T3Testcase:
      return gT3AST.MakeT3Tree(T3Kind::T3ImportTestcaseDecl);
    case T3Kind::T3Function:
    case T3Kind::T3ExtFunction:
      return gT3AST.MakeT3Tree(T3Kind::T3ImportFunctionDecl);
    default:
      internal_error_ast("T3Imports", __LINE__, "CreateEmptyImportDecl", decl);
  }
}

tIdent ModuleNameOf(const Taken& taken) {
  return taken.decl->place != nullptr ? taken.decl->place->vexa_module_name : taken.from;
}

T3Tree_Node* CreateImportDecl(const Taken& taken, T3Tree_Node* next) {
  auto* decl = taken.decl->as<_T3Decl>();
  auto* import = CreateEmptyImportDecl(decl)->as<_T3ImportDecl>();
  import->position = decl->position;
  import->next = next;
  import->with_spec = taken.with_spec;
  import->from_module = gT3AST.mT3ImportIdentifier(import->position, ModuleNameOf(taken));
  import->object = gT3AST.mT3ImportIdentifier(import->position, decl->name);
  import->attr().def_aux = decl;
  return import;
}

// Each declaration once, in the order of the numbers.
void ImportStage::SortTaken() {
  std::stable_sort(taken_.begin(), taken_.end(),
                   [](const Taken& a, const Taken& b) { return a.decl->number < b.decl->number; });
  size_t kept = 0;
  for (size_t i = 0; i < taken_.size(); ++i) {
    if (kept == 0 || taken_[kept - 1].decl != taken_[i].decl) {
      taken_[kept++] = taken_[i];
      continue;
    }
    Taken& first = taken_[kept - 1];
    if (taken_[i].with_spec != nullptr) first.with_spec = taken_[i].with_spec;
    if (!taken_[i].along) first.from = taken_[i].from;
  }
  taken_.resize(kept);
}

// Where the own declarations of a module begin, behind those that were made for its imports and the statements that
// import all; by the number of the module.
std::unordered_map<uint32_t, T3Tree_Node*> g_own_decls;
const ModuleCache own_decls([] { g_own_decls.clear(); }, ModuleCache::Holds::ForRun);

T3Tree_Node* OwnDeclsOf(T3Module* module) {
  const auto found = g_own_decls.find(module->number);
  return found == g_own_decls.end() ? module->definition_part : found->second;
}

void ImportStage::AddImportDecls() {
  SortTaken();
  T3Tree_Node* own = module_->definition_part;
  while (own->is<T3ImportAllDecl>()) own = own->as<T3ImportAllDecl>()->next;
  g_own_decls[module_->number] = own;
  const auto is_null = [](const Taken& taken) { return taken.decl == ASN_1_NULL_DECLARATION; };
  const bool with_null = imports_asn1_ && T3Is<T3TTCN_3>(module_->representation) &&
                         T3Is<T3TypeDecl>(ASN_1_NULL_DECLARATION) &&
                         std::none_of(taken_.begin(), taken_.end(), is_null);
  for (const Taken& taken : taken_)
    if (ModuleNameOf(taken) != module_->name)
      module_->definition_part = CreateImportDecl(taken, module_->definition_part);
  if (with_null)
    module_->definition_part = CreateImportDecl({ASN_1_NULL_DECLARATION, _sgT3NoWith(), null_from_, false},
                                                module_->definition_part);
}

// A clause names its language in double quotes. The plain name of ASN.1 makes no claim.
void ImportStage::CheckLanguage(T3Module* from, _T3ImportDecl* statement) const {
  std::string_view text = StringM::StGetString(statement->language);
  if (text.size() >= 2) text = text.substr(1, text.size() - 2);
  const auto is_one_of = [text](std::initializer_list<std::string_view> names) {
    return std::find(names.begin(), names.end(), text) != names.end();
  };
  const verbosity_level_t verbosity = GetVerbosity(module_);
  if (is_one_of({"ASN.1:1988", "ASN.1:1994", "ASN.1:1997", "ASN.1:2002"}) && !IsAsn1(from))
    vexa_warning(verbosity, "imported module is not ASN.1 though specified in the language clause",
                 statement->position);
  if (is_one_of({"TTCN-3:2001", "TTCN-3:2003", "TTCN-3:2005", "TTCN-3"}) &&
      !T3Is<T3TTCN_3>(from->representation))
    vexa_warning(verbosity, "imported module is not TTCN-3 though specified in the language clause",
                 statement->position);
}

bool KindMatches(_T3ImportDecl* statement, T3Tree_Node* found) {
  switch (statement->kind) {
    case T3Kind::T3ImportGroupDecl:
      return true;
    case T3Kind::T3ImportTypeDecl:
      return ImportThatKind(found, t3_import_restr_t::Type);
    case T3Kind::T3ImportTemplateDecl:
      return ImportThatKind(found, t3_import_restr_t::Template);
    case T3Kind::T3ImportConstDecl:
      return ImportThatKind(found, t3_import_restr_t::Const);
    case T3Kind::T3ImportModuleParDecl:
      return ImportThatKind(found, t3_import_restr_t::ModulePar);
    case T3Kind::T3ImportTestcaseDecl:
      return ImportThatKind(found, t3_import_restr_t::Testcase);
    case T3Kind::T3ImportTeststepDecl:
      return ImportThatKind(found, t3_import_restr_t::Teststep);
    case T3Kind::T3ImportFunctionDecl:
      return ImportThatKind(found, t3_import_restr_t::Function);
    case T3Kind::T3ImportSignatureDecl:
      return ImportThatKind(found, t3_import_restr_t::Signature);
    default:
      internal_error_ast("T3Imports", __LINE__, "FailIfError", statement);
  }
}

// True when the statement may bring what was found.
bool FailIfError(_T3ImportDecl* statement, T3Tree_Node* found) {
  const std::string object = ImportRef2String(statement->object);
  const tIdent module = ImportedModule(statement);
  if (found->is<T3NoDecl>()) {
    vexa_filtered_error(ERR_import_not_found, statement->position, object, module);
    return false;
  }
  if (KindMatches(statement, found)) return true;
  if (IsImportDecl(found))
    vexa_filtered_error(ERR_reimport, statement->position, DeclKind(found), object, module);
  else
    vexa_filtered_error(ERR_import_kind, statement->position, DeclKind(found), object, module,
                        DeclKind(statement));
  return false;
}

void ImportStage::AddImport(_T3ImportDecl* statement) {
  const auto module = gT3ModuleMap.find(ImportedModule(statement));
  if (module == gT3ModuleMap.end()) return;
  auto* from = module->second->as<T3Module>();
  current_from_ = from->name;
  if (IsAsn1(from)) {
    imports_asn1_ = true;
    ASN_1_NULL_DECLARATION = FindDeclInModule(from, gIdents.MakeIdent("NULL"));
    if (T3Is<T3TypeDecl>(ASN_1_NULL_DECLARATION)) null_from_ = from->name;
  }
  CheckLanguage(from, statement);
  if (statement->is<T3ImportAllDecl>()) return AddImportAll(from, statement->as<T3ImportAllDecl>());
  if (statement->is<T3ImportGroupDecl>()) return AddGroup(from, statement);
  T3Tree_Node* found = FindDeclInModule(from, DeclaredName(statement));
  if (FailIfError(statement, found)) Take(found, statement->with_spec, statement->recursive);
}

void ImportStage::Take(T3Tree_Node* decl, T3Tree_Node* with_spec, bool recursive) {
  if (recursive) {
    taken_.push_back({decl, nullptr, current_from_, false});
    return ProcessRecursiveImport(decl, with_spec);
  }
  Note(decl, with_spec);
  taken_.push_back({decl, with_spec, current_from_, false});
}

// The declarations that back the fields of `anytype`.
void InsertAnyTypeMembersInDependentDecls(const T3NodeList& members, std::vector<T3Tree_Node*>& list) {
  for (T3Tree_Node* member : members) {
    auto* import = member->try_as<_T3ImportDecl>();
    T3Tree_Node* decl = import != nullptr ? import->attr().def_aux : member;
    if (T3Is<_T3Decl>(decl)) list.push_back(decl);
  }
}

void ImportStage::ProcessRecursiveImport(T3Tree_Node* decl, T3Tree_Node* with_spec) {
  std::vector<T3Tree_Node*> work{decl};
  while (!work.empty()) {
    T3Tree_Node* next = work.back();
    work.pop_back();
    if (auto* module = next->try_as<T3Module>()) {
      InsertAnyTypeMembersInDependentDecls(*module->attr().types, work);
      continue;
    }
    if (!seen_.insert(next).second) continue;
    Note(next, with_spec);
    taken_.push_back({next, with_spec, current_from_, true});
    if (next->attributes == nullptr) continue;
    if (const T3NodeList* needed = next->as<_T3Decl>()->attr().dep_decls)
      work.insert(work.end(), needed->begin(), needed->end());
  }
}

// With the kind of groups an import takes what stands in a group, at any depth. What a module imports it does
// not hand on, and it may be much: only its own declarations are looked at.
void ImportStage::AddImportAll(T3Module* from, T3ImportAllDecl* statement) {
  const Exceptions exceptions(statement->exceptions);
  const T3NodeSet barred = exceptions.GroupsIn(from);
  const bool groups = statement->import_restr == t3_import_restr_t::Group;
  ForDeclsAndGroups(
      OwnDeclsOf(from),
      [&](T3Tree_Node* group) { return barred.count(group) == 0 && !exceptions.BarsAllGroups(); },
      [&](T3Tree_Node* decl, int depth) {
        if (decl->is<T3ControlPart>() || ImplicitTypeDecl(decl)) return;
        const bool wanted =
            groups ? depth > 0 && !IsImportDecl(decl) : ImportThatKind(decl, statement->import_restr);
        if (wanted && !exceptions.Bar(decl)) Take(decl, statement->with_spec, statement->recursive);
      });
}

void ImportStage::AddGroup(T3Module* from, _T3ImportDecl* statement) {
  T3Tree_Node* group = FindGroupInModule(from, statement->object);
  if (!FailIfError(statement, group)) return;
  for (auto* decl : DeclsInGroups(group->as<T3GroupDecl>()->body))
    if (!IsImportDecl(decl) && !decl->is<T3GroupDecl>())
      Take(decl, statement->with_spec, statement->recursive);
}

// The names of a group reference, outermost first.
std::vector<tIdent> PathOf(T3Tree_Node* reference) {
  std::vector<tIdent> path;
  for (; reference->is<T3ImportQualified>(); reference = reference->as<T3ImportQualified>()->base)
    path.push_back(reference->as<T3ImportQualified>()->id);
  if (reference->is<T3ImportIdentifier>()) path.push_back(reference->as<T3ImportIdentifier>()->id);
  std::reverse(path.begin(), path.end());
  return path;
}

bool HasKind(T3Tree_Node* decl, t3_import_restr_t restr) {
  const bool signature = decl->is<T3TypeDecl>() && T3Is<T3SignatureType>(decl->as<T3TypeDecl>()->type);
  switch (restr) {
    case t3_import_restr_t::Group:
      return decl->is<T3GroupDecl>();
    case t3_import_restr_t::Type:
      return decl->is<T3TypeDecl>() && !signature;
    case t3_import_restr_t::Template:
      return decl->is<T3TemplateDecl>();
    case t3_import_restr_t::Const:
      return decl->is<T3ConstDecl>() || decl->is<T3ExtConstDecl>();
    case t3_import_restr_t::Testcase:
      return decl->is<T3Testcase>();
    case t3_import_restr_t::Teststep:
      return decl->is<T3TestStep>();
    case t3_import_restr_t::Function:
      return decl->is<T3Function>() || decl->is<T3ExtFunction>();
    case t3_import_restr_t::Signature:
      return signature;
    case t3_import_restr_t::ModulePar:
      return decl->is<T3ModuleParDecl>();
    case t3_import_restr_t::All:
      return !IsImportDecl(decl);
  }
  return false;
}

// Modules whose scopes stand are asked there; others are searched.
T3Tree_Node* FirstOwnDecl(T3Module* module, tIdent id) {
  T3DeclMap& map = *DeclsOut(module->definition_part);
  if (!map.empty()) {
    for (const T3DeclMap::Entry& entry : map.Find(id))
      if (IsLocalDecl(entry.decl) && !entry.decl->is<T3Module>() && !entry.decl->is<T3GroupDecl>())
        return entry.decl;
    return nullptr;
  }
  for (auto* decl : DeclsInGroups(module->definition_part))
    if (decl->name == id && IsLocalDecl(decl) && !decl->is<T3GroupDecl>()) return decl;
  return nullptr;
}
}  // namespace

std::string ImportRef2String(T3Tree_Node* reference) {
  std::string text;
  for (const tIdent name : PathOf(reference)) {
    if (!text.empty()) text += '.';
    text += gIdents.GetString(name);
  }
  return text;
}

T3Tree_Node* FindDeclInModule(T3Tree_Node* module, tIdent id) {
  static const tIdent null = gIdents.MakeIdent("NULL");
  auto* node = module->as<T3Module>();
  if (id == null && IsAsn1(node)) {
    for (auto* decl : DeclsInGroups(node->definition_part))
      if (IsAsnNullType(decl)) return decl;
    return _sgT3NoDecl();
  }
  T3Tree_Node* result = FirstOwnDecl(node, id);
  return result != nullptr ? result : _sgT3NoDecl();
}

namespace {
// The groups of a module in the order of the source, and their places there by their names.
struct Groups {
  struct Group {
    T3GroupDecl* decl;
    /// Its place is that of this group when it has none around.
    size_t around;
  };
  std::vector<Group> all;
  std::unordered_map<tIdent, std::vector<size_t>> by_name;
};
std::unordered_map<uint32_t, Groups>& g_groups = *new std::unordered_map<uint32_t, Groups>;
const ModuleCache known_groups([] { g_groups.clear(); });

void CollectGroups(T3Tree_Node* decls, Groups& groups) {
  struct Rest {
    T3Tree_Node* decl;
    size_t around;
  };
  constexpr size_t kNone = ~size_t{0};
  std::vector<Rest> open{{decls, kNone}};
  while (!open.empty()) {
    const Rest rest = open.back();
    open.pop_back();
    T3Tree_Node* at = rest.decl;
    while (T3Is<_T3Decl>(at) && !at->is<T3GroupDecl>()) at = at->as<_T3Decl>()->next;
    if (!T3Is<T3GroupDecl>(at)) continue;
    const size_t place = groups.all.size();
    groups.all.push_back({at->as<T3GroupDecl>(), rest.around == kNone ? place : rest.around});
    groups.by_name[at->as<T3GroupDecl>()->name].push_back(place);
    open.push_back({at->as<T3GroupDecl>()->next, rest.around});
    open.push_back({at->as<T3GroupDecl>()->body, place});
  }
}

const Groups& GroupsOf(T3Module* module) {
  const auto [groups, is_new] = g_groups.try_emplace(module->number);
  if (is_new) CollectGroups(module->definition_part, groups->second);
  return groups->second;
}

// The names of a path stand around a group in their order, with or without others between them.
bool LiesOn(const std::vector<tIdent>& path, size_t place, const Groups& groups) {
  size_t left = path.size() - 1;
  for (; left > 0 && groups.all[place].around != place;) {
    place = groups.all[place].around;
    if (groups.all[place].decl->name == path[left - 1]) --left;
  }
  return left == 0;
}
}  // namespace

T3Tree_Node* FindGroupInModule(T3Tree_Node* module, T3Tree_Node* reference) {
  const std::vector<tIdent> path = PathOf(reference);
  const Groups& groups = GroupsOf(module->as<T3Module>());
  const auto named = path.empty() ? groups.by_name.end() : groups.by_name.find(path.back());
  if (named == groups.by_name.end()) return _sgT3NoDecl();
  T3GroupDecl* found = nullptr;
  for (const size_t place : named->second) {
    if (!LiesOn(path, place, groups)) continue;
    T3GroupDecl* group = groups.all[place].decl;
    if (found != nullptr) {
      vexa_filtered_error(ERR_import_ambiguous_group, group->position, ImportRef2String(reference),
                          module->as<T3Module>()->name);
      return _sgT3NoDecl();
    }
    found = group;
  }
  return found != nullptr ? found : _sgT3NoDecl();
}

bool ImportThatKind(T3Tree_Node* decl, t3_import_restr_t restr) {
  return decl->is<_T3Decl>() && HasKind(decl, restr);
}

bool IsExcluded(T3Tree_Node* exceptions, T3Tree_Node* decl) {
  return Exceptions(exceptions).Bar(decl);
}

const char* DeclKind(T3Tree_Node* decl) {
  if (decl->is<T3ExtConstDecl>()) return "external constant";
  if (decl->is<T3ExtFunction>()) return "external function";
  if (decl->is<T3ImportTypeDecl>() || HasKind(decl, t3_import_restr_t::Type)) return "type";
  if (decl->is<T3ImportTemplateDecl>() || decl->is<T3TemplateDecl>()) return "template";
  if (decl->is<T3ImportConstDecl>() || decl->is<T3ConstDecl>()) return "constant";
  if (decl->is<T3ImportModuleParDecl>() || decl->is<T3ModuleParDecl>()) return "modulepar";
  if (decl->is<T3ImportTestcaseDecl>() || decl->is<T3Testcase>()) return "testcase";
  if (decl->is<T3ImportTeststepDecl>() || decl->is<T3TestStep>()) return "teststep";
  if (decl->is<T3ImportFunctionDecl>() || decl->is<T3Function>()) return "function";
  if (decl->is<T3ImportSignatureDecl>() || HasKind(decl, t3_import_restr_t::Signature)) return "signature";
  internal_error_ast("T3Imports", __LINE__, "DeclKind", decl);
}

bool IsImportDecl(const T3Tree_Node* node) {
  return T3Is<_T3ImportDecl>(node);
}

bool ImplicitTypeDecl(const T3Tree_Node* decl) {
  return T3Is<T3TypeDecl>(decl) && static_cast<const T3TypeDecl*>(decl)->implicit_type_decl;
}

void PreprocessImports(T3Tree_Node* module) {
  ImportStage stage(module->as<T3Module>());
  stage.CollectImports();
  stage.RemoveImports();
  stage.AddImportDecls();
}
