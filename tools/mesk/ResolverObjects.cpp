// Information object classes, objects and object sets.
#include <algorithm>

#include "mesk/Resolver.h"

namespace mesk {

using namespace asn1;

ClassUse Resolver::classOf(const TypeAst& type, const Context& context) {
  if (type.kind == TypeAst::kRef) return classOf(type.ref, context);
  error(context, type.token, "a class is needed");
  throw Abandoned();
}

/// The class behind names; an error is reported.
ClassUse Resolver::classOf(const RefAst& ref, const Context& context) {
  RefAst current = ref;
  Context where = context;
  for (int steps = 0; steps < 200; ++steps) {
    if (const Argument* arg = argument(current, where)) {
      const TypeAst* type = typeOfArgument(*arg);
      if (type->kind != TypeAst::kRef) break;
      where = arg->context;
      current = type->ref;
      continue;
    }
    Definition* definition = find(current, where);
    if (!definition) throw Abandoned();
    if (kindOf(*definition) != DefKind::kClass) break;
    const Env* env = nullptr;
    if (definition->parameterized && !(env = bind(*definition, current, where))) throw Abandoned();
    where = Context{definition->module, env};
    if (definition->cls) return ClassUse{definition->cls, where, definition};
    current = definition->type->ref;
  }
  error(context, ref.token, inQuotes(ref.name) + " is not a class");
  throw Abandoned();
}

const FieldAst* Resolver::findField(const ClassUse& cls, std::string_view name, const Place& place) {
  const auto found = cls.cls->by_name.find(name);
  if (found != cls.cls->by_name.end()) return &cls.cls->fields[found->second];
  reporter_.error(place, "the class " + inQuotes(cls.definition->name) + " has no field " + inQuotes(name));
  throw Abandoned();
}

void Resolver::makeClass(Definition& definition, TypeNode& node) {
  const Context context{definition.module, nullptr};
  if (!definition.cls) {
    const ClassUse cls = classOf(definition.type->ref, context);
    node.main = cls.definition->module->builtin
                    ? (cls.definition->name == "TYPE-IDENTIFIER" ? TYP_TYPE_ID : TYP_ABSTR_STX)
                    : TYP_SYNONYM;
    if (node.main == TYP_SYNONYM) node.ref = find(definition.type->ref, context);
    node.ref_name = definition.type->ref.name;
    return;
  }
  node.main = TYP_CLASS;
  for (const FieldAst& field : definition.cls->fields) {
    TypeNode* made = newType(context, field.token, &node);
    made->name = field.name;
    made->component_nbr = static_cast<int>(node.components.size());
    made->field_kind = field.kind;
    made->field = &field;
    made->presence = field.optional                                            ? kOptional
                     : field.default_setting.end > field.default_setting.begin ? asn1::kDefault
                                                                               : kMandatory;
    node.components.push_back(made);
    field_nodes_[&field] = made;
    if (field.kind == kTypeField) {
      made->main = TYP_OPEN;
    } else if (field.type && namesClass(*field.type, context)) {
      const bool set = field.kind == kFixedValueSetField;
      made->field_kind = set ? kObjectSetField : kObjectField;
      const ClassUse cls = classOf(*field.type, context);
      TypeNode* reference = classReference(cls, context, field.type->token);
      made->main = reference->main;
      made->ref = reference->ref;
      made->ref_name = reference->ref_name;
    } else if (field.type) {
      makeType(*field.type, context, &node, made);
      if (field.kind == kFixedValueField && made->presence == asn1::kDefault) {
        later_.push_back([this, made, &field, context] {
          current_ = made->module;
          current_definition_ = made->of_definition;
          Parser parser = parserAt(context, field.default_setting.begin);
          made->default_value = makeValue(*parser.parseValue(), context, made);
        });
      }
    } else {
      made->main = TYP_FIELDLIST;
      made->ref_name = field.fields.front();
    }
  }
}

TypeNode* Resolver::fieldNode(const ClassUse& cls, const FieldAst& field) {
  if (cls.definition->module->builtin || cls.definition->parameterized) return nullptr;
  typeOf(*cls.definition);
  const auto found = field_nodes_.find(&field);
  return found == field_nodes_.end() ? nullptr : found->second;
}

/// The field's node as the present module can name it: the class may stand elsewhere, or be built in.
TypeNode* Resolver::classFieldHere(const ClassUse& cls, const FieldAst& field, const Context& context,
                                   int token) {
  TypeNode* own = fieldNode(cls, field);
  if (own && own->module == current_) return own;
  TypeNode*& made = foreign_fields_[{current_, &field}];
  if (made) return made;
  made = newType(context, token, nullptr);
  made->main = TYP_FIELDLIST;
  made->name = field.name;
  made->ref_name = cls.definition->name;
  return made;
}

/// A node that refers to a class.
TypeNode* Resolver::classReference(const ClassUse& cls, const Context& context, int token) {
  TypeNode* node = newType(context, token, nullptr);
  if (cls.definition->module->builtin) {
    node->main = cls.definition->name == "TYPE-IDENTIFIER" ? TYP_TYPE_ID : TYP_ABSTR_STX;
  } else if (cls.definition->parameterized) {
    node->main = TYP_CLASS;
  } else {
    node->main = TYP_SYNONYM;
    node->ref = cls.definition;
  }
  node->ref_name = cls.definition->name;
  return node;
}

ValueNode* Resolver::makeObject(const ValueAst& ast, const Context& context, const ClassUse& cls,
                                TypeNode* governor) {
  Depth depth(depth_);
  if (!depth.ok()) {
    error(context, ast.token, "objects are nested too deeply");
    throw Abandoned();
  }
  ValueNode* node = newValue(context, ast.token, governor);
  if (ast.kind == ValueAst::kBraces) {
    node->main = TYP_CLASS;
    fillObject(ast.range, context, cls, *node);
    return node;
  }
  if (ast.kind != ValueAst::kRef) {
    error(context, ast.token, "an object is needed");
    throw Abandoned();
  }
  if (const Argument* arg = argument(ast.ref, context)) {
    return makeObject(*valueOfArgument(*arg), arg->context, cls, governor);
  }
  Definition* definition = find(ast.ref, context);
  if (!definition) throw Abandoned();
  if (kindOf(*definition) != DefKind::kObject) {
    error(context, ast.token, inQuotes(ast.ref.name) + " is not an object");
    throw Abandoned();
  }
  if (definition->parameterized) {
    const Env* env = bind(*definition, ast.ref, context);
    if (!env) throw Abandoned();
    return makeObject(*definition->value, Context{definition->module, env}, cls, governor);
  }
  const ClassUse other = classOf(*definition->type, Context{definition->module, nullptr});
  if (other.cls != cls.cls) {
    error(context, ast.token,
          inQuotes(ast.ref.name) + " is an object of class " + inQuotes(other.definition->name) + ", " +
              inQuotes(cls.definition->name) + " is needed");
    throw Abandoned();
  }
  node->main = TYP_SYNONYM;
  node->ref = definition;
  return node;
}

bool Resolver::isSet(const ValueNode& object, const FieldAst& field) {
  const auto name_of = [](const ValueNode* setting) { return setting->name; };
  return places_.find(object.components, field.name, name_of) < object.components.size();
}

void Resolver::fillObject(Range range, const Context& context, const ClassUse& cls, ValueNode& node) {
  Parser parser = parserAt(context, range.begin + 1);
  const int end = range.end - 1;
  if (parser.peek().kind == Tok::kField || (!cls.cls->has_syntax && parser.pos < end)) {
    while (parser.pos < end) {
      if (parser.peek().kind != Tok::kField) parser.fail("expected a field");
      const FieldAst* field = findField(cls, parser.peek().text, placeOf(context, parser.pos));
      ++parser.pos;
      fillField(parser, *field, context, cls, node);
      if (parser.pos < end) parser.expect(",");
    }
  } else if (cls.cls->has_syntax) {
    fillSyntax(cls.cls->syntax, parser, end, context, cls, node, false);
  }
  if (parser.pos != end) parser.fail("expected another part of the object");
  for (const FieldAst& field : cls.cls->fields) {
    if (isSet(node, field) || field.optional) continue;
    if (ValueNode* setting = defaultSetting(cls, field.name))
      node.components.push_back(setting);
    else
      error(context, range.begin, "the field " + inQuotes(field.name) + " has no value");
  }
}

/// Reads what a WITH SYNTAX describes; false if an optional group isn't there.
bool Resolver::fillSyntax(const std::vector<SyntaxAst>& syntax, Parser& parser, int end,
                          const Context& context, const ClassUse& cls, ValueNode& node, bool optional) {
  Depth depth(depth_);
  if (!depth.ok()) parser.fail("syntax groups are nested too deeply; expected an end");
  bool started = false;
  auto next = syntax.begin();  // behind the groups that stand here
  for (size_t i = 0; i < syntax.size(); ++i) {
    const SyntaxAst& part = syntax[i];
    const bool at_end = parser.pos >= end;
    if (!part.group.empty()) {
      // A word that must follow is not the type that the group would begin with.
      next = std::find_if(std::max(next, syntax.begin() + static_cast<std::ptrdiff_t>(i)), syntax.end(),
                          [](const SyntaxAst& other) { return other.group.empty(); });
      const bool follows = next != syntax.end() && !next->word.empty() && parser.isWord(next->word);
      if (!at_end && follows && !part.group.front().field.empty()) continue;
      started |= fillSyntax(part.group, parser, end, context, cls, node, true);
    } else if (!part.word.empty()) {
      const bool here = !at_end && (parser.isWord(part.word) || parser.isSymbol(part.word));
      if (!here && optional && !started) return false;
      if (!here) parser.fail("expected " + std::string(part.word));
      ++parser.pos;
      started = true;
    } else {
      const FieldAst* field = findField(cls, part.field, placeOf(cls.context, part.token));
      if (optional && !started) {
        // A field at the head of a group is there unless something stands that can't begin it.
        const Token& token = parser.peek();
        const bool type = field->kind == kTypeField;
        const bool set = field->kind == kFixedValueSetField || field->kind == kVariableValueSetField;
        const bool begins = type  ? token.kind == Tok::kUpper || parser.isSymbol("[")
                            : set ? parser.isSymbol("{") || token.kind == Tok::kUpper
                                  : token.kind != Tok::kUpper || isReservedWord(token.text);
        if (at_end || !begins) return false;
      }
      if (at_end) parser.fail("expected " + std::string(part.field));
      fillField(parser, *field, context, cls, node);
      started = true;
    }
  }
  return started;
}

ValueNode* Resolver::typeSetting(const Context& context, int token, TypeNode* type) {
  ValueNode* setting = newValue(context, token, nullptr);
  setting->main = type->main;
  setting->field_type = type;
  return setting;
}

ValueNode* Resolver::valueSetting(Parser& parser, const FieldAst& field, const Context& context,
                                  const ClassUse& cls) {
  if (namesClass(*field.type, cls.context)) {
    const ClassUse inner = classOf(*field.type, cls.context);
    return makeObject(*parser.parseValue(), context, inner, nullptr);
  }
  const ValueAst* value = parser.parseValue();
  TypeNode* type = fieldNode(cls, field);
  if (!type) type = makeType(*field.type, cls.context, nullptr);
  ValueNode* setting = makeValue(*value, context, type);
  value_settings_[setting] = {value, context};
  return setting;
}

/// The elements of a value set, which stand in braces or in a type.
ConstraintAst* Resolver::parseValueSet(Parser& parser, const Context& context) {
  if (!parser.isSymbol("{")) {
    ConstraintAst& contained = arena_.constraints.emplace_back();
    contained.kind = kContainedSubtype;
    contained.token = parser.pos;
    contained.type = parser.parseType();
    return &contained;
  }
  const Range range = parser.skipBraces();
  Parser inner = parserAt(context, range.begin + 1);
  ConstraintAst* set = inner.parseElementSets();
  if (inner.pos != range.end - 1) inner.fail("expected the end of the set");
  return set;
}

ValueNode* Resolver::setSetting(Parser& parser, const FieldAst& field, const Context& context,
                                const ClassUse& cls) {
  const int token = parser.pos;
  const bool object = namesClass(*field.type, cls.context);
  if (object && parser.isSymbol("{")) {
    const ClassUse inner = classOf(*field.type, cls.context);
    return makeObjectSet(parser.skipBraces(), context, inner, nullptr);
  }
  if (object) return objectSetFor(parser.parseReference(), context);
  TypeNode* type = makeType(*field.type, cls.context, nullptr);
  type->field_kind = field.kind;
  type->constraints.push_back(makeConstraint(*parseValueSet(parser, context), context, *type, type));
  return typeSetting(context, token, type);
}

/// A value whose type is what another field of the object was set to.
ValueNode* Resolver::variableSetting(Parser& parser, const FieldAst& field, const Context& context,
                                     const ValueNode& object) {
  const int token = parser.pos;
  const ValueAst* value = parser.parseValue();
  const ValueNode* type = nullptr;
  for (const ValueNode* other : object.components) {
    if (other->name == field.fields.front()) type = other;
  }
  if (!type || !type->field_type || field.fields.size() > 1) {
    error(context, token, "the type of the field " + inQuotes(field.name) + " is not known here");
    throw Abandoned();
  }
  ValueNode* setting = makeValue(*value, context, type->field_type);
  value_settings_[setting] = {value, context};
  return setting;
}

ValueNode* Resolver::makeSetting(Parser& parser, const FieldAst& field, const Context& context,
                                 const ClassUse& cls, const ValueNode& object) {
  const int token = parser.pos;
  switch (field.kind) {
    case kTypeField: {
      const TypeAst* written = parser.parseType();
      const TypeAst* type = declared({written, {token, parser.pos}, context, false}, field);
      ValueNode* setting = typeSetting(context, token, makeType(*type, context, nullptr));
      type_settings_[setting] = {type, context};
      return setting;
    }
    case kFixedValueField:
    case kObjectField:
      return valueSetting(parser, field, context, cls);
    case kFixedValueSetField:
    case kObjectSetField:
      return setSetting(parser, field, context, cls);
    case kVariableValueField:
      return variableSetting(parser, field, context, object);
    default:
      error(context, token, "value sets of a variable type are not supported");
      throw Abandoned();
  }
}

void Resolver::fillField(Parser& parser, const FieldAst& field, const Context& context, const ClassUse& cls,
                         ValueNode& node) {
  if (isSet(node, field)) {
    error(context, parser.pos, "the field " + inQuotes(field.name) + " has a value already");
    throw Abandoned();
  }
  ValueNode* setting = makeSetting(parser, field, context, cls, node);
  setting->name = field.name;
  node.components.push_back(setting);
}

ValueNode* Resolver::makeObjectSet(Range range, const Context& context, const ClassUse& cls,
                                   TypeNode* governor) {
  ValueNode* node = newValue(context, range.begin, governor);
  node->main = TYP_CLASS;
  Parser parser = parserAt(context, range.begin + 1);
  addObjectSetElements(parser, range.end - 1, context, cls, *node);
  return node;
}

void Resolver::addObjectSetElements(Parser& parser, int end, const Context& context, const ClassUse& cls,
                                    ValueNode& node) {
  Depth depth(depth_);
  if (!depth.ok()) parser.fail("sets are nested too deeply; expected an end");
  while (parser.pos < end) {
    if (parser.isSymbol("...")) {
      ValueNode* marker = newValue(context, parser.pos++, nullptr);
      marker->main = TYP_EXTENSION_MARKER;
      node.components.push_back(marker);
    } else if (parser.accept("(")) {
      addObjectSetElements(parser, end, context, cls, node);
      parser.expect(")");
    } else if (parser.peek().kind == Tok::kUpper) {
      const RefAst set = parser.parseReference();
      ValueNode* named = objectSetFor(set, context);
      if (!parser.accept(".")) {
        node.components.push_back(named);
      } else {
        const std::vector<std::string_view> fields = parser.parseFieldPath();
        if (const ValueNode* meant = behind(named))
          addObjectsOfFields(*meant, fields, context, set.token, cls, node);
      }
    } else {
      node.components.push_back(makeObject(*parser.parseValue(), context, cls, nullptr));
    }
    if (parser.pos >= end || parser.isSymbol(")")) return;
    if (parser.isWord("INTERSECTION") || parser.isSymbol("^") || parser.isWord("EXCEPT")) {
      error(context, parser.pos, "object sets can only be joined");
      throw Abandoned();
    }
    if (!parser.accept("|") && !parser.acceptWord("UNION")) parser.expect(",");
    if (parser.pos >= end) parser.fail("expected an object or a set");
  }
}

/// Set.&Objects and Set.&object: what the objects of a set hold in fields for objects.
void Resolver::addObjectsOfFields(const ValueNode& set, const std::vector<std::string_view>& fields,
                                  const Context& context, int token, const ClassUse& cls, ValueNode& node) {
  std::vector<const ValueNode*> objects;
  collectObjects(&set, objects);
  for (std::string_view field : fields) {
    ValueNode all;
    for (const ValueNode* object : objects)
      for (ValueNode* setting : object->components)
        if (setting->name == field && !setting->field_type) all.components.push_back(setting);
    objects.clear();
    collectObjects(&all, objects);
  }
  for (const ValueNode* object : objects) {
    if (object->name.substr(0, 1) != "&" && !object->name.empty()) {
      ValueNode* reference = newValue(context, token, nullptr);
      reference->main = TYP_SYNONYM;
      reference->ref = object->module->by_name.at(object->name);
      node.components.push_back(reference);
    } else {
      const Context there{const_cast<Module*>(object->source), nullptr};
      Parser parser = parserAt(there, object->token);
      node.components.push_back(makeObject(*parser.parseValue(), there, cls, nullptr));
    }
  }
}

/// A value that is the set which is named.
ValueNode* Resolver::objectSetFor(const RefAst& ref, const Context& context) {
  Depth depth(depth_);
  if (!depth.ok()) {
    error(context, ref.token, "sets are nested too deeply");
    throw Abandoned();
  }
  if (const Argument* arg = argument(ref, context)) {
    if (!arg->param->governor) {
      error(context, ref.token, inQuotes(ref.name) + " is not an object set");
      throw Abandoned();
    }
    Parser parser = parserAt(arg->context, arg->range.begin);
    if (!parser.isSymbol("{")) return objectSetFor(parser.parseReference(), arg->context);
    const Range range = parser.skipBraces();
    Parser inner = parserAt(arg->context, range.begin + 1);
    if (range.end - range.begin > 2 && inner.peek().kind == Tok::kUpper) {
      // {Set} stands for the set itself.
      const RefAst set = inner.parseReference();
      if (inner.pos == range.end - 1) return objectSetFor(set, arg->context);
    }
    const Context governed{context.env->definition->module, context.env};
    const ClassUse cls = classOf(*arg->param->governor, governed);
    return makeObjectSet(range, arg->context, cls, classReference(cls, context, ref.token));
  }
  Definition* definition = find(ref, context);
  if (!definition) throw Abandoned();
  if (kindOf(*definition) != DefKind::kObjectSet) {
    error(context, ref.token, inQuotes(ref.name) + " is not an object set");
    throw Abandoned();
  }
  if (definition->parameterized) {
    const Env* env = bind(*definition, ref, context);
    if (!env) throw Abandoned();
    const Context inside{definition->module, env};
    const ClassUse cls = classOf(*definition->type, inside);
    return makeObjectSet(definition->range, inside, cls,
                         classReference(cls, inside, definition->type->token));
  }
  ValueNode* node = newValue(context, ref.token, nullptr);
  node->main = TYP_SYNONYM;
  node->ref = definition;
  return node;
}

}  // namespace mesk
