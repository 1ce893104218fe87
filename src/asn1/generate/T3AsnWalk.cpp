#include "asn1/generate/T3AsnWalk.h"

#include "asn1/model/AsnHome.h"
#include "asn1/model/AsnNames.h"

namespace asn1 {
namespace {
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

bool MayBeMissing(const AsnType& component) {
  return !isMandatoryTypeComp(component) || isExtensionAdditionComponent(component);
}

bool IsCalled(const AsnType& type) {
  return isReference(type) && IsStructured(type);
}

std::string Var(int depth) {
  return "v" + std::to_string(depth);
}

void BeginFunction(T3AsnFiles& files, const AsnType& type, const std::string& result, const char* family,
                   const std::string& before, const std::string& behind) {
  const std::string id = getMetaTypeId(type);
  const std::string head =
      result + " " + FunctionPrefix(type, family) + id + " (" + before + id + " *home" + behind + ")";
  files.header.endl();
  files.header.w("extern " + head + ";\n");
  files.source.endl();
  files.source.put(head + "\n");
  files.source.open();
}
}  // namespace asn1
