#include "platform/linux/access_list_text.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "core/text.h"

namespace trelvin::access_list_text {

namespace {

constexpr char kSeparator = ';';
constexpr std::string_view kHexMark = "0x";
constexpr std::size_t kMaskDigits = 8;
constexpr std::size_t kLongestAccount = 256;
constexpr std::size_t kLongestQuotation = 60;
// The values before it have fields of their own.
constexpr std::size_t kFirstOfMore = 3;

constexpr std::array<std::string_view, 4> kTypeNames{"allow", "deny", "audit", "alarm"};

struct FlagName {
  Flag flag;
  std::string_view letters;
};
constexpr std::array kFlagNames{
    FlagName{kObjectInherit, "OI"}, FlagName{kContainerInherit, "CI"}, FlagName{kNoPropagate, "NP"},
    FlagName{kInheritOnly, "IO"},   FlagName{kInherited, "ID"},        FlagName{kAuditSuccess, "SA"},
    FlagName{kAuditFailure, "FA"},
};

bool isControl(char letter) {
  return static_cast<unsigned char>(letter) < 0x20 || letter == 0x7F;
}

std::string hexText(std::int32_t value, std::size_t width = 1) {
  std::array<char, 8> digits{};
  const auto end = std::to_chars(digits.begin(), digits.end(), static_cast<std::uint32_t>(value), 16).ptr;
  const std::string text(digits.begin(), end);
  return std::string(kHexMark) + std::string(width > text.size() ? width - text.size() : 0, '0') + text;
}

std::optional<std::int32_t> hexValue(std::string_view text) {
  if (!text.starts_with(kHexMark)) return std::nullopt;
  text.remove_prefix(kHexMark.size());
  std::uint32_t value = 0;
  const auto [end, failed] = std::from_chars(text.data(), text.data() + text.size(), value, 16);
  if (failed != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return static_cast<std::int32_t>(value);
}

std::string typeText(std::int32_t type) {
  const auto index = static_cast<std::uint32_t>(type);
  return index < kTypeNames.size() ? std::string(kTypeNames[index]) : hexText(type);
}

std::optional<std::int32_t> typeValue(std::string_view text) {
  const auto found = std::find(kTypeNames.begin(), kTypeNames.end(), text);
  if (found == kTypeNames.end()) return hexValue(text);
  return static_cast<std::int32_t>(found - kTypeNames.begin());
}

std::string flagsText(std::int32_t flags) {
  std::string letters;
  std::int32_t named = 0;
  for (const FlagName& name : kFlagNames) {
    if ((flags & name.flag) == 0) continue;
    letters += name.letters;
    named |= name.flag;
  }
  return named == flags ? letters : hexText(flags);
}

std::optional<std::int32_t> flagsValue(std::string_view text) {
  if (text.starts_with(kHexMark)) return hexValue(text);
  std::int32_t flags = 0;
  for (; !text.empty(); text.remove_prefix(2)) {
    const auto found = std::find_if(kFlagNames.begin(), kFlagNames.end(),
                                    [&](const FlagName& name) { return text.starts_with(name.letters); });
    if (found == kFlagNames.end()) return std::nullopt;
    flags |= found->flag;
  }
  return flags;
}

std::string moreText(const Record& record) {
  std::string text;
  for (std::size_t place = kFirstOfMore; place < record.values.size(); ++place) {
    if (record.values[place] == 0) continue;
    if (!text.empty()) text += ',';
    text += std::to_string(place + 1) + "=" + hexText(record.values[place]);
  }
  return text;
}

// The index before the sign, counted from 0; none for one that more can't hold.
std::optional<std::size_t> placeOf(std::string_view index) {
  std::size_t number = 0;
  const auto [end, failed] = std::from_chars(index.data(), index.data() + index.size(), number);
  if (failed != std::errc() || end != index.data() + index.size()) return std::nullopt;
  if (number <= kFirstOfMore || number > std::size_t{AccessEntry::kValueCount}) return std::nullopt;
  return number - 1;
}

bool readMore(std::string_view text, Record& record) {
  if (text.empty()) return true;
  // In ascending order, so that no index comes twice.
  std::size_t next = kFirstOfMore;
  for (const std::string& item : split(text, ',')) {
    const std::string_view pair = item;
    const std::size_t sign = pair.find('=');
    if (sign == pair.npos) return false;
    const std::optional<std::size_t> place = placeOf(pair.substr(0, sign));
    const std::optional<std::int32_t> value = hexValue(pair.substr(sign + 1));
    if (!place || !value || *place < next) return false;
    record.values[*place] = *value;
    next = *place + 1;
  }
  return true;
}

[[noreturn]] void refuse(std::size_t entry, std::string_view fault) {
  throw std::invalid_argument("entry " + std::to_string(entry) + ": " + std::string(fault));
}

// One line on its way into a record, field by field.
class Line {
 public:
  Line(std::string_view text, std::size_t entry) : rest_(text), entry_(entry) {}

  // The text up to the next separator, which is taken off.
  std::string_view field() {
    const std::size_t end = rest_.find(kSeparator);
    if (end == rest_.npos) refuse(entry_, "it isn't type;flags;mask;more;account");
    const std::string_view text = rest_.substr(0, end);
    rest_.remove_prefix(end + 1);
    return text;
  }
  std::int32_t value(const char* name, std::optional<std::int32_t> (*read)(std::string_view)) {
    const std::string_view text = field();
    const std::optional<std::int32_t> value = read(text);
    if (!value) refuseField(text, name);
    return *value;
  }
  void more(Record& record) {
    const std::string_view text = field();
    if (!readMore(text, record)) refuseField(text, "list of more values");
  }
  std::string account() {
    if (const std::string fault = faultOfAccount(rest_); !fault.empty()) refuse(entry_, fault);
    return std::string(rest_);
  }

 private:
  [[noreturn]] void refuseField(std::string_view text, const char* name) const {
    refuse(entry_, quoted(text) + " is no " + name);
  }

  std::string_view rest_;
  std::size_t entry_;
};

Record parseLine(std::string_view text, std::size_t entry) {
  Line line(text, entry);
  Record record;
  record.values[kType] = line.value("type", typeValue);
  record.values[kFlags] = line.value("set of flags", flagsValue);
  record.values[kMask] = line.value("mask", hexValue);
  line.more(record);
  record.account = line.account();
  return record;
}

}  // namespace

std::string format(const Record& record) {
  std::string line = typeText(record.values[kType]);
  line += kSeparator + flagsText(record.values[kFlags]);
  line += kSeparator + hexText(record.values[kMask], kMaskDigits);
  line += kSeparator + moreText(record);
  line += kSeparator + record.account + '\n';
  return line;
}

std::vector<Record> parse(std::string_view text) {
  std::vector<Record> records;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    records.push_back(parseLine(text.substr(0, end), records.size() + 1));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return records;
}

std::string faultOfAccount(std::string_view account) {
  if (trimmed(account).empty()) return "the account has no name";
  const auto fault = [&](const char* what) { return "the account name " + quoted(account) + " " + what; };
  if (std::any_of(account.begin(), account.end(), isControl)) return fault("holds a control character");
  if (characterCount(account) > kLongestAccount) return fault("has more than 256 characters");
  const std::size_t end = account.find('\\');
  if (end == account.npos) return {};
  const std::string_view name = account.substr(end + 1);
  const bool isPair =
      name.find('\\') == name.npos && !trimmed(name).empty() && !trimmed(account.substr(0, end)).empty();
  return isPair ? std::string() : fault("isn't DOMAIN\\name");
}

std::string quoted(std::string_view text) {
  std::string plain(firstCharacters(text, kLongestQuotation));
  const bool isCut = plain.size() < text.size();
  std::replace_if(plain.begin(), plain.end(), isControl, '?');
  return "'" + plain + (isCut ? "...'" : "'");
}

}  // namespace trelvin::access_list_text
