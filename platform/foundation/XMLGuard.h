#pragma once

#include <cstddef>
#include <string_view>

#include "platform/foundation/Error.h"

namespace quenlet {

// Looks through the bytes of an XML document from an unknown hand, in one pass without allocating,
// before the XML library builds a tree of them. It refuses what the library lets through or would
// pay dearly for: other encodings, forbidden characters, a document type with declarations,
// elements nested deeper than a limit, elements left open. Well-formedness is otherwise the
// library's task. One thread at a time.
class XMLGuard final {
 public:
  XMLGuard(std::string_view text, int maximumElementNesting)
      : document(text), maximumDepth(maximumElementNesting) {}

  // The first offence (PropertyListErrorDomain), null when there is none.
  [[nodiscard]] ErrorPtr check();

 private:
  [[nodiscard]] ErrorPtr checkEncoding() const;
  [[nodiscard]] ErrorPtr passMarkup();
  [[nodiscard]] ErrorPtr passTo(std::string_view end, std::size_t openingLength);
  [[nodiscard]] ErrorPtr passDocumentType();
  [[nodiscard]] ErrorPtr passTag();
  [[nodiscard]] std::size_t findOutsideQuotes(std::string_view characters, std::size_t from) const;
  [[nodiscard]] ErrorPtr malformed() const;

  std::string_view document;
  int maximumDepth;
  std::size_t position = 0;
  int depth = 0;
};

}  // namespace quenlet
