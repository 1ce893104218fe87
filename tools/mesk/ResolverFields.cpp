// Fields of classes, objects and sets where types and values are wanted.
#include <algorithm>

#include "mesk/Resolver.h"

namespace mesk {

using namespace asn1;

/// object.&field as a type.
void Resolver::makeSettingType(const TypeAst& ast, const Context& context, TypeNode& node) {
  const auto found = type_settings_.find(settingOf(ast.ref, ast.fields, context));
  if (found == type_settings_.end()) {
    error(context, ast.token, inQuotes(ast.fields.back()) + " is not a type");
    throw Abandoned();
  }
  makeType(*found->second.first, found->second.second, node.parent, &node);
}

/// The class in front of the first field; a set serves for its class, and is given in `set` where the field's
/// values are those of its objects.
ClassUse Resolver::classBeforeFields(const TypeAst& ast, const Context& context, Definition*& set) {
  const Argument* arg = argument(ast.ref, context);
  Definition* definition = arg ? nullptr : find(ast.ref, context);
  if (!arg && !definition) throw Abandoned();
  if (arg && arg->param->governor)
    return classOf(*arg->param->governor, Context{context.env->definition->module, context.env});
  if (!definition || kindOf(*definition) != DefKind::kObjectSet) return classOf(ast.ref, context);
  if (!definition->parameterized && ast.fields.size() == 1) set = definition;
  return classOf(*definition->type, Context{definition->module, nullptr});
}

/// CLASS.&field, Set.&field and object.&field as a type.
void Resolver::makeFieldType(const TypeAst& ast, const Context& context, TypeNode& node) {
  if (ast.ref.name[0] >= 'a') return makeSettingType(ast, context, node);
  const Place place = placeOf(context, ast.token);
  Definition* set = nullptr;
  ClassUse cls = classBeforeFields(ast, context, set);
  for (size_t i = 0; i + 1 < ast.fields.size(); ++i) {
    const FieldAst* field = findField(cls, ast.fields[i], place);
    if (!field->type || !namesClass(*field->type, cls.context)) {
      error(context, ast.token, inQuotes(ast.fields[i]) + " is not an object");
      throw Abandoned();
    }
    cls = classOf(*field->type, cls.context);
  }
  const FieldAst* field = findField(cls, ast.fields.back(), place);
  if (field->type && namesClass(*field->type, cls.context)) {
    error(context, ast.token, inQuotes(ast.fields.back()) + " is an object, a type is needed");
    throw Abandoned();
  }
  if (field->type) {
    if (set) addValuesLater(*set, ast.fields.back(), node);
    makeType(*field->type, cls.context, node.parent, &node);
  } else {
    node.main = TYP_OPEN;
    if (!cls.definition->module->builtin && !cls.definition->parameterized) node.ref = cls.definition;
  }
  node.class_field = classFieldHere(cls, *field, context, ast.token);
  if (node.ref_name.empty()) node.ref_name = field->name;
}

void Resolver::addValuesLater(Definition& set, std::string_view field, TypeNode& owner) {
  later_.push_back([this, &owner, &set, field] {
    current_ = owner.module;
    current_definition_ = owner.of_definition;
    addValuesOfSet(set, field, owner);
  });
}

/// The objects of a set and of the sets in it.
void Resolver::collectObjects(const ValueNode* set, std::vector<const ValueNode*>& objects) {
  Depth depth(depth_);
  if (!set || !depth.ok() || objects.size() > 2000) return;
  for (const ValueNode* element : set->components) {
    const ValueNode* meant = behind(element);
    if (!meant || meant->main != TYP_CLASS) continue;
    const bool is_set = std::none_of(meant->components.begin(), meant->components.end(),
                                     [](const ValueNode* part) { return part->name.substr(0, 1) == "&"; });
    if (is_set) {
      collectObjects(meant, objects);
    } else if (std::find(objects.begin(), objects.end(), meant) == objects.end()) {
      objects.push_back(meant);
    }
  }
}

/// Set.&field: the values that the objects of the set have in that field.
void Resolver::addValuesOfSet(Definition& set, std::string_view field, TypeNode& type) {
  std::vector<const ValueNode*> objects;
  collectObjects(valueOf(set), objects);
  ConstraintNode* all = nullptr;
  for (const ValueNode* object : objects) {
    for (const ValueNode* setting : object->components) {
      const auto found = value_settings_.find(setting);
      if (setting->name != field || found == value_settings_.end()) continue;
      ConstraintNode& single = constraints_.emplace_back();
      single.value = makeValue(*found->second.first, found->second.second, &type);
      if (!all) {
        all = &single;
        continue;
      }
      ConstraintNode& both = constraints_.emplace_back();
      both.kind = kUnion;
      both.first = &single;  // the long side stands second, as the sets are short
      both.second = all;
      all = &both;
    }
  }
  if (all) type.constraints.push_back(all);
}

/// What a field is set to where its object does not say.
ValueNode* Resolver::defaultSetting(const ClassUse& cls, std::string_view name) {
  const auto found = cls.cls->by_name.find(name);
  if (found == cls.cls->by_name.end()) return nullptr;
  const FieldAst& field = cls.cls->fields[found->second];
  if (field.default_setting.end == field.default_setting.begin) return nullptr;
  ValueNode object;
  Parser parser = parserAt(cls.context, field.default_setting.begin);
  fillField(parser, field, cls.context, cls, object);
  return object.components.front();
}

/// What a field of a named object is set to, along a path of fields.
const ValueNode* Resolver::settingOf(const RefAst& ref, const std::vector<std::string_view>& fields,
                                     const Context& context) {
  Depth depth(depth_);
  if (!depth.ok()) {
    error(context, ref.token, "objects are nested too deeply");
    throw Abandoned();
  }
  const ValueNode* object = nullptr;
  ClassUse cls;
  const Argument* arg = argument(ref, context);
  Definition* definition = arg ? nullptr : find(ref, context);
  if (!arg && !definition) throw Abandoned();
  if (arg ? !arg->param->governor : kindOf(*definition) != DefKind::kObject) {
    error(context, ref.token, inQuotes(ref.name) + " is not an object");
    throw Abandoned();
  }
  if (arg) {
    cls = classOf(*arg->param->governor, Context{context.env->definition->module, context.env});
    object = behind(makeObject(*valueOfArgument(*arg), arg->context, cls, nullptr));
  } else if (definition->parameterized) {
    const Env* env = bind(*definition, ref, context);
    if (!env) throw Abandoned();
    const Context inside{definition->module, env};
    cls = classOf(*definition->type, inside);
    object = behind(makeObject(*definition->value, inside, cls, nullptr));
  } else {
    cls = classOf(*definition->type, Context{definition->module, nullptr});
    object = behind(valueOf(*definition));
  }
  const ValueNode* setting = nullptr;
  for (std::string_view name : fields) {
    const FieldAst* field = findField(cls, name, placeOf(context, ref.token));
    setting = nullptr;
    for (const ValueNode* given : object ? object->components : std::vector<ValueNode*>()) {
      if (given->name == name) setting = given;
    }
    if (!setting) {
      error(context, ref.token,
            "the object " + inQuotes(ref.name) + " has no value of the field " + inQuotes(name));
      throw Abandoned();
    }
    object = behind(setting);
    if (name != fields.back()) {
      if (!field->type || !namesClass(*field->type, cls.context)) {
        error(context, ref.token, inQuotes(name) + " is not an object");
        throw Abandoned();
      }
      cls = classOf(*field->type, cls.context);
    }
  }
  return setting;
}

}  // namespace mesk
