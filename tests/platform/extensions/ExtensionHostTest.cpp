#include "platform/extensions/ExtensionHost.h"

#include <signal.h>

#include <algorithm>

#include "tests/platform/extensions/HostFixture.h"
#include "tests/support/ManualSchedulers.h"

namespace quenlet {
namespace {

constexpr char preamble[] = R"(#!/usr/bin/env -S python3 -IS
import os, signal, socket, struct, sys, time
s = socket.socket(fileno=0)
def take(n):
    b = b''
    while len(b) < n:
        c = s.recv(n - len(b))
        if not c: sys.exit()
        b += c
    return b
def request():
    n, kind, i = struct.unpack('<IBQ', take(13))
    take(n - 9)
    return i
def frame(kind, i, body): return struct.pack('<IBQ', 9 + len(body), kind, i) + body
def date(t): return b'\4' + struct.pack('<d', t)
def size(n): return bytes([n]) if n < 128 else bytes([n & 127 | 128]) + size(n >> 7)
def text(t): return b'\5' + size(len(t)) + t
def error(t): return (b'\x09\x05Error\x08\3\5\6domain\5\1d\5\4code\2' + struct.pack('<q', 3) +
                      b'\5\x08userInfo\x08\1\5\x10DebugDescription' + text(t))
def answer(i, body=date(7) + b'\0', kind=1): s.sendall(frame(kind, i, body))
def serve():
    while True: answer(request())
)";

class ExtensionHostTest : public HostFixture {
 protected:
  void installScript(const std::string& bundle, const std::string& script) {
    write("programs/" + bundle, preamble + script, 0755);
    install(bundle, "../programs/" + bundle);
  }
  DonorPtr loadScript(const std::string& script, ExtensionLimits limits = {}) {
    installScript("script", script);
    makeHost(limits);
    return load("script");
  }
  static constexpr ExtensionLimits quick{.idleSeconds = 0.1, .endSeconds = 0.2};
};

struct Misbehaviour final {
  const char* name;
  const char* script;
  // Of two renewals that are asked at once.
  const char* notes;
  double answerSeconds = 30;
};

class MisbehavingExtensionTest : public ExtensionHostTest,
                                 public testing::WithParamInterface<Misbehaviour> {};

TEST_P(MisbehavingExtensionTest, GetsEachRequestAnsweredOnceAndLeavesNothing) {
  ExtensionLimits limits = quick;
  limits.answerSeconds = GetParam().answerSeconds;
  const DonorPtr donor = loadScript(GetParam().script, limits);
  ASSERT_TRUE(donor);
  renew(donor);
  renew(donor);
  EXPECT_EQ(takeNotes(), GetParam().notes);
  notes.resize(2);  // for an answer that comes too late
  expectNothingLeft();
  EXPECT_EQ(notes, std::vector<std::string>(2));
}

INSTANTIATE_TEST_SUITE_P(
    All, MisbehavingExtensionTest,
    testing::Values(
        Misbehaviour{"None", "serve()", "7 7"},

        Misbehaviour{"NeverReads", "time.sleep(60)", "!4 !4", 0.3},
        Misbehaviour{"NeverAnswers", "while True: request()", "!4 !4", 0.3},
        Misbehaviour{"AnswersTooLate", "i = request(); time.sleep(1); answer(i)", "!4 !4", 0.3},
        Misbehaviour{"AnswersNothing", "answer(request(), b'\\0\\0')\nserve()", "nothing 7"},
        Misbehaviour{"AnswersWithText", "answer(request(), b'\\5\\1a\\0')\nserve()", "!5 7"},
        Misbehaviour{"AnswersAnother", "answer(request() + 9); time.sleep(60)", "!5 !5"},
        Misbehaviour{"SendsNoFrame", "s.sendall(b'no frame at all'); time.sleep(60)", "!5 !5"},
        Misbehaviour{"EndsAtOnce", "sys.exit()", "!3 !3"},
        Misbehaviour{"EndsWithinAHeader", "s.sendall(b'\\x20\\0'); request()", "!3 !3"},
        Misbehaviour{"AnswersOnceOnly", "answer(request()); time.sleep(60)", "7 !4", 4},
        Misbehaviour{"AnswersTwice", "i = request(); answer(i); answer(i); time.sleep(60)", "7 !5"},
        Misbehaviour{"AsksBack", "answer(request(), kind=0); time.sleep(60)", "!5 !5"},
        Misbehaviour{"AnswersWithNoFiniteDate",
                     "answer(request(), date(float('inf')) + b'\\0')\nserve()", "!5 7"},
        Misbehaviour{"GivesErrors",
                     "answer(request(), b'\\0' + error(b'e')); answer(request(), error(b'e'), 2)",
                     "d:3 d:3"},
        Misbehaviour{"EndsBeforeTheBody", "s.sendall(frame(1, request(), date(7))[:13])", "!3 !3"},
        Misbehaviour{"EndsAfterAnAnswer", "answer(request())", "7 !3"},
        Misbehaviour{"KillsItself", "request(); os.kill(0, signal.SIGKILL)", "!3 !3"},
        Misbehaviour{"Floods", "while True: s.sendall(b'\\0' * 65536)", "!5 !5"},
        Misbehaviour{"FloodsOneMessage",
                     "s.sendall(struct.pack('<IBQ', 2**25, 1, 9))\n"
                     "while True: s.sendall(b'\\0' * 65536)",
                     "!5 !5"},
        Misbehaviour{"ClosesItsSocketAndLivesOn", "s.close(); time.sleep(60)", "!3 !3"},
        Misbehaviour{"LeavesItsSocketToAChild", "if os.fork() == 0: time.sleep(60)", "!3 !3"},
        Misbehaviour{"LeavesItsSocketToAFugitive",
                     "if os.fork() == 0:\n    os.setsid()\n    time.sleep(1)", "!3 !3"},
        Misbehaviour{"IgnoresItsEnd",
                     "for i in (1, 2, 15): signal.signal(i, signal.SIG_IGN)\n"
                     "answer(request()); answer(request()); time.sleep(60)",
                     "7 7"}),
    [](const auto& instance) { return std::string(instance.param.name); });

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
  const DonorPtr donor = loadScript(R"(
status = dict(l.split(':\t', 1) for l in open('/proc/self/status').read().splitlines())
seen = [os.listdir('/proc/self/fd'), os.readlink('/proc/self/fd/1'), os.readlink('/proc/self/fd/2'),
        os.getcwd(), os.getpgid(0) == os.getpid() == os.getsid(0), int(status['SigBlk'], 16),
        int(status['SigIgn'], 16) & 1]
answer(request(), b'\0' + error(repr(seen).encode()))
)");
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
  // Takes what comes until nothing comes, then answers all with its number.
  const DonorPtr donor = loadScript(R"(
while True:
    s.settimeout(None)
    taken = [request()]
    s.settimeout(0.3)
    try:
        while True: taken.append(request())
    except socket.timeout: pass
    for i in reversed(taken): answer(i, date(len(taken)) + b'\0')
)",
                                    limits);
  for (int i = 0; i < 5; ++i) renew(donor);
  EXPECT_EQ(takeNotes(), "3 3 3 2 2");
}

TEST_F(ExtensionHostTest, EndsARunThatTakesTooLong) {
  ExtensionLimits limits = quick;
  limits.runSeconds = 4;
  const DonorPtr donor = loadScript("while True: time.sleep(0.1); answer(request())", limits);
  for (int i = 0; i < 50; ++i) renew(donor);
  const std::string all = takeNotes();
  EXPECT_EQ(all.substr(0, 2), "7 ");
  EXPECT_EQ(all.substr(all.size() - 5), "!4 !4");
  expectNothingLeft();
}

TEST_F(ExtensionHostTest, WaitsTenSecondsForAnAnswer) {
  ManualSchedulerProvider time;
  onLoop = time.mainThreadScheduler();
  const DonorPtr donor = loadScript("while True: request()");
  renew(donor);
  runUntil([turns = 0]() mutable { return ++turns > 2; });
  time.advance(9.75);
  EXPECT_EQ(notes.back(), "");
  time.advance(0.25);
  EXPECT_EQ(takeNotes(), "!4");
  expectNothingLeft();
}

TEST_F(ExtensionHostTest, LetsNoRequestJoinARunInTheSecondHalfOfItsTime) {
  ManualSchedulerProvider time;
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
  runUntil([turns = 0]() mutable { return ++turns > 20; });
  EXPECT_EQ(notes.back(), "") << "it waits until the run has ended by itself";
  time.advance(59.625);
  EXPECT_NE(answer(), first);
  time.advance(59.875);
  expectNothingLeft();
}

TEST_F(ExtensionHostTest, LetsExtensionsWaitInLineForAsLongAsItTakes) {
  ExtensionLimits limits = quick;
  limits.programs = 2;
  limits.answerSeconds = 4;
  for (const char* name : {"a", "b", "c", "d"}) {
    installScript(name, "while True:\n    i = request(); time.sleep(0.5); answer(i)");
  }
  makeHost(limits);
  const std::vector<DonorPtr> donors = discover();
  for (const DonorPtr& donor : donors) renew(donor);
  // The first two are at work for longer than an answer may take.
  for (int i = 0; i < 16; ++i) renew(donors[i % 2]);
  std::ptrdiff_t mostDescriptors = 0;
  runUntil([&] {
    mostDescriptors = std::max(mostDescriptors, countDescriptors() - descriptorsBefore);
    return std::count(notes.begin(), notes.end(), "7") == 20;
  });
  EXPECT_EQ(mostDescriptors, 2 * 2);  // of each program
  expectNothingLeft();
}

TEST_F(ExtensionHostTest, TellsOnceInTheBackgroundOfRedonationsThatBroughtNothing) {
  ManualSchedulerProvider aside;
  background = aside.backgroundScheduler();
  testing::internal::CaptureStderr();
  const DonorPtr donor = loadScript(
      "answer(request(), b'\\0\\0')\nanswer(request(), b'\\0\\0')\n"
      "answer(request(), b'\\0' + error(b'why'))",
      quick);
  for (int i = 0; i < 4; ++i) donor->redonateAllValuesWithReason(1);
  expectNothingLeft();
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "") << "neither is read nor told on the loop";
  testing::internal::CaptureStderr();
  aside.runUntilIdle();
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "quenlet: extension script: there is neither a list of values nor an error\n"
            "quenlet: extension script: why\n"
            "quenlet: extension script: the extension ended the connection\n");
  EXPECT_EQ(agent->takeCalls(), "");
}

TEST_F(ExtensionHostTest, FailsWhatIsAskedWhenItGoes) {
  ExtensionLimits limits;
  limits.programs = 1;
  const DonorPtr running = loadScript("time.sleep(60)", limits);
  installScript("waiting", "serve()");
  const DonorPtr waiting = discover().back();
  renew(running);
  renew(waiting);
  runUntil([turns = 0]() mutable { return ++turns > 2; });
  renew(running);  // not seen by the loop yet
  host.reset();
  renew(running);
  while (!notes[2].starts_with('!')) runUntil([turns = 0]() mutable { return ++turns > 1; });
  EXPECT_EQ(takeNotes(), "!6 !6 !6 !6");
  expectNothingLeft();
}

}  // namespace
}  // namespace quenlet
