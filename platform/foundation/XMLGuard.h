#pragma once

#include <cstddef>
#include <string_view>

#include "quenlet/Error.h"

namespace quenlet {

// Scans the bytes of an untrusted XML document before the XML library builds a tree of them, in
// linear time and without allocating. It refuses what the library accepts or pays dearly for:
//
//   - encodings other than UTF-8, and characters that XML forbids
//   - a document type with declarations
//   - elements nested more deeply than a limit, and elements left open
//   - too many elements for the size of the text: "<a/>" takes 4 bytes there and 184 in memory
//
// Each element is charged for its nodes in the tree and for the object made from it. A document may
// cost 4 MiB and, with the text and the library's copy of it, eight times its size. Other syntax
// errors are left to the library. One thread at a time.
class XMLGuard final {
 public:
  XMLGuard(std::string_view text, int maximumElementNesting)
      : document(text),
        maximumDepth(maximumElementNesting),
        nodesOfElement(cutsText(text) ? 3 : 1) {}

  // The first error found (PropertyListErrorDomain), or null.
  [[nodiscard]] ErrorPtr check();
  // Whether some text may be cut into pieces: by CDATA sections, comments or instructions.
  [[nodiscard]] static bool cutsText(std::string_view text) {
    const std::size_t behindDeclaration = text.find('<') + 1;
    return text.find(sectionStart) != std::string_view::npos ||
           text.find(commentStart) != std::string_view::npos ||
           text.find(instructionStart, behindDeclaration) != std::string_view::npos;
  }

 private:
  static constexpr std::string_view sectionStart = "<![CDATA[";
  static constexpr std::string_view commentStart = "<!--";
  static constexpr std::string_view instructionStart = "<?";

  [[nodiscard]] ErrorPtr checkEncoding() const;
  [[nodiscard]] ErrorPtr passMarkup();
  [[nodiscard]] ErrorPtr passTo(std::string_view end, std::size_t openingLength);
  [[nodiscard]] ErrorPtr passDocumentType();
  [[nodiscard]] ErrorPtr passTag();
  [[nodiscard]] std::size_t findOutsideQuotes(std::string_view characters, std::size_t from) const;
  [[nodiscard]] std::size_t bytesOfTag(std::size_t begin, std::size_t end) const;
  [[nodiscard]] ErrorPtr charge(std::size_t bytes);
  [[nodiscard]] ErrorPtr malformed() const;

  std::string_view document;
  int maximumDepth;
  // The element and, where blanks are kept, the blanks before each of its two tags.
  std::size_t nodesOfElement;
  std::size_t position = 0;
  int depth = 0;
  std::size_t chargedBytes = 0;
};

}  // namespace quenlet
