#include "platform/counters/PrometheusCounterStore.h"

#include "tests/platform/files/SteeredFileOperations.h"
#include "tests/support/SteeredDataProxy.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenlet {
namespace {

class PrometheusCounterStoreTest : public testing::Test {
 protected:
  using Counting = std::function<void(CounterStore&)>;

  // What one life of a process that counts tells on standard error; all is written by its end.
  std::string live(const Counting& counting) {
    testing::internal::CaptureStderr();
    counting(*std::make_unique<PrometheusCounterStore>(
        file, std::make_shared<PosixDataProxy>(nullptr, operations)));
    return testing::internal::GetCapturedStderr();
  }
  static void countOnce(CounterStore& store) {
    store.setScalar("a.me-card.count", 1);
    store.addSample("a.matched-count", 2);
  }
  static std::string counted(const std::string& count, const std::string& sum) {
    return "# HELP a_matched_count The counter a.matched-count\n"
           "# TYPE a_matched_count summary\n"
           "a_matched_count_count " +
           count + "\na_matched_count_sum " + sum +
           "\n# HELP a_me_card_count_value The counter a.me-card.count\n"
           "# TYPE a_me_card_count_value gauge\n"
           "a_me_card_count_value 1\n";
  }

  TemporaryDirectory temporary;
  const std::filesystem::path file = temporary / "Logs" / "quenlet" / "counters.prom";
  SteeredFileOperations operations;
};

TEST_F(PrometheusCounterStoreTest, KeepsCountsOverRestartsInTheTextThatCollectorsRead) {
  EXPECT_EQ(live([](CounterStore&) {}), "");
  EXPECT_FALSE(std::filesystem::exists(file.parent_path())) << "nothing was counted";
  EXPECT_EQ(live(&countOnce), "");
  EXPECT_EQ(readFile(file), counted("1", "2"));
  live([](CounterStore& store) {
    countOnce(store);
    store.setScalar("No key", 1);
    store.setScalar("1.key", 1);
    store.addSample("a.matched-count", 0.25);
    store.addSample("a.matched-count", std::numeric_limits<double>::quiet_NaN());
    store.addSample("a.matched-count", std::numeric_limits<double>::max());
    store.addSample("a.matched-count", std::numeric_limits<double>::max());
    store.addSample("a.matched-count", -std::numeric_limits<double>::max());
  });
  EXPECT_EQ(live(&countOnce), "");
  EXPECT_EQ(readFile(file), counted("6", "2"));
}

TEST_F(PrometheusCounterStoreTest, KeepsADamagedFileAsideAndCountsFromNothing) {
  const std::string whole = counted("4", "8");
  const auto changed = [&](const std::string& from, const std::string& to) {
    return std::string(whole).replace(whole.find(from), from.size(), to);
  };
  const std::string damaged[] = {
      whole.substr(0, whole.size() - 1),
      whole.substr(0, whole.find("a_matched_count_sum")),
      whole + whole,
      whole + "\n",
      changed("count 4", "count -4"),
      changed("count 4", "count 9223372036854775808"),
      changed("sum 8", "sum inf"),
      changed("value 1\n", "value 1 1700000000\n"),
      changed("value 1\n", "value 9223372036854775808\n"),
      changed("gauge", "summary"),
      changed("# HELP a_matched", "# HELP b_matched"),
      changed(
          "# HELP a_me_card_count_value The counter a.me-card.count\n# TYPE a_me_card_count_value",
          "# HELP b The counter a.me-card.count\n# TYPE b"),
      std::string("\0\xFF", 2),
  };
  for (const std::string& content : damaged) {
    std::filesystem::remove_all(file.parent_path());
    writeFile(file, content);
    const std::string told = live(&countOnce);

    EXPECT_EQ(told.rfind("quenlet: counters.prom: line "), 0u) << told;
    EXPECT_EQ(readFile(file), counted("1", "2"));
    EXPECT_EQ(readFile(file.string() + ".damaged-1"), content);
  }
}

TEST_F(PrometheusCounterStoreTest, ReplacesNoFileThatItCanNeitherReadNorKeep) {
  const auto setScalar = [](CounterStore& store) { store.setScalar("a.me-card.count", 1); };
  writeFile(file, counted("4", "8"));
  operations.fail("read", EIO);
  EXPECT_EQ(live(setScalar).find("quenlet: counters.prom: "), 0u);
  EXPECT_EQ(readFile(file), counted("4", "8"));
  operations.fail("read", EIO);
  live(&countOnce);
  EXPECT_EQ(readFile(file), counted("5", "10")) << "the second count could read it";
  writeFile(file, "damaged");
  operations.fail("open", EACCES, 2);
  live(setScalar);
  EXPECT_EQ(readFile(file), "damaged");
}

TEST_F(PrometheusCounterStoreTest, CountsWhileTheLineOfAnotherThreadWaitsToBeWritten) {
  const auto proxy = std::make_shared<SteeredDataProxy>();
  proxy->failsWrites = true;
  PrometheusCounterStore store(file, proxy);
  std::counting_semaphore<2> counted(0);
  const auto count = [&] {
    store.setScalar("a.me-card.count", 1);
    counted.release();
  };
  testing::internal::CaptureStderr();
  ::flockfile(stderr);
  std::thread threads[] = {std::thread(count), std::thread(count)};
  const bool oneWent = counted.try_acquire_for(std::chrono::seconds(5));
  ::funlockfile(stderr);
  for (std::thread& thread : threads) thread.join();
  EXPECT_TRUE(oneWent);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "quenlet: counters.prom: write: No space left on device\n");
}

}  // namespace
}  // namespace quenlet
