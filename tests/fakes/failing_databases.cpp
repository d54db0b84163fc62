#include "fakes/failing_databases.h"

#include "platform/platform.h"

namespace trelvin::test {

namespace {

class WatchedConnection : public Connection {
 public:
  WatchedConnection(FailingDatabases& databases, std::unique_ptr<Connection> real)
      : databases_(databases), real_(std::move(real)) {}

  void open(std::string_view connectionString) override {
    databases_.note({"Open", std::string(connectionString)});
    real_->open(connectionString);
  }
  void close() override {
    databases_.note({"Close", {}});
    real_->close();
  }
  [[nodiscard]] bool isOpen() const override { return real_->isOpen(); }
  void execute(std::string_view sql) override {
    databases_.note({"Execute", std::string(sql)});
    real_->execute(sql);
  }

  [[nodiscard]] Connection& real() { return *real_; }

 private:
  FailingDatabases& databases_;
  std::unique_ptr<Connection> real_;
};

class WatchedRecordSet : public RecordSet {
 public:
  WatchedRecordSet(FailingDatabases& databases, std::unique_ptr<RecordSet> real)
      : databases_(databases), real_(std::move(real)) {}

  void open(std::string_view sql, Connection& connection, int cursorType) override {
    databases_.note({"OpenRows", std::string(sql), cursorType});
    auto* watched = dynamic_cast<WatchedConnection*>(&connection);
    real_->open(sql, watched == nullptr ? connection : watched->real(), cursorType);
  }
  void close() override {
    databases_.note({"CloseRows", {}});
    real_->close();
  }
  [[nodiscard]] bool isOpen() const override { return real_->isOpen(); }
  [[nodiscard]] bool eof() const override { return real_->eof(); }
  [[nodiscard]] bool bof() const override { return real_->bof(); }
  void moveFirst() override {
    databases_.note({"MoveFirst", {}});
    real_->moveFirst();
  }
  void moveLast() override {
    databases_.note({"MoveLast", {}});
    real_->moveLast();
  }
  void moveNext() override {
    databases_.note({"MoveNext", {}});
    real_->moveNext();
  }
  [[nodiscard]] std::int32_t recordCount() const override { return real_->recordCount(); }
  [[nodiscard]] Value field(std::string_view name) const override {
    databases_.note({"Field", std::string(name)});
    return real_->field(name);
  }

 private:
  FailingDatabases& databases_;
  std::unique_ptr<RecordSet> real_;
};

}  // namespace

std::unique_ptr<Connection> FailingDatabases::createConnection() {
  note({"CreateConnection", {}});
  return std::make_unique<WatchedConnection>(*this, real_->createConnection());
}

std::unique_ptr<RecordSet> FailingDatabases::createRecordSet() {
  note({"CreateRecordSet", {}});
  return std::make_unique<WatchedRecordSet>(*this, real_->createRecordSet());
}

std::vector<std::string> FailingDatabases::systemDataSources() {
  note({"SystemDataSources", {}});
  return real_->systemDataSources();
}

void FailingDatabases::failOn(std::string operation, std::string part, std::int32_t number) {
  rule = [=, former = rule](const DatabaseCall& call) -> std::optional<std::int32_t> {
    if (call.operation == operation && call.text.find(part) != std::string::npos) return number;
    return former ? former(call) : std::nullopt;
  };
}

std::vector<std::string> FailingDatabases::textsOf(const std::string& operation) const {
  std::vector<std::string> texts;
  for (const DatabaseCall& call : calls) {
    if (call.operation == operation) texts.push_back(call.text);
  }
  return texts;
}

void FailingDatabases::note(DatabaseCall call) {
  calls.push_back(std::move(call));
  if (!rule) return;
  if (const std::optional<std::int32_t> number = rule(calls.back())) throw Failure(*number);
}

FailingDatabases& watchDatabases() {
  auto watched = std::make_unique<FailingDatabases>(std::move(platform().databases));
  FailingDatabases& databases = *watched;
  platform().databases = std::move(watched);
  return databases;
}

}  // namespace trelvin::test
