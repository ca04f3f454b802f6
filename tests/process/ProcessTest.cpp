#include "tests/process/ProcessTest.h"

#include <signal.h>

#include <algorithm>

namespace quenlet {

ProcessTest::ProcessTest() : bin(std::filesystem::read_symlink("/proc/self/exe").parent_path()) {
  const std::filesystem::path runtime = temporary.path() / "run";
  for (const auto& directory : {home, runtime}) {
    std::filesystem::create_directory(directory);
    std::filesystem::permissions(directory, std::filesystem::perms::owner_all);
  }
  environment = {{"HOME", home}, {"XDG_RUNTIME_DIR", runtime}};
}

void ProcessTest::startAgent() {
  agent = start({bin / "quenlet-agent"});
  ASSERT_TRUE(eventually([this] { return !agent->isRunning() || countDonations() >= 0; }));
  ASSERT_TRUE(agent->isRunning()) << log();
}

int ProcessTest::stopAgent() {
  agent->signal(SIGTERM);
  return agent->wait().value_or(-1);
}

void ProcessTest::killAgent() {
  agent->signal(SIGKILL);
  EXPECT_EQ(agent->wait(), -SIGKILL);
}

std::unique_ptr<ChildProcess> ProcessTest::start(std::vector<std::string> command) {
  const std::string name = "child-" + std::to_string(++childrenStarted);
  return std::make_unique<ChildProcess>(std::move(command), environment, temporary.path() / name);
}

ProcessTest::Ran ProcessTest::finish(ChildProcess& child) {
  const int code = child.wait().value_or(-1);
  return {code, child.out(), child.err()};
}

ProcessTest::Ran ProcessTest::quenlet(std::vector<std::string> words) {
  words.insert(words.begin(), bin / "quenlet");
  return finish(*start(std::move(words)));
}

std::string ProcessTest::python(const std::string& script, std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), {"python3", "-c", script});
  const Ran ran = finish(*start(std::move(arguments)));
  EXPECT_EQ(ran.code, 0) << ran.err;
  return ran.out;
}

ProcessTest::Ran ProcessTest::donate(const std::string& bundle, const std::string& fullName,
                                     const std::vector<std::string>& lines) {
  const std::filesystem::path file = temporary.path() / "donated.vcf";
  writeFile(file, cardText(fullName, lines));
  return quenlet({"donate", file, "--bundle", bundle});
}

std::string ProcessTest::cardText(const std::string& fullName,
                                  const std::vector<std::string>& lines) {
  std::string text = "BEGIN:VCARD\r\nVERSION:3.0\r\nFN:" + fullName + "\r\n";
  for (const std::string& line : lines) text += line + "\r\n";
  return text + "END:VCARD\r\n";
}

int ProcessTest::countDonations() {
  const Ran ran = quenlet({"list"});
  if (ran.code != 0) return -1;
  // Of a table the first line is the headings, of an empty list a sentence.
  return static_cast<int>(std::count(ran.out.begin(), ran.out.end(), '\n')) - 1;
}

}  // namespace quenlet
