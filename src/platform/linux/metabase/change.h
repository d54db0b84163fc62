// What a commit does to the metabase, in a form that goes into the journal and is replayed from it.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace trelvin {

struct ValueChange {
  std::string property;             // the schema's spelling
  std::optional<std::string> text;  // none takes the value away
};

struct NodeChange {
  enum class Kind : std::uint8_t { kUpdate = 'U', kCreate = 'C', kRemove = 'R' };
  Kind kind = Kind::kUpdate;
  std::string location;                // such as /LM/W3SVC/1
  std::optional<std::string> keyType;  // the new class; empty for a node without a key type
  std::vector<ValueChange> values;
};

// All of it or nothing.
using Commit = std::vector<NodeChange>;

}  // namespace trelvin
