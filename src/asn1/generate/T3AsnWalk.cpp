#include "asn1/generate/T3AsnWalk.h"

#include <algorithm>
#include <set>
#include <vector>

#include "asn1/front/AsnFault.h"
#include "asn1/model/AsnHome.h"
#include "asn1/model/AsnNames.h"

namespace asn1 {
namespace {
constexpr int kDeepestType = 1000;

std::string ControlMember(const HomeRef& structure, const AsnType& type, int component) {
  const std::string member = structure.Member("compmask");
  return ControlWords(type) > 1 ? member + " [" + std::to_string(ControlWord(component)) + "]" : member;
}
}  // namespace

HomeRef ComponentRef(const HomeRef& structure, const AsnType& component) {
  return {structure.Member(cComponentId(component)), IsByPointer(component)};
}

HomeRef ElementRef(const HomeRef& list, int depth) {
  return {list.Member("elem [tn" + std::to_string(depth) + "]"), false};
}

std::string PresenceTest(const HomeRef& structure, const AsnType& type, const AsnType& component) {
  const int number = getTypeCompNbr(component);
  return ControlMember(structure, type, number) + " & BITL(" + std::to_string(ControlBit(number)) + ")";
}

std::string PresenceSet(const HomeRef& structure, const AsnType& type, const AsnType& component) {
  const int number = getTypeCompNbr(component);
  return ControlMember(structure, type, number) + " |= BITL(" + std::to_string(ControlBit(number)) + ");\n";
}

AsnType Called(const AsnType& type) {
  AsnType selected = type;
  while (getTypeMainType(selected) == TYP_SELECTION) selected = forSelectionType(selected);
  return isReference(selected) && IsStructured(selected) ? forSynonymType(selected) : AsnType{};
}

std::string Var(int depth) {
  return "v" + std::to_string(depth);
}

int GenerateLevelOf(const ModRec& module) {
  return module.options.Number("GENERATE", kGenerateEntriesAndVisibles);
}

namespace {
// The definitions of the module that a definition refers to, directly or from within its parts.
void ReferredTypes(const AsnType& type, std::vector<AsnType>& referred, int depth) {
  if (depth > kDeepestType) fatalError(kInternal, "CBET variable index overflow.");
  if (isReference(type)) {
    const AsnType of = forSynonymType(type);
    if (of.module == type.module && isDefinedType(of)) referred.push_back(of);
    return;
  }
  for (const AsnType& component : TypeComps(type)) ReferredTypes(component, referred, depth + 1);
  if (isListType(type)) ReferredTypes(forTypeElem(type), referred, depth + 1);
}

class FunctionOrder {
 public:
  explicit FunctionOrder(const FunctionCall& normal) : normal_(normal) {}

  // Chains of definitions may be long: what is still to do lies on a stack of our own. A type is marked when
  // it is met, which ends the walk of recursive types.
  void genNormalFunc(const AsnType& type) {
    if (!Begin(type)) return;
    while (!open_.empty()) {
      Open& top = open_.back();
      if (top.next < top.referred.size()) {
        const AsnType of = top.referred[top.next++];
        Begin(of);
      } else {
        const AsnType done = top.type;
        open_.pop_back();
        normal_(done);
      }
    }
  }

 private:
  struct Open {
    AsnType type;
    std::vector<AsnType> referred;
    size_t next = 0;
  };

  bool Begin(const AsnType& type) {
    if (cGetVF(type) == VF_NONE || !met_.insert(type.number).second) return false;
    Open open{type, {}, 0};
    ReferredTypes(type, open.referred, 0);
    open_.push_back(std::move(open));
    return true;
  }

  const FunctionCall& normal_;
  std::set<int> met_;
  std::vector<Open> open_;
};

// "lumo_value_t v0" and so on, one for each argument.
std::vector<std::string> Declarations(const std::string& arguments) {
  std::vector<std::string> result;
  for (size_t at = 0; at < arguments.size();) {
    const size_t comma = std::min(arguments.find(", ", at), arguments.size());
    if (comma > at) result.push_back(arguments.substr(at, comma - at));
    at = comma + 2;
  }
  return result;
}

std::string NameIn(const std::string& declaration) {
  return declaration.substr(declaration.find_last_of(" *") + 1);
}

void WriteArguments(CText& text, const FunctionHead& head) {
  if (head.has_utility) {
    text.w("ASNG_F");
    text.w("(ASNUTIG *asnutigPtr)");
  }
  if (!head.before.empty()) text.w(head.before);
  if (!head.home.empty()) {
    text.w(head.home);
    text.w(" *home");
  }
  if (!head.behind.empty()) text.w(head.behind);
}

void cFunctionProto(CText& text, const FunctionHead& head, bool ansi) {
  text.w("extern ");
  text.w(head.result);
  text.w(" ");
  text.w(head.name);
  text.w(" (");
  if (!ansi) text.w("/* ");
  WriteArguments(text, head);
  if (!ansi) text.w(" */");
  text.w(");\n");
}

// Names in the parentheses, declarations behind them.
void OldStyleDefinition(CText& text, const FunctionHead& head) {
  std::vector<std::string> declarations = Declarations(head.before);
  if (!head.home.empty()) declarations.push_back(head.home + " *home");
  for (const std::string& one : Declarations(head.behind)) declarations.push_back(one);
  if (head.has_utility) text.w("ASNG_F(asnutigPtr)");
  for (size_t i = 0; i < declarations.size(); ++i) text.w((i == 0 ? "" : ", ") + NameIn(declarations[i]));
  text.w(")\n");
  if (head.has_utility) text.w("ASNG_DEF(ASNUTIG *asnutigPtr)\n");
  for (const std::string& one : declarations) text.w(one + ";\n");
}

void cFunctionDef(CText& text, const FunctionHead& head, bool ansi) {
  text.w(head.result);
  text.w(" ");
  text.w(head.name);
  text.w(" (");
  if (!ansi) return OldStyleDefinition(text, head);
  WriteArguments(text, head);
  text.w(")\n");
}
}  // namespace

void cGenerateTypeFunctions(ModRec& module, int level, const FunctionCall& normal,
                            const FunctionCall& entry) {
  FunctionOrder order(normal);
  const bool visibles = (level & kGenerateVisibles) != 0, entries = (level & kGenerateEntries) != 0;
  forEachHomeType(module, [&](const AsnType& type, int) {
    if (visibles && !cIsFrameType(type)) order.genNormalFunc(type);
    if (!entries || !isEntryType(type)) return;
    order.genNormalFunc(type);
    entry(type);
  });
}

void cBeginFunction(T3AsnFiles& files, const FunctionHead& head) {
  const bool ansi = HasAnsiC(files.module);
  files.header.endl();
  cFunctionProto(files.header, head, ansi);
  files.source.endl();
  cFunctionDef(files.source, head, ansi);
  files.source.open();
}

FunctionHead HeadOf(const AsnType& type, const char* family) {
  FunctionHead head;
  head.home = getMetaTypeId(type);
  head.name = FunctionPrefix(type, family) + head.home;
  return head;
}
}  // namespace asn1
