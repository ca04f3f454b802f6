#include <gmock/gmock.h>

#include <ctime>

#include "tests/process/ProcessTest.h"

namespace quenlet {
namespace {

using testing::HasSubstr;
using testing::Not;

// What a donor's program in python begins with: requests and answers as they are on the wire.
constexpr char prelude[] =
    "#!/usr/bin/env python3\n"
    "import os, socket, struct, sys, time\n"
    "agent = socket.socket(fileno=0)\n"
    "def take(count):\n"
    "    data = b''\n"
    "    while len(data) < count: data += agent.recv(count - len(data)) or sys.exit()\n"
    "    return data\n"
    "def request():\n"
    "    length, kind, identifier = struct.unpack('<IBQ', take(13))\n"
    "    take(length - 9)\n"
    "    return identifier\n"
    "def answer(identifier, body):\n"
    "    agent.sendall(struct.pack('<IBQ', len(body) + 9, 1, identifier) + body)\n"
    "later = b'\\x04' + struct.pack('<d', 4e9) + b'\\x00'\n";

class ExtensionsTest : public ProcessTest {
 protected:
  void install(const std::string& bundle, const std::string& program, int mode = 0700) {
    writeFile(extensions / bundle, program);
    std::filesystem::permissions(extensions / bundle, std::filesystem::perms(mode));
    writeFile(extensions / (bundle + ".plist"),
              "<plist version=\"1.0\"><dict><key>extensionPoint</key><string>ovaro.quenlet</string>"
              "<key>version</key><string>1.0</string><key>bundleIdentifier</key><string>" +
                  bundle + "</string><key>executable</key><string>" + bundle +
                  "</string></dict></plist>");
  }
  [[nodiscard]] int timesLogged(const std::string& text) const {
    int count = 0;
    const std::string log = agent->err();
    for (auto at = log.find(text); at != log.npos; at = log.find(text, at + 1)) ++count;
    return count;
  }
  // The median of what it takes to fetch the card, in seconds.
  double fetchSeconds() {
    std::vector<double> times;
    for (int i = 0; i < 31; ++i) {
      const auto start = std::chrono::steady_clock::now();
      EXPECT_EQ(quenlet({"card"}).code, 0);
      times.push_back(
          std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    }
    std::nth_element(times.begin(), times.begin() + 15, times.end());
    return times[15];
  }
  // From the signal to the first line of what it makes the agent say, in seconds.
  double hangUpSeconds() {
    const std::size_t said = agent->out().size();
    const auto start = std::chrono::steady_clock::now();
    agent->signal(SIGHUP);
    EXPECT_TRUE(eventually(
        [&] { return agent->out().find("Hup hup hup!!\n", said) != std::string::npos; }));
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  }
  [[nodiscard]] std::size_t openDescriptors() const {
    const std::filesystem::directory_iterator entries(agent->processDirectory() / "fd");
    return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
  }
  [[nodiscard]] bool hasChildren() const {
    return !readFile(agent->processDirectory() / "task" / agent->processDirectory().filename() /
                     "children")
                .empty();
  }
  // Rewrites each donation's date of expiry.
  void setExpiration(double secondsFromNow) {
    const std::string rewrite =
        "import plistlib, sys, time\n"
        "contents = plistlib.load(open(sys.argv[1], 'rb'))\n"
        "for entry in contents['donations']:\n"
        "    entry['origin']['expirationDate'] = time.time() + float(sys.argv[2])\n"
        "plistlib.dump(contents, open(sys.argv[1], 'wb'))\n";
    EXPECT_EQ(
        finish(*start({"python3", "-c", rewrite, donationsFile, std::to_string(secondsFromNow)}))
            .code,
        0);
  }
  static std::string dayFromNow(int days) {
    const std::time_t when = std::time(nullptr) + days * 86400;
    char text[32];
    std::strftime(text, sizeof text, "%Y-%m-%d", std::gmtime(&when));
    return text;
  }

  const std::filesystem::path extensions = home / "Library/Extensions";
};

TEST_F(ExtensionsTest, RenewsWithdrawsAndBringsBackTheCardsOfADirectory) {
  const std::filesystem::path card = home / "Library/Contacts/Cards/anna.vcf";
  writeFile(card, cardText("Anna Berg", {"EMAIL:anna@example.org"}));
  startAgent();
  EXPECT_EQ(quenlet({"disable"}).code, 0);
  ASSERT_TRUE(eventually([this] { return quenlet({"card"}).code == 1; }));
  EXPECT_EQ(quenlet({"enable"}).code, 0);
  ASSERT_TRUE(eventually([this] { return countDonations() == 2; })) << "all is donated again";

  // A week or more is left of thirty days; of two days and of none, thirty are left again.
  for (const double left : {2.0 * 86400, -3600.0}) {
    EXPECT_EQ(stopAgent(), 0);
    setExpiration(left);
    startAgent();
    EXPECT_EQ(countDonations(), left > 0 ? 2 : 0);
    EXPECT_TRUE(eventually([this] {
      const std::string list = quenlet({"list", "--json"}).out;
      return list.find("\"" + dayFromNow(30)) != list.rfind("\"" + dayFromNow(30));
    })) << left;
  }
  EXPECT_EQ(stopAgent(), 0);
  setExpiration(86400);
  std::filesystem::remove(card);
  startAgent();
  EXPECT_TRUE(eventually([this] { return countDonations() == 0; })) << "the card is gone";
}

TEST_F(ExtensionsTest, OutlivesWhateverTheirProgramsDo) {
  struct Row {
    const char* program;
    const char* event;  // what its one value ends in
    int mode = 0700;
  };
  const char* const timedOut = "ovaro.quenlet.extension-error 4";
  const char* const ended = "ovaro.quenlet.extension-error 3";
  const char* const badAnswer = "ovaro.quenlet.extension-error 5";
  const char* const cannotStart = "ovaro.quenlet.extension-error 2";
  const Row rows[] = {
      {"time.sleep(600)", timedOut},
      {"request(); time.sleep(600)", timedOut},
      {"i = request(); time.sleep(10.5); answer(i, later)", timedOut},
      {"i = request(); answer(i, later); answer(i, later); time.sleep(600)", "didRenewValue:"},
      {"agent.sendall(b'no frame at all'); time.sleep(600)", badAnswer},
      {"answer(request(), b'\\x05\\x01a\\x00'); time.sleep(600)", badAnswer},
      {"answer(request() + 1, later); time.sleep(600)", badAnswer},
      {"agent.sendall(struct.pack('<I', 2**31) + b'x' * 9); time.sleep(600)", badAnswer},
      {"while True: answer(99, later)", badAnswer},
      {"answer(request(), b'\\x00\\x00')", "ovaro.quenlet.donation-error 2"},
      {"sys.exit()", ended},
      {"agent.sendall(b'\\x20\\x00'); request()", ended},
      {"agent.close(); os.close(0); time.sleep(600)", ended},
      {"", cannotStart, 0600},
      {nullptr, cannotStart},  // no program format
  };
  int number = 0;
  std::vector<std::string> bundles;
  for (const Row& row : rows) {
    bundles.push_back("com.example.donor" + std::to_string(number++));
    install(bundles.back(), row.program ? prelude + std::string(row.program) : "\x01\x02",
            row.mode);
  }
  startAgent();
  const double idleSeconds = fetchSeconds();
  const std::size_t descriptors = openDescriptors();
  // One value for each, and nothing that another donor's name could contradict.
  for (const std::string& bundle : bundles) {
    writeFile(donatedCard, "BEGIN:VCARD\r\nVERSION:3.0\r\nEMAIL:a@example.org\r\nEND:VCARD\r\n");
    EXPECT_EQ(quenlet({"donate", donatedCard, "--bundle", bundle}).code, 0);
  }
  ASSERT_TRUE(eventually([&] { return hasChildren(); }));
  EXPECT_LT(fetchSeconds(), idleSeconds * 5) << "while the programs run";
  EXPECT_LT(hangUpSeconds(), 0.5) << "while the programs run";

  const auto count = static_cast<int>(std::size(rows));
  ASSERT_TRUE(eventually([&] {
    return timesLogged("\"couldNotRenew") + timesLogged("\"didRenewValue:") == count;
  })) << agent->err();
  for (const Row& row : rows) {
    const auto ofEvent = [&](const Row& other) { return std::string(row.event) == other.event; };
    EXPECT_EQ(timesLogged(row.event), std::count_if(std::begin(rows), std::end(rows), ofEvent))
        << row.event;
  }
  EXPECT_TRUE(eventually([&] { return !hasChildren(); })) << "neither a program nor a zombie";
  EXPECT_TRUE(eventually([&] { return openDescriptors() <= descriptors; }));
  EXPECT_EQ(countDonations(), count) << "what could not be renewed stays as it is";
}

TEST_F(ExtensionsTest, EndsThemWithTheAgent) {
  install("com.example.donor", std::string(prelude) + "open('" +
                                   (temporary.path() / "pid").string() +
                                   "', 'w').write(str(os.getpid()))\nwhile True: time.sleep(1)\n");
  startAgent();
  EXPECT_EQ(donate("com.example.donor", "Anna Berg", {}).code, 0);
  std::string pid;
  ASSERT_TRUE(eventually([&] { return !(pid = readFile(temporary.path() / "pid")).empty(); }));
  EXPECT_EQ(stopAgent(), 0);
  EXPECT_TRUE(eventually([&] { return !std::filesystem::exists("/proc/" + pid); }));
}

TEST_F(ExtensionsTest, AreListedAtLaunchAndOnEachHangUp) {
  install("com.example.donor", prelude);
  startAgent();
  const std::string list =
      "Discovering all extensions\n"
      "Discovered extensions: donor extension org.quenlet.vcard-extension\n"
      "Discovered extensions: donor extension com.example.donor\nDiscovery completed\n";
  std::string expected = list;
  for (int times = 0; times < 3; ++times) {
    ASSERT_TRUE(eventually([&] { return agent->out().size() >= expected.size(); }));
    EXPECT_EQ(agent->out(), expected);
    expected += "Hup hup hup!!\n" + list;
    agent->signal(SIGHUP);
  }
  EXPECT_EQ(quenlet({"disable"}).code, 0);
  ASSERT_TRUE(eventually([&] { return agent->out() == expected && quenlet({"card"}).code == 1; }));
  agent->signal(SIGHUP);
  expected += "Hup hup hup!!\n";
  EXPECT_TRUE(eventually([&] { return agent->out().size() >= expected.size(); }));
  EXPECT_EQ(stopAgent(), 0);
  EXPECT_EQ(agent->out(), expected);
}

}  // namespace
}  // namespace quenlet
