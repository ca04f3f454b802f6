#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <limits>
#include <sstream>
#include <string>

#include "platform/foundation/PropertyListSerializer.h"

namespace quenlet {
namespace {

// Reads the file argv[1], checks each value against what it has to be for python, and writes the
// file argv[2] in python's own layout.
constexpr char script[] = R"(
import datetime, math, plistlib, sys
with open(sys.argv[1], 'rb') as f: read = plistlib.load(f)
expected = {
  'text': ' \n\t<&>"\' Zo\u00eb \U0001F600 ]]>', 'return': '\r', 'empty': '', 'blank': '  ',
  'integers': [0, -2**63, 2**63 - 1], 'reals': [0.1, 5e-324, 1.7976931348623157e308, -0.0, 2.0],
  'flags': [True, False], 'data': bytes(range(256)), 'nothing': b'',
  'date': datetime.datetime(2026, 5, 1, 12), 'nested': {'a': {'b': []}, 'c': {}},
}
assert read == expected
assert math.copysign(1, read['reals'][3]) == -1 and isinstance(read['reals'][4], float)
assert all(isinstance(flag, bool) for flag in read['flags'])
with open(sys.argv[2], 'wb') as f: plistlib.dump(expected, f)
)";

PropertyList sample(const char* lineEnd) {
  std::string bytes;
  for (int i = 0; i < 256; ++i) bytes.push_back(static_cast<char>(i));
  constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max();
  return PropertyListDictionary{
      {"return", lineEnd},
      {"text", " \n\t<&>\"' Zo\u00eb \U0001F600 ]]>"},
      {"empty", ""},
      {"blank", "  "},
      {"integers", PropertyListArray{0, -most - 1, most}},
      {"reals", PropertyListArray{0.1, 5e-324, 1.7976931348623157e308, -0.0, 2.0}},
      {"flags", PropertyListArray{true, false}},
      {"data", Data{bytes}},
      {"nothing", Data{""}},
      {"date", Date(1777636800)},
      {"nested", PropertyListDictionary{{"a", PropertyListDictionary{{"b", PropertyListArray{}}}},
                                        {"c", PropertyListDictionary{}}}},
  };
}

class PropertyListInteroperationTest : public testing::Test {
 protected:
  void SetUp() override {
    std::string path = std::filesystem::temp_directory_path() / "property-list-XXXXXX";
    ASSERT_NE(mkdtemp(path.data()), nullptr);
    directory = path;
  }
  void TearDown() override { std::filesystem::remove_all(directory); }

  // The exit status of python3, 127 when there is none.
  int runPython(const std::string& input, const std::string& output) const {
    const pid_t child = fork();
    if (child == 0) {
      execlp("python3", "python3", "-c", script, input.c_str(), output.c_str(), nullptr);
      _exit(127);
    }
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }

  std::filesystem::path directory;
};

TEST_F(PropertyListInteroperationTest, PythonReadsOursAndWeReadPythons) {
  const auto text = PropertyListSerializer::dataWithObject(sample("\r"));
  ASSERT_TRUE(text.isLeft()) << text.right()->description();
  std::ofstream(directory / "ours.plist", std::ios::binary) << text.left();
  const int status = runPython(directory / "ours.plist", directory / "pythons.plist");
  if (status == 127) GTEST_SKIP() << "python3 is not installed";
  ASSERT_EQ(status, 0);
  std::stringstream written;
  written << std::ifstream(directory / "pythons.plist", std::ios::binary).rdbuf();
  const auto read = PropertyListSerializer::objectWithData(written.str());
  ASSERT_TRUE(read.isLeft()) << read.right()->description();
  EXPECT_TRUE(read.left() == sample("\n"));  // python's writer makes LF of every CR
}

}  // namespace
}  // namespace quenlet
