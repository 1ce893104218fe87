// The stage that merges the declarations of extended component types. It stands before the scopes, and so
// has a small resolver of its own for the names in `extends` clauses.
#include "analysis/names/T3Components.h"

#include <algorithm>
#include <unordered_map>
#include <unordered_set>

#include "analysis/names/T3Imports.h"
#include "analysis/names/T3Members.h"
#include "analysis/names/T3Names.h"
#include "analysis/walk/T3Stages.h"
#include "driver/diagnostics/T3Error.h"
#include "support/ModuleCaches.h"
#include "support/TopologicalSort.h"
#include "frontend/T3GlobalASTNodes.h"
#include "support/FormatText.h"
#include "frontend/T3Lists.h"

namespace {
constexpr _vexa_error_message_t kSeveralDecls{"multiple declarations for \"%s\"",
                                              vexa_error_severity_t::sev_duplicate, 1};

// Component types whose lists are merged.
std::unordered_set<T3Tree_Node*>& ExtendedTypes() {
  static auto& types = *new std::unordered_set<T3Tree_Node*>;
  return types;
}
const ModuleCache kComponentsCache{[] { ExtendedTypes().clear(); }, ModuleCache::Holds::ForRun};

template <class Call>
void ForTypeAndImportDecls(T3Tree_Node* list, const Call& call) {
  for (auto* decl : DeclsInGroups(list))
    if (decl->is<T3TypeDecl>() || decl->is<T3ImportTypeDecl>()) call(decl);
}

bool IsComponent(T3Tree_Node* type) {
  return T3Is<T3ComponentType>(type);
}

// An element of an `extends` list: its name as written, and without a qualifier that is the own module.
struct ExtendsElement {
  tIdent name = NoIdent;
  tIdent filtered = NoIdent;
  tPosition position;
};

ExtendsElement ReadElement(T3Tree_Node* item, tIdent module) {
  ExtendsElement element;
  T3Tree_Node* type = item->as<T3TypeItem>()->type;
  element.position = PositionOf(type);
  T3Tree_Node* reference = type->is<T3TypeReference>() ? type->as<T3TypeReference>()->reference : type;
  if (auto* id = reference->try_as<T3Identifier>()) {
    element.name = element.filtered = id->id;
    element.position = id->position;
  } else if (auto* qualifier = reference->try_as<T3Qualifier>();
             qualifier != nullptr && qualifier->base->is<T3Identifier>()) {
    const tIdent from = qualifier->base->as<T3Identifier>()->id;
    element.name = MakeQualifiedId(from, qualifier->id);
    element.filtered = from == module ? qualifier->id : element.name;
    element.position = qualifier->base->as<T3Identifier>()->position;
  }
  return element;
}

template <class Call>
void ForElements(T3Tree_Node* component, tIdent module, const Call& call) {
  T3Tree_Node* item = component->as<T3ComponentType>()->extends;
  for (auto* at : Items<T3TypeItem>(item)) call(ReadElement(at, module));
}

// The types that a module's `extends` clauses can name.
class DeclarationsTable {
 public:
  struct Entry {
    T3Tree_Node* type;
    bool imported;
  };
  explicit DeclarationsTable(T3Module* module);
  /// What a plain or qualified name can mean, each type once.
  std::vector<Entry> FindSuitableDefinitions(tIdent id) const;
  /// The component type of a name, or null after `message` was set.
  T3Tree_Node* GetDefinition(tIdent id, const _vexa_error_message_t** message) const;
  /// The module's own component types by name, in the order of the source.
  const std::vector<std::pair<tIdent, T3Tree_Node*>>& Locals() const { return locals_; }
  T3Tree_Node* Local(tIdent name) const;

 private:
  void CollectNames(T3Module* module);
  void Add(tIdent id, T3Tree_Node* type, bool imported);
  void AddImport(T3ImportTypeDecl* import);

  // An entry for each name that a clause has; what no clause names is not looked at.
  std::unordered_map<tIdent, std::vector<Entry>> entries_;
  // The names that clauses have behind a module's.
  std::unordered_set<tIdent> qualified_;
  std::vector<std::pair<tIdent, T3Tree_Node*>> locals_;
  std::unordered_map<tIdent, T3Tree_Node*> local_by_name_;
};

void DeclarationsTable::CollectNames(T3Module* module) {
  for (const auto& [name, type] : locals_) {
    ForElements(type, module->name, [this](const ExtendsElement& element) { entries_[element.filtered]; });
    for (auto* item : Items<T3TypeItem>(type->as<T3ComponentType>()->extends)) {
      auto* reference = item->type->try_as<T3TypeReference>();
      if (reference == nullptr || !reference->reference->is<T3Qualifier>()) continue;
      qualified_.insert(reference->reference->as<T3Qualifier>()->id);
    }
  }
}

void DeclarationsTable::Add(tIdent id, T3Tree_Node* type, bool imported) {
  const auto found = entries_.find(id);
  if (found != entries_.end()) found->second.push_back({type, imported});
}

void DeclarationsTable::AddImport(T3ImportTypeDecl* import) {
  T3Tree_Node* def = import->attr().def_aux;
  if (!T3Is<T3TypeDecl>(def)) return;
  const tIdent name = DeclaredName(import);
  Add(name, def->as<T3TypeDecl>()->type, true);
  if (qualified_.count(name) != 0)
    Add(MakeQualifiedId(ImportedModule(import), name), def->as<T3TypeDecl>()->type, true);
}

DeclarationsTable::DeclarationsTable(T3Module* module) {
  ForTypeAndImportDecls(module->definition_part, [this](T3Tree_Node* decl) {
    auto* local = decl->try_as<T3TypeDecl>();
    if (local == nullptr || !IsComponent(local->type)) return;
    locals_.emplace_back(local->name, local->type);
    local_by_name_.emplace(local->name, local->type);
  });
  CollectNames(module);
  ForTypeAndImportDecls(module->definition_part, [this](T3Tree_Node* decl) {
    if (auto* local = decl->try_as<T3TypeDecl>())
      Add(local->name, local->type, false);
    else
      AddImport(decl->as<T3ImportTypeDecl>());
  });
}

T3Tree_Node* DeclarationsTable::Local(tIdent name) const {
  const auto found = local_by_name_.find(name);
  return found == local_by_name_.end() ? nullptr : found->second;
}

auto DeclarationsTable::FindSuitableDefinitions(tIdent id) const -> std::vector<Entry> {
  const auto found = entries_.find(id);
  return found == entries_.end() ? std::vector<Entry>() : found->second;
}

// Like everywhere, a local type stands before imported ones of its name, whether it is a component or not.
T3Tree_Node* DeclarationsTable::GetDefinition(tIdent id, const _vexa_error_message_t** message) const {
  const std::vector<Entry> all = FindSuitableDefinitions(id);
  std::vector<Entry> local;
  std::copy_if(all.begin(), all.end(), std::back_inserter(local),
               [](const Entry& entry) { return !entry.imported; });
  const std::vector<Entry>& reached = local.empty() ? all : local;
  std::vector<Entry> components;
  std::copy_if(reached.begin(), reached.end(), std::back_inserter(components),
               [](const Entry& entry) { return IsComponent(entry.type); });
  if (reached.empty())
    *message = &ERR_undefined;
  else if (components.empty())
    *message = &ERR_type;
  else if (reached.size() == 1)
    return components.front().type;
  else
    *message = local.empty() ? &ERR_conflicting_imported_defs : &kSeveralDecls;
  return nullptr;
}

// Merges the component types of one module.
class ExtensionStage {
 public:
  explicit ExtensionStage(T3Module* module) : module_(module), table_(module) {}
  bool Run();

 private:
  bool BuildExtensionOrder(std::vector<tIdent>* order);
  std::vector<tIdent> OrderInSpiteOfCycles() const;
  std::vector<tIdent> LocalBases(tIdent name) const;
  void ReportCycle(const std::vector<tIdent>& cycle) const;
  bool Extend(T3Tree_Node* component, bool report);

  T3Module* module_;
  DeclarationsTable table_;
};

bool ExtensionStage::BuildExtensionOrder(std::vector<tIdent>* order) {
  std::set<tIdent> names;
  std::map<tIdent, std::set<tIdent>> dependencies;
  for (const auto& [name, type] : table_.Locals()) {
    names.insert(name);
    for (const tIdent base : LocalBases(name)) dependencies[name].insert(base);
  }
  std::vector<tIdent> cycle;
  TopologicalSort<tIdent> sort(names, dependencies);
  if (sort.ResolveDependencies(order, &cycle)) return true;
  ReportCycle(cycle);
  return false;
}

std::vector<tIdent> ExtensionStage::LocalBases(tIdent name) const {
  std::vector<tIdent> bases;
  ForElements(table_.Local(name), module_->name, [&](const ExtendsElement& element) {
    if (table_.Local(element.filtered) != nullptr) bases.push_back(element.filtered);
  });
  return bases;
}

// Bases first as well, where no cycle is in the way.
std::vector<tIdent> ExtensionStage::OrderInSpiteOfCycles() const {
  struct Place {
    tIdent name;
    std::vector<tIdent> bases;
  };
  std::vector<tIdent> order;
  std::unordered_set<tIdent> met;
  std::vector<Place> open;
  const auto enter = [&](tIdent name) {
    if (met.insert(name).second) open.push_back({name, LocalBases(name)});
  };
  for (const auto& [name, type] : table_.Locals()) {
    enter(name);
    while (!open.empty()) {
      Place& top = open.back();
      if (top.bases.empty()) {
        order.push_back(top.name);
        open.pop_back();
        continue;
      }
      const tIdent base = top.bases.back();
      top.bases.pop_back();
      enter(base);
    }
  }
  return order;
}

// A cycle has its first name again at the end.
void ExtensionStage::ReportCycle(const std::vector<tIdent>& cycle) const {
  std::string text = "cyclic \"extends\" structure in component type declarations";
  const char* separator = ": ";
  for (const tIdent name : cycle) {
    text += separator;
    text += gIdents.GetString(name);
    separator = " <- ";
  }
  const tPosition position = cycle.empty() ? NoPosition : PositionOf(table_.Local(cycle.front()));
  vexa_error_through_filter(text, position, vexa_error_severity_t::sev_cycle);
}

// Each of several names that clash at one position is told: these errors pass the filter by.
void ReportClashErrors(const std::vector<tIdent>& names, const tPosition& position) {
  for (const tIdent name : names)
    vexa_error(FormatText("can't extend component due to name clash of \"%s\"", gIdents.GetCStr(name)),
               position);
}

// Adds to `members` what `decls` has and they do not; another declaration of a name that is there clashes.
std::vector<tIdent> AddMembers(T3Members& members, const T3NodeList& decls) {
  std::vector<tIdent> clashes;
  const T3Members before = members;
  for (T3Tree_Node* decl : decls) {
    T3Tree_Node* known = before.Find(decl->as<_T3Decl>()->name);
    if (known == nullptr)
      members.Append(decl);
    else if (known != decl)
      clashes.push_back(decl->as<_T3Decl>()->name);
  }
  return clashes;
}

T3NodeList OwnDecls(T3ComponentType* component) {
  T3NodeList own;
  for (auto* decl : Items<_T3Decl>(component->decls)) own.push_back(decl);
  return own;
}

// Merges what there is, faults or not.
bool ExtensionStage::Extend(T3Tree_Node* component, bool report) {
  auto* type = component->as<T3ComponentType>();
  if (!type->extends->is<T3TypeItem>() || !ExtendedTypes().insert(component).second) return true;
  bool passed = true;
  T3Members members;
  const auto add = [&](const T3NodeList& decls, const tPosition& position) {
    const std::vector<tIdent> clashes = AddMembers(members, decls);
    if (report) ReportClashErrors(clashes, position);
    passed = passed && clashes.empty();
  };
  ForElements(component, module_->name, [&](const ExtendsElement& element) {
    const _vexa_error_message_t* message = nullptr;
    T3Tree_Node* base = table_.GetDefinition(element.filtered, &message);
    if (base == nullptr) {
      if (report) vexa_filtered_error(*message, element.position, element.name);
      passed = false;
    } else if (members.empty()) {
      members = MembersOf(base->as<T3ComponentType>());
    } else {
      add(MembersOf(base->as<T3ComponentType>()).All(), element.position);
    }
  });
  add(OwnDecls(type), type->position);
  SetMembers(type, members);
  return passed;
}

bool ExtensionStage::Run() {
  std::vector<tIdent> order;
  bool passed = BuildExtensionOrder(&order);
  if (!passed) order = OrderInSpiteOfCycles();
  // Behind the first fault components are merged in silence, so that modules which import them find what they
  // inherit.
  for (const tIdent name : order) passed = Extend(table_.Local(name), passed) && passed;
  return passed;
}
}  // namespace

bool ContainsExtensions(T3Tree_Node* decls) {
  bool contains = false;
  ForTypeAndImportDecls(decls, [&](T3Tree_Node* decl) {
    auto* type_decl = decl->try_as<T3TypeDecl>();
    contains = contains || (type_decl != nullptr && IsComponent(type_decl->type) &&
                            type_decl->type->as<T3ComponentType>()->extends->is<T3TypeItem>());
  });
  return contains;
}

tIdent MakeQualifiedId(tIdent module, tIdent name) {
  return gIdents.MakeIdent(std::string(gIdents.GetString(module)) + "." +
                           std::string(gIdents.GetString(name)));
}

bool ExtendComponents(T3Tree_Node* root) {
  T3Tree_Node* module = root->is<T3Builtin>() ? root->as<T3Builtin>()->module : root;
  if (!ContainsExtensions(module->as<T3Module>()->definition_part)) return true;
  return ExtensionStage(module->as<T3Module>()).Run();
}
