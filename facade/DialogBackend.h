#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace quenlet {

// A program of a desktop's that shows dialogs for others. A value type.
struct DialogBackend final {
  std::string busName;
  bool isOfThisDesktop = false;

  friend bool operator==(const DialogBackend&, const DialogBackend&) = default;
};

// Where desktops say who shows dialogs. A value type.
struct DialogPlaces final {
  // With <desktop>-portals.conf and portals.conf, the most important one first.
  std::vector<std::filesystem::path> configurations = {};
  // With *.portal files, likewise.
  std::vector<std::filesystem::path> programs = {};
  // As in XDG_CURRENT_DESKTOP, for example "ubuntu:GNOME".
  std::string desktop = {};

  [[nodiscard]] static DialogPlaces ofSession();
};

// Whom to ask to show a dialog for questions of access, in which order.
//
// The first of the configurations decides: a list of *.portal files' names, "*" for all of them,
// "none" for nobody behind it. Those that it lists are this desktop's. If it says nothing of that
// interface, or lists only what is not installed, all programs with the interface are given, first
// this desktop's by their own "UseIn", otherwise in the order of their names. Files that cannot be
// read are left out.
[[nodiscard]] std::vector<DialogBackend> dialogBackends(const DialogPlaces& places);
// For this session, as it is now.
[[nodiscard]] std::vector<DialogBackend> dialogBackendsOfSession();

}  // namespace quenlet
