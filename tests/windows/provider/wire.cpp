#include "windows/provider/wire.h"

#include <bit>
#include <ctime>
#include <utility>

#include "core/err.h"

namespace trelvin::test {

namespace {

constexpr int kBitsOfByte = 8;

template <typename Number>
void append(std::string& bytes, Number number) {
  for (std::size_t i = 0; i < sizeof number; ++i) {
    bytes += static_cast<char>(static_cast<std::uint64_t>(number) >> (kBitsOfByte * i));
  }
}

template <typename Number>
Number numberIn(std::string_view bytes) {
  std::uint64_t result = 0;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    result |= std::uint64_t{static_cast<unsigned char>(bytes[i])} << (kBitsOfByte * i);
  }
  return static_cast<Number>(result);
}

class Writer {
 public:
  explicit Writer(const NumberObject& numberOf) : numberOf_(numberOf) {}

  template <typename Number>
  void putNumber(Number number) {
    append(bytes_, number);
  }
  void putText(std::string_view text) {
    putNumber(static_cast<std::uint32_t>(text.size()));
    bytes_ += text;
  }
  void putList(const Value::List& list) {
    putNumber(static_cast<std::uint32_t>(list.size()));
    for (const Value& item : list) putValue(item);
  }
  void putValue(const Value& value) {
    putNumber(static_cast<std::uint8_t>(value.varType()));
    putContent(value);
  }
  [[nodiscard]] std::string take() { return std::move(bytes_); }

 private:
  void putContent(const Value& value) {
    switch (value.varType()) {
      case kVarEmpty:
      case kVarNull:
        return;
      case kVarInteger:
        return putNumber(value.toInteger());
      case kVarLong:
        return putNumber(value.toLong());
      case kVarDouble:
        return putNumber(std::bit_cast<std::uint64_t>(value.toDouble()));
      case kVarDate:
        return putDate(value.date().parts);
      case kVarText:
        return putText(value.toText());
      case kVarObject:
        putNumber(numberOf_(value.object()));
        return putText(value.object() ? value.object()->typeName() : std::string());
      case kVarBoolean:
        return putNumber(static_cast<std::uint8_t>(value.toBoolean()));
      case kVarList:
        return putList(value.list());
      case kVarBytes:
        return putText({reinterpret_cast<const char*>(value.bytes().data()), value.bytes().size()});
    }
  }
  void putDate(const std::tm& parts) {
    for (const int part :
         {parts.tm_year, parts.tm_mon, parts.tm_mday, parts.tm_hour, parts.tm_min, parts.tm_sec}) {
      putNumber(part);
    }
  }

  const NumberObject& numberOf_;
  std::string bytes_;
};

class Reader {
 public:
  Reader(std::string_view bytes, const FindObject& find) : rest_(bytes), find_(find) {}

  template <typename Number>
  Number number() {
    return numberIn<Number>(take(sizeof(Number)));
  }
  std::string text() { return std::string(take(number<std::uint32_t>())); }
  Value::List list() {
    Value::List items;
    for (auto count = number<std::uint32_t>(); count > 0; --count) items.push_back(value());
    return items;
  }
  Value value() {
    switch (const auto kind = number<std::uint8_t>()) {
      case kVarEmpty:
        return {};
      case kVarNull:
        return Null{};
      case kVarInteger:
        return number<std::int16_t>();
      case kVarLong:
        return number<std::int32_t>();
      case kVarDouble:
        return std::bit_cast<double>(number<std::uint64_t>());
      case kVarDate:
        return date();
      case kVarText:
        return text();
      case kVarObject:
        return object();
      case kVarBoolean:
        return number<std::uint8_t>() != 0;
      default:
        return arrayOf(kind);
    }
  }
  void requireEnd() const {
    if (!rest_.empty()) throw Failure(error_number::kTypeMismatch);
  }

 private:
  std::string_view take(std::size_t count) {
    if (count > rest_.size()) throw Failure(error_number::kTypeMismatch);
    const std::string_view taken = rest_.substr(0, count);
    rest_.remove_prefix(count);
    return taken;
  }
  Value date() {
    Date date;
    for (int* part : {&date.parts.tm_year, &date.parts.tm_mon, &date.parts.tm_mday, &date.parts.tm_hour,
                      &date.parts.tm_min, &date.parts.tm_sec}) {
      *part = number<std::int32_t>();
    }
    return date;
  }
  Value object() {
    const auto known = number<ObjectNumber>();
    return find_(known, text());
  }
  Value arrayOf(std::uint8_t kind) {
    if (kind == static_cast<std::uint8_t>(kVarList)) return list();
    if (kind != static_cast<std::uint8_t>(kVarBytes)) throw Failure(error_number::kTypeMismatch);
    const std::string bytes = text();
    return Value::Bytes(bytes.begin(), bytes.end());
  }

  std::string_view rest_;
  const FindObject& find_;
};

}  // namespace

std::string bytesOf(const Request& request, const NumberObject& numberOf) {
  Writer writer(numberOf);
  writer.putNumber(static_cast<std::uint8_t>(request.operation));
  writer.putNumber(request.object);
  writer.putList(request.arguments);
  return writer.take();
}

std::string bytesOf(const Reply& reply, const NumberObject& numberOf) {
  Writer writer(numberOf);
  writer.putNumber(reply.failure);
  writer.putText(reply.description);
  writer.putValue(reply.result);
  return writer.take();
}

Request requestOf(std::string_view bytes, const FindObject& find) {
  Reader reader(bytes, find);
  Request request;
  request.operation = static_cast<Operation>(reader.number<std::uint8_t>());
  request.object = reader.number<ObjectNumber>();
  request.arguments = reader.list();
  reader.requireEnd();
  return request;
}

Reply replyOf(std::string_view bytes, const FindObject& find) {
  Reader reader(bytes, find);
  Reply reply;
  reply.failure = reader.number<std::int32_t>();
  reply.description = reader.text();
  reply.result = reader.value();
  reader.requireEnd();
  return reply;
}

std::string withLength(std::string_view message) {
  std::string bytes;
  append(bytes, static_cast<std::uint32_t>(message.size()));
  return bytes.append(message);
}

std::uint32_t lengthOf(std::string_view fourBytes) {
  return numberIn<std::uint32_t>(fourBytes);
}

}  // namespace trelvin::test
