#pragma once

#include <fcntl.h>
#include <gmock/gmock.h>

#include <chrono>
#include <regex>
#include <thread>

#include "platform/foundation/Text.h"
#include "tests/platform/extensions/DonorScript.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenlet {

// Looks every few milliseconds whether `condition` holds, for a minute at most.
template <typename Condition>
[[nodiscard]] bool eventually(Condition condition) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::minutes(1);
  while (!condition()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return true;
}

// A program that runs beside the test, with its output in the files that `outputPath` with ".out"
// and ".err" appended names. It is killed when this goes. It has copies of the descriptors `handed`
// from 3 on, and the environment says so as a service manager would. Use on one thread.
class ChildProcess final {
 public:
  ChildProcess(std::vector<std::string> command, std::string outputPath,
               const std::vector<int>& handed = {})
      : path(std::move(outputPath)), pid(::fork()) {
    if (pid == 0) {
      takeOver(handed);
      runInstead(command);
    }
    EXPECT_GT(pid, 0) << command.front();
  }
  ~ChildProcess() {
    signal(SIGKILL);
    wait();
  }
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  void signal(int number) {
    if (isRunning()) ::kill(pid, number);
  }

  // Returns once all its threads have stopped: on a busy machine they go on for a while.
  void stop() {
    signal(SIGSTOP);
    siginfo_t change = {};
    EXPECT_EQ(::waitid(P_PID, static_cast<id_t>(pid), &change, WSTOPPED | WEXITED | WNOWAIT), 0);
    EXPECT_EQ(change.si_code, CLD_STOPPED);
  }

  // The exit status, or minus the signal that ended it; nothing, and a failure, after a minute.
  std::optional<int> wait() {
    EXPECT_TRUE(eventually([this] { return !isRunning(); })) << "process " << pid << " goes on";
    return status;
  }

  [[nodiscard]] bool isRunning() {
    int result = 0;
    if (pid > 0 && !status && ::waitpid(pid, &result, WNOHANG) == pid) {
      status = WIFEXITED(result) ? WEXITSTATUS(result) : -WTERMSIG(result);
    }
    return pid > 0 && !status;
  }

  [[nodiscard]] std::filesystem::path processDirectory() const {
    return "/proc/" + std::to_string(pid);
  }
  [[nodiscard]] std::size_t openDescriptors() const {
    const std::filesystem::directory_iterator entries(processDirectory() / "fd");
    return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
  }
  // How many there are, those that have ended and were not waited for included.
  [[nodiscard]] std::size_t children() const {
    const auto all = readFile(processDirectory() / "task" / std::to_string(pid) / "children");
    return static_cast<std::size_t>(std::count(all.begin(), all.end(), ' '));
  }

  [[nodiscard]] std::string out() const { return readFile(path + ".out"); }
  [[nodiscard]] std::string err() const { return readFile(path + ".err"); }
  [[nodiscard]] bool says(const std::string& text) const {
    return (out() + err()).find(text) != std::string::npos;
  }

 private:
  static void takeOver(const std::vector<int>& handed) {
    if (handed.empty()) return;
    constexpr int beyondAll = 500;
    std::vector<int> copies;
    for (const int each : handed) copies.push_back(::fcntl(each, F_DUPFD_CLOEXEC, beyondAll));
    int next = STDERR_FILENO;
    for (const int copy : copies) ::dup2(copy, ++next);
    ::setenv("LISTEN_FDS", std::to_string(handed.size()).c_str(), 1);
    ::setenv("LISTEN_PID", std::to_string(::getpid()).c_str(), 1);
    ::setenv("LISTEN_FDNAMES", "quenlet-agent.socket", 1);
  }
  // Never returns: 127 when the program cannot be run.
  [[noreturn]] void runInstead(std::vector<std::string>& command) {
    std::vector<char*> arguments;
    for (std::string& word : command) arguments.push_back(word.data());
    arguments.push_back(nullptr);
    constexpr int writing = O_WRONLY | O_CREAT | O_APPEND;
    if (::dup2(::open("/dev/null", O_RDONLY), STDIN_FILENO) >= 0 &&
        ::dup2(::open((path + ".out").c_str(), writing, 0600), STDOUT_FILENO) >= 0 &&
        ::dup2(::open((path + ".err").c_str(), writing, 0600), STDERR_FILENO) >= 0) {
      ::execvp(arguments.front(), arguments.data());
    }
    ::_exit(127);
  }

  const std::string path;
  const pid_t pid;
  std::optional<int> status;
};

// The programs as built, run by a user with a home that is not there yet and a runtime directory.
class ProcessTest : public testing::Test {
 protected:
  struct Ran final {
    int code = -1;
    std::string out;
    std::string err;
  };

  ProcessTest() {
    ::setenv("HOME", home.c_str(), 1);
    ::unsetenv("XDG_CONFIG_HOME");
    ::setenv("XDG_RUNTIME_DIR", temporary.path().c_str(), 1);
  }
  void TearDown() override {
    ::setenv("PATH", formerPath.c_str(), 1);
    lookAtLog();
  }

  void startAgent() { startAgent({bin / "quenlet-agent"}); }
  void startAgent(std::vector<std::string> command) {
    lookAtLog();
    agent = start(std::move(command));
    ASSERT_TRUE(eventually([this] { return !agent->isRunning() || countDonations() >= 0; }));
    ASSERT_TRUE(agent->isRunning()) << agent->err();
  }
  int stopAgent(int signal = SIGTERM) {
    agent->signal(signal);
    return agent->wait().value_or(-1);
  }
  void disableDonations() {
    EXPECT_EQ(quenlet("disable --yes").code, 0);
    EXPECT_TRUE(eventually([this] { return quenlet("card").code == 1; }));
  }

  std::unique_ptr<ChildProcess> start(std::vector<std::string> command,
                                      const std::vector<int>& handed = {}) {
    const auto output = temporary / ("child-" + std::to_string(++childrenStarted));
    return std::make_unique<ChildProcess>(std::move(command), output, handed);
  }
  Ran run(std::vector<std::string> command) {
    const auto child = start(std::move(command));
    const int code = child->wait().value_or(-1);
    return {code, child->out(), child->err()};
  }
  // Words as a shell takes them.
  Ran quenlet(const std::string& words) {
    const Ran ran = run({"/bin/sh", "-c", "exec \"$0\" " + words, tool});
    lookAtWidth(words, ran.out);
    return ran;
  }
  // What a person types, how it ends, and what it says on either stream.
  void expect(const std::string& words, int code, const std::vector<std::string>& said = {}) {
    const Ran ran = quenlet(words);
    const std::string all = asOneLine(ran.out + ran.err);
    SCOPED_TRACE(words);
    EXPECT_EQ(ran.code, code) << all;
    for (const std::string& text : said) EXPECT_THAT(all, testing::HasSubstr(asOneLine(text)));
  }
  // Writes a card and donates it. `lines` are its properties besides FN.
  void donate(const std::string& bundle, const std::string& fullName,
              const std::vector<std::string>& lines) {
    writeFile(donatedCard, cardText(fullName, lines));
    expect("donate " + donatedCard + " --anyway --bundle '" + bundle + "'", 0);
  }
  // An agent that runs finds the former file or this one, never a part.
  void putInPlace(const std::filesystem::path& file, const std::string& content) {
    const std::filesystem::path written = temporary / "written";
    writeFile(written, content);
    std::filesystem::create_directories(file.parent_path());
    std::filesystem::rename(written, file);
  }
  void writeOwnersCard(const std::string& content) { putInPlace(ownersCard, content); }
  void rewriteDonations(const std::string& statement) {
    const std::string program = goldenFile("tests/process/rewrite-donations.py");
    EXPECT_EQ(run({"python3", "-c", program, donationsFile, statement}).code, 0);
  }

  // Puts a command of that name in front of the system's while the test lasts.
  void installCommand(const std::string& name, const std::string& script) {
    writeFile(commands / name, "#!/bin/sh\n" + script + "\n", 0700);
    ::setenv("PATH", (commands.native() + ":" + formerPath).c_str(), 1);
  }

  static std::string cardText(const std::string& fullName, const std::vector<std::string>& lines) {
    std::string text = "BEGIN:VCARD\r\nVERSION:3.0\r\nFN:" + fullName + "\r\n";
    for (const std::string& line : lines) text += line + "\r\n";
    return text + "END:VCARD\r\n";
  }
  // Makes the program of this name beside the manifest a donor extension of the user's own.
  void installManifest(const std::string& bundle) {
    putInPlace(extensions / (bundle + ".plist"), donorManifest(bundle, bundle));
  }

  std::string card() { return quenlet("card").out; }
  bool cardHas(const std::string& text) { return card().find(text) != std::string::npos; }
  // How many donations the agent has; -1 when it does not tell.
  int countDonations() {
    const Ran ran = quenlet("list --json");
    return ran.code == 0 ? occurrences(ran.out, "\"origin\":") : -1;
  }
  // Where a line ends depends on the length of the temporary directory's name.
  static std::string asOneLine(std::string text) {
    std::replace(text.begin(), text.end(), '\n', ' ');
    return text;
  }

  // Text for people fits into 80 columns; a long path or a command gets its own line.
  static void lookAtWidth(const std::string& words, const std::string& out) {
    static const std::regex data("(.* )?(--json|json|vcard|--wide|export|complete|-)( .*)?");
    if (std::regex_match(words, data)) return;
    std::istringstream lines(out);
    for (std::string line; std::getline(lines, line);) {
      const bool isOneWord = line.find(' ', line.find_first_not_of(' ')) == std::string::npos;
      static const std::regex command(" *do: (as root: )?ch(mod|own) [^ ]+ ['/].*");
      const bool isCommand = std::regex_match(line, command);
      EXPECT_TRUE(displayWidth(line) <= 80 || isOneWord || isCommand) << words << "\n" << line;
    }
  }

  static int occurrences(const std::string& text, const std::string& part) {
    int count = 0;
    for (auto at = text.find(part); at != text.npos; at = text.find(part, at + 1)) ++count;
    return count;
  }

  const std::filesystem::path bin =  // where the programs are
      std::filesystem::read_symlink("/proc/self/exe").parent_path();
  std::filesystem::path tool = bin / "quenlet";
  TemporaryDirectory temporary;
  const std::string formerPath = ::getenv("PATH");
  const std::filesystem::path commands = temporary / "commands";
  const std::filesystem::path home = temporary / "missing" / "home";
  const std::filesystem::path donationsFile = home / "Library/Contacts/Donations/donations.plist";
  const std::filesystem::path extensions = home / ".config/quenlet/extensions";
  const std::filesystem::path ownersCard = home / "Library/Contacts/me.vcf";
  const std::string donatedCard = temporary / "donated.vcf";
  std::unique_ptr<ChildProcess> agent;
  bool mayRemark = false;  // what the test does not know of, on standard error

 private:
  // No donated value, and no line that the test does not know of.
  void lookAtLog() const {
    if (!agent) return;
    EXPECT_FALSE(agent->says("@example.org")) << "a donated value is in the log";
    std::istringstream lines(agent->err());
    for (std::string line; std::getline(lines, line);) {
      EXPECT_TRUE(mayRemark || line.starts_with("{\"")) << line;
    }
  }

  int childrenStarted = 0;
};

}  // namespace quenlet
