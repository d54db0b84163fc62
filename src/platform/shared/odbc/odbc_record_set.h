// ADO's Recordset over a static cursor of the driver.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/database.h"
#include "platform/shared/odbc/session.h"

namespace trelvin {

// The rows stay with the driver; the set holds one at the most.
class OdbcRecordSet final : public RecordSet {
 public:
  OdbcRecordSet() = default;
  OdbcRecordSet(const OdbcRecordSet&) = delete;
  OdbcRecordSet& operator=(const OdbcRecordSet&) = delete;
  ~OdbcRecordSet() override { release(); }

  // A statement that gives no rows is run and leaves the set closed. 13 for a connection of another maker.
  void open(std::string_view sql, Connection& connection, int cursorType) override;
  void close() override;
  [[nodiscard]] bool isOpen() const override { return !session_.expired(); }

  [[nodiscard]] bool eof() const override;
  [[nodiscard]] bool bof() const override;
  void moveFirst() override;
  void moveLast() override;
  void moveNext() override;
  [[nodiscard]] std::int32_t recordCount() const override;
  [[nodiscard]] Value field(std::string_view name) const override;

 private:
  struct Column {
    std::string name;
    SQLSMALLINT type = SQL_VARCHAR;
  };
  enum class Position { kOnRow, kBehindLast };

  void requireOpen() const;
  void release();
  bool runSelect(std::string_view sql);
  void describeColumns();
  void countRows();
  void moveTo(SQLSMALLINT orientation);
  bool fetch(SQLSMALLINT orientation);
  void readRow() const;
  [[nodiscard]] std::size_t columnOf(std::string_view name) const;

  std::weak_ptr<OdbcSession> session_;
  OdbcHandle<SQL_HANDLE_STMT> statement_;
  DriverKind driver_ = DriverKind::kTellsStates;
  std::vector<Column> columns_;
  std::int32_t count_ = 0;
  Position position_ = Position::kBehindLast;
  // Read when a field of the row is first asked for: a row that is only passed costs no reading.
  mutable std::vector<Value> row_;
};

}  // namespace trelvin
