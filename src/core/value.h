// What a metabase property or a database field holds.
#pragma once

#include <cstdint>
#include <ctime>
#include <memory>
#include <string>
#include <variant>
#include <vector>

namespace trelvin {

// Variant type numbers; they are stored in the data database, so they never change.
enum VarType : std::int32_t {
  kVarEmpty = 0,
  kVarNull = 1,
  kVarInteger = 2,  // 16 bits
  kVarLong = 3,     // 32 bits
  kVarDouble = 5,
  kVarDate = 7,
  kVarText = 8,
  kVarObject = 9,
  kVarBoolean = 11,
  kVarList = 8204,   // array of values
  kVarBytes = 8209,  // array of bytes
};

// A property whose value is an object of its own, such as IPSecurity: carried along, never looked into.
class ValueObject {
 public:
  ValueObject() = default;
  ValueObject(const ValueObject&) = delete;
  ValueObject& operator=(const ValueObject&) = delete;
  virtual ~ValueObject() = default;
  // The name that the platform gives to objects of this kind.
  [[nodiscard]] virtual std::string typeName() const = 0;
};

struct Null {
  bool operator==(const Null&) const = default;
};

// A moment in local time, to the second.
struct Date {
  std::tm parts{};
};
bool operator==(const Date& left, const Date& right);

class Value {
 public:
  using List = std::vector<Value>;
  using Bytes = std::vector<std::uint8_t>;
  using Object = std::shared_ptr<ValueObject>;

  Value() = default;
  Value(Null null) : held_(null) {}                      // NOLINT(google-explicit-constructor)
  Value(bool flag) : held_(flag) {}                      // NOLINT(google-explicit-constructor)
  Value(std::int16_t number) : held_(number) {}          // NOLINT(google-explicit-constructor)
  Value(std::int32_t number) : held_(number) {}          // NOLINT(google-explicit-constructor)
  Value(double number) : held_(number) {}                // NOLINT(google-explicit-constructor)
  Value(Date date) : held_(date) {}                      // NOLINT(google-explicit-constructor)
  Value(std::string text) : held_(std::move(text)) {}    // NOLINT(google-explicit-constructor)
  Value(const char* text) : held_(std::string(text)) {}  // NOLINT(google-explicit-constructor)
  Value(Object object) : held_(std::move(object)) {}     // NOLINT(google-explicit-constructor)
  Value(List list)
      : held_(std::make_shared<const List>(std::move(list))) {}  // NOLINT(google-explicit-constructor)
  Value(Bytes bytes)
      : held_(std::make_shared<const Bytes>(std::move(bytes))) {}  // NOLINT(google-explicit-constructor)

  [[nodiscard]] VarType varType() const;
  [[nodiscard]] bool isNull() const { return std::holds_alternative<Null>(held_); }

  // Conversions by the platform's rules. They fail with 13 for what is no number, 6 for what does not fit,
  // 94 for Null, 438 for an object where a text or a number is wanted. Halves round to the even neighbour.
  [[nodiscard]] std::string toText() const;
  [[nodiscard]] std::int32_t toLong() const;
  [[nodiscard]] std::int16_t toInteger() const;
  [[nodiscard]] double toDouble() const;
  [[nodiscard]] bool toBoolean() const;

  // The content itself; they fail with 13 when the value is of another kind.
  [[nodiscard]] const List& list() const;
  [[nodiscard]] const Bytes& bytes() const;
  [[nodiscard]] const Object& object() const;
  [[nodiscard]] const Date& date() const;

  // Index of the last element of a list, -1 for an empty one; fails with 13 for what is no list.
  [[nodiscard]] std::int32_t upperBound() const;

  // Lists are equal by content, objects by identity.
  bool operator==(const Value& other) const;

 private:
  using SharedList = std::shared_ptr<const List>;
  using SharedBytes = std::shared_ptr<const Bytes>;
  std::variant<std::monostate, Null, bool, std::int16_t, std::int32_t, double, Date, std::string, Object,
               SharedList, SharedBytes>
      held_;
};

// Numbers and Booleans as the platform writes them: 15 digits at the most, "1E+20", "True", "False".
std::string textOf(double number);
std::string textOf(bool flag);

// The number that a text stands for, by the platform's rules: blanks around, a sign, group separators,
// a decimal point, an exponent, &H and &O. Fails with 13 for any other text, the empty one too.
double numberOf(const std::string& text);
std::int32_t longOf(const std::string& text);
std::int16_t integerOf(const std::string& text);
// Narrow a number that was read already; fail with 6 when it does not fit.
std::int32_t longOf(double number);
std::int16_t integerOf(double number);

}  // namespace trelvin
