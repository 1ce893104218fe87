#include <gtest/gtest.h>

#include <utility>

#include "asn1/front/AsnFault.h"
#include "asn1/front/TreeCheck.h"
#include "asn1/model/AsnHome.h"
#include "asn1/model/AsnNames.h"
#include "asn1/model/AsnRanges.h"

namespace asn1 {
namespace {

// A module made of records in memory.
struct Made {
  explicit Made(const std::string& name) {
    module.name = name;
    module.state = kRead;
  }

  int Text(const std::string& text) {
    module.strings8.push_back(text);
    return static_cast<int>(module.strings8.size());
  }
  AsnType Definition(const std::string& name, MainType main_type) {
    TNode node{};
    node.name = Text(name);
    node.main_type = main_type;
    node.status = kDefinition;
    module.types.push_back(node);
    const AsnType type = Last();
    if (last_definition != 0) tNode(module, last_definition).next = type.number;
    if (module.header.first_type == 0) module.header.first_type = type.number;
    last_definition = type.number;
    return type;
  }
  // Adds a component, or without a name an element.
  AsnType Inner(const AsnType& father, const std::string& name, MainType main_type,
                Presence presence = kMandatory) {
    TNode node{};
    node.name = name.empty() ? 0 : Text(name);
    node.main_type = main_type;
    node.status = kComponent;
    node.presence = presence;
    node.parent = father.number;
    node.definition = getDefinitionOf(father).number;
    for (const AsnType& other : TypeComps(father)) node.component_nbr = other.node().component_nbr + 1;
    module.types.push_back(node);
    const AsnType made = Last();
    int* link = &tNode(module, father.number).first_component;
    while (*link != 0) link = &tNode(module, *link).next;
    *link = made.number;
    return made;
  }
  static void Refer(const AsnType& from, const AsnType& to, int entry = 1) {
    tNode(*from.module, from.number).ref_module = entry;
    tNode(*from.module, from.number).ref_type = to.number;
  }
  int Value(int64_t number) {
    VNode node{};
    node.main_type = TYP_INTEGER;
    node.v.i.integer[0] = static_cast<int32_t>(number);
    node.v.i.integer[1] = static_cast<int32_t>(number >> 32);
    module.values.push_back(node);
    return static_cast<int>(module.values.size());
  }
  int Constraint(ConstraintKind kind, int first = 0, int second = 0) {
    SubRec node{};
    node.kind = kind;
    node.first = first;
    node.second = second;
    module.constraints.push_back(node);
    return static_cast<int>(module.constraints.size());
  }
  int Range(Wide low, Wide high) {
    const int number = Constraint(kValueRange);
    module.constraints.back().value = low == kMinimum ? 0 : Value(Clamped(low));
    module.constraints.back().value2 = high == kMaximum ? 0 : Value(Clamped(high));
    return number;
  }
  int Single(int64_t value) {
    const int number = Constraint(kSingleValue);
    module.constraints.back().value = Value(value);
    return number;
  }
  AsnType Integer(int constraint) {
    const AsnType type = Definition("Number" + std::to_string(module.types.size()), TYP_INTEGER);
    tNode(module, type.number).constraint = constraint;
    return type;
  }
  void Tag(const AsnType& type, TagClass tag_class, int number, bool is_explicit) {
    module.tags.push_back({tag_class, number, is_explicit ? 1 : 0, tNode(module, type.number).first_tag});
    tNode(module, type.number).first_tag = static_cast<int>(module.tags.size());
  }
  AsnType Last() { return newAsnType(module, static_cast<int>(module.types.size())); }

  ModRec module;
  int last_definition = 0;
};

std::string TextOf(const ConstrainedSet& set) {
  std::string text = set.constrained ? "" : "free ";
  for (const Segment& segment : set.set.segments())
    text += "[" + ToString(segment.low) + "," + ToString(segment.high) + "]";
  return text + (set.extensible ? "..." : "");
}

TEST(AsnValueSets, Operations) {
  const ValueSet low(1, 5), high(6, 10), far(12, 20);
  EXPECT_EQ(low.Merge(high).segments(), (std::vector<Segment>{{1, 10}}));
  EXPECT_EQ(high.Merge(far).Merge(low).segments(), (std::vector<Segment>{{1, 10}, {12, 20}}));
  EXPECT_TRUE(low.Intersect(high).empty());
  EXPECT_EQ(low.Merge(far).Intersect(ValueSet(4, 13)).segments(), (std::vector<Segment>{{4, 5}, {12, 13}}));
  EXPECT_EQ(low.Exclude(ValueSet(2, 3)).segments(), (std::vector<Segment>{{1, 1}, {4, 5}}));
  EXPECT_EQ(ValueSet(kMinimum, kMaximum).Exclude(low).segments(),
            (std::vector<Segment>{{kMinimum, 0}, {6, kMaximum}}));
  EXPECT_TRUE(low.Exclude(ValueSet(kMinimum, kMaximum)).empty());
  EXPECT_TRUE(ValueSet(5, 1).empty());
  EXPECT_EQ(ValueSet(1, kMaximum).Merge(ValueSet(kMinimum, 0)).segments(),
            (std::vector<Segment>{{kMinimum, kMaximum}}));
}

TEST(AsnValueSets, Constraints) {
  Made made("M");
  const auto text = [&](int constraint) { return TextOf(IntegerSetOf(made.Integer(constraint))); };
  EXPECT_EQ(text(made.Constraint(kUnion, made.Range(1, 5), made.Range(6, 10))), "[1,10]");
  EXPECT_EQ(text(made.Constraint(kCatenation, made.Single(7), made.Range(1, 5))), "[1,5][7,7]");
  EXPECT_EQ(text(made.Constraint(kIntersection, made.Range(1, 5), made.Range(4, 9))), "[4,5]");
  testing::internal::CaptureStdout();
  const AsnType none = made.Integer(made.Constraint(kIntersection, made.Range(1, 5), made.Range(7, 9)));
  EXPECT_EQ(TextOf(IntegerSetOf(none)) + TextOf(IntegerSetOf(none)), "");
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "** BET Warning: An empty flat integer value set.\n");
  EXPECT_EQ(text(made.Constraint(kExcept, made.Range(1, 9), made.Single(5))), "[1,4][6,9]");
  EXPECT_EQ(text(made.Constraint(kExcept, made.Range(1, 9), made.Constraint(kUserDefined))), "[1,9]");
  EXPECT_EQ(TextOf(IntegerSetOf(made.Integer(made.Constraint(kAllExcept, made.Range(kMinimum, -1))))),
            "[0," + ToString(kMaximum) + "]");
  EXPECT_EQ(text(made.Constraint(kCatenation, made.Range(1, 8), made.Constraint(kExtensionMarker))),
            "[1,8]...");
  EXPECT_EQ(
      text(made.Constraint(kCatenation,
                           made.Constraint(kCatenation, made.Range(1, 8), made.Constraint(kExtensionMarker)),
                           made.Range(20, 30))),
      "[1,8]...");
  EXPECT_EQ(TextOf(IntegerSetOf(made.Integer(0))).substr(0, 5), "free ");
  EXPECT_EQ(text(made.Constraint(kTableConstraint)).substr(0, 5), "free ");
}

TEST(AsnValueSets, Endpoints) {
  Made made("M");
  const AsnType number = made.Integer(made.Range(-3, kMaximum));
  EXPECT_EQ(EndpointsOf(number), (Segment{-3, kMaximum}));
  EXPECT_EQ(EndpointsOf(made.Integer(0)), (Segment{kMinimum, kMaximum}));
  const AsnType string = made.Definition("String", TYP_OCTSTR);
  EXPECT_EQ(EndpointsOf(string), (Segment{0, kMaximum}));
  tNode(made.module, string.number).constraint = made.Constraint(kSize, made.Range(kMinimum, 9));
  EXPECT_EQ(EndpointsOf(string), (Segment{0, 9}));
  EXPECT_EQ(EndpointsOf(made.Definition("Flag", TYP_BOOLEAN)), (Segment{kMinimum, kMaximum}));
  const AsnType items = made.Definition("Items", TYP_ENUM);
  const int first = made.Value(9), second = made.Value(-2);
  made.module.values[static_cast<size_t>(first) - 1].next = second;
  tNode(made.module, items.number).first_named = first;
  EXPECT_EQ(EndpointsOf(items), (Segment{-2, 9}));
}

TEST(AsnValueSets, ContainedSubtypesWithoutAnEnd) {
  Made made("M");
  const AsnType one = made.Definition("One", TYP_INTEGER), other = made.Definition("Other", TYP_INTEGER);
  for (const auto& [from, to] : {std::pair(one, other), std::pair(other, one)}) {
    const int constraint = made.Constraint(kContainedSubtype);
    made.module.constraints.back().component_type = to.number;
    tNode(made.module, from.number).constraint = constraint;
  }
  testing::internal::CaptureStderr();
  EXPECT_THROW(IntegerSetOf(one), AsnExit);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "\nFATAL ERROR : Internal error\n              Unable to construct a flat integer value set\n\n");
}

TEST(AsnReferences, ThroughTwoModules) {
  Made one("One"), two("Two-Mod");
  one.module.imports.push_back({"Two-Mod", &two.module});
  const AsnType base = two.Integer(two.Range(0, 9));
  const AsnType middle = two.Definition("Middle", TYP_SYNONYM),
                first = one.Definition("First-Type", TYP_SYNONYM);
  Made::Refer(middle, base);
  Made::Refer(first, middle, 2);
  EXPECT_EQ(forSynonymType(first), middle);
  EXPECT_EQ(forBaseType(first), base);
  EXPECT_TRUE(isDefinedType(forBaseType(first)));
  EXPECT_TRUE(isSynonymType(first));
  EXPECT_EQ(getBaseTypeMainType(first), TYP_INTEGER);
  EXPECT_EQ(TextOf(IntegerSetOf(first)), "[0,9]");
  EXPECT_EQ(getTypeRef(first), "First_Type");
  EXPECT_EQ(getModuleRef(two.module), "Two_Mod");
  EXPECT_TRUE(isConstraints(first));
  EXPECT_FALSE(isLocalTypeConstraints(first));
  std::string modules;
  forEachExportingModule(one.module, [&](ModRec& module) { modules += module.name; });
  EXPECT_EQ(modules, "Two-Mod");
}

TEST(AsnReferences, WithoutAnEnd) {
  Made made("M");
  const AsnType loop = made.Definition("Loop", TYP_SYNONYM),
                nowhere = made.Definition("Nowhere", TYP_SYNONYM);
  const AsnType one = made.Definition("One", TYP_SELECTION), other = made.Definition("Other", TYP_SELECTION);
  Made::Refer(loop, loop);
  Made::Refer(one, other);
  Made::Refer(other, one);
  for (const AsnType& type : {loop, nowhere, one, other}) {
    testing::internal::CaptureStderr();
    EXPECT_THROW(forBaseType(type), AsnExit);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "\nFATAL ERROR : Internal error\n              Unable to find synonym type.\n\n");
  }
}

std::string TagText(const AsnType& type) {
  std::string text;
  for (const AsnTag& tag : TagsOf(type))
    text += std::to_string(tag.tag_class) + "." + std::to_string(tag.number) + (tag.constructed ? "c " : " ");
  return text;
}

TEST(AsnTags, OutermostFirst) {
  Made made("M");
  const AsnType number = made.Definition("Number", TYP_INTEGER),
                choice = made.Definition("Choice", TYP_CHOICE);
  const AsnType open = made.Definition("Open", TYP_ANY);
  EXPECT_EQ(TagText(number), "0.2 ");
  EXPECT_EQ(TagText(choice), "");
  EXPECT_EQ(TagText(open), "");
  made.Tag(number, kTagContext, 5, false);
  EXPECT_EQ(TagText(number), "2.5 ");
  const AsnType outer = made.Definition("Outer", TYP_SYNONYM);
  Made::Refer(outer, number);
  made.Tag(outer, kTagApplication, 1, true);
  EXPECT_EQ(TagText(outer), "1.1c 2.5 ");
  made.Tag(choice, kTagPrivate, 3, true);
  EXPECT_EQ(TagText(choice), "3.3c ");
}

TEST(AsnNames, Identifiers) {
  Made made("M");
  const AsnType outer = made.Definition("Outer-Type", TYP_SEQ);
  const AsnType list = made.Inner(outer, "a-list", TYP_SEQOF), element = made.Inner(list, "", TYP_INTEGER);
  EXPECT_EQ(cTypeId(outer), "Outer_Type");
  EXPECT_EQ(cTypeId(list), "1_Outer_Type_a_list");
  EXPECT_EQ(getTypeRef(element), "?!?");
  EXPECT_EQ(t3asn_inline_type_id(element), "Outer_Type_expl_a_list_expl_agg");
  EXPECT_EQ(MakeASNIdent("a-b"), "a_b");
  EXPECT_EQ(MakeASNIdent("type"), "type_");
  made.module.options.Record("TPREF=P-");
  made.module.options.Record("TNAME=Outer-Type:Other");
  made.module.options.Apply({"M"}, [](const std::string&) { return false; });
  EXPECT_EQ(cTypeId(outer), "Other");
}

TEST(AsnHomes, Forms) {
  Made made("M");
  EXPECT_EQ(cGetVF(made.Integer(made.Range(0, 7))), VF_I64);
  EXPECT_EQ(cGetVF(made.Integer(made.Range(INT32_MIN, INT32_MAX))), VF_I64);
  EXPECT_EQ(cGetVF(made.Integer(made.Range(0, UINT32_MAX))), VF_I64);
  EXPECT_EQ(cGetVF(made.Integer(made.Range(-1, UINT32_MAX))), VF_I64);
  EXPECT_EQ(cGetVF(made.Integer(0)), VF_I64);
  EXPECT_EQ(cGetVF(made.Definition("Any", TYP_ANY)), VF_FRM);
  EXPECT_EQ(cGetVF(made.Definition("Class", TYP_CLASS)), VF_NONE);
}

TEST(AsnHomes, ControlMembers) {
  Made made("M");
  const AsnType plain = made.Definition("Plain", TYP_SEQ), added = made.Definition("Added", TYP_SEQ);
  made.Inner(plain, "a", TYP_NULL);
  EXPECT_EQ(ControlWords(plain), 0);
  made.Inner(added, "a", TYP_NULL);
  const AsnType addition = made.Inner(added, "b", TYP_NULL);
  tNode(made.module, addition.number).addition = 1;
  EXPECT_EQ(ControlWords(added), 1);
  const AsnType large = made.Definition("Large", TYP_SEQ);
  for (int i = 0; i < 32; ++i) made.Inner(large, "c" + std::to_string(i), TYP_NULL, kOptional);
  EXPECT_EQ(ControlWords(large), 1);
  EXPECT_EQ(ControlWord(getTypeCompNbr(made.Inner(large, "last", TYP_NULL))), 1);
  EXPECT_EQ(ControlWords(large), 2);
}

TEST(AsnHomes, PointersWhereStructuresHoldThemselves) {
  Made made("M");
  const AsnType tree = made.Definition("Tree", TYP_SEQ), one = made.Definition("One", TYP_SEQ);
  const AsnType other = made.Definition("Other", TYP_CHOICE), plain = made.Definition("Plain", TYP_SEQ);
  const AsnType left = made.Inner(tree, "left", TYP_SYNONYM, kOptional);
  Made::Refer(left, tree);
  const AsnType to_other = made.Inner(one, "other", TYP_SYNONYM),
                to_one = made.Inner(other, "one", TYP_SYNONYM);
  Made::Refer(to_other, other);
  Made::Refer(to_one, one);
  const AsnType to_plain = made.Inner(one, "plain", TYP_SYNONYM);
  Made::Refer(to_plain, plain);
  made.Inner(plain, "number", TYP_INTEGER);
  const AsnType list = made.Inner(plain, "list", TYP_SEQOF), element = made.Inner(list, "", TYP_SYNONYM);
  Made::Refer(element, plain);
  EXPECT_TRUE(IsByPointer(left));
  EXPECT_TRUE(IsByPointer(to_other));
  EXPECT_TRUE(IsByPointer(to_one));
  EXPECT_FALSE(IsByPointer(to_plain));
  EXPECT_FALSE(IsByPointer(list));
  EXPECT_FALSE(IsByPointer(element));
}

TEST(AsnTrees, SoundOnes) {
  Made made("M");
  const AsnType outer = made.Definition("Outer", TYP_SEQ);
  const AsnType a = made.Inner(outer, "a", TYP_NULL), b = made.Inner(outer, "b", TYP_SEQOF);
  made.Inner(b, "", TYP_NULL);
  made.Integer(made.Constraint(kUnion, made.Range(1, 5), made.Single(6)));
  ModRec& module = made.module;
  EXPECT_TRUE(IsSoundTree(module, 1));
  const auto with = [&](int number, int32_t TNode::*field, int32_t value) {
    const int32_t before = std::exchange(tNode(module, number).*field, value);
    const bool sound = IsSoundTree(module, 1);
    tNode(module, number).*field = before;
    return sound;
  };
  EXPECT_FALSE(with(b.number, &TNode::next, a.number));
  EXPECT_FALSE(with(b.number, &TNode::next, b.number));
  EXPECT_FALSE(with(b.number, &TNode::first_component, outer.number));
  EXPECT_FALSE(with(b.number, &TNode::first_component, 0));
  EXPECT_FALSE(with(b.number, &TNode::parent, a.number));
  EXPECT_FALSE(with(b.number, &TNode::component_nbr, 40));
  EXPECT_FALSE(with(a.number, &TNode::ref_module, 2));
  EXPECT_FALSE(with(a.number, &TNode::constraint, -1));
  EXPECT_FALSE(with(a.number, &TNode::first_named, 99));
  EXPECT_TRUE(with(a.number, &TNode::ref_type, outer.number));
  module.constraints[0].first = 1;
  EXPECT_FALSE(IsSoundTree(module, 1));
}
}  // namespace
}  // namespace asn1
