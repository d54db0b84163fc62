#include "platform/shared/record_list.h"

#include <iterator>

namespace trelvin {

namespace {

std::size_t placeOf(int index) {
  if (index < 1 || index > AccessEntry::kValueCount) throw Failure(error_number::kSubscriptOutOfRange);
  return static_cast<std::size_t>(index) - 1;
}

}  // namespace

Failure accessListFailure(const std::string& path, const char* undone, const std::string& cause) {
  return Failure(error_number::kControlException,
                 "The access list of '" + path + "' can't be " + undone + ": " + cause);
}

std::int32_t RecordEntry::accessValue(int index) const {
  return record_.values[placeOf(index)];
}

void RecordEntry::setAccessValue(int index, std::int32_t value) {
  record_.values[placeOf(index)] = value;
}

RecordList::RecordList(std::string path, std::vector<AccessRecord> records, LastError lastError)
    : path_(std::move(path)), lastError_(std::move(lastError)) {
  for (AccessRecord& record : records) entries_.emplace_back(std::move(record));
}

void RecordList::forEachAccount(const std::function<void(const AccessEntry& entry)>& visit) const {
  for (const RecordEntry& entry : entries_) visit(entry);
}

AccessEntry& RecordList::addAccount() {
  isEmptying_ = false;
  return entries_.emplace_back();
}

void RecordList::removeAccount(std::int32_t index) {
  const bool isThere = index >= 1 && static_cast<std::size_t>(index) <= entries_.size();
  if (!isThere) throw Failure(error_number::kSubscriptOutOfRange);
  entries_.erase(std::next(entries_.begin(), index - 1));
  isEmptying_ = true;
}

void RecordList::writeAccounts() {
  recorded(lastError_, [this] {
    if (firstApplyFlag_) throw accessListFailure(path_, "written", "nothing here lets subfolders inherit it");
    std::vector<AccessRecord> records;
    for (const RecordEntry& entry : entries_) records.push_back(entry.record());
    const bool isStep = std::exchange(isEmptying_, false);
    write(records, secondApplyFlag_ && !isStep);
  });
}

}  // namespace trelvin
