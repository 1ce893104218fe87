// Constraints, and the paths of their at-notations.
#include <algorithm>

#include "mesk/Resolver.h"

namespace mesk {

using namespace asn1;

namespace {

bool hasSize(MainType main) {
  return main == TYP_BITSTR || main == TYP_OCTSTR || main == TYP_SEQOF || main == TYP_SETOF ||
         main == TYP_CHASTR || main == TYP_OBJDESCR || (main >= TYP_NUMSTR && main <= TYP_UNISTR);
}

bool hasAlphabet(MainType main) {
  return main == TYP_OBJDESCR || (main >= TYP_NUMSTR && main <= TYP_CHASTR);
}

bool hasRange(MainType main) {
  return main == TYP_INTEGER || main == TYP_REAL || (main >= TYP_NUMSTR && main <= TYP_UNISTR);
}

}  // namespace

void Resolver::refuseUnless(bool fits, const char* what, const ConstraintAst& ast, const Context& context,
                            const TypeNode* type) {
  if (!type || fits || type->main == TYP_NONE) return;
  error(context, ast.token, std::string(what) + " does not fit the type " + asn1Name(type->main));
  throw Abandoned();
}

void Resolver::makePattern(const ConstraintAst& ast, const Context& context, ConstraintNode& node) {
  const ValueNode* pattern = behind(makeValue(*ast.value, context, plainType(TYP_GENSTR)));
  node.has_text = true;
  if (pattern) node.text = pattern->text;
}

/// A type as a constraint, or what a string contains.
ConstraintNode* Resolver::makeContained(const ConstraintAst& ast, const Context& context, TypeNode& owner,
                                        TypeNode* governor, ConstraintNode& node) {
  if (ast.value) node.value = makeValue(*ast.value, context, plainType(TYP_OBJID));
  if (!ast.type) return &node;
  // A set as a parameter stands for the elements that it lists.
  const Argument* arg = ast.type->kind == TypeAst::kRef ? argument(ast.type->ref, context) : nullptr;
  if (arg && (*arg->context.module->tokens)[arg->range.begin].text == "{") {
    Parser parser = parserAt(arg->context, arg->range.begin + 1);
    ConstraintAst* set = parser.parseElementSets();
    if (parser.pos != arg->range.end - 1) parser.fail("expected the end of the set");
    return makeConstraint(*set, arg->context, owner, governor);
  }
  node.type = makeType(*ast.type, context, nullptr);
  if (ast.kind == kContents) node.type->string_around = &owner;
  const TypeNode *type = base(governor), *contained = base(node.type);
  if (ast.kind == kContainedSubtype && contained && type && contained->main != type->main &&
      !(hasAlphabet(contained->main) && hasAlphabet(type->main))) {
    error(context, ast.token,
          std::string("the contained type is a ") + asn1Name(contained->main) + ", " + asn1Name(type->main) +
              " is needed");
  }
  return &node;
}

/// `owner` is the type that bears the constraint, `governor` what its values are of; none where that isn't
/// known.
ConstraintNode* Resolver::makeConstraint(const ConstraintAst& ast, const Context& context, TypeNode& owner,
                                         TypeNode* governor) {
  Depth depth(depth_);
  if (!depth.ok()) {
    error(context, ast.token, "constraints are nested too deeply");
    throw Abandoned();
  }
  ConstraintNode& node = constraints_.emplace_back();
  node.kind = ast.kind;
  node.open = ast.open;
  node.flags = static_cast<uint8_t>((ast.exception ? kFlagException : 0) | ast.presence);
  TypeNode* type = base(governor);
  if (governor && !type) throw Abandoned();
  const auto refuse = [&](bool fits, const char* what) { refuseUnless(fits, what, ast, context, type); };
  switch (ast.kind) {
    case kUnion:
    case kIntersection:
    case kCatenation:
    case kExcept:
      node.first = makeConstraint(*ast.first, context, owner, governor);
      node.second = makeConstraint(*ast.second, context, owner, governor);
      break;
    case kAllExcept:
      node.first = makeConstraint(*ast.first, context, owner, governor);
      break;
    case kSingleValue:
      node.value = makeValue(*ast.value, context, governor);
      break;
    case kValueRange:
      refuse(type && hasRange(type->main), "a value range");
      if (ast.value) node.value = makeValue(*ast.value, context, governor);
      if (ast.value2) node.value2 = makeValue(*ast.value2, context, governor);
      checkRange(ast, context, node);
      break;
    case kPermittedAlphabet:
      refuse(type && hasAlphabet(type->main), "FROM");
      node.first = makeConstraint(*ast.first, context, owner, governor);
      break;
    case kSize:
      refuse(type && hasSize(type->main), "SIZE");
      node.first = makeConstraint(*ast.first, context, owner, plainType(TYP_INTEGER));
      break;
    case kPattern:
      refuse(type && hasAlphabet(type->main), "PATTERN");
      makePattern(ast, context, node);
      break;
    case kContents:
      refuse(type && (type->main == TYP_OCTSTR || type->main == TYP_BITSTR), "CONTAINING or ENCODED BY");
      return makeContained(ast, context, owner, governor, node);
    case kContainedSubtype:
      return makeContained(ast, context, owner, governor, node);
    case kWithComponent:
      refuse(type && (type->main == TYP_SEQOF || type->main == TYP_SETOF), "WITH COMPONENT");
      node.first = makeConstraint(*ast.first, context, owner, type ? type->components.front() : nullptr);
      break;
    case kWithComponents:
      refuse(type && (type->main == TYP_SEQ || type->main == TYP_SET || type->main == TYP_CHOICE ||
                      type->main == TYP_REAL),
             "WITH COMPONENTS");
      fillWithComponents(ast, context, owner, governor, node);
      break;
    case kTableConstraint: {
      ConstraintNode* table = fillTable(ast, context, owner);
      table->flags = node.flags;
      return table;
    }
    default:
      break;
  }
  return &node;
}

/// The bounds of a range of numbers must be known to be in order.
void Resolver::checkRange(const ConstraintAst& ast, const Context& context, const ConstraintNode& node) {
  const ValueNode* low = behind(node.value);
  const ValueNode* high = behind(node.value2);
  if (!low || !high || low->main != TYP_INTEGER || high->main != TYP_INTEGER) return;
  if (low->integer > high->integer) error(context, ast.token, "the bounds of the range are reversed");
}

void Resolver::fillWithComponents(const ConstraintAst& ast, const Context& context, TypeNode& owner,
                                  TypeNode* governor, ConstraintNode& node) {
  TypeNode* type = base(governor);
  if (ast.partial) node.flags |= kFlagPartial;
  ConstraintNode* last = nullptr;
  for (const ConstraintAst* part : ast.components) {
    TypeNode* component = nullptr;
    if (type && type->main == TYP_REAL) {
      if (part->name == "mantissa" || part->name == "base" || part->name == "exponent")
        component = plainType(TYP_INTEGER);
    } else if (type) {
      component = componentOf(*type, part->name);
    }
    if (!component) {
      error(context, part->token, "the type has no component " + inQuotes(part->name));
      throw Abandoned();
    }
    ConstraintNode& made = constraints_.emplace_back();
    made.kind = kComponentConstraint;
    made.flags = part->presence;
    made.text = part->name;
    made.has_text = true;
    if (part->first) made.first = makeConstraint(*part->first, context, owner, component);
    (last ? last->next : node.first) = &made;
    last = &made;
  }
}

ConstraintNode* Resolver::fillTable(const ConstraintAst& ast, const Context& context, TypeNode& owner) {
  ValueNode* set = objectSetFor(ast.set, context);
  ConstraintNode* first = nullptr;
  ConstraintNode* last = nullptr;
  for (size_t i = 0; i < std::max<size_t>(1, ast.paths.size()); ++i) {
    ConstraintNode& node = constraints_.emplace_back();
    node.kind = kTableConstraint;
    node.value = set;
    if (i < ast.paths.size()) fillPath(ast.paths[i], context, owner, node);
    (last ? last->second : first) = &node;  // further at-notations hang on the first one
    last = &node;
  }
  return first;
}

bool Resolver::fillPath(const AtPath& path, const Context& context, TypeNode& owner, ConstraintNode& node) {
  const auto isStruct = [](const TypeNode* type) {
    return type->main == TYP_SEQ || type->main == TYP_SET || type->main == TYP_CHOICE;
  };
  TypeNode* around = nullptr;
  int level = 0;
  const auto outward = [](const TypeNode* type) { return type->parent ? type->parent : type->string_around; };
  for (TypeNode* type = outward(&owner); type; type = type->instance ? nullptr : outward(type)) {
    if (!isStruct(type)) continue;
    around = type;
    if (path.level > 0 && ++level == path.level) break;
  }
  if (!around || (path.level > 0 && level < path.level)) {
    error(context, path.token, "no structure stands around the type that far out");
    return false;
  }
  for (size_t i = 0; i < path.names.size(); ++i) {
    TypeNode* type = i == 0 ? around : base(around);
    TypeNode* found = type && isStruct(type) ? componentOf(*type, path.names[i]) : nullptr;
    if (found == nullptr) {
      error(context, path.token, "the structure has no component " + inQuotes(path.names[i]));
      return false;
    }
    around = found;
    node.path.push_back(PathStep{path.names[i], around, path.level});
  }
  return true;
}

}  // namespace mesk
