#include "tools/owner/Selection.h"

#include <gtest/gtest.h>

#include "tests/support/DonationFactory.h"

namespace quenlet {
namespace {

TEST(SelectionTest, TakesAnIdentifierThenANumberThenTheValueItself) {
  const PersonNameComponents robin{"Dr.", "Robin", "J.", "Hartwell", {}, "Rob"};
  const PostalAddress lane{.street = "12 Larch Lane", .city = "Springfield", .country = "Wales"};
  const DonationValues list{email("Ann@Example.org", from("a", "7")),
                            phone("+49 (30) 1-5", from("a", "second")),
                            named(robin, from("b", "a:name")),
                            postal(lane, from("b", "a:adr")),
                            email("ann@example.org", from("c", "c:email"), "work"),
                            image("3", from("c", "c:image")),
                            named({}, from("c", "c:name"))};
  using Places = std::vector<std::size_t>;
  const std::tuple<const char*, SelectedBy, Places> rows[] = {
      {"second", SelectedBy::identifier, {1}},
      {"7", SelectedBy::identifier, {0}},
      {"6", SelectedBy::number, {5}},
      {"0", SelectedBy::value, {}},
      {"8", SelectedBy::value, {}},
      {"99999999999999999999999", SelectedBy::value, {}},
      {" mailto:ANN@example.org", SelectedBy::value, {0, 4}},
      {"ann@example.com", SelectedBy::value, {}},
      {"+4930 15", SelectedBy::value, {1}},
      {"4930 15", SelectedBy::value, {}},
      {"dr. robin j. HARTWELL \"Rob\"", SelectedBy::value, {2}},
      {"Robin  Hartwell", SelectedBy::value, {2}},
      {"Robin", SelectedBy::value, {}},
      {"12 larch lane, Springfield, Wales", SelectedBy::value, {3}},
      {"12 Larch Lane Springfield", SelectedBy::value, {3}},
      {"12 Larch Lane", SelectedBy::value, {}},
      {"", SelectedBy::value, {}},
      {"\", ", SelectedBy::value, {}},
  };
  for (const auto& [text, by, places] : rows) {
    const Selection selection = select(list, text);
    EXPECT_EQ(selection.by, by) << text;
    EXPECT_EQ(selection.places, places) << text;
  }
}

}  // namespace
}  // namespace quenlet
