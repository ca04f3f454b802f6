#include "tools/commands/CommandLine.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "platform/ipc/ServiceInterface.h"
#include "tests/support/RecordingAgent.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenlet {
namespace {

using testing::HasSubstr;

class CommandLineTest : public testing::Test {
 protected:
  // The exit code; what was written is in `out` and `err`.
  int run(const std::vector<std::string>& words) {
    out.str("");
    err.str("");
    Session session{out, err, agent, Date(1767225600)};  // 2026-01-01
    return static_cast<int>(CommandLine::run(words, session));
  }
  std::string file(const std::string& name, const std::string& properties) {
    const std::string path = temporary.path() / name;
    std::ofstream(path) << "BEGIN:VCARD\nVERSION:4.0\n" << properties << "END:VCARD\n";
    return path;
  }

  TemporaryDirectory temporary;
  RecordingAgent agent;
  std::ostringstream out;
  std::ostringstream err;
};

TEST_F(CommandLineTest, AsksTheAgentAndTellsItsAnswerByTheExitCode) {
  const std::string card = file("card.vcf", "FN:Ann Berg\nEMAIL:ann@example.org\n");
  const std::pair<std::vector<std::string>, const char*> cases[] = {
      {{"donate", card}, "donate 2"},
      {{"card"}, "synchronous"},
      {{"list"}, "list"},
      {{"remove", "a", "b"}, "removeIdentifiers a b"},
      {{"forget", "b"}, "removeBundle b"},
      {{"reject", "a"}, "reject a"},
      {{"reject-cluster", "c"}, "rejectCluster c"},
      {{"clear-rejections"}, "clear"},
  };
  const std::pair<ErrorPtr, int> answers[] = {
      {nullptr, 0},
      {makeError("domain", 7, "a sentence"), 1},
      {makeServiceError(ServiceErrorCode::noService, ""), 3},
      {makeServiceError(ServiceErrorCode::connectionBroken, ""), 3},
  };
  for (const auto& [words, call] : cases) {
    for (const auto& [error, code] : answers) {
      agent.error = error;
      EXPECT_EQ(run(words), code) << call;
      EXPECT_EQ(agent.takeCalls(), call + std::string(";"));
      EXPECT_EQ(err.str(), error ? "quenlet: " + error->description() + "\n" : "") << call;
    }
  }
}

TEST_F(CommandLineTest, RefusesWrongUsageWithoutAskingTheAgent) {
  const std::vector<std::string> wrong[] = {
      {},
      {"unknown"},
      {"donate"},
      {"donate", "x", "--expires", "nan"},
      {"donate", "x", "--expires", "1e9"},
      {"donate", "x", "--bundle", ""},
      {"card", "--format", "xml"},
      {"remove"},
  };
  for (const auto& words : wrong) {
    EXPECT_EQ(run(words), 2) << testing::PrintToString(words);
    EXPECT_THAT(err.str(), testing::StartsWith("quenlet: usage 2: "));
  }
  EXPECT_EQ(run({"donate", temporary.path() / "missing.vcf"}), 1);
  EXPECT_THAT(err.str(), testing::StartsWith("quenlet: posix-error 2: open "));
  EXPECT_EQ(run({"donate", file("bad.vcf", "VERSION\n")}), 1);
  EXPECT_THAT(err.str(), HasSubstr("bad.vcf: line 3: "));
  EXPECT_EQ(agent.takeCalls(), "");
}

TEST_F(CommandLineTest, DryRunShowsWhatWouldBeDonatedUnderStableIdentifiers) {
  const std::string two = file("two cards.vcf",
                               "FN:Ann Berg\nEMAIL:a@example.org\nEMAIL:b@example.org\nTEL:no\n"
                               "END:VCARD\nBEGIN:VCARD\nVERSION:4.0\nFN:Ann B.\nUID:u:1\n");
  EXPECT_EQ(run({"donate", two, "--dry-run", "--bundle", "a:b", "--expires", "-0.5"}), 0);
  EXPECT_EQ(agent.takeCalls(), "");
  const std::string dates = "  2026-01-01  2025-12-31\n";
  for (const std::string identifier : {"two%20cards.vcf:1:name   ", "two%20cards.vcf:1:email:1",
                                       "two%20cards.vcf:1:email:2", "u%3A1:name               "}) {
    EXPECT_THAT(out.str(), HasSubstr("  a:b     a%3Ab:" + identifier + dates));
  }
  EXPECT_EQ(err.str(), "quenlet: " + two + ": skipped 1 entry without a usable value\n");
  EXPECT_EQ(run({"donate", two, two, "--dry-run"}), 0);
  EXPECT_THAT(err.str(), HasSubstr("4 values will replace others"));
}

TEST_F(CommandLineTest, ShowsTheCardForPeopleAndPrograms) {
  const std::string origin =
      R"("origin":{"bundleIdentifier":"bundle","donationIdentifier":"id","clusterIdentifier":"cluster",)"
      R"("donationDate":"1970-01-01T00:00:01Z","expirationDate":"1970-01-01T00:00:02Z"}})";
  EXPECT_EQ(run({"card"}), 0);
  EXPECT_EQ(out.str(),
            "Name\n  Ann\n\nE-mail\n  ann@example.org  home  from bundle  id  until 1970-01-01\n");
  EXPECT_EQ(run({"card", "--format", "json"}), 0);
  EXPECT_EQ(out.str(),
            R"({"name":{"givenName":"Ann"},"emailAddresses":[{"value":"ann@example.org",)"
            R"("label":"home",)" +
                origin + R"(],"phoneNumbers":[],"postalAddresses":[],"imageBytes":0})" + "\n");
}

TEST_F(CommandLineTest, FailsWhenItsResultCannotBeWritten) {
  out.setstate(std::ios::badbit);
  EXPECT_EQ(run({"card"}), 1);
  EXPECT_THAT(err.str(), testing::StartsWith("quenlet: posix-error 5: "));
}

}  // namespace
}  // namespace quenlet
