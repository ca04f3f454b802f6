#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace quenlet {

// A program of a desktop's that shows dialogs for others. A value type.
struct DialogBackend final {
  std::string busName;
  bool isOfThisDesktop = false;

  friend bool operator==(const DialogBackend&, const DialogBackend&) = default;
};

// Those with the interface for questions of access, from the *.portal files that desktops install
// into `directories`; this desktop's come first, otherwise in the order of their files. `desktop`
// is as in XDG_CURRENT_DESKTOP ("ubuntu:GNOME"). Files that cannot be read are left out.
[[nodiscard]] std::vector<DialogBackend> dialogBackends(
    const std::vector<std::filesystem::path>& directories, std::string_view desktop);
// For this session, as its environment says.
[[nodiscard]] std::vector<DialogBackend> dialogBackendsOfSession();

}  // namespace quenlet
