#pragma once

#include <string>

#include "tools/page/PageContent.h"

namespace quenlet {

// One HTML page that shows the owner the card and where everything on it comes from. Stateless.
//
// The page stands alone: it has no script, and its policy lets a browser load nothing but images
// within it and apply no style sheet but its own. Its title has no personal value, since browsers
// keep titles. A long list shows its first rows only.
class OwnerPage final {
 public:
  OwnerPage() = delete;

  [[nodiscard]] static std::string of(const PageContent& content);
};

}  // namespace quenlet
