#include "facade/AppGate.h"

#include "facade/FacadeError.h"

namespace quenlet {
namespace {

using Passed = Result<AppPermission>;

Passed refused(const char* name, const std::string& sentence) {
  return Passed::failure(makeFacadeError(name, sentence));
}

// The outcome of what the owner said before.
Passed outcomeOf(const AppPermission& permission) {
  if (permission.word == OwnersWord::yes) return Passed::success(permission);
  return refused(NotPermittedError, "the owner does not allow it to this app");
}

}  // namespace

void AppGate::pass(const AppRequest& request, Reply reply) {
  store.find(
      request.wish, request.app, [this, request, reply = std::move(reply)](const auto& found) {
        if (!found.ok()) {
          return reply(refused(FailedError, "the desktop's permission store does not answer"));
        }
        if (found.value().word != OwnersWord::unknown) return reply(outcomeOf(found.value()));
        askOwner(request, reply);
      });
}

void AppGate::look(AppWish wish, const std::string& app, Reply reply) {
  store.find(wish, app, [reply = std::move(reply)](const auto& found) {
    reply(found.ok() ? outcomeOf(found.value()) : found);
  });
}

void AppGate::askOwner(const AppRequest& request, Reply reply) {
  const Key key(request.wish, request.app);
  if (cancels[key] >= mostCancels) {
    return reply(refused(CancelledError, "the owner has closed the question several times"));
  }
  std::vector<Reply>& waitingReplies = waiting[key];
  waitingReplies.push_back(std::move(reply));
  if (waitingReplies.size() > 1) return;
  question.ask(request, [this, request](const auto& answer) { hear(request, answer); });
}

void AppGate::hear(const AppRequest& request, const Result<std::optional<AppPermission>>& answer) {
  const Key key(request.wish, request.app);
  if (!answer.ok()) return answerAll(key, Passed::failure(answer.error()));
  if (!answer.value()) {
    ++cancels[key];
    return answerAll(key, refused(CancelledError, "the owner has closed the question"));
  }
  // What could not be stored counts this once: the owner has said it.
  const AppPermission said = *answer.value();
  store.set(request.wish, request.app, said,
            [this, key, said](const ErrorPtr&) { answerAll(key, outcomeOf(said)); });
}

void AppGate::answerAll(const Key& key, const Passed& permission) {
  const auto node = waiting.extract(key);
  if (node.empty()) return;
  for (const Reply& reply : node.mapped()) reply(permission);
}

}  // namespace quenlet
