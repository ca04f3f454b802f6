#include "facade/AppGate.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <optional>

#include "bus/BusError.h"
#include "facade/FacadeError.h"

namespace quenlet {
namespace {

using Passed = Result<AppPermission>;

Passed refused(const char* name, const std::string& sentence) {
  return Passed::failure(makeFacadeError(name, sentence));
}

// Why the store does not tell what the owner has said.
Passed storeFailed(const Error& error, const std::string& app) {
  if (!isAbsence(error)) {
    return refused(FailedError, "the desktop's permission store does not answer");
  }
  return refused(NotPermittedError,
                 "the desktop has no permission store to keep the owner's word in; with that of "
                 "xdg-desktop-portal the owner can say \"quenlet allow " +
                     app + "\"");
}

// The outcome of what the owner said before.
Passed outcomeOf(const AppPermission& permission) {
  if (permission.word == OwnersWord::yes) return Passed::success(permission);
  return refused(NotPermittedError, "the owner does not allow it to this app");
}

}  // namespace

void AppGate::pass(const AppRequest& request, Reply reply) {
  store.find(request.wish, request.app,
             [this, request, reply = std::move(reply)](const auto& found) {
               if (!found.ok()) return reply(storeFailed(*found.error(), request.app));
               if (found.value().word != OwnersWord::unknown)
                 return reply(outcomeOf(found.value()));
               askOwner(request, reply);
             });
}

void AppGate::look(AppWish wish, const std::string& app, Reply reply) {
  store.find(wish, app, [reply = std::move(reply)](const auto& found) {
    reply(found.ok() ? outcomeOf(found.value()) : found);
  });
}

void AppGate::askOwner(const AppRequest& request, Reply reply) {
  if (!isConnected(request.sender)) return;
  if (hasEnded) return reply(refused(CancelledError, "this process ends; call again"));
  const Key key(request.wish, request.app);
  if (unstoredRefusals.contains(key)) return reply(outcomeOf({OwnersWord::no}));
  const auto [asked, isNew] = questions.try_emplace(key);
  asked->second.waiting.push_back({request.sender, std::move(reply)});
  if (!isNew) return;
  take(key, [&] {
    store.findClosings(request.wish, request.app, [this, key, request](const auto& closings) {
      take(key, [&] { open(request, closings); });
    });
  });
}

// A step that fails, as from a lack of memory, must not leave a question that nobody answers.
template <typename Step>
void AppGate::take(const Key& key, const Step& step) {
  try {
    step();
  } catch (...) {
    answerAll(key, refused(FailedError, "the owner cannot be asked"));
    throw;
  }
}

void AppGate::open(const AppRequest& request, const Result<PermissionStore::Dates>& closings) {
  const Key key(request.wish, request.app);
  const auto asked = questions.find(key);
  if (asked == questions.end()) return;
  if (asked->second.waiting.empty()) return static_cast<void>(questions.erase(asked));
  if (!closings.ok()) return answerAll(key, storeFailed(*closings.error(), request.app));
  PermissionStore::Dates all = recent(closings.value());
  if (const auto unstored = unstoredClosings.find(key); unstored != unstoredClosings.end()) {
    for (const Date& date : recent(unstored->second)) all.push_back(date);
  }
  if (all.size() >= mostClosings) {
    return answerAll(key, refused(CancelledError,
                                  "the owner has closed the question several "
                                  "times today"));
  }
  asked->second.closings = std::move(all);
  // The answer comes on the loop, or for want of anybody who could ask at once.
  const auto dialog = question.ask(request, [this, key, request](const auto& answer) {
    take(key, [&] { hear(request, answer); });
  });
  const auto opened = questions.find(key);
  if (opened != questions.end()) opened->second.dialog = dialog;
}

PermissionStore::Dates AppGate::recent(const PermissionStore::Dates& dates) const {
  constexpr double day = 86400;
  PermissionStore::Dates some;
  std::copy_if(dates.begin(), dates.end(), std::back_inserter(some), [this](const Date& date) {
    // Also one that is ahead by less: the clock may have been set back.
    return std::abs(now().timeIntervalSince(date)) < day;
  });
  return some;
}

void AppGate::hear(const AppRequest& request, const Result<std::optional<AppPermission>>& answer) {
  const Key key(request.wish, request.app);
  questions[key].dialog = nullptr;
  if (!answer.ok()) return answerAll(key, Passed::failure(answer.error()));
  if (!answer.value()) {
    return noteClosing(key, questions[key].closings, [this, key](const ErrorPtr&) {
      answerAll(key, refused(CancelledError, "the owner has closed the question"));
    });
  }
  const AppPermission said = *answer.value();
  store.set(request.wish, request.app, said, [this, key, said](const ErrorPtr& error) {
    // The owner has said it: a yes counts this once, a no from now on.
    if (error && said.word == OwnersWord::no) unstoredRefusals.insert(key);
    if (!error) unstoredClosings.erase(key);
    answerAll(key, outcomeOf(said));
  });
}

void AppGate::noteClosing(const Key& key, PermissionStore::Dates closings,
                          PermissionStore::Done done) {
  closings.push_back(now());
  store.setClosings(key.first, key.second, closings,
                    [this, key, closings, done = std::move(done)](const ErrorPtr& error) {
                      if (error) {
                        unstoredClosings[key].push_back(closings.back());
                      } else {
                        unstoredClosings.erase(key);
                      }
                      done(error);
                    });
}

void AppGate::answerAll(const Key& key, const Passed& permission) {
  const auto node = questions.extract(key);
  if (node.empty()) return;
  for (const Waiting& one : node.mapped().waiting) one.reply(permission);
}

void AppGate::forget(const std::string& sender) {
  for (auto asked = questions.begin(); asked != questions.end();) {
    auto& [key, left] = *asked;
    std::erase_if(left.waiting, [&](const Waiting& one) { return one.sender == sender; });
    // One without a dialog is about to have one, or to be answered.
    if (!left.waiting.empty() || !left.dialog) {
      ++asked;
      continue;
    }
    left.dialog->cancel();
    noteClosing(key, left.closings, [](const ErrorPtr&) { /* It counts in this process. */ });
    asked = questions.erase(asked);
  }
}

void AppGate::end() {
  hasEnded = true;
  for (const auto& [key, asked] : std::exchange(questions, {})) {
    if (asked.dialog) asked.dialog->cancel();
    for (const Waiting& one : asked.waiting) {
      one.reply(refused(CancelledError, "this process ends; call again"));
    }
  }
}

}  // namespace quenlet
