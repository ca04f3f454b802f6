#include "tools/owner/DonationState.h"

#include <array>
#include <cstddef>

namespace quenlet {
namespace {

struct Texts final {
  const char* word;
  const char* title;
  const char* advice;
};

// In the order of the states.
constexpr std::array<Texts, 14> texts = {{
    {"shown", "On the card", ""},
    {"silenced", "Silenced: the donor knows you by another name",
     "If that is your name as well, put it on your own card: quenlet me set FILE. If it is not, "
     "quenlet forget BUNDLE takes the donor's values away"},
    {"namesDisagree", "Names that disagree",
     "Say on a card of your own who you are: quenlet me set FILE"},
    {"ownCardHasIt", "Already on your own card",
     "Nothing is missing: quenlet me shows your own card together with the donated one"},
    {"givenBefore", "Given twice",
     "Nothing is missing: the card shows the value once, as it was given first"},
    {"replacedOnCard", "Given again later",
     "The card has one name and one image. quenlet remove NUMBER of the later one brings this "
     "back"},
    {"hasNothing", "Empty names", ""},
    {"rejected", "Rejected", "quenlet unreject VALUE lets it be donated again"},
    {"confirmed", "Taken over by a contacts program",
     "quenlet unreject VALUE lets it be donated again"},
    {"expired", "Expired", "Donate it again; --expires DAYS sets for how long"},
    {"replaced", "Replaced by a later donation", "quenlet undo takes the last donation back"},
    {"skipped", "Left out when a file was read",
     "Correct the entry in the file, and donate the file again"},
    {"donationsOff", "Donations are off",
     "quenlet enable turns them on. What was deleted meanwhile has to be donated again"},
    {"absent", "Not donated at present", "Donate it again"},
}};

const Texts& textsOf(DonationState state) { return texts.at(static_cast<std::size_t>(state)); }

}  // namespace

const char* wordFor(DonationState state) { return textsOf(state).word; }
const char* titleOf(DonationState state) { return textsOf(state).title; }
const char* adviceFor(DonationState state) { return textsOf(state).advice; }

}  // namespace quenlet
