#include "foreign/ForeignFiles.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "tests/support/TemporaryDirectory.h"

namespace quenlet {
namespace {

TEST(ForeignFilesTest, TakesInRegularFilesOfABoundedSizeOnly) {
  const TemporaryDirectory directory;
  directory.write("plain", "text\n");
  directory.write("no text", "\xFF\n");
  directory.write("large", std::string(ForeignFiles::mostBytes + 1, '\n'));
  std::filesystem::create_symlink("plain", directory / "link");
  ASSERT_EQ(::mkfifo((directory / "pipe").c_str(), 0600), 0);
  const std::pair<const char*, const char*> rows[] = {
      {"plain", "text\n"},
      {"gone", "nothing"},
      {"plain/below", "nothing"},
      {"no text", "!it is not UTF-8"},
      {"large", "!it is larger than 4 MiB"},
      {"link", "!it is a link"},
      {"pipe", "!it is not a regular file"},
      {".", "!it is not a regular file"},
  };
  for (const auto& [name, expected] : rows) {
    const auto text = ForeignFiles::readLines(directory / name);
    EXPECT_EQ(text.ok() ? text.value().value_or("nothing") : "!" + text.error()->debugDescription(),
              expected)
        << name;
  }
}

}  // namespace
}  // namespace quenlet
