// Databases that stand on others, keep a record of the calls, and make chosen ones fail.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "core/err.h"
#include "platform/database.h"

namespace trelvin::test {

// One call. Connections: Open (with the connection string), Close, Execute (with the statement). Record sets:
// OpenRows (with the statement), CloseRows, MoveFirst, MoveNext, MoveLast, Field (with its name). And
// CreateConnection, CreateRecordSet and SystemDataSources.
struct DatabaseCall {
  std::string operation;
  std::string text;
  int cursorType = 0;  // of OpenRows
};

// Says which number a call fails with; nothing lets it through.
using DatabaseRule = std::function<std::optional<std::int32_t>(const DatabaseCall&)>;

class FailingDatabases : public Databases {
 public:
  explicit FailingDatabases(std::unique_ptr<Databases> real) : real_(std::move(real)) {}
  std::unique_ptr<Connection> createConnection() override;
  std::unique_ptr<RecordSet> createRecordSet() override;
  std::vector<std::string> systemDataSources() override;

  // Fails every call of an operation whose text holds a part; an empty part stands for any text.
  void failOn(std::string operation, std::string part, std::int32_t number);

  // Texts of the calls of an operation, in their order.
  [[nodiscard]] std::vector<std::string> textsOf(const std::string& operation) const;

  DatabaseRule rule;
  std::vector<DatabaseCall> calls;

  // Keeps the call; fails when the rule says so.
  void note(DatabaseCall call);

 private:
  std::unique_ptr<Databases> real_;
};

// Puts such databases over those of the platform; they stay for the rest of the test. Has to come before the
// main window's load, which makes the connections.
FailingDatabases& watchDatabases();

}  // namespace trelvin::test
