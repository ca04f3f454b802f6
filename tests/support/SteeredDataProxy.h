#pragma once

#include <gtest/gtest.h>

#include "platform/files/PosixDataProxy.h"

namespace quenlet {

// The real file layer, whose reads a test can make fail, and whose writes it can hold back, too.
class SteeredDataProxy final : public DataProxy {
 public:
  bool failsReads = false;
  bool failsWrites = false;
  bool holdsWrites = false;
  int writes = 0;

  // Lets the writes that were held back happen, and waits for them.
  void releaseWrites() {
    for (const auto& write : std::exchange(held, {})) write();
  }

  Future<std::string> dataWithContentsOfURL(const std::filesystem::path& url) override {
    if (failsReads) return Future<std::string>::futureWithError(makePosixError(EMFILE, "read"));
    return real.dataWithContentsOfURL(url);
  }
  Future<bool> writeContent(FileContentPtr content, const std::filesystem::path& toURL,
                            WritingOptions options) override {
    ++writes;
    EXPECT_EQ(options, WritingOptions::atomic);
    if (failsWrites) return Future<bool>::futureWithError(makePosixError(ENOSPC, "write"));

    // Complete when it is given back, so that all that follows a write is on the test's thread.
    if (!holdsWrites) {
      const auto writing = real.writeContent(std::move(content), toURL, options);
      static_cast<void>(writing.result());
      return writing;
    }
    const Promise<bool> promise;
    held.push_back([this, promise, content = std::move(content), toURL, options] {
      promise.complete(real.writeContent(content, toURL, options).result());
    });
    return promise.future();
  }
  bool keepDamagedFile(const std::filesystem::path& at) override {
    return real.keepDamagedFile(at);
  }
  void keepUnreadFile(const std::filesystem::path& url) override { real.keepUnreadFile(url); }
  ErrorPtr setExcludedFromBackups(const std::filesystem::path& directory) override {
    return real.setExcludedFromBackups(directory);
  }

 private:
  PosixDataProxy real;
  std::vector<std::function<void()>> held;
};

}  // namespace quenlet
