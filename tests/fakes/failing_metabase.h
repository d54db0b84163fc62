// A metabase that stands on another one, keeps a record of the calls, and makes chosen ones fail.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "core/err.h"
#include "platform/metabase.h"

namespace trelvin::test {

// One call: the operation's name, the path of the node (or the path to bind), and its argument.
struct MetabaseCall {
  std::string operation;
  std::string path;
  std::string argument;
};

// Says which number a call fails with; nothing lets it through.
using FailureRule = std::function<std::optional<std::int32_t>(const MetabaseCall&)>;

class FailingMetabase : public Metabase {
 public:
  explicit FailingMetabase(std::unique_ptr<Metabase> real) : real_(std::move(real)) {}
  NodeHandle getObject(std::string_view path) override;

  // Fails every call of an operation on nodes whose path ends in a text, with an argument or with any.
  void failOn(std::string operation, std::string pathEnd, std::string argument, std::int32_t number);

  FailureRule rule;
  std::vector<MetabaseCall> calls;

  void note(const char* operation, const std::string& path, std::string_view argument);

 private:
  std::unique_ptr<Metabase> real_;
};

}  // namespace trelvin::test
