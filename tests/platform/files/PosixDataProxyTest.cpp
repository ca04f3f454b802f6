#include "platform/files/PosixDataProxy.h"

#include <sys/file.h>

#include <latch>

#include "platform/files/FileReading.h"
#include "platform/foundation/FileDescriptor.h"
#include "tests/platform/files/SteeredFileOperations.h"
#include "tests/support/TemporaryDirectory.h"
#include "tests/support/ThreadsRefused.h"

namespace quenlet {
namespace {

using Names = std::vector<std::string>;

// Finds no memory once it has begun.
struct UnmadeContent final : FileContent {
  void handTo(const Sink& sink) const override {
    sink("half");
    throw std::bad_alloc();
  }
};

class PosixDataProxyTest : public testing::Test {
 protected:
  Future<bool> startWrite(const std::string& name, const std::string& data) {
    return proxy->writeData(data, home / name, WritingOptions::atomic);
  }
  ErrorPtr write(const std::string& name, const std::string& data) {
    const Result<bool> outcome = startWrite(name, data).result();
    return outcome.ok() ? nullptr : outcome.error();
  }
  std::int64_t readFailure(const std::string& name) {
    const auto outcome = proxy->dataWithContentsOfURL(home / name).result();
    return outcome.ok() ? 0 : outcome.error()->code();
  }

  TemporaryDirectory home;
  SteeredFileOperations operations;
  std::atomic<int> holds = 0;
  std::unique_ptr<PosixDataProxy> proxy = std::make_unique<PosixDataProxy>(
      [this] {
        ++holds;
        return std::make_shared<CancelBlock>([this] { --holds; });
      },
      operations);
};

TEST_F(PosixDataProxyTest, ReadsBackWhatItWroteIntoPrivateDirectoriesAndFiles) {
  for (const std::string& content :
       {std::string("\0\xff", 2) + std::string(200000, 'x'), std::string()}) {
    EXPECT_EQ(write("a/b/file", content), nullptr);
    EXPECT_EQ(proxy->dataWithContentsOfURL(home / "a/b/file").result().value(), content);
  }
  EXPECT_TRUE(modeOf(home / "a") == 0700 && modeOf(home / "a/b") == 0700 &&
              modeOf(home / "a/b/file") == 0600);
}

TEST_F(PosixDataProxyTest, KeepsTheOldFileAndLeavesNothingBehindWhenAnOperationFails) {
  // With a short write each, so that the second write call belongs to the same file.
  const std::tuple<const char*, int, int> rows[] = {{"open", EROFS, 1},   {"write", ENOSPC, 1},
                                                    {"write", EDQUOT, 2}, {"fsync", EIO, 1},
                                                    {"close", EIO, 1},    {"rename", EACCES, 1}};
  operations.longestWrite = 3;
  ASSERT_EQ(write("file.plist", "old content"), nullptr);
  for (const auto& [operation, failure, number] : rows) {
    operations.fail(operation, failure, number);
    const ErrorPtr error = write("file.plist", "new content");
    ASSERT_NE(error, nullptr) << operation;
    EXPECT_EQ(error->code(), failure) << operation;
    EXPECT_EQ(error->debugDescription().find(home.path().string()), std::string::npos);
    EXPECT_EQ(home.read("file.plist"), "old content") << operation;
    EXPECT_EQ(home.names(), Names({"file.plist"})) << operation;
  }
  operations.fail("mkdir", EROFS, 2);
  EXPECT_EQ(write("a/b/file.plist", "new")->code(), EROFS);
  operations.fail("fsync", EIO, 2);  // the directory's: the one failure that comes after the change
  EXPECT_EQ(write("file.plist", "new content")->code(), EIO);
  EXPECT_EQ(write("file.plist", "newest"), nullptr) << "a failure is not remembered";
  EXPECT_EQ(home.read("file.plist"), "newest");
  const auto unmade = proxy->writeContent(std::make_shared<const UnmadeContent>(),
                                          home / "file.plist", WritingOptions::atomic);
  EXPECT_EQ(unmade.result().error()->code(), ENOMEM);
  EXPECT_EQ(home.read("file.plist"), "newest");
}

TEST_F(PosixDataProxyTest, GoesOnAfterInterruptions) {
  operations.longestWrite = 2;
  for (const char* operation : {"write", "fsync", "close"}) {
    operations.fail(operation, EINTR, 1);
    EXPECT_EQ(write("file", operation), nullptr);
    EXPECT_EQ(home.read("file"), operation);
  }
  for (const char* operation : {"read", "open"}) {
    operations.fail(operation, EINTR, 1);
    EXPECT_EQ(readFailure("file"), 0) << operation;
  }
}

TEST_F(PosixDataProxyTest, WaitsForAPassingShortageOnlyToTellWhetherAFileCanBeRead) {
  home.write("file", "bytes");
  // The call that fails once, with what, how often one may wait and does, and the outcome.
  const std::tuple<const char*, int, int, int, int> rows[] = {
      {"open", EMFILE, 5, 1, 0}, {"open", ENFILE, 5, 1, 0},      {"read", ENOMEM, 5, 1, 0},
      {"read", EAGAIN, 5, 1, 0}, {"open", EMFILE, 0, 1, EMFILE}, {"open", EACCES, 5, 0, EACCES},
      {"read", EIO, 5, 0, EIO},  {"open", ESTALE, 5, 0, ESTALE}, {"open", ENOENT, 5, 0, 0}};
  for (const auto& [operation, failure, patience, expectedWaits, expected] : rows) {
    int waits = 0;
    operations.fail(operation, failure);
    const ErrorPtr error =
        whyUnreadable(home / "file", *proxy, [&, most = patience] { return ++waits <= most; });
    EXPECT_EQ(error ? error->code() : 0, expected) << operation << failure;
    EXPECT_EQ(waits, expectedWaits) << operation << failure;
  }
}

TEST_F(PosixDataProxyTest, SharesOneWriteBetweenAllThatWaitForTheSameFile) {
  std::latch inFlight(1), release(1);
  operations.beforeRename = [&, first = true]() mutable {
    if (!std::exchange(first, false)) return;
    inFlight.count_down();
    release.wait();
  };
  std::vector<Future<bool>> writing = {startWrite("file", "0")};
  inFlight.wait();
  for (int i = 1; i < 100; ++i) writing.push_back(startWrite("file", std::to_string(i)));
  writing.push_back(startWrite("other", "other"));
  EXPECT_EQ(holds, 3);
  release.count_down();
  for (const auto& future : writing) EXPECT_TRUE(future.result().ok());
  EXPECT_EQ(operations.renames, 3);
  EXPECT_EQ(home.read("file"), "99");
  proxy.reset();
  EXPECT_EQ(holds, 0);
}

TEST_F(PosixDataProxyTest, FailsTheFirstWriteWithoutAThreadAndTriesAgainWithTheNext) {
  {
    const ThreadsRefused refused;
    const ErrorPtr error = write("file", "1");
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(error->code(), EAGAIN);
  }
  EXPECT_EQ(holds, 0);
  EXPECT_EQ(write("file", "2"), nullptr);
  EXPECT_EQ(home.names(), Names({"file"}));
}

TEST_F(PosixDataProxyTest, FinishesWaitingWritesBeforeItGoes) {
  std::latch leaving(1);
  operations.beforeRename = [&] { leaving.wait(); };
  PosixDataProxy* const present = proxy.get();
  startWrite("first", "1").onCompletion([&, present](const auto&) {
    static_cast<void>(present->writeData("2", home / "second", WritingOptions::atomic));
  });
  leaving.count_down();
  proxy.reset();
  EXPECT_EQ(home.names(), Names({"first", "second"}));
}

TEST_F(PosixDataProxyTest, ReplacesTheFileBehindALinkAndADanglingLinkItself) {
  home.write("real", "old");
  std::filesystem::create_symlink("real", home / "link");
  std::filesystem::create_symlink("nowhere/real", home / "dangling");
  EXPECT_EQ(write("link", "new"), nullptr);
  EXPECT_TRUE(std::filesystem::is_symlink(home / "link"));
  EXPECT_EQ(home.read("real"), "new");
  EXPECT_EQ(write("dangling", "kept"), nullptr);
  EXPECT_EQ(home.read("dangling"), "kept");
}

TEST_F(PosixDataProxyTest, ClearsUpAfterACrashButLeavesTemporariesInUse) {
  const std::string crashed = ".file.quenlet-0123456789abcdef";
  const std::string used = ".file.quenlet-fedcba9876543210";
  const Names foreign = {".file.quenlet-notes", ".other.quenlet-0123456789abcdef"};
  for (const auto& name : {crashed, used, foreign[0], foreign[1]}) home.write(name, "half");
  const FileDescriptor writer(::open((home / used).c_str(), O_WRONLY | O_CLOEXEC));
  ASSERT_EQ(::flock(writer.get(), LOCK_EX), 0);
  EXPECT_EQ(write("file", "new"), nullptr);
  EXPECT_EQ(home.names(), Names({used, foreign[0], foreign[1], "file"}));
  DurableFileWriter::removeLeftovers(home.path());
  EXPECT_EQ(home.names(), Names({used, foreign[0], "file"}));
}

TEST_F(PosixDataProxyTest, ReadsRegularFilesOfSomeSizeOnly) {
  ASSERT_EQ(::mkfifo((home / "fifo").c_str(), 0600), 0);
  home.write("large", "");
  std::filesystem::resize_file(home / "large", PosixDataProxy::maximumFileSizeInBytes + 1);
  EXPECT_EQ(readFailure("fifo"), EINVAL);
  EXPECT_EQ(readFailure("large"), EFBIG);
  EXPECT_EQ(readFailure("."), EISDIR);
  EXPECT_EQ(readFailure("missing"), ENOENT);
  operations.fail("read", EIO, 1);
  home.write("file", "");
  EXPECT_EQ(readFailure("file"), EIO);
}

TEST_F(PosixDataProxyTest, KeepsEachDamagedContentOnceWhereItCannotLink) {
  home.write("file.damaged-9", "first");
  for (const char* content : {"first", "second", "second", "third"}) {
    home.write("file", content);
    proxy->keepDamagedFile(home / "file");
  }
  EXPECT_EQ(home.read("file.damaged-10"), "second");
  EXPECT_EQ(home.read("file.damaged-11"), "third");
  EXPECT_EQ(modeOf(home / "file.damaged-10"), 0600U);
  home.write("file", "fourth");
  operations.fail("fsync", ENOSPC, 1);
  testing::internal::CaptureStderr();
  proxy->keepDamagedFile(home / "file");
  EXPECT_NE(testing::internal::GetCapturedStderr().find("file.damaged-12"), std::string::npos);
  EXPECT_FALSE(std::filesystem::exists(home / "file.damaged-12"));
}

TEST_F(PosixDataProxyTest, KeepsAnUnreadableDamagedFileByALinkThroughTheNextWrite) {
  proxy = std::make_unique<PosixDataProxy>();
  home.write("real", "damaged");
  std::filesystem::permissions(home / "real", std::filesystem::perms::none);
  std::filesystem::create_symlink("real", home / "file");
  for (int i = 0; i < 2; ++i) proxy->keepDamagedFile(home / "file");
  EXPECT_TRUE(std::filesystem::equivalent(home / "real", home / "file.damaged-1"));
  EXPECT_FALSE(std::filesystem::is_symlink(home / "file.damaged-1"));
  EXPECT_EQ(write("file", "new"), nullptr);
  std::filesystem::permissions(home / "file.damaged-1", std::filesystem::perms::owner_read);
  EXPECT_EQ(home.read("file.damaged-1"), "damaged");
  EXPECT_EQ(home.names(), Names({"file", "file.damaged-1", "real"}));
}

TEST_F(PosixDataProxyTest, WritesNothingOverWhatItCouldNotKeep) {
  home.write("file", "unread");
  operations.fail("open", EIO);
  EXPECT_FALSE(proxy->keepDamagedFile(home / "file"));
  operations.fail("open", EMFILE);
  EXPECT_EQ(write("file", "new")->code(), EMFILE);
  EXPECT_EQ(home.read("file"), "unread");
  EXPECT_EQ(write("file", "new"), nullptr);
  EXPECT_EQ(home.read("file.damaged-1") + home.read("file"), "unreadnew");
}

TEST_F(PosixDataProxyTest, TagsADirectoryForBackupProgramsOnce) {
  home.write("CACHEDIR.TAG", "broken");
  for (int i = 0; i < 2; ++i) EXPECT_EQ(proxy->setExcludedFromBackups(home.path()), nullptr);
  EXPECT_EQ(operations.renames, 1);
  EXPECT_TRUE(
      home.read("CACHEDIR.TAG").starts_with("Signature: 8a477f597d28d172789f06886806bc55\n"));
}

}  // namespace
}  // namespace quenlet
