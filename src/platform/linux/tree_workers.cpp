#include "platform/linux/tree_workers.h"

#include <system_error>
#include <utility>

namespace trelvin {

namespace {

// More of them wait for the same disk.
constexpr int kThreads = 2;
// The caller is woken when there is room for many, not for each one.
constexpr std::size_t kFewWaiting = TreeWorkers::kMostWaiting / 2;

}  // namespace

TreeWorkers::TreeWorkers(Work work) : work_(std::move(work)) {
  threads_.reserve(kThreads);
  try {
    for (int i = 0; i < kThreads; ++i) threads_.emplace_back([this] { runThread(); });
  } catch (const std::system_error&) {
    // With one thread or none it takes longer.
  }
}

TreeWorkers::~TreeWorkers() {
  {
    const std::lock_guard lock(mutex_);
    isEnding_ = true;
  }
  workCame_.notify_all();
  for (std::thread& thread : threads_) thread.join();
}

bool TreeWorkers::add(FileItem& item, std::chrono::milliseconds patience) {
  if (threads_.empty()) {
    work_(item);
    return true;
  }
  std::unique_lock lock(mutex_);
  const bool isFull = waiting_.size() >= kMostWaiting;
  const auto hasRoom = [this] { return waiting_.size() <= kFewWaiting; };
  if (isFull && !roomCame_.wait_for(lock, patience, hasRoom)) return false;
  waiting_.push_back(std::move(item));
  ++unfinished_;
  lock.unlock();
  workCame_.notify_one();
  return true;
}

bool TreeWorkers::isIdle(std::chrono::milliseconds patience) {
  std::unique_lock lock(mutex_);
  return roomCame_.wait_for(lock, patience, [this] { return unfinished_ == 0; });
}

void TreeWorkers::runThread() {
  for (;;) {
    {
      FileItem item;
      if (!take(item)) return;
      work_(item);
      // The last one of a folder completes it, before it counts as done.
    }
    finishOne();
  }
}

bool TreeWorkers::take(FileItem& item) {
  std::unique_lock lock(mutex_);
  workCame_.wait(lock, [this] { return isEnding_ || !waiting_.empty(); });
  if (isEnding_) return false;
  item = std::move(waiting_.front());
  waiting_.pop_front();
  if (waiting_.size() == kFewWaiting) roomCame_.notify_one();
  return true;
}

void TreeWorkers::finishOne() {
  const std::lock_guard lock(mutex_);
  if (--unfinished_ == 0) roomCame_.notify_one();
}

}  // namespace trelvin
