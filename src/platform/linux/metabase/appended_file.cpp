#include "appended_file.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <atomic>
#include <cstring>

#include "core/err.h"
#include "disk.h"

namespace trelvin {

namespace {

constexpr std::uint64_t kStep = std::uint64_t{1} << 20U;

std::uint64_t pageSize() {
  static const auto size = static_cast<std::uint64_t>(::sysconf(_SC_PAGESIZE));
  return size;
}

}  // namespace

// Without room taken the file may not even be ours to cut.
AppendedFile::~AppendedFile() {
  if (window_ == nullptr) return;
  unmap();
  static_cast<void>(!::ftruncate(file_.get(), static_cast<off_t>(length_)));
}

void AppendedFile::append(std::string_view bytes) {
  // What a file begins with is written, so that a file of nothing but zeros is never seen.
  if (length_ > 0 && (length_ + bytes.size() <= windowEnd_ || takeRoom(bytes.size()))) {
    char* place = window_ + (length_ - windowBegin_);
    std::memcpy(place + kLead, bytes.data() + kLead, bytes.size() - kLead);
    // A process that is killed here has written nothing.
    std::atomic_signal_fence(std::memory_order_seq_cst);
    std::memcpy(place, bytes.data(), kLead);
  } else {
    appendByWriting(bytes);
  }
  length_ += bytes.size();
}

// The room is real: memory without a place on the disk behind it would end the process on a full disk. False
// where it can't be had.
bool AppendedFile::takeRoom(std::size_t size) {
  if (!mapsItsEnd_) return false;
  unmap();
  const std::uint64_t begin = length_ - length_ % pageSize();
  const std::uint64_t count = (length_ - begin + size) / kStep * kStep + kStep;
  const auto offset = static_cast<off_t>(begin);
  void* window = MAP_FAILED;
  if (::fallocate(file_.get(), 0, offset, static_cast<off_t>(count)) == 0)
    window = ::mmap(nullptr, count, PROT_READ | PROT_WRITE, MAP_SHARED, file_.get(), offset);
  mapsItsEnd_ = window != MAP_FAILED;
  if (!mapsItsEnd_) {
    cutTo(length_);
    return false;
  }
  window_ = static_cast<char*>(window);
  windowBegin_ = begin;
  windowEnd_ = begin + count;
  return true;
}

void AppendedFile::appendByWriting(std::string_view bytes) {
  try {
    writeWhole(file_, bytes, path_);
  } catch (const Failure&) {
    static_cast<void>(!::ftruncate(file_.get(), static_cast<off_t>(length_)));
    throw;
  }
}

void AppendedFile::cutTo(std::uint64_t length) {
  unmap();
  if (::ftruncate(file_.get(), static_cast<off_t>(length)) != 0) failFromSystem("written", path_);
  length_ = length;
}

void AppendedFile::sync() {
  if (::fdatasync(file_.get()) != 0) failFromSystem("written", path_);
}

void AppendedFile::unmap() {
  if (window_ != nullptr) ::munmap(window_, windowEnd_ - windowBegin_);
  window_ = nullptr;
  windowBegin_ = windowEnd_ = 0;
}

}  // namespace trelvin
