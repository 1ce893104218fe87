// The model of one pair of generated files, a header and a source. Text is put at named positions in any
// order and written in the order of the positions at the end. Both files are written beside their places
// and renamed, so that a failed run leaves the old ones.
#pragma once

#include <array>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "FileAPI/CArray.h"
#include "FileAPI/CEnumeration.h"
#include "FileAPI/CFunction.h"
#include "FileAPI/CSection.h"
#include "FileAPI/CStructure.h"
#include "FileAPI/CTextBlocks.h"
#include "support/NumberMap.h"

/// Thrown where a file has two objects of one name: declarations of different names may ask for the same in C.
struct CNameTaken {
  std::string name;
  std::string message() const {
    return "the name \"" + name + "\" in C belongs to another declaration of the module";
  }
};

class CFile {
 public:
  /// The positions of text, in the order of the output; the header comes first.
  enum Where {
    HeaderIncludes = 0,
    HeaderDefines = 1,
    HeaderVariables = 2,
    HeaderConstants = 3,
    HeaderFunctions = 4,
    HeaderEnumerations = 5,
    HeaderStructures = 6,
    HeaderArrays = 7,
    SourceIncludes = 10,
    SourceArrayDecls = 11,
    SourceStructureDecls = 12,
    SourceFunctionDecls = 13,
    SourceEnumerations = 14,
    SourceVariables = 15,
    SourceConstants = 16,
    SourceStructures = 17,
    SourceArrays = 18,
    SourceFunctions = 19,
  };
  static constexpr unsigned kNoLineLimit = ~0u;

  /// Makes the directory where it is missing; a failure throws a std::string.
  CFile(const std::string& directory, const std::string& headerName, const std::string& sourceName,
        bool usesOwnHeader, unsigned lineLimit);
  CFile(const CFile&) = delete;
  CFile& operator=(const CFile&) = delete;
  ~CFile();

  /// Old files are kept that differ in their first comment alone, or say the same by `isSame`.
  void keepLike(bool (*isSame)(std::string_view, std::string_view)) { isSame_ = isSame; }
  /// Writes the files, unless they are invalid. Throws internal_exception; nothing is written then. False
  /// when the old ones were kept.
  bool end();
  void invalidate() { valid_ = false; }
  bool valid() const { return valid_; }

  void setHeaderMessage(std::vector<std::string> lines) { headerMessage_ = std::move(lines); }
  void addInclude(const std::string& name, bool inSource, bool isSystem);
  void addDefine(const std::string& name, const std::string& value);
  void addIfDefDefine(const std::string& condition, const std::string& name,
                      const std::string& valueIfDefined, const std::string& valueElse);
  void addConstant(const std::string& type, const std::string& name, const std::string& value, bool isStatic);
  void addExternalConstant(const std::string& type, const std::string& name);
  void addVariable(const std::string& type, const std::string& name, bool isStatic);
  void addVariableWithInit(const std::string& type, const std::string& name, const std::string& init,
                           bool isStatic);
  void addExternalFunctionDecl(const std::string& type, const std::string& name,
                               const std::vector<std::string>& parameters);
  void addExternalFunctionDeclConditionally(const std::string& condition, const std::string& type,
                                            const std::string& name,
                                            const std::vector<std::string>& parameters);

  /// Notes that the file defines an object; throws CNameTaken when it has one of that name already.
  void define(std::string_view name);

  std::string uniqueName() { return uniqueName("v"); }
  std::string uniqueName(const std::string& prefix) { return prefix + std::to_string(nextUnique_++); }
  std::string uniqueLabel() { return uniqueName("_l"); }

  void add(Where where, std::string_view text) { positions_[where].text.add(text); }
  void add(Where where, CWords parts) { add(where, CMeasuredWords(parts)); }
  void newline(Where where, unsigned count = 1);
  /// A structure of which all is known: its declaration ahead, and the initializer, a member on a line.
  void addStructure(std::string_view type, std::string_view name, bool isStatic, CWords members) {
    addStructure(type, name, isStatic, CMeasuredWords(members));
  }
  /// Takes over what a builder has written; the sections of one call stay together in a split file.
  void add(Where where, CSection&& section);
  void add(Where where, CSection&& first, CSection&& second);

  // Builders belong to the caller; each is defined beside its class.
  std::unique_ptr<CFunction> beginFunction(const std::string& returnType, const std::string& name,
                                           const std::vector<std::string>& parameters,
                                           const std::string& comment, bool exported);
  std::unique_ptr<CStructure> beginStructure(std::string_view type, std::string_view name, bool singleLine,
                                             bool isStatic);
  std::unique_ptr<CEnumeration> beginEnumeration(const std::string& name, bool exported, bool isTypedef);
  /// An empty name stands for a unique one.
  std::unique_ptr<CArray> beginArray(std::string_view type, const std::string& name, bool isStatic);

  /// Removes a file; a failure is told on standard error and otherwise passed over.
  static void remove(const std::string& path) { RemoveGeneratedFile(path); }

  const std::string& directory() const { return directory_; }
  /// The source name, then the header name, then each split file.
  const std::vector<std::string>& generatedFiles() const { return generatedFiles_; }
  const std::vector<std::string>& localHeaders() const { return localHeaders_; }

 private:
  static constexpr size_t kPositions = 20;
  class Output;
  // What builders have written for a position: sections that stay together in a file, or text, which is all
  // that is kept of sections while no file is split.
  struct Body {
    CTextBlocks text;
    std::vector<CSection> sections;
  };
  // What stands under a position; the plain text comes first.
  struct Position {
    CTextBlocks text;
    std::vector<Body> bodies;
  };

  void add(Where where, const CMeasuredWords& parts);
  void addStructure(std::string_view type, std::string_view name, bool isStatic,
                    const CMeasuredWords& members);
  void writeHead(Output& output);
  void writeHeader(Output& output);
  void writeSource(Output& output);
  /// Text of sections stays in memory, as text only, unless they have gone to files or may be torn apart.
  bool isKept(const CSection& section) const { return lineLimit_ == kNoLineLimit && !section.spilled(); }
  CTextBlocks& bodyText(Where where);
  void addSection(Where where, CSection&& section, bool together);
  void flushPosition(Output& output, size_t where, bool splitAllowed);
  void flushBody(Output& output, const Body& body, bool splitAllowed);
  void splitIfFull(Output& output, unsigned pending);
  std::string splitName() const;
  std::string path(const std::string& name) const;

  unsigned lineLimit_;
  unsigned nextUnique_ = 0;
  std::string headerName_;
  std::string sourceName_;
  std::string directory_;
  std::array<Position, kPositions> positions_;
  NumberMap<Nothing> defined_;  // by hashes of 63 bits, which the names of no module share by chance
  bool usesOwnHeader_;
  std::vector<std::string> headerMessage_;
  std::vector<std::string> sourceFiles_;
  std::vector<std::string> generatedFiles_;
  std::vector<std::string> localHeaders_;
  bool valid_ = true;
  bool (*isSame_)(std::string_view, std::string_view) = nullptr;
};
