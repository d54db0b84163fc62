// Databases in ADO's terms, over ODBC.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "core/value.h"

namespace trelvin {

// Cursor types by ADO's numbers.
inline constexpr int kStaticCursor = 3;

class Connection {
 public:
  Connection() = default;
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;
  virtual ~Connection() = default;

  // Opens by a connection string. 3705 when it is open already, 0x80004005 with the driver's text when it
  // can't be.
  virtual void open(std::string_view connectionString) = 0;
  // 3704 when it isn't open.
  virtual void close() = 0;
  [[nodiscard]] virtual bool isOpen() const = 0;
  // Runs one statement, each committed by itself. 3704 when closed, 0x80040E37 for a table that isn't there,
  // 0x80040E14 for a statement that the database does not understand, 0x80004005 with the driver's text for
  // the rest.
  virtual void execute(std::string_view sql) = 0;
};

// The rows of one SELECT, read only, in any order of movement.
class RecordSet {
 public:
  RecordSet() = default;
  RecordSet(const RecordSet&) = delete;
  RecordSet& operator=(const RecordSet&) = delete;
  virtual ~RecordSet() = default;

  // Stands on the first row, or on BOF and EOF at once when there is none. 3705 when it is open already.
  virtual void open(std::string_view sql, Connection& connection, int cursorType) = 0;
  virtual void close() = 0;  // 3704 when it isn't open
  [[nodiscard]] virtual bool isOpen() const = 0;

  // All of these fail with 3704 on a closed set.
  [[nodiscard]] virtual bool eof() const = 0;
  [[nodiscard]] virtual bool bof() const = 0;
  virtual void moveFirst() = 0;  // 3021 on an empty set
  virtual void moveLast() = 0;   // 3021 on an empty set
  virtual void moveNext() = 0;   // 3021 when EOF is true already
  [[nodiscard]] virtual std::int32_t recordCount() const = 0;
  // The field of that name, in any case, of the row in hand. 3265 for a name that isn't there, 3021 without a
  // row.
  [[nodiscard]] virtual Value field(std::string_view name) const = 0;
};

class Databases {
 public:
  Databases() = default;
  Databases(const Databases&) = delete;
  Databases& operator=(const Databases&) = delete;
  virtual ~Databases() = default;

  virtual std::unique_ptr<Connection> createConnection() = 0;
  virtual std::unique_ptr<RecordSet> createRecordSet() = 0;

  // Names of the data sources that the driver manager knows for the whole machine, in its order; those of
  // single users are left out. None when there is no driver manager.
  virtual std::vector<std::string> systemDataSources() = 0;
};

}  // namespace trelvin
