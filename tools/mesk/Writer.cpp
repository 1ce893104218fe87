#include "mesk/Writer.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "asn1/front/AsnTime.h"
#include "mesk/Resolver.h"

namespace mesk {

using namespace asn1;

namespace {

template <typename Integer>
Integer cut(int value) {
  return static_cast<Integer>(std::clamp(value, 0, static_cast<int>(std::numeric_limits<Integer>::max())));
}

void setWords(int32_t* words, int64_t value) {
  words[0] = static_cast<int32_t>(static_cast<uint64_t>(value) & 0xFFFFFFFFu);
  words[1] = static_cast<int32_t>(static_cast<uint64_t>(value) >> 32);
}

template <typename Record>
void append(std::string& out, const std::vector<Record>& records) {
  if (!records.empty())
    out.append(reinterpret_cast<const char*>(records.data()), records.size() * sizeof(Record));
}

}  // namespace

struct Writer::File {
  std::vector<MNode> modules;
  std::vector<TNode> types;
  std::vector<VNode> values;
  std::vector<TagRec> tags;
  std::vector<SubRec> constraints;
  std::vector<TedRec> options;
  std::vector<SNode> steps;
  std::string strings[3];
  int counts[3] = {0, 0, 0};
  std::map<std::string, int> known8;
  std::map<std::vector<uint32_t>, int> known_wide[2];
  bool too_long = false;

  template <typename Unit, typename Text>
  int addString(int width, const Text& text) {
    if (text.size() + 1 > kMaxStringUnits) {
      too_long = true;
      return 0;
    }
    const auto count = static_cast<uint16_t>(text.size() + 1);
    strings[width].append(reinterpret_cast<const char*>(&count), sizeof count);
    for (auto c : text) {
      const Unit unit = static_cast<Unit>(c);
      strings[width].append(reinterpret_cast<const char*>(&unit), sizeof unit);
    }
    strings[width].append(sizeof(Unit), '\0');
    return ++counts[width];
  }

  int text8(std::string_view text) {
    auto [place, fresh] = known8.emplace(text, 0);
    if (fresh) place->second = addString<char>(0, text);
    return place->second;
  }
  int nameText(std::string_view name) { return name.empty() ? 0 : text8(name); }
  int textWide(const std::vector<uint32_t>& text, bool four) {
    auto [place, fresh] = known_wide[four].emplace(text, 0);
    if (fresh) place->second = four ? addString<uint32_t>(2, text) : addString<uint16_t>(1, text);
    return place->second;
  }
};

Writer::Writer(std::vector<std::unique_ptr<Module>>& modules, Reporter& reporter)
    : modules_(modules), reporter_(reporter) {
  const std::tm now = TimeOfFiles();
  date_ = (now.tm_year + 1900) * 10000 + (now.tm_mon + 1) * 100 + now.tm_mday;
  time_ = now.tm_hour * 10000 + now.tm_min * 100 + now.tm_sec;
}

void Writer::addType(Nodes& nodes, Module& module, TypeNode* node) {
  if (!node || node->number || node->module != &module) return;
  nodes.types.push_back(node);
  node->number = static_cast<int>(nodes.types.size());
  addTypeParts(nodes, module, *node);
}

void Writer::addTypeParts(Nodes& nodes, Module& module, TypeNode& node) {
  for (ConstraintNode* constraint : node.constraints) addConstraint(nodes, module, constraint);
  for (TypeNode* part : node.components) addType(nodes, module, part);
  addType(nodes, module, node.class_field);
  addValue(nodes, module, node.default_value);
}

void Writer::addValue(Nodes& nodes, Module& module, ValueNode* node) {
  if (!node || node->number || node->module != &module) return;
  nodes.values.push_back(node);
  node->number = static_cast<int>(nodes.values.size());
  addValueParts(nodes, module, *node);
}

void Writer::addValueParts(Nodes& nodes, Module& module, ValueNode& node) {
  addType(nodes, module, node.type);
  addType(nodes, module, node.actual_type);
  addType(nodes, module, node.field_type);
  for (ValueNode* part : node.components) addValue(nodes, module, part);
}

void Writer::addConstraint(Nodes& nodes, Module& module, ConstraintNode* node) {
  for (; node && !node->number; node = node->next) {
    nodes.constraints.push_back(node);
    node->number = static_cast<int>(nodes.constraints.size());
    addType(nodes, module, node->type);
    addValue(nodes, module, node->value);
    addValue(nodes, module, node->value2);
    addConstraint(nodes, module, node->first);
    addConstraint(nodes, module, node->second);
  }
}

void Writer::number() {
  for (auto& module : modules_) {
    Nodes& nodes = nodes_[module.get()];
    for (Definition& definition : module->definitions) {
      if (definition.parameterized) continue;
      if (definition.type_node) {
        nodes.types.push_back(definition.type_node);
        definition.type_node->number = definition.number;
      } else if (definition.value_node) {
        nodes.values.push_back(definition.value_node);
        definition.value_node->number = definition.number;
      }
    }
    // What lies below comes in the order of the source.
    for (Definition& definition : module->definitions) {
      if (definition.parameterized) continue;
      if (definition.type_node) addTypeParts(nodes, *module, *definition.type_node);
      if (definition.value_node) addValueParts(nodes, *module, *definition.value_node);
    }
  }
}

namespace {
bool fitsInt32(const NamedNode& item) {
  return item.number >= INT32_MIN && item.number <= INT32_MAX;
}
}  // namespace

void Writer::writeType(File& file, Module& module, const TypeNode& node) {
  TNode record{};
  record.name = file.nameText(node.name);
  record.status = node.definition ? kDefinition : kComponent;
  record.presence = node.definition ? static_cast<int32_t>(kDefinition) : static_cast<int32_t>(node.presence);
  record.main_type = node.main;
  record.addition = cut<uint8_t>(node.addition);
  record.field_kind = node.field_kind;
  const Place place = node.source->place(node.token);
  record.line = cut<uint16_t>(place.line);
  record.column = cut<uint16_t>(place.column);
  if (node.entry) record.flags |= kFlagEntryType;
  if (node.marker >= 0) {
    record.flags2 |= kFlag2Extensible;
    record.extension_index = node.marker;
  }
  if (node.recursive) record.flags2 |= kFlag2Recursive;
  if (node.automatic_tags) record.flags2 |= kFlag2AutomaticTags;
  if (node.main == TYP_ENUM && !std::all_of(node.named.begin(), node.named.end(), fitsInt32))
    record.flags2 |= kFlag2Wide;
  record.parent = node.parent ? node.parent->number : 0;
  record.component_nbr = node.component_nbr;
  record.element_level = node.level;
  record.definition = node.of_definition ? node.of_definition->number : 0;
  if (node.ref) {
    record.ref_module = Resolver::importRecord(module, *node.ref->module);
    record.ref_type = node.ref->number;
  }
  record.ref_name = file.nameText(node.ref_name);
  if (node.class_field) record.class_chain = node.class_field->number;
  for (const TypeNode* part : node.components) record.components += part->isMarker() ? 0 : 1;
  if (!node.components.empty()) record.first_component = node.components.front()->number;
  if (!node.tags.empty()) record.first_tag = static_cast<int32_t>(file.tags.size()) + 1;
  for (size_t i = 0; i < node.tags.size(); ++i) {
    const TagNode& tag = node.tags[i];
    TagRec made{tag.tag_class, static_cast<int32_t>(tag.number), tag.is_explicit, 0};
    if (i + 1 < node.tags.size()) made.next = static_cast<int32_t>(file.tags.size()) + 2;
    file.tags.push_back(made);
  }
  if (!node.constraints.empty()) record.constraint = node.constraints.front()->number;
  if (node.default_value) record.default_value = node.default_value->number;
  if (!node.named.empty()) record.first_named = static_cast<int32_t>(file.values.size()) + 1;
  for (size_t i = 0; i < node.named.size(); ++i) {
    const NamedNode& named = node.named[i];
    VNode made{};
    made.name = file.text8(named.name);
    made.line = named.line;
    made.column = named.column;
    made.main_type = TYP_INTEGER;
    made.flags = named.after_marker ? kFlagAfterMarker : 0;
    made.type = node.number;
    setWords(made.v.i.integer, named.number);
    if (i + 1 < node.named.size()) made.next = static_cast<int32_t>(file.values.size()) + 2;
    file.values.push_back(made);
  }
  file.types.push_back(record);
}

void Writer::writeValue(File& file, Module& module, const ValueNode& node) {
  VNode& record = file.values[node.number - 1];
  record.name = file.nameText(node.name);
  const Place place = node.source->place(node.token);
  record.line = place.line;
  record.column = place.column;
  record.main_type = node.main;
  record.type = node.type ? node.type->number : 0;
  record.actual_type = node.actual_type ? node.actual_type->number : 0;
  record.field_type = node.field_type ? node.field_type->number : 0;
  record.flags = cut<uint8_t>(node.flags);
  file.too_long = false;
  if (node.ref) {
    record.ref_module = Resolver::importRecord(module, *node.ref->module);
    record.ref_value = node.ref->number;
  }
  if (node.has_text && node.main == TYP_BMPSTR) {
    record.text16 = file.textWide(node.wide, false);
  } else if (node.has_text && node.main == TYP_UNISTR) {
    record.text32 = file.textWide(node.wide, true);
  } else if (node.has_text) {
    record.text8 = file.text8(node.text);
  }
  if (file.too_long) reporter_.error(place, "the string is too long");
  if (node.main == TYP_REAL) {
    setWords(record.v.r.mantissa, node.mantissa);
    record.v.r.base = static_cast<int16_t>(node.base);
    record.v.r.exponent = static_cast<int16_t>(node.exponent);
  } else {
    setWords(record.v.i.integer, Clamped(node.integer));
    if (!FitsInt64(node.integer)) {
      record.flags |= kFlagWide;
      record.text8 = file.text8(ToString(node.integer));
    }
  }
  record.components = static_cast<int32_t>(node.components.size());
  for (size_t i = 0; i < node.components.size(); ++i) {
    const int number = node.components[i]->number;
    if (i == 0) record.first_component = number;
    if (i + 1 < node.components.size()) file.values[number - 1].next = node.components[i + 1]->number;
  }
}

void Writer::writeConstraint(File& file, Module& module, const ConstraintNode& node) {
  SubRec& record = file.constraints[node.number - 1];
  record.kind = node.kind;
  record.flags = node.flags;
  record.open = node.open;
  record.first = node.first ? node.first->number : 0;
  record.second = node.second ? node.second->number : 0;
  if (node.next) record.next = node.next->number;
  if (node.has_text) record.text = file.text8(node.text);
  record.component_type = node.type ? node.type->number : 0;
  record.value = node.value ? node.value->number : 0;
  record.value2 = node.value2 ? node.value2->number : 0;
  if (!node.path.empty()) record.path = static_cast<int32_t>(file.steps.size()) + 1;
  for (size_t i = 0; i < node.path.size(); ++i) {
    const PathStep& step = node.path[i];
    SNode made{};
    made.code = kComponentReference;
    made.level = cut<uint8_t>(step.level);
    made.module = Resolver::importRecord(module, *step.component->module);
    made.record = step.component->number;
    made.text = file.text8(step.name);
    if (i + 1 < node.path.size()) made.next = static_cast<int32_t>(file.steps.size()) + 2;
    file.steps.push_back(made);
  }
}

/// Links the definitions of each kind and sets what belongs to definitions only.
void Writer::linkDefinitions(File& file, Module& module) {
  MNode& head = file.modules.front();
  int32_t* link[4] = {&head.first_type, &head.first_value, &head.first_object, &head.first_object_set};
  for (const Definition& definition : module.definitions) {
    if (definition.parameterized) continue;
    int list = 0;
    if (definition.type_node) {
      TNode& record = file.types[definition.number - 1];
      record.unique = definition.unique;
      if (record.flags & kFlagEntryType) ++head.entry_types;
    } else {
      list = definition.kind == DefKind::kValue ? 1 : definition.kind == DefKind::kObject ? 2 : 3;
      file.values[definition.number - 1].unique = definition.unique;
      if (list == 2) ++head.objects;
      if (list == 3) ++head.object_sets;
    }
    *link[list] = definition.number;
    link[list] =
        list == 0 ? &file.types[definition.number - 1].next : &file.values[definition.number - 1].next;
  }
}

void Writer::writeModules(File& file, Module& module) {
  MNode& head = file.modules.front();
  head.version_first = head.version = kFormatVersion;
  head.date = date_;
  head.time = time_;
  head.name = file.text8(module.name);
  head.file_prefix = file.text8(module.file_prefix);
  if (module.generation_prefix != module.file_prefix)
    head.generation_prefix = file.text8(module.generation_prefix);
  head.source = file.text8(module.file->path);
  head.code = module.tag_default;
  if (!file.options.empty()) {
    head.first_option = 1;
    head.last_option = static_cast<int32_t>(file.options.size());
  }
  for (const Module* import : module.import_records) {
    MNode record{};
    record.version_first = record.version = kFormatVersion;
    record.date = date_;
    record.time = time_;
    record.name = file.text8(import->name);
    record.file_prefix = file.text8(import->generation_prefix);
    record.first_object_set = 1;
    file.modules.push_back(record);
  }
  const size_t counts[kFileKinds] = {file.modules.size(),
                                     file.types.size(),
                                     file.values.size(),
                                     file.tags.size(),
                                     file.constraints.size(),
                                     file.options.size(),
                                     file.steps.size(),
                                     static_cast<size_t>(file.counts[0]),
                                     static_cast<size_t>(file.counts[1]),
                                     static_cast<size_t>(file.counts[2])};
  for (int kind = 0; kind < kFileKinds; ++kind)
    file.modules.front().counts[kind] = static_cast<int32_t>(counts[kind]);
}

std::string Writer::contents(Module& module, const std::vector<std::string>& options) {
  File file;
  const Nodes& nodes = nodes_[&module];
  file.modules.resize(1);
  file.values.resize(nodes.values.size());
  file.constraints.resize(nodes.constraints.size());
  for (const std::string& option : options)
    file.options.push_back(TedRec{kPassOfOptions, file.text8(option)});
  for (const TypeNode* node : nodes.types) {
    file.too_long = false;
    writeType(file, module, *node);
    if (file.too_long) reporter_.error(node->source->place(node->token), "a name is too long");
  }
  for (const ValueNode* node : nodes.values) writeValue(file, module, *node);
  for (const ConstraintNode* node : nodes.constraints) writeConstraint(file, module, *node);
  // Components, and the constraints of one type, in their order.
  for (const TypeNode* node : nodes.types) {
    for (size_t i = 0; i + 1 < node->components.size(); ++i) {
      file.types[node->components[i]->number - 1].next = node->components[i + 1]->number;
    }
    for (size_t i = 0; i + 1 < node->constraints.size(); ++i) {
      file.constraints[node->constraints[i]->number - 1].next = node->constraints[i + 1]->number;
    }
  }
  linkDefinitions(file, module);
  writeModules(file, module);
  std::string out;
  append(out, file.modules);
  append(out, file.types);
  append(out, file.values);
  append(out, file.tags);
  append(out, file.constraints);
  append(out, file.options);
  append(out, file.steps);
  for (const std::string& strings : file.strings) out += strings;
  return out;
}

}  // namespace mesk
