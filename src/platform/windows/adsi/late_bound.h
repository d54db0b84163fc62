// Members of an object called by their names, through IDispatch.
#pragma once

#include <cstddef>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "core/value.h"
#include "platform/windows/adsi/com.h"

namespace trelvin {

// A reference to an object of which only names are known. Every call that fails throws with the object's own
// number and description where it gives them, else with the number of the call: 438 for a name that the
// object does not have, Windows' number and text for the rest.
class LateBound {
 public:
  LateBound() = default;
  explicit LateBound(ComPtr<IDispatch> object) : object_(std::move(object)) {}

  [[nodiscard]] Value property(std::string_view name) const;
  Value call(std::string_view method, std::initializer_list<Value> arguments = {}) const;
  // A method that gives an object back; fails with 13 when it gives none.
  [[nodiscard]] LateBound callForObject(std::string_view method,
                                        std::initializer_list<Value> arguments) const;
  // What For Each would visit, all of it, each with a reference of its own.
  [[nodiscard]] std::vector<LateBound> children() const;

  [[nodiscard]] bool isSet() const { return static_cast<bool>(object_); }

 private:
  [[nodiscard]] Variant invoke(std::string_view name, WORD kind,
                               std::initializer_list<Value> arguments) const;

  ComPtr<IDispatch> object_;
};

}  // namespace trelvin
