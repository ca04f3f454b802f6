#include "storage/DonationsText.h"

#include <gtest/gtest.h>

#include "tests/support/DonationFactory.h"

namespace quenlet {
namespace {

TEST(DonationsTextTest, HandsOutWholePagesUntilItsSinkIsFull) {
  // Several pieces, with ends of records anywhere in them, and a record of more than a piece.
  DonationValues values;
  for (const std::size_t size : {std::size_t{150'001}, std::size_t{1}, std::size_t{700'003}}) {
    values.push_back(image(std::string(size, 'x'), from("app", std::to_string(size))));
  }
  const FileContentPtr content = DonationsText::of(listOf(values)).takeValue();
  std::string text;
  std::vector<std::size_t> beyondPages;
  content->handTo([&](std::string_view piece) {
    text += piece;
    beyondPages.push_back(piece.size() % 4096);
    return true;
  });
  ASSERT_GT(beyondPages.size(), 3U);
  beyondPages.pop_back();
  EXPECT_EQ(beyondPages, std::vector<std::size_t>(beyondPages.size()));
  const DonationValues read = DonationsText::read(text).value_or(DonationValues());
  ASSERT_EQ(read.size(), values.size());
  for (std::size_t place = 0; place < read.size(); ++place) EXPECT_EQ(*read[place], *values[place]);

  std::size_t calls = 0;
  content->handTo([&](std::string_view) { return ++calls < 2; });
  EXPECT_EQ(calls, 2U);
}

}  // namespace
}  // namespace quenlet
