#include "platform/files/PosixDataProxy.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <atomic>
#include <future>
#include <utility>

#include "platform/scheduling/FileDescriptor.h"
#include "tests/platform/files/FileTree.h"
#include "tests/platform/files/SteeredFileOperations.h"

namespace quenlet {
namespace {

using Names = std::vector<std::string>;

class PosixDataProxyTest : public testing::Test {
 protected:
  // The error of a write, null when it succeeded.
  ErrorPtr write(const std::string& name, const std::string& data) {
    const Future<bool> writing = proxy->writeData(data, home / name, WritingOptions::atomic);
    return writing.result().isLeft() ? nullptr : writing.result().right();
  }
  std::int64_t readFailure(const std::string& name) {
    const auto reading = proxy->dataWithContentsOfURL(home / name);
    return reading.result().isLeft() ? 0 : reading.result().right()->code();
  }
  mode_t mode(const std::string& name) {
    struct stat status {};
    EXPECT_EQ(::stat((home / name).c_str(), &status), 0);
    return status.st_mode & 07777;
  }

  FileTree home;
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
  std::string data(200000, '\0');
  for (std::size_t i = 0; i < data.size(); ++i) data[i] = static_cast<char>(i * 7);
  EXPECT_EQ(write("Library/Contacts/donations.plist", data), nullptr);
  const auto reading = proxy->dataWithContentsOfURL(home / "Library/Contacts/donations.plist");
  EXPECT_EQ(reading.result().left(), data);
  EXPECT_EQ(mode("Library"), 0700U);
  EXPECT_EQ(mode("Library/Contacts"), 0700U);
  EXPECT_EQ(mode("Library/Contacts/donations.plist"), 0600U);
  EXPECT_EQ(write("Library/Contacts/donations.plist", ""), nullptr);
  EXPECT_EQ(home.read("Library/Contacts/donations.plist"), "");
}

TEST_F(PosixDataProxyTest, KeepsTheOldFileAndLeavesNothingBehindWhenAnOperationFails) {
  struct Row {
    const char* operation;
    int failure;
    int number;
  };
  // With a short write each, so that the second write call belongs to the same file.
  const Row rows[] = {{"open", EROFS, 1}, {"write", ENOSPC, 1}, {"write", EDQUOT, 2},
                      {"fsync", EIO, 1},  {"close", EIO, 1},    {"rename", EACCES, 1}};
  operations.longestWrite = 3;
  ASSERT_EQ(write("file.plist", "old content"), nullptr);
  for (const Row& row : rows) {
    operations.fail(row.operation, row.failure, row.number);
    const ErrorPtr error = write("file.plist", "new content");
    ASSERT_NE(error, nullptr) << row.operation;
    EXPECT_EQ(error->code(), row.failure) << row.operation;
    EXPECT_NE(error->debugDescription().find("file.plist"), std::string::npos);
    EXPECT_EQ(error->debugDescription().find(home.root().string()), std::string::npos);
    EXPECT_EQ(home.read("file.plist"), "old content") << row.operation;
    EXPECT_EQ(home.names(), Names({"file.plist"})) << row.operation;
  }
  operations.fail("mkdir", EROFS, 2);
  EXPECT_EQ(write("a/b/file.plist", "new")->code(), EROFS);
  operations.fail("fsync", EIO, 2);  // the directory's: the one failure that comes after the change
  EXPECT_EQ(write("file.plist", "new content")->code(), EIO);
  EXPECT_EQ(write("file.plist", "newest"), nullptr) << "a failure is not remembered";
  EXPECT_EQ(home.read("file.plist"), "newest");
}

TEST_F(PosixDataProxyTest, GoesOnAfterInterruptions) {
  operations.longestWrite = 2;
  for (const char* operation : {"write", "fsync", "close"}) {
    operations.fail(operation, EINTR, 1);
    EXPECT_EQ(write("file", operation), nullptr);
    EXPECT_EQ(home.read("file"), operation);
  }
  operations.fail("read", EINTR, 1);
  EXPECT_EQ(readFailure("file"), 0);
  operations.fail("read", EIO, 1);
  EXPECT_EQ(readFailure("file"), EIO);
}

TEST_F(PosixDataProxyTest, SharesOneWriteBetweenAllThatWaitForTheSameFile) {
  std::promise<void> inFlight, release;
  operations.beforeRename = [&, first = true]() mutable {
    if (!std::exchange(first, false)) return;
    inFlight.set_value();
    release.get_future().wait();
  };
  std::vector<Future<bool>> writing = {
      proxy->writeData("0", home / "file", WritingOptions::atomic)};
  inFlight.get_future().wait();
  for (int i = 1; i < 100; ++i) {
    writing.push_back(proxy->writeData(std::to_string(i), home / "file", WritingOptions::atomic));
  }
  const auto other = proxy->writeData("other", home / "other", WritingOptions::atomic);
  EXPECT_EQ(holds, 3);
  release.set_value();
  for (const auto& future : writing) EXPECT_TRUE(future.result().isLeft());
  EXPECT_TRUE(other.result().isLeft());
  EXPECT_EQ(operations.renames, 3);
  EXPECT_EQ(home.read("file"), "99");
  proxy.reset();
  EXPECT_EQ(holds, 0);
}

TEST_F(PosixDataProxyTest, FinishesWaitingWritesBeforeItGoes) {
  std::promise<void> leaving;
  operations.beforeRename = [entered = leaving.get_future().share()] { entered.wait(); };
  {
    PosixDataProxy brief(nullptr, operations);
    const auto last = brief.writeData("1", home / "first", WritingOptions::atomic);
    last.onCompletion([&](const auto&) {
      static_cast<void>(brief.writeData("2", home / "second", WritingOptions::atomic));
    });
    leaving.set_value();
  }
  EXPECT_EQ(home.names(), Names({"first", "second"}));
}

TEST_F(PosixDataProxyTest, ReplacesTheFileBehindALinkAndADanglingLinkItself) {
  std::filesystem::create_directory(home / "dotfiles");
  home.write("dotfiles/real", "old");
  std::filesystem::create_symlink("dotfiles/real", home / "link");
  std::filesystem::create_symlink("nowhere/real", home / "dangling");
  EXPECT_EQ(write("link", "new"), nullptr);
  EXPECT_TRUE(std::filesystem::is_symlink(home / "link"));
  EXPECT_EQ(home.read("dotfiles/real"), "new");
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
}

TEST_F(PosixDataProxyTest, ReadsRegularFilesOnly) {
  ASSERT_EQ(::mkfifo((home / "fifo").c_str(), 0600), 0);
  std::filesystem::create_directory(home / "directory");
  EXPECT_EQ(readFailure("fifo"), EINVAL);
  EXPECT_EQ(readFailure("directory"), EISDIR);
  EXPECT_EQ(readFailure("missing"), ENOENT);
}

TEST_F(PosixDataProxyTest, KeepsEachDamagedContentOnce) {
  home.write("file.damaged-9", "first");
  for (const char* content : {"first", "second", "second", "third"}) {
    home.write("file", content);
    proxy->keepDamagedFile(home / "file");
  }
  EXPECT_EQ(home.names(), Names({"file", "file.damaged-10", "file.damaged-11", "file.damaged-9"}));
  EXPECT_EQ(home.read("file.damaged-10"), "second");
  EXPECT_EQ(home.read("file.damaged-11"), "third");
  EXPECT_EQ(mode("file.damaged-10"), 0600U);
  home.write("file", "fourth");
  operations.fail("fsync", ENOSPC, 1);
  testing::internal::CaptureStderr();
  proxy->keepDamagedFile(home / "file");
  EXPECT_NE(testing::internal::GetCapturedStderr().find("file.damaged-12"), std::string::npos);
  EXPECT_FALSE(std::filesystem::exists(home / "file.damaged-12"));
}

TEST_F(PosixDataProxyTest, TagsADirectoryForBackupProgramsOnce) {
  home.write("CACHEDIR.TAG", "broken");
  EXPECT_EQ(proxy->setExcludedFromBackups(home.root()), nullptr);
  EXPECT_EQ(proxy->setExcludedFromBackups(home.root()), nullptr);
  EXPECT_EQ(operations.renames, 1);
  EXPECT_TRUE(
      home.read("CACHEDIR.TAG").starts_with("Signature: 8a477f597d28d172789f06886806bc55\n"));
}

}  // namespace
}  // namespace quenlet
