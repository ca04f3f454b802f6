#include "platform/scheduling/TimerThread.h"

#include <utility>

#include "platform/scheduling/CancelableBlock.h"

namespace quenlet {

TimerThread::TimerThread() : timers(loop), thread([this] { loop.run(); }) {}

TimerThread::~TimerThread() { shutDown(); }

void TimerThread::shutDown() {
  if (!thread.joinable()) return;
  loop.stop();
  thread.join();
}

std::shared_ptr<Cancelable> TimerThread::afterDelay(double delaySeconds,
                                                    std::function<void(Block)> submit,
                                                    Block block) {
  // After the hand-over the block still waits in its scheduler; cancelling must reach it there,
  // too.
  const auto waiting = std::make_shared<CancelableBlock>(std::move(block));
  const auto timer = timers.afterDelay(delaySeconds, [submit = std::move(submit), waiting] {
    submit([waiting] { waiting->run(); });
  });
  return std::make_shared<CancelBlock>([timer, waiting] {
    timer->cancel();
    waiting->cancel();
  });
}

}  // namespace quenlet
