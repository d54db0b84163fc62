// A schema class object that gives the names it is told to, or fails.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "core/err.h"
#include "platform/metabase.h"

namespace trelvin::test {

class SchemaClassObject : public MetabaseNode {
 public:
  std::vector<std::string> mandatory;
  std::vector<std::string> optional;
  std::int32_t mandatoryFailsWith = 0;
  std::int32_t optionalFailsWith = 0;

  [[nodiscard]] NameList mandatoryProperties() const override {
    return namesOrFailure(mandatory, mandatoryFailsWith);
  }
  [[nodiscard]] NameList optionalProperties() const override {
    return namesOrFailure(optional, optionalFailsWith);
  }

  // A schema class has nothing else that the program asks for.
  [[nodiscard]] std::string className() const override { refuse(); }
  [[nodiscard]] std::string name() const override { refuse(); }
  [[nodiscard]] std::string adsPath() const override { refuse(); }
  [[nodiscard]] std::string schema() const override { refuse(); }
  void forEachChild(const std::function<void(const NodeHandle&)>&) override { refuse(); }
  [[nodiscard]] Value get(std::string_view) const override { refuse(); }
  void put(std::string_view, const Value&) override { refuse(); }
  void setInfo() override { refuse(); }
  NodeHandle create(std::string_view, std::string_view) override { refuse(); }
  void deleteChild(std::string_view, std::string_view) override { refuse(); }
  [[nodiscard]] std::vector<std::string> getDataPaths(std::string_view, const Value&) const override {
    refuse();
  }
  void appCreate(bool) override { refuse(); }
  void appCreate2(std::int32_t) override { refuse(); }
  void appCreate3(std::int32_t, std::string_view, bool) override { refuse(); }
  void start() override { refuse(); }

 private:
  static NameList namesOrFailure(const std::vector<std::string>& names, std::int32_t number) {
    if (number != 0) throw Failure(number);
    return names;
  }
  [[noreturn]] static void refuse() { throw Failure(error_number::kNotSupportedByObject); }
};

}  // namespace trelvin::test
