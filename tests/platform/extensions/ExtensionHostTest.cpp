#include "platform/extensions/ExtensionHost.h"

#include "protocol/DonationWire.h"
#include "tests/platform/extensions/HostFixture.h"
#include "tests/support/ManualSchedulers.h"

namespace quenlet {
namespace {

class ExtensionHostTest : public HostFixture {
 protected:
  void installScript(const std::string& bundle, const std::string& script) {
    write("programs/" + bundle, donorScript(script), 0755);
    install(bundle, "../programs/" + bundle);
  }
  // Time enough for all that was posted, and for what a program does without being asked.
  void turnLoop() {
    runUntil([turns = 0]() mutable { return ++turns > 10; });
  }
  DonorPtr loadScript(const std::string& script, ExtensionLimits limits = {}) {
    installScript("script", script);
    makeHost(limits);
    return load("script");
  }
  static constexpr ExtensionLimits quick{.idleSeconds = 0.1, .endSeconds = 0.2};
  ManualSchedulerProvider time;  // for those that put it in the place of the loop's
};

TEST_F(ExtensionHostTest, AnswersEachRequestToMisbehavingProgramsOnceAndKeepsNothingOfThem) {
  // By the notes of two renewals that are asked at once.
  const std::pair<const char*, std::vector<std::string>> programs[] = {
      {"7 7", {"None", "IgnoresItsEnd"}},
      {"!4 !4", {"NeverReads", "AnswersTooLate"}},
      {"nothing 7", {"AnswersNothing"}},
      {"!5 7", {"AnswersWithText", "AnswersWithNoFiniteDate"}},
      {"!5 !5", {"AnswersAnother", "SendsNoFrame", "AsksBack", "Floods", "FloodsOneMessage"}},
      {"!3 !3",
       {"EndsAtOnce", "EndsWithinAHeader", "KillsItself", "ClosesItsSocketAndLivesOn",
        "LeavesItsSocketToAChild", "LeavesItsSocketToAFugitive"}},
      {"7 !5", {"AnswersTwice"}},
      {"d:3 d:3", {"GivesErrors"}},
      {"7 !3", {"EndsAfterAnAnswer"}}};
  GoldenParts scripts("tests/platform/extensions/misbehaving.txt");
  std::map<std::string, std::string> rows;
  for (const auto& [expected, names] : programs) {
    for (const std::string& name : names) rows[name] = expected;
  }
  for (const auto& [name, expected] : rows) installScript(name, scripts.take(name));
  for (const bool inTime : {false, true}) {
    ExtensionLimits limits = quick;
    limits.programs = rows.size();
    limits.answerSeconds = inTime ? 30 : 0.3;
    makeHost(limits);
    std::vector<std::pair<std::string, std::string>> asked;
    for (const auto& [name, expected] : rows) {
      if (inTime == (expected == "!4 !4")) continue;
      const DonorPtr donor = load(name);
      ASSERT_TRUE(donor) << name;
      renew(donor);
      renew(donor);
      asked.emplace_back(name, expected);
    }
    runUntil([this] { return std::count(notes.begin(), notes.end(), "") == 0; });
    expectNothingLeft();  // and no answer comes too late
    for (auto note = notes.cbegin(); const auto& [name, expected] : asked) {
      EXPECT_EQ(*note + " " + *std::next(note), expected) << name;
      note += 2;
    }
    notes.clear();
  }
}

TEST_F(ExtensionHostTest, SaysWhyAnExtensionCannotBeLoaded) {
  write("programs/plain", "#!/bin/sh\n", 0644);
  write("programs/senseless", "no program\n", 0755);
  write("programs/open", "#!/bin/sh\n", 0775);
  write("shared/program", "#!/bin/sh\n", 0755);
  write("shared/below/program", "#!/bin/sh\n", 0755);
  std::filesystem::permissions(root / "shared", std::filesystem::perms(0777));
  write("programs/setuid", "#!/bin/sh\n", 04755);
  for (const char* program :
       {"programs/missing", "programs/plain", "programs", "programs/open", "programs/senseless",
        "programs/setuid", "shared/program", "shared/below/program"}) {
    install("bad", root / program);
    makeHost();
    EXPECT_EQ(load("bad"), nullptr);
    renew(discover().front());
    EXPECT_EQ(takeNotes(), "!2 !2") << program;
    expectNothingLeft();
  }
  EXPECT_EQ(load("other"), nullptr);
  EXPECT_EQ(takeNotes(), "!1");
}

TEST_F(ExtensionHostTest, StartsProgramsWithNothingOfTheAgents) {
  ::signal(SIGHUP, SIG_IGN);
  sigset_t blocked;
  ::sigemptyset(&blocked);
  ::sigaddset(&blocked, SIGTERM);
  ::pthread_sigmask(SIG_BLOCK, &blocked, nullptr);
  const DonorPtr donor = loadScript(goldenFile("tests/platform/extensions/surroundings.py"));
  renew(donor);
  EXPECT_EQ(takeNotes(), "d:3");
  // The fourth descriptor is that of the listing.
  EXPECT_EQ(lastError->debugDescription(),
            "[['0', '1', '2', '3'], '/dev/null', '/dev/null', '/', True, 0, 0]");
  ::pthread_sigmask(SIG_UNBLOCK, &blocked, nullptr);
  ::signal(SIGHUP, SIG_DFL);
}

TEST_F(ExtensionHostTest, SendsABoundedNumberOfRequestsAhead) {
  ExtensionLimits limits = quick;
  limits.unansweredRequests = 3;
  const DonorPtr donor = loadScript(goldenFile("tests/platform/extensions/in-bulk.py"), limits);
  for (int i = 0; i < 5; ++i) renew(donor);
  EXPECT_EQ(takeNotes(), "3 3 3 2 2");
}

TEST_F(ExtensionHostTest, WaitsTenSecondsForEachAnswerAndTwoMinutesForAll) {
  onLoop = time.mainThreadScheduler();
  for (const auto& [answerSeconds, end] : {std::pair(10.0, 10.0), {500.0, 120.0}}) {
    const DonorPtr donor =
        loadScript("answer(request())\nwhile True: request()", {.answerSeconds = answerSeconds});
    renew(donor);
    EXPECT_EQ(takeNotes(), "7");
    renew(donor);
    turnLoop();
    time.advance(end - 0.25);
    EXPECT_EQ(notes.back(), "") << end;
    time.advance(0.25);
    EXPECT_EQ(takeNotes(), "!4") << end;
    expectNothingLeft();
  }
}

TEST_F(ExtensionHostTest, LetsNoRequestJoinARunInTheSecondHalfOfItsTime) {
  onLoop = time.mainThreadScheduler();
  const DonorPtr donor = loadScript("while True: answer(request(), date(os.getpid()) + b'\\0')",
                                    {.runSeconds = 120, .idleSeconds = 59.875});
  const auto answer = [&] {
    runUntil([this] { return !notes.back().empty(); });
    return notes.back();
  };
  renew(donor);
  const std::string first = answer();
  time.advance(59.75);
  renew(donor);
  EXPECT_EQ(answer(), first);
  time.advance(0.25);
  renew(donor);
  turnLoop();
  EXPECT_EQ(notes.back(), "") << "it waits until the run has ended by itself";
  time.advance(59.625);
  EXPECT_NE(answer(), first);
  time.advance(59.875);
  expectNothingLeft();
}

TEST_F(ExtensionHostTest, LetsExtensionsWaitInLineForAsLongAsItTakes) {
  onLoop = time.mainThreadScheduler();
  for (const char* name : {"a", "b", "c", "d"}) installScript(name, "serve()");
  makeHost({.idleSeconds = 50, .programs = 2});
  for (const DonorPtr& donor : discover()) renew(donor);
  const auto areAnswered = [this](std::ptrdiff_t count) {
    return [this, count] { return std::count(notes.begin(), notes.end(), "7") == count; };
  };
  runUntil(areAnswered(2));
  time.advance(49.75);  // longer than an answer may take
  turnLoop();
  EXPECT_EQ(notes, std::vector<std::string>({"7", "7", "", ""}));
  EXPECT_EQ(countDescriptors() - descriptorsBefore, 2 * 2) << "of each program";
  time.advance(0.25);
  runUntil(areAnswered(4));
  time.advance(50);
  expectNothingLeft();
}

TEST_F(ExtensionHostTest, TellsOnceInTheBackgroundOfRedonationsThatBroughtNothing) {
  background = time.backgroundScheduler();
  testing::internal::CaptureStderr();
  const DonorPtr donor = loadScript(
      "answer(request(), b'\\0\\0')\nanswer(request(), b'\\0\\0')\n"
      "answer(request(), b'\\0' + error(b'why'))",
      quick);
  for (int i = 0; i < 4; ++i) donor->redonateAllValuesWithReason(1);
  expectNothingLeft();
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "") << "neither is read nor told on the loop";
  testing::internal::CaptureStderr();
  time.runUntilIdle();
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "quenlet: extension script: there is neither a list of values nor an error\n"
            "quenlet: extension script: why\n"
            "quenlet: extension script: the extension ended the connection\n");
  EXPECT_EQ(agent->takeCalls(), "");
}

TEST_F(ExtensionHostTest, TakesNoAnswerOfAnExtensionThatWasSwitchedOffMeanwhile) {
  WireEncoder encoder;
  DonationWire::encode(encoder, {email("ann@example.org", from("script", "email"))});
  std::string bytes;
  for (const char byte : encoder.bytes()) bytes += std::to_string(static_cast<uint8_t>(byte)) + ",";
  for (const bool isOn : {true, false}) {
    const DonorPtr donor =
        loadScript("answer(request(), bytes([" + bytes + "0]))\nanswer(request())", quick);
    if (!isOn) std::filesystem::remove(root / "system/script.plist");
    testing::internal::CaptureStderr();
    donor->redonateAllValuesWithReason(1);
    renew(donor);
    EXPECT_EQ(takeNotes(), isOn ? "7" : "!1");
    EXPECT_EQ(agent->takeCalls(), isOn ? "donate 1;" : "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              isOn ? "" : "quenlet: extension script: it was switched off before its answer\n");
    expectNothingLeft();
  }
}

TEST_F(ExtensionHostTest, FailsWhatIsAskedWhenItGoes) {
  const DonorPtr running = loadScript("time.sleep(60)", {.programs = 1});
  installScript("waiting", "serve()");
  const DonorPtr waiting = discover().back();
  renew(running);
  renew(waiting);
  turnLoop();
  renew(running);  // not seen by the loop yet
  host.reset();
  renew(running);
  while (!notes[2].starts_with('!')) turnLoop();
  EXPECT_EQ(takeNotes(), "!6 !6 !6 !6");
  expectNothingLeft();
}

}  // namespace
}  // namespace quenlet
