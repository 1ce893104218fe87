// The tree: one forest of nodes that holds all modules of a run.
//
// A node is a structure of its kind, laid behind a common header; the kinds are a hierarchy numbered so
// that a class is a range of numbers. Kinds and fields are listed in T3Tree.desc. Nodes come from an
// arena and are never freed singly. What analysis computes lies apart, in an attribute record that a
// node gets at the first call of attr().
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <map>
#include <set>
#include <span>
#include <string>
#include <type_traits>
#include <unordered_map>
#include <utility>
#include <vector>

#include "frontend/T3Enums.h"
#include "support/Idents.h"
#include "support/LargePages.h"
#include "support/Position.h"
#include "support/StringM.h"

enum class T3Kind : unsigned short;
struct T3Tree_Node;
struct ModuleOptions;
class DeclBitSet;

/// What `rts_loc` holds until the generator that owns an object has placed it.
extern const char* const vexa_location_not_allocated;

/// Orders nodes by their running numbers, so that no order depends on addresses.
struct T3NodeLess {
  bool operator()(const T3Tree_Node* a, const T3Tree_Node* b) const;
};
using T3NodeSet = std::set<T3Tree_Node*, T3NodeLess>;
using T3NodeList = std::vector<T3Tree_Node*>;
using T3TypeSet = std::vector<T3Tree_Node*>;
using T3ValidSet = std::vector<bool>;
/// (name, qualifier): the qualifier is 0, or a module's identifier.
using T3DeclKey = std::pair<tIdent, tIdent>;
struct T3DeclKeyHash {
  size_t operator()(const T3DeclKey& key) const {
    const auto qualifier = static_cast<uint64_t>(key.second) * 0x9e3779b97f4a7c15u;
    const auto mixed = static_cast<uint64_t>(key.first) * 0xff51afd7ed558ccdu + qualifier;
    return static_cast<size_t>(mixed ^ mixed >> 32);
  }
};
using T3NameCache = std::unordered_map<T3DeclKey, T3Tree_Node*, T3DeclKeyHash>;
class T3DeclMap;

/// The head of the record of a node's rarer attributes.
struct T3Cold {};

/// The head of every attribute record: one bit for each attribute that has been computed, cold ones too.
struct T3Attributes {
  T3Cold* cold = nullptr;
  uint8_t evaluated[10] = {};

  bool IsEvaluated(int bit) const { return (evaluated[bit >> 3] >> (bit & 7)) & 1; }
  void SetEvaluated(int bit) { evaluated[bit >> 3] |= static_cast<uint8_t>(1 << (bit & 7)); }
};

/// What nodes inherit from their surroundings. Analysis sets it for a whole module in one walk; nodes of
/// one surrounding share one record, and a construct that changes a value makes a new record.
struct T3Place {
  /// The scope in which names are resolved: T3MapEnv, or T3NoMapEnv.
  T3Tree_Node* env = nullptr;
  /// The scope of labels: T3Env, or T3NoEnv.
  T3Tree_Node* labelEnv = nullptr;
  T3Tree_Node* groupEnv = nullptr;
  /// The T3Module that contains the node, and its name.
  T3Tree_Node* vexa_my_module = nullptr;
  tIdent vexa_module_name = NoIdent;
  /// The module-level declaration in whose body the node lies.
  T3Tree_Node* top_scope_owner = nullptr;
  /// The declaration or type that immediately owns the node.
  T3Tree_Node* vexa_owner = nullptr;
  T3Tree_Node* vexa_enclosing_block = nullptr;
  T3Tree_Node* vexa_break_continue_owner = nullptr;
  T3Tree_Node* enclosing_alt = nullptr;
  T3Tree_Node* call_signature_type = nullptr;
  T3Tree_Node* call_port_decl = nullptr;
  bool inside_interleave = false;
  bool inside_declaration_header = false;
  bool in_call_stmt = false;
  /// The enclosing behaviour has a `runs on` clause.
  bool has_component = false;
};

/// The common header of all nodes.
struct T3Tree_Node {
  /// Set by InitT3Tree.
  T3Tree_Node* parent = nullptr;
  T3Attributes* attributes = nullptr;
  /// Set by the place walk of analysis; null before.
  T3Place* place = nullptr;
  /// Running number, in order of construction.
  uint32_t number = 0;
  T3Kind kind{};
  /// Count of references during a whole-tree walk; 0 outside one.
  int16_t mark = 0;
  /// The number of the field by which the parent holds this node, from InitT3Tree. The fields of the kind
  /// begin in the rest of this word.
  uint16_t child_slot = 0;

  /// False for what cold() would make a record for.
  bool HasCold() const { return attributes != nullptr && attributes->cold != nullptr; }
  /// True when the node's kind lies in the class of T.
  template <class T>
  bool is() const {
    return static_cast<unsigned short>(static_cast<unsigned short>(kind) - T::kFirst) <= T::kLast - T::kFirst;
  }
  /// The node as T; any other kind is an internal error.
  template <class T>
  T* as() {
    if (!is<T>()) [[unlikely]]
      BadCast(T::kFirst);
    return static_cast<T*>(this);
  }
  /// The node as T, or null for any other kind.
  template <class T>
  T* try_as() {
    return is<T>() ? static_cast<T*>(this) : nullptr;
  }

 protected:
  T3Attributes& AttributeRecord() {
    if (attributes == nullptr) [[unlikely]]
      MakeAttributes();
    return *attributes;
  }
  T3Cold& ColdRecord() {
    if (attributes == nullptr || attributes->cold == nullptr) [[unlikely]]
      MakeCold();
    return *attributes->cold;
  }

 private:
  void MakeAttributes();
  void MakeCold();
  [[noreturn]] void BadCast(unsigned short wanted) const;
};

#include "T3TreeNodes.h"

/// How a field's value prints, and whether the walks follow it.
enum class T3FieldShape : uint8_t { Node, Reference, Ident, String, Bool, Position, Text, Bytes };

/// Where a field lies: in the node or in one of its attribute records.
enum class T3FieldRecord : uint8_t { Node, Attributes, Cold };

inline constexpr uint16_t kNoChildClass = 0xffff;
inline constexpr uint16_t kAnyChildClass = 0xfffe;

struct T3FieldInfo {
  const char* name;
  T3FieldShape shape;
  /// The kind that a child must be of, kAnyChildClass for any, kNoChildClass for a field that is no child.
  uint16_t child_class;
  /// Offset in the record.
  uint16_t offset;
  uint16_t size;
  T3FieldRecord record;

  bool IsChild() const { return child_class != kNoChildClass; }
};

struct T3KindInfo {
  std::span<const T3FieldInfo> fields;
  uint16_t attribute_size;
  uint16_t cold_size;
  void (*build_attributes)(void* memory);
  void (*build_cold)(void* memory);
};

extern const unsigned short T3Tree_TypeRange[kT3KindCount];
extern const unsigned short T3Tree_NodeSize[kT3KindCount];
extern const char* const T3Tree_NodeName[kT3KindCount];
extern const T3KindInfo T3Tree_KindInfo[kT3KindCount];

/// True when `node` is of the class `kind`; false for a null node.
inline bool T3Tree_IsType(const T3Tree_Node* node, T3Kind kind) {
  if (node == nullptr) return false;
  const auto k = static_cast<unsigned short>(kind);
  const auto n = static_cast<unsigned short>(node->kind);
  return k <= n && n <= T3Tree_TypeRange[k];
}

/// The items of a list, as far as they are of a class: `for (auto* item : Items<T3FieldValue>(list))`. A null
/// list has none. The next item is asked for when the body is through with one.
template <class Item>
class Items {
 public:
  struct End {};
  class Iterator {
   public:
    explicit Iterator(T3Tree_Node* node) : item_(T3Is<Item>(node) ? static_cast<Item*>(node) : nullptr) {}
    Item* operator*() const { return item_; }
    Iterator& operator++() {
      *this = Iterator(item_->next);
      return *this;
    }
    bool operator!=(End) const { return item_ != nullptr; }

   private:
    Item* item_;
  };

  explicit Items(T3Tree_Node* list) : list_(list) {}
  Iterator begin() const { return Iterator(list_); }
  End end() const { return {}; }
  size_t size() const {
    size_t count = 0;
    for (auto at = begin(); at != end(); ++at) ++count;
    return count;
  }

 private:
  T3Tree_Node* list_;
};

/// Asks for the memory in which the nodes lie that a walk in the order of the source meets `bytes` later: a
/// tree is laid from high to low addresses. Negative for a walk in the opposite order. A node may be larger
/// than a line of the cache, so that two are asked for.
inline void PrefetchNodesBehind(const T3Tree_Node* node, ptrdiff_t bytes) {
  constexpr uintptr_t kLine = 64;
  const uintptr_t at = reinterpret_cast<uintptr_t>(node) - static_cast<uintptr_t>(bytes);
  __builtin_prefetch(reinterpret_cast<const void*>(at));
  __builtin_prefetch(reinterpret_cast<const void*>(at + kLine));
}

template <class T>
bool T3Is(const T3Tree_Node* node) {
  return node != nullptr && node->is<T>();
}

/// The name of the node's kind, "NoT3Tree" for null.
inline const char* T3KindName(const T3Tree_Node* node) {
  return T3Tree_NodeName[node == nullptr ? 0 : static_cast<int>(node->kind)];
}

/// The slot of a child field in a node that has one; used by the walks.
inline T3Tree_Node*& T3ChildField(T3Tree_Node* node, const T3FieldInfo& field) {
  return *reinterpret_cast<T3Tree_Node**>(reinterpret_cast<char*>(node) + field.offset);
}

using T3TreeCallback = std::function<void(T3Tree_Node*)>;

/// What ConfigureT3Tree sets.
struct T3TreeSettings {
  /// The tree check reports missing children.
  bool CheckReportNoTree = true;
  /// The tree check dumps the nodes that it reports.
  bool CheckReportNodes = true;
  bool TreatTVAasChild = false;
  int DrawBoxHeight = 0;
  int DrawBoxWidth = 0;
  int DrawDepth = 0;
  int DrawLength = 0;
  char DrawFileName[256] = {};
};

/// The arena of all nodes and the root of the module list. One instance, gT3AST, lives to the end.
class T3Tree {
 public:
  T3Tree() = default;
  T3Tree(const T3Tree&) = delete;
  T3Tree& operator=(const T3Tree&) = delete;

#include "T3TreeConstructors.inc"

  /// A node with its header only; its fields are neutral.
  T3Tree_Node* MakeT3Tree(T3Kind kind);
  /// Memory for a node from a new block; `size` is in bytes.
  void* T3Tree_Alloc(size_t size) {
    return NodeFromNewBlock(size, nodes_);
  }
  /// True when an array type was made behind the node of number `after` and not behind that of `last`.
  bool MadeArrayTypes(uint32_t after, uint32_t last) const;
  /// Memory for attribute records and what they point to, kept to the end of the process.
  void* AllocAttributes(size_t size) {
    size = (size + 7) / 8 * 8;
    if (static_cast<size_t>(attribute_end_ - attribute_free_) < size) [[unlikely]]
      NewAttributeBlock(size);
    void* result = attribute_free_;
    attribute_free_ += size;
    return result;
  }
  /// A copy of `text` that lives as long as the tree; for `text` and `location` fields.
  const char* KeepText(const std::string& text);
  /// The number of bytes in all blocks.
  size_t MemoryUsed() const {
    return memory_;
  }
  uint32_t NodeCount() const {
    return next_number_;
  }

  /// Each reachable node once, parents first, in the order of fields and lists. Lists are walked in loops.
  void TraverseT3TreeTD(T3Tree_Node* root, const T3TreeCallback& call);
  /// Each reachable node once, children first.
  void TraverseT3TreeBU(T3Tree_Node* root, const T3TreeCallback& call);
  /// Each element of a list in order, without its end marker.
  void ForallT3Tree(T3Tree_Node* list, const T3TreeCallback& call);
  /// Reverses the `next` chain; the end marker stays at the end. Returns the new head.
  T3Tree_Node* ReverseT3Tree(T3Tree_Node* list);
  /// A deep copy in which a node that is reached twice is copied once. Attributes start anew; references
  /// that are no children point where they did, or to the copy where their target was copied.
  T3Tree_Node* CopyT3Tree(T3Tree_Node* root);
  /// True when every child exists and is of its class; faults are written to the check-report stream.
  bool CheckT3Tree(T3Tree_Node* root);
  /// Clears the evaluated flags, and sets child slot and parent in the whole tree.
  void InitT3Tree(T3Tree_Node* root);
  /// Dumps a subtree, with a label for each node that is reached more than once.
  void WriteT3Tree(FILE* stream, T3Tree_Node* root);
  /// Dumps one node, its children as addresses.
  void WriteT3TreeNode(FILE* stream, T3Tree_Node* node);
  /// Settings for debugging; an unknown name is reported.
  void ConfigureT3Tree(const std::string& name, const std::string& value);
  const T3TreeSettings& Settings() const {
    return settings_;
  }
  void BeginT3Tree() {}
  void CloseT3Tree() {}
  /// Frees all nodes and records at once; no node may be used afterwards.
  void ReleaseT3TreeModule();
  void SetCheckReport(FILE* stream) {
    check_report_ = stream;
  }

  /// Head of the list of modules.
  T3Tree_Node* root = nullptr;

 private:
  template <class T>
  T* Make(T3Kind kind) {
    static_assert(alignof(T) <= 8);
    constexpr size_t size = (sizeof(T) + 7) / 8 * 8;
    constexpr bool is_decl = std::is_base_of_v<_T3Decl, T> && !std::is_same_v<T, T3VarDecl>;
    NodeBlock& block = is_decl ? decls_ : nodes_;
    void* memory;
    if (static_cast<size_t>(block.free - block.low) >= size) [[likely]] {
      block.free -= size;
      memory = block.free;
    } else {
      memory = NodeFromNewBlock(size, block);
    }
    T* node = new (memory) T;
    T3Tree_Node* header = node;  // a kind may have a field that is called `kind`
    header->kind = kind;
    header->number = next_number_++;
    if constexpr (std::is_same_v<T, T3ArrayType>) array_types_.push_back(header->number);
    return node;
  }

  // A block is filled from its top downwards.
  struct NodeBlock {
    char* free = nullptr;
    char* low = nullptr;
    char* top = nullptr;
  };
  void* NodeFromNewBlock(size_t size, NodeBlock& block);
  bool NodesOfBlockFit(const NodeBlock& block) const;
  bool AllNodesFit() const;

  NodeBlock nodes_;
  // Many stages go along a module's declarations and look at little else of the tree, so these lie together.
  NodeBlock decls_;
  // The blocks that were filled before these two.
  std::vector<NodeBlock> full_;
  // The numbers of all array types, in their order.
  std::vector<uint32_t> array_types_;
  // Blocks that were asked for singly, and the slabs that common ones are cut from.
  std::vector<LargeBlock> blocks_;
  char* slab_free_ = nullptr;
  char* slab_end_ = nullptr;
  void* CutFromSlab(size_t size);
  char* attribute_free_ = nullptr;
  char* attribute_end_ = nullptr;
  void* NewBlock(size_t size);
  void NewAttributeBlock(size_t size);

  size_t memory_ = 0;
  uint32_t next_number_ = 0;
  FILE* check_report_ = nullptr;  // standard error where nothing else is set
  T3TreeSettings settings_;
};

/// The place of the tree of the run. It is there before any code runs, so that units may bind references to
/// it and make nodes in whatever order they are initialized, and is never destroyed, since globals of other
/// units hold nodes.
union T3TreeOfRun {
  constexpr T3TreeOfRun() : tree() {}
  ~T3TreeOfRun() {}
  T3Tree tree;
};
extern T3TreeOfRun gT3TreeOfRun;
inline constexpr T3Tree& gT3AST = gT3TreeOfRun.tree;

inline bool T3NodeLess::operator()(const T3Tree_Node* a, const T3Tree_Node* b) const {
  return a->number < b->number;
}
