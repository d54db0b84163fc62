// The metabases of one network folder, as one connection uses them.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>

#include "platform/metabase.h"
#include "windows/provider/wire.h"

namespace trelvin::test {

// Its end writes what waits in journals.
class ServedMetabase {
 public:
  // The reply to a request; a failure of the metabase is a reply, too. Fails for what is no request.
  std::string answer(std::string_view request);

 private:
  Value perform(const Request& request);
  Value performOn(MetabaseNode& node, const Request& request);
  [[nodiscard]] MetabaseNode& nodeOf(ObjectNumber number) const;
  [[nodiscard]] Value keep(NodeHandle node);
  ObjectNumber numberOf(const Value::Object& object);

  std::unique_ptr<Metabase> metabase_;
  std::map<ObjectNumber, Value::Object> objects_;
  ObjectNumber lastNumber_ = 0;
};

}  // namespace trelvin::test
