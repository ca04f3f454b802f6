#include "platform/foundation/SHA256.h"

#include <gtest/gtest.h>

#include <cstdio>

namespace quenlet {
namespace {

std::string hexadecimal(std::string_view bytes) {
  std::string text;
  for (const unsigned char byte : bytes) {
    char digits[3];
    std::snprintf(digits, sizeof(digits), "%02x", byte);
    text += digits;
  }
  return text;
}

TEST(SHA256Test, DigestsTextsOfEachKindOfEnd) {
  struct Row final {
    const char* name;
    std::string bytes;
    const char* digest;
  };
  const Row rows[] = {
      {"nothing", "", "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"},
      {"a standard vector", "abc",
       "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"},
      {"the most that fits one block", std::string(55, 'b'),
       "eb2c86e932179f4ba13fe8715a26124b77d6bad290b9b4c1cc140cf633300c19"},
      {"the size needs a block of its own", std::string(56, 'c'),
       "f6c7b87acd114115d66897c8cb138c16a8b886673d1b93737f4918be472ea878"},
      {"a whole block", std::string(64, 'd'),
       "d91323a5298f3b9f814db29efaa271f24fbdccedfdd062491b8abc8e07b7fb69"},
      {"several blocks, high bytes", std::string(1000, '\xFF'),
       "b4f73dff046400b76728ab32619e3d89e00132653725f660c62ab9fca975b372"},
  };
  for (const Row& row : rows) EXPECT_EQ(hexadecimal(sha256(row.bytes)), row.digest) << row.name;
}

}  // namespace
}  // namespace quenlet
