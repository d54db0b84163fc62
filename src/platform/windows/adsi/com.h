// What late-bound COM needs: counted pointers, texts and variants that are freed with their owner.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "core/err.h"
#include "platform/windows/adsi/com_api.h"

namespace trelvin {

// A counted reference; the one that it is made from is taken over.
template <typename Interface>
class ComPtr {
 public:
  ComPtr() = default;
  explicit ComPtr(Interface* taken) : pointer_(taken) {}
  ComPtr(const ComPtr& other) : pointer_(other.pointer_) {
    if (pointer_ != nullptr) pointer_->AddRef();
  }
  ComPtr(ComPtr&& other) noexcept : pointer_(std::exchange(other.pointer_, nullptr)) {}
  ComPtr& operator=(ComPtr other) noexcept {
    std::swap(pointer_, other.pointer_);
    return *this;
  }
  ~ComPtr() {
    if (pointer_ != nullptr) pointer_->Release();
  }

  [[nodiscard]] Interface* get() const { return pointer_; }
  Interface* operator->() const { return pointer_; }
  explicit operator bool() const { return pointer_ != nullptr; }
  // For calls that fill a pointer; only on an empty one.
  Interface** put() { return &pointer_; }

 private:
  Interface* pointer_ = nullptr;
};

// A text in the form that COM passes around.
class Bstr {
 public:
  explicit Bstr(std::string_view utf8);
  Bstr(const Bstr&) = delete;
  Bstr& operator=(const Bstr&) = delete;
  ~Bstr() { ::SysFreeString(text_); }
  [[nodiscard]] BSTR get() const { return text_; }
  // The caller frees it.
  BSTR release() { return std::exchange(text_, nullptr); }

 private:
  BSTR text_;
};

// A variant that clears what it holds.
class Variant {
 public:
  Variant() { ::VariantInit(&held_); }
  Variant(Variant&& other) noexcept : held_(other.held_) { ::VariantInit(&other.held_); }
  Variant(const Variant&) = delete;
  Variant& operator=(const Variant&) = delete;
  Variant& operator=(Variant&&) = delete;
  ~Variant() { ::VariantClear(&held_); }

  [[nodiscard]] const VARIANT& get() const { return held_; }
  VARIANT& get() { return held_; }

 private:
  VARIANT held_;
};

// A failure of that number. Windows has texts for its own numbers, the program for those of the runtime and
// of the directory service.
Failure numberedFailure(std::int32_t number);

// Fails with the result as number.
void requireSuccess(HRESULT result);

// Enters the single-threaded apartment; the thread stays in it as long as one of these lives.
class Apartment {
 public:
  Apartment();
  Apartment(const Apartment&) = delete;
  Apartment& operator=(const Apartment&) = delete;
  ~Apartment();

 private:
  HRESULT entered_;
};

}  // namespace trelvin
