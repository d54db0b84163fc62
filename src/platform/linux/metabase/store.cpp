#include "store.h"

#include <algorithm>
#include <vector>

#include "core/err.h"
#include "writer.h"

namespace trelvin {

namespace {

// A checkpoint costs as much as the file is long, so that it waits until the journal is as long: a commit's
// share of it stays the same whatever the size of the metabase.
constexpr std::uint64_t kLeastJournal = std::uint64_t{16} * 1024 * 1024;

bool isVolatile(const ValueChange& value, const Schema& schema) {
  const Property* property = schema.findProperty(value.property);
  return property != nullptr && property->isVolatile;
}

bool hasVolatile(const Commit& commit, const Schema& schema) {
  return std::any_of(commit.begin(), commit.end(), [&](const NodeChange& change) {
    return std::any_of(change.values.begin(), change.values.end(),
                       [&](const ValueChange& value) { return isVolatile(value, schema); });
  });
}

// Without what lives in the running server alone.
Commit durablePart(const Commit& commit, const Schema& schema) {
  Commit durable;
  for (NodeChange change : commit) {
    const bool hadValues = !change.values.empty();
    std::erase_if(change.values, [&](const ValueChange& value) { return isVolatile(value, schema); });
    const bool nothingLeft =
        hadValues && change.values.empty() && change.kind == NodeChange::Kind::kUpdate && !change.keyType;
    if (!nothingLeft) durable.push_back(std::move(change));
  }
  return durable;
}

}  // namespace

// One that we write is ours alone.
bool MetabaseStore::journalIsUnchanged() const {
  return journal_ != nullptr || isStillAsRead(journalPath_, found_);
}

// A file that was merely touched or copied back holds what it held.
bool MetabaseStore::isUnchanged(const FileIdentity& now) {
  if (now.sameContentAs(identity_)) return true;
  if (now.size != state_.size) return false;
  const std::vector<char> text = readWhole(path_);
  if (fingerprintOf({text.data(), text.size()}) != state_.fingerprint) return false;
  identity_ = now;
  return true;
}

bool MetabaseStore::hasLookedLately() const {
  return patience_.count() > 0 && std::chrono::steady_clock::now() - lookedAt_ < patience_;
}

const std::shared_ptr<Tree>& MetabaseStore::refresh() {
  if (tree_ == nullptr || !hasLookedLately()) look();
  return tree_;
}

bool MetabaseStore::refreshIfThere() {
  return (tree_ != nullptr && hasLookedLately()) || lookIfThere();
}

void MetabaseStore::look() {
  if (!lookIfThere()) throw Failure(error_number::kServerUnavailable, path_ + " is not there any more.");
}

bool MetabaseStore::lookIfThere() {
  lookedAt_ = {};
  const std::optional<FileIdentity> now = identityOf(path_);
  if (!now) return false;
  if (tree_ != nullptr && isUnchanged(*now)) {
    identity_.mode = now->mode;
    if (journalIsUnchanged()) {
      lookedAt_ = std::chrono::steady_clock::now();
      return true;
    }
  } else if (journal_ != nullptr) {
    throw Failure(error_number::kMetabaseUnreadable,
                  path_ + " was changed by another program while changes wait in " + journalPath_ +
                      ". Put the former file back to keep them, or remove the journal to do without.");
  }
  load();
  lookedAt_ = std::chrono::steady_clock::now();
  return true;
}

void MetabaseStore::load() {
  LoadedMetabase loaded = loadMetabase(path_);
  JournalContent found = readJournal(journalPath_, loaded.state);
  for (const Commit& commit : found.commits) loaded.tree->apply(commit);
  tree_ = std::move(loaded.tree);
  identity_ = loaded.identity;
  state_ = loaded.state;
  found_ = std::move(found);
  checkpointAt_ = std::max(kLeastJournal, state_.size);
}

const std::shared_ptr<Tree>& MetabaseStore::prepareCommit() {
  if (journal_ == nullptr) {
    look();
  } else {
    refresh();
  }
  if (journal_ == nullptr || (identity_.mode & 0222U) == 0) requireWritableFile(path_, identity_);
  return tree_;
}

void MetabaseStore::commit(const Commit& commit) {
  if (hasVolatile(commit, tree_->schema())) {
    const Commit durable = durablePart(commit, tree_->schema());
    if (!durable.empty()) append(durable);
  } else {
    append(commit);
  }
  tree_->apply(commit);
  if (journal_ == nullptr || journal_->length() < checkpointAt_) return;
  try {
    checkpoint();
  } catch (const Failure&) {
    // The change is safe in the journal; the next try waits until that has doubled.
    checkpointAt_ *= 2;
  }
}

void MetabaseStore::append(const Commit& durable) {
  if (journal_ == nullptr) {
    journal_ = std::make_unique<Journal>(journalPath_, state_, found_);
    found_.commits.clear();
  }
  journal_->append(durable);
}

void MetabaseStore::checkpoint() {
  if (journal_ == nullptr) return;
  if (!journal_->isEmpty()) writeNewFile();
  try {
    journal_->remove();
  } catch (const Failure&) {
    // It says itself that its changes are in the file, and the next writer begins it anew.
  }
  journal_.reset();
  found_ = {};
  tree_.reset();  // its elements point into the old file
}

void MetabaseStore::writeNewFile() {
  look();
  const std::vector<char> source = readWhole(path_);
  const std::string_view text(source.data(), source.size());
  if (FileState{source.size(), fingerprintOf(text)} != state_) {
    throw Failure(error_number::kMetabaseUnreadable, path_ + " was changed by another program.");
  }
  MetabaseRewrite next(path_);
  writeMetabase(*tree_, text, next);
  next.finish();
  journal_->appendCheckpoint({next.size(), next.fingerprint()});
  next.commit();
}

void MetabaseStore::close() noexcept {
  try {
    checkpoint();
  } catch (const std::exception&) {
    // The journal keeps what could not be written.
  }
}

}  // namespace trelvin
