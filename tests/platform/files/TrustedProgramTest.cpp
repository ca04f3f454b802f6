#include "platform/files/TrustedProgram.h"

#include "tests/support/TemporaryDirectory.h"

namespace quenlet {
namespace {

// The path was free of links when it was found out; one that has come since may lead anywhere.
TEST(TrustedProgramTest, TrustsNoPathThatHasGotALinkSince) {
  const TemporaryDirectory directory;
  const std::filesystem::path base = directory.path();
  std::filesystem::create_directories(base / "bin");
  directory.write("bin/program", "program");
  EXPECT_EQ(whyUntrusted(base / "bin/program", base), nullptr);
  std::filesystem::create_symlink("bin", base / "link");
  std::filesystem::create_symlink("program", base / "bin/link");
  for (const char* path : {"link/program", "bin/link"}) {
    EXPECT_NE(whyUntrusted(base / path, base), nullptr) << path;
  }
}

}  // namespace
}  // namespace quenlet
