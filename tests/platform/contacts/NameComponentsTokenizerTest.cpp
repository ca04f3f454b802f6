#include "platform/contacts/NameComponentsTokenizer.h"

#include <gtest/gtest.h>

#include <string>

namespace quenlet {
namespace {

std::string tokenized(const std::string& name) {
  const PersonNameComponents parts = NameComponentsTokenizer::componentsFromString(name);
  std::string text;
  for (const auto* part : {&parts.namePrefix, &parts.givenName, &parts.middleName,
                           &parts.familyName, &parts.nameSuffix, &parts.nickname}) {
    text += (part == &parts.namePrefix ? "" : "|") + part->value_or("-");
  }
  return text;
}

TEST(NameComponentsTokenizerTest, TakesFullNamesApart) {
  // Prefix, given, middle, family, suffix, nickname.
  const std::pair<const char*, const char*> cases[] = {
      {" , ,", "-|-|-|-|-|-"},
      {"Ann", "-|Ann|-|-|-|-"},
      {"Ann\u00A0B.\u3000C. Lee", "-|Ann|B. C.|Lee|-|-"},
      {"Lee, Dr. Ann, PhD", "Dr.|Ann|-|Lee|PhD|-"},
      {"King, Jr., Martin Luther", "-|Martin|Luther|King|Jr.|-"},
      {"Martin Luther King Jr.", "-|Martin|Luther|King|Jr.|-"},
      {"Ann Lee, MA", "-|Ann|-|Lee|MA|-"},
      {"Jack Ma", "-|Jack|-|Ma|-|-"},
      {"Prof. Dr. med. Eva Klein", "Prof. Dr. med.|Eva|-|Klein|-|-"},
      {"Dr.", "-|Dr.|-|-|-|-"},
      {"Gen Tanaka", "-|Gen|-|Tanaka|-|-"},
      {"Vincent van Gogh", "-|Vincent|-|van Gogh|-|-"},
      {"Gogh, Vincent van", "-|Vincent|-|van Gogh|-|-"},
      {"Van Morrison", "-|Van|-|Morrison|-|-"},
      {"Omar bin Said Al Amin", "-|Omar|bin Said|Al Amin|-|-"},
      {"Jose Ortega y Gasset", "-|Jose|-|Ortega y Gasset|-|-"},
      {"Robert \"Bob Lee\" Ray", "-|Robert|-|Ray|-|Bob Lee"},
      {"\u201EBobby\u201C Ray", "-|Ray|-|-|-|Bobby"},
      {"Robert 'Bob' O'Neil", "-|Robert|-|O'Neil|-|Bob"},
      {"Ann O'Neil 'x", "-|Ann|O'Neil|'x|-|-"},
  };
  for (const auto& [name, expected] : cases) EXPECT_EQ(tokenized(name), expected) << name;
}

}  // namespace
}  // namespace quenlet
