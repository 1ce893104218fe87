#include <gtest/gtest.h>

#include <utility>

#include "asn1/front/AsnFault.h"
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
  AsnType Component(const AsnType& parent, const std::string& name, const AsnType& type) {
    TNode node{};
    node.name = Text(name);
    node.main_type = TYP_SYNONYM;
    node.status = kComponent;
    node.parent = node.definition = parent.number;
    node.next = parent.node().first_component;
    module.types.push_back(node);
    const AsnType made = Last();
    Refer(made, type);
    tNode(module, parent.number).first_component = made.number;
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

TEST(AsnReferences, LongChains) {
  Made made("M");
  AsnType last = made.Integer(made.Range(0, 9));
  for (int i = 0; i < 30000; ++i) {
    const AsnType next = made.Definition("Next", TYP_SYNONYM);
    Made::Refer(next, last);
    last = next;
  }
  EXPECT_EQ(getBaseTypeMainType(last), TYP_INTEGER);
  EXPECT_EQ(TextOf(IntegerSetOf(last)), "[0,9]");
  EXPECT_EQ(TagsOf(last).size(), 1u);
}

TEST(AsnHomes, PointersWhereTypesHoldThemselves) {
  Made made("M");
  const AsnType a = made.Definition("A", TYP_SEQ), b = made.Definition("B", TYP_SEQ),
                c = made.Definition("C", TYP_SEQ), outside = made.Definition("Outside", TYP_SEQ),
                alone = made.Definition("Alone", TYP_SEQ);
  const AsnType to_a = made.Component(outside, "toA", a), to_b = made.Component(a, "toB", b),
                to_c = made.Component(b, "toC", c), back = made.Component(c, "back", a),
                to_alone = made.Component(c, "toAlone", alone);
  for (const AsnType& component : {to_a, to_b, to_c, back}) EXPECT_TRUE(IsByPointer(component));
  EXPECT_FALSE(IsByPointer(to_alone));
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

}  // namespace
}  // namespace asn1
