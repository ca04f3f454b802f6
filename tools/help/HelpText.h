#pragma once

#include <string>

#include "tools/help/HelpPage.h"
#include "tools/presentation/Screen.h"

namespace quenlet {

// A page as "--help" shows it.
[[nodiscard]] std::string helpText(const HelpPage& page, const Screen& screen);

}  // namespace quenlet
