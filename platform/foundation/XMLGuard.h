#pragma once

#include <cstddef>
#include <string_view>

#include "platform/foundation/Error.h"

namespace quenlet {

// Looks through the bytes of an XML document from an unknown hand, in one pass without allocating,
// before the XML library builds a tree of them. It refuses what the library lets through or would
// pay dearly for: other encodings, forbidden characters, a document type with declarations,
// elements nested deeper than a limit, elements left open, and so many elements that the tree would
// take more than eight times the memory of a text of some size. Well-formedness is otherwise the
// library's task. One thread at a time.
class XMLGuard final {
 public:
  XMLGuard(std::string_view text, int maximumElementNesting)
      : document(text),
        maximumDepth(maximumElementNesting),
        nodesOfElement(cutsText(text) ? 3 : 1) {}

  // The first offence (PropertyListErrorDomain), null when there is none.
  [[nodiscard]] ErrorPtr check();
  // Whether a text may stand in several pieces, with sections or comments between them.
  [[nodiscard]] static bool cutsText(std::string_view text) {
    return text.find(sectionStart) != std::string_view::npos ||
           text.find(commentStart) != std::string_view::npos;
  }

 private:
  static constexpr std::string_view sectionStart = "<![CDATA[";
  static constexpr std::string_view commentStart = "<!--";

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
  // The element, and where blanks are kept, those before its tags.
  std::size_t nodesOfElement;
  std::size_t position = 0;
  int depth = 0;
  std::size_t chargedBytes = 0;
};

}  // namespace quenlet
