// Writes the tree as text, and checks that it is what its description says.
#include <algorithm>
#include <array>
#include <memory>
#include <unordered_map>

#include "driver/diagnostics/Errors.h"
#include "frontend/T3TreeFields.h"

namespace {
constexpr int kSelectorWidth = 16;
constexpr int kStep = 2;
// A nesting deeper than this is written without further indentation, or a deep tree's dump would grow with
// the square of its depth.
constexpr int kMaxIndentation = 200;

void Indent(FILE* stream, int depth) {
  std::fprintf(stream, "%*s", depth < kMaxIndentation ? depth : kMaxIndentation, "");
}

void WriteSelector(FILE* stream, const char* name, int depth) {
  Indent(stream, depth);
  std::fprintf(stream, "%-*s = ", kSelectorWidth, name);
}

template <class T>
T Value(const char* at) {
  T value;
  std::memcpy(&value, at, sizeof value);
  return value;
}

void WriteAddress(FILE* stream, const void* pointer, const char* tail) {
  std::fprintf(stream, "%08lx %s", static_cast<unsigned long>(reinterpret_cast<uintptr_t>(pointer)), tail);
}

void WriteBytes(FILE* stream, const char* at, size_t size) {
  for (size_t i = 0; i < size; ++i) std::fprintf(stream, "%02x ", static_cast<unsigned char>(at[i]));
}

void WritePositionBytes(FILE* stream, const char* at) {
  const auto position = Value<tPosition>(at);
  WriteBytes(stream, reinterpret_cast<const char*>(&position.Line), sizeof position.Line);
  WriteBytes(stream, reinterpret_cast<const char*>(&position.Column), sizeof position.Column);
  WriteBytes(stream, reinterpret_cast<const char*>(&position.File), sizeof position.File);
}

void WriteValue(FILE* stream, const T3FieldInfo& field, const char* at) {
  switch (field.shape) {
    case T3FieldShape::Node:
      if (Value<void*>(at) == nullptr)
        std::fputs("NoT3Tree", stream);
      else
        WriteAddress(stream, Value<void*>(at), "*");
      break;
    case T3FieldShape::Reference:
      WriteAddress(stream, Value<void*>(at), "+");
      break;
    case T3FieldShape::Ident:
      gIdents.WriteIdent(stream, Value<tIdent>(at));
      break;
    case T3FieldShape::String:
      StringM::WriteString(stream, Value<tStringRef>(at));
      break;
    case T3FieldShape::Bool:
      std::fputc(Value<bool>(at) ? 'T' : 'F', stream);
      break;
    case T3FieldShape::Text:
      std::fputs(Value<const char*>(at) == nullptr ? "" : Value<const char*>(at), stream);
      break;
    case T3FieldShape::Position:
      WritePositionBytes(stream, at);
      break;
    case T3FieldShape::Bytes:
      WriteBytes(stream, at, field.size);
      break;
  }
  std::fputc('\n', stream);
}

// The record that a field lies in; null where the node has none yet.
const char* RecordOf(T3Tree_Node* node, T3FieldRecord record) {
  switch (record) {
    case T3FieldRecord::Node:
      return reinterpret_cast<const char*>(node);
    case T3FieldRecord::Attributes:
      return reinterpret_cast<const char*>(node->attributes);
    case T3FieldRecord::Cold:
      return node->attributes == nullptr ? nullptr : reinterpret_cast<const char*>(node->attributes->cold);
  }
  return nullptr;
}

void WriteField(FILE* stream, T3Tree_Node* node, const T3FieldInfo& field, int depth) {
  const char* record = RecordOf(node, field.record);
  if (record == nullptr) return;
  WriteSelector(stream, field.name, depth);
  WriteValue(stream, field, record + field.offset);
}

void WriteNode(FILE* stream, T3Tree_Node* node) {
  std::fprintf(stream, "%s\n", T3KindName(node));
  if (node == nullptr) return;
  for (const T3FieldInfo& field : T3Tree_KindInfo[static_cast<int>(node->kind)].fields)
    WriteField(stream, node, field, 0);
}

void CheckStream(FILE* stream) {
  if (std::fflush(stream) != 0 || std::ferror(stream))
    gErrors.ErrorMessageI(kCodeInputOutput, kFatal, NoPosition, kInfoText, "T3Tree.WriteT3Tree");
}

// One dump of a subtree. What is still to be written lies on a stack of fields.
class Dump {
 public:
  Dump(FILE* stream, T3Tree_Node* root) : stream_(stream) {
    CountReferences(root);
    WriteTree(root, 0);
    while (!work_.empty()) Step();
  }

 private:
  struct Work {
    T3Tree_Node* node;
    // the fields before this one have been written; `next` comes after all others
    size_t field;
    int depth;
  };

  void CountReferences(T3Tree_Node* root) {
    std::vector<T3Tree_Node*> stack{root};
    while (!stack.empty()) {
      T3Tree_Node* node = stack.back();
      stack.pop_back();
      if (node == nullptr || ++references_[node] > 1) continue;
      const T3ChildFields& fields = ChildFieldsOf(node);
      for (const auto& child : fields.children) stack.push_back(T3ChildField(node, *child.info));
      if (fields.next.info != nullptr) stack.push_back(T3ChildField(node, *fields.next.info));
    }
  }

  // Writes the head of a subtree and puts its fields on the stack.
  void WriteTree(T3Tree_Node* node, int depth) {
    if (node == nullptr) {
      std::fputs(" NoT3Tree\n", stream_);
      return;
    }
    if (references_[node] > 1) {
      int& label = labels_[node];
      if (label != 0) {
        std::fprintf(stream_, "^%d\n", label);
        return;
      }
      label = static_cast<int>(labels_.size());
      std::fprintf(stream_, " %d\n%06d:", label, label);
      Indent(stream_, depth);
    }
    std::fprintf(stream_, "%s\n", T3KindName(node));
    work_.push_back({node, 0, depth});
  }

  // Writes the fields of the topmost node up to and with its next child.
  void Step() {
    const auto fields = T3Tree_KindInfo[static_cast<int>(work_.back().node->kind)].fields;
    const T3FieldInfo* next = ChildFieldsOf(work_.back().node).next.info;
    while (work_.back().field < fields.size()) {
      Work& work = work_.back();
      const T3FieldInfo& field = fields[work.field++];
      if (&field == next) continue;
      if (!field.IsChild()) {
        WriteField(stream_, work.node, field, work.depth);
        continue;
      }
      WriteSelector(stream_, field.name, work.depth);
      WriteTree(T3ChildField(work.node, field), work.depth + kStep);
      return;
    }
    const Work done = work_.back();
    work_.pop_back();
    if (next == nullptr) return;
    WriteSelector(stream_, next->name, done.depth);
    WriteTree(T3ChildField(done.node, *next), done.depth);
  }

  FILE* stream_;
  std::unordered_map<T3Tree_Node*, int> references_;
  std::unordered_map<T3Tree_Node*, int> labels_;
  std::vector<Work> work_;
};

// The numbers of the nodes that a walk has met, in pieces that are made when first used: the nodes of one
// file have numbers close to each other, and marks in the nodes would have to be cleared again.
class NumberSet {
 public:
  /// True when the number was not there.
  bool Insert(uint32_t number) {
    const size_t piece = number / kPiece;
    if (piece >= pieces_.size()) pieces_.resize(piece + 1);
    if (pieces_[piece] == nullptr) pieces_[piece] = std::make_unique<Bits>();
    uint64_t& word = (*pieces_[piece])[number % kPiece / 64];
    const uint64_t bit = uint64_t{1} << number % 64;
    const bool fresh = (word & bit) == 0;
    word |= bit;
    return fresh;
  }

 private:
  static constexpr uint32_t kPiece = 1 << 15;
  using Bits = std::array<uint64_t, kPiece / 64>;
  std::vector<std::unique_ptr<Bits>> pieces_;
};

uint16_t KindOf(const T3Tree_Node* node) {
  return static_cast<uint16_t>(node == nullptr ? T3Kind{} : node->kind);
}

bool ChildFits(T3Tree_Node* node, const T3ChildFields::Child& field) {
  const uint16_t kind = KindOf(T3ChildField(node, field));
  return field.first <= kind && kind <= field.last;
}

// Reports children that are missing or of a wrong class.
class Check {
 public:
  explicit Check(FILE* report) : report_(report) {}
  bool passed() const { return passed_; }

  /// Checks each node under the root once.
  void Walk(T3Tree_Node* root) {
    if (root != nullptr) Meet(root);
    while (!stack_.empty()) {
      T3Tree_Node* node = stack_.back();
      stack_.pop_back();
      const T3ChildFields& fields = ChildFieldsOf(node);
      // The link of a list comes first, so that the walk goes on with it last: what belongs to one element
      // lies close together.
      if (fields.next.info != nullptr) Visit(node, fields.next);
      for (const T3ChildFields::Child& field : fields.children) Visit(node, field);
    }
  }

 private:
  void Meet(T3Tree_Node* node) {
    if (met_.Insert(node->number)) stack_.push_back(node);
  }

  void Visit(T3Tree_Node* node, const T3ChildFields::Child& field) {
    T3Tree_Node* child = T3ChildField(node, field);
    if (!ChildFits(node, field)) ReportField(node, field);
    // A node without children is checked by looking at its kind.
    const T3ChildFields& below = T3Tree_ChildFields[KindOf(child)];
    if (below.next.info != nullptr || !below.children.empty()) Meet(child);
  }

  void Line(int code, const char* text) {
    std::fprintf(report_, "   %s %s\n", Errors::CodeToText(code).c_str(), text);
  }
  void Line(int code, const void* address) {
    std::fprintf(report_, "   %s %p\n", Errors::CodeToText(code).c_str(), address);
  }
  void Node(int code, T3Tree_Node* node) {
    std::fprintf(report_, "   %s ", Errors::CodeToText(code).c_str());
    WriteNode(report_, node);
  }

  void ReportField(T3Tree_Node* node, const T3ChildFields::Child& field) {
    passed_ = false;
    T3Tree_Node* child = T3ChildField(node, field);
    if (report_ == nullptr || (child == nullptr && !gT3AST.Settings().CheckReportNoTree)) return;
    Report(node, *field.info, child);
  }

  void Report(T3Tree_Node* parent, const T3FieldInfo& field, T3Tree_Node* child) {
    std::fprintf(report_, "%s\n", Errors::CodeToText(kCodeCheckTree).c_str());
    Line(51, static_cast<const void*>(parent));
    Line(52, T3KindName(parent));
    Line(53, field.name);
    if (child != nullptr) Line(55, static_cast<const void*>(child));
    Line(56, T3KindName(child));
    Line(57, T3Tree_NodeName[field.child_class]);
    if (!gT3AST.Settings().CheckReportNodes) return;
    Node(58, parent);
    if (child != nullptr) Node(59, child);
  }

  FILE* report_;
  bool passed_ = true;
  NumberSet met_;
  std::vector<T3Tree_Node*> stack_;
};
}  // namespace

void T3Tree::WriteT3Tree(FILE* stream, T3Tree_Node* root) {
  Dump(stream, root);
  CheckStream(stream);
}

void T3Tree::WriteT3TreeNode(FILE* stream, T3Tree_Node* node) {
  WriteNode(stream, node);
  CheckStream(stream);
}

// In bytes.
constexpr ptrdiff_t kAhead = 2048;

T3Tree_Node* NodeBehind(T3Tree_Node* node) {
  const size_t size = (T3Tree_NodeSize[static_cast<size_t>(node->kind)] + 7U) / 8 * 8;
  return reinterpret_cast<T3Tree_Node*>(reinterpret_cast<char*>(node) + size);
}

// The children of declarations lie far from them, those of all other nodes beside them.
void PrefetchChildrenOfDecls(char* begin, char* end) {
  auto* node = reinterpret_cast<T3Tree_Node*>(begin);
  if (begin == end || !node->is<_T3Decl>()) return;
  for (; reinterpret_cast<char*>(node) != end; node = NodeBehind(node))
    for (const T3ChildFields::Child& field : ChildFieldsOf(node).children)
      __builtin_prefetch(T3ChildField(node, field));
}

// True when no node of a block has a child of a wrong class.
bool T3Tree::NodesOfBlockFit(const NodeBlock& block) const {
  PrefetchChildrenOfDecls(block.free, block.top);
  auto* end = reinterpret_cast<T3Tree_Node*>(block.top);
  for (auto* node = reinterpret_cast<T3Tree_Node*>(block.free); node != end; node = NodeBehind(node)) {
    PrefetchNodesBehind(node, -kAhead);
    const T3ChildFields& fields = ChildFieldsOf(node);
    for (const T3ChildFields::Child& field : fields.children)
      if (!ChildFits(node, field)) return false;
    if (fields.next.info != nullptr && !ChildFits(node, fields.next)) return false;
  }
  return true;
}

bool T3Tree::AllNodesFit() const {
  return NodesOfBlockFit(nodes_) && NodesOfBlockFit(decls_) &&
         std::all_of(full_.begin(), full_.end(),
                     [this](const NodeBlock& block) { return NodesOfBlockFit(block); });
}

// All nodes there are, in the order in which they lie, are looked at sooner than those below the root in the
// order of the tree, which has to tell where a fault is one of the tree.
bool T3Tree::CheckT3Tree(T3Tree_Node* root) {
  if (AllNodesFit()) return true;
  Check check(check_report_ != nullptr ? check_report_ : stderr);
  check.Walk(root);
  return check.passed();
}
