// The threads that copy the files of a tree, and what waits for them.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

#include "platform/linux/tree_file.h"

namespace trelvin {

class TreeWorkers {
 public:
  // The work must not throw; it is called on two threads at once, or on the caller's where the system gives
  // no threads.
  using Work = std::function<void(const FileItem& item)>;
  explicit TreeWorkers(Work work);
  TreeWorkers(const TreeWorkers&) = delete;
  TreeWorkers& operator=(const TreeWorkers&) = delete;
  // Ends after the files that are being copied; what still waits is dropped.
  ~TreeWorkers();

  // How many files may wait. Each of them may hold a pair of folders open.
  static constexpr std::size_t kMostWaiting = 64;

  // Takes the item when there is room within the time; else leaves it as it is and returns false.
  bool add(FileItem& item, std::chrono::milliseconds patience);
  // Whether all is done within the time.
  bool isIdle(std::chrono::milliseconds patience);

 private:
  void runThread();
  bool take(FileItem& item);
  void finishOne();

  Work work_;
  std::mutex mutex_;
  std::condition_variable workCame_;
  std::condition_variable roomCame_;
  std::deque<FileItem> waiting_;
  std::size_t unfinished_ = 0;
  bool isEnding_ = false;
  std::vector<std::thread> threads_;
};

}  // namespace trelvin
