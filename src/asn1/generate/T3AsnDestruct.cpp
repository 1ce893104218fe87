// The functions that give homes back.
#include <string>
#include <vector>

#include "asn1/front/AsnFault.h"
#include "asn1/generate/T3AsnWalk.h"
#include "asn1/model/AsnHome.h"
#include "asn1/model/AsnNames.h"
#include "generator/text/T3CodeDefs.h"

namespace asn1 {
namespace {
constexpr const char* kDestructFamily = "_dest_";

// All memory of a home goes with its handle: a function tells those of the types within the home, which do
// nothing for a place that is no home of its own, and gives the home of an entry type back.
class Destruct {
 public:
  explicit Destruct(T3AsnFiles& files) : files_(files), text_(files.source) {}

  void Run() {
    cGenerateTypeFunctions(
        files_.module, GenerateLevelOf(files_.module), [&](const AsnType& type) { NormalFunction(type); },
        [](const AsnType&) {});
  }

 private:
  void NormalFunction(const AsnType& type) {
    if (isReference(type)) text_.put("\n/* synonym type */");
    FunctionHead head = HeadOf(type, kDestructFamily);
    head.result = "void";
    head.behind = ", " + std::string(LUMO_CONTEXT_T) + " context";
    cBeginFunction(files_, head);
    if (isReference(type) && IsStructured(type))
      Call(forSynonymType(type), "(" + getMetaTypeId(forSynonymType(type)) + " *) home");
    else if (IsStructured(type))
      Structure(forBaseType(type), {"home", true}, 0);
    else
      Leaf(type, true);
    if (isEntryType(type)) text_.w("asnwfree (home);\n");
    text_.close();
  }

  void Call(const AsnType& of, const std::string& place) {
    text_.w(FunctionPrefix(of, kDestructFamily) + getMetaTypeId(of) + " (");
    text_.w(place);
    text_.w(", context);\n");
  }

  void Structure(const AsnType& type, const HomeRef& home, int depth) {
    if (depth > 200) fatalError(kInternal, "CBET variable index overflow.");
    if (isListType(type)) return List(type, home, depth);
    const bool is_choice = getTypeMainType(type) == TYP_CHOICE;
    if (is_choice) {
      text_.w("switch (");
      text_.w(home.Member("choice)"));
      text_.open();
    }
    for (const AsnType& component : TypeComps(type)) Component(type, component, home, depth);
    if (is_choice) text_.close();
  }

  void Component(const AsnType& type, const AsnType& component, const HomeRef& home, int depth) {
    const HomeRef place = ComponentRef(home, component);
    if (getTypeMainType(type) == TYP_CHOICE) {
      text_.w("case " + std::to_string(getTypeCompNbr(component)) + ":\n");
      Value(component, place, depth);
      text_.w("break;\n");
      return;
    }
    const bool may_be_missing = !isMandatoryTypeComp(component);
    if (may_be_missing) {
      text_.w("if (");
      text_.w(PresenceTest(home, type, component) + ")");
      text_.open();
    }
    Value(component, place, depth);
    if (may_be_missing) text_.close();
  }

  void List(const AsnType& type, const HomeRef& home, int depth) {
    const std::string counter = "tn" + std::to_string(depth);
    text_.open();
    text_.w("uint32 " + counter + " = 0;\n");
    text_.w("for (" + counter + " = 0 ; " + counter + " < " + home.Member("n") + " ; " + counter + "++)");
    text_.open();
    Value(forTypeElem(type), ElementRef(home, depth), depth);
    text_.close();
    text_.close();
  }

  void Value(const AsnType& type, const HomeRef& home, int depth) {
    if (const AsnType of = Called(type)) return Call(of, home.Address());
    if (IsStructured(type)) return Structure(forBaseType(type), home, depth + 1);
    Leaf(type, false);
  }

  void Leaf(const AsnType& type, bool alone) {
    switch (getBaseTypeMainType(type)) {
      case TYP_ANY:
      case TYP_OPEN:
        return text_.w("/* Frame */\n");
      case TYP_GENTIME:
      case TYP_UTCTIME:
        return text_.w("/* Time */\n");
      case TYP_EXTERNAL:
        return text_.w("/* Ext */\n");
      default:
        if (alone) text_.w("/* Additional Normal Destruct Function " + getMetaTypeId(type) + " */\n");
    }
  }

  T3AsnFiles& files_;
  CText& text_;
};
}  // namespace

void t3asn_gen_destruct(T3AsnFiles& files) {
  Destruct(files).Run();
}
}  // namespace asn1
