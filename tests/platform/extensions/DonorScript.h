#pragma once

#include "tests/support/GoldenFile.h"

namespace quenlet {

// A donor's program in Python, with the words of donor.py.
inline std::string donorScript(const std::string& program) {
  return goldenFile("tests/platform/extensions/donor.py") + program;
}

// What makes a program a donor extension.
inline std::string donorManifest(const std::string& bundle, const std::string& executable,
                                 const std::string& point = "ovaro.quenlet",
                                 const std::string& version = "1.0") {
  const auto entry = [](const std::string& key, const std::string& value) {
    return "<key>" + key + "</key><string>" + value + "</string>";
  };
  return "<plist version=\"1.0\"><dict>" + entry("bundleIdentifier", bundle) +
         entry("executable", executable) + entry("extensionPoint", point) +
         entry("version", version) + "</dict></plist>";
}

}  // namespace quenlet
