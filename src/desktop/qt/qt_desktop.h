// The desktop under Qt.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>
#include <vector>

#include "desktop/desktop.h"

class QProgressDialog;
class QSocketNotifier;
class QWidget;

namespace trelvin::desktop {

class QtDesktop final : public Desktop {
 public:
  explicit QtDesktop(std::vector<Window> windows);
  ~QtDesktop() override;

  // Shows how far a long piece of work has got, until the next yield. Clicks wait for that too.
  void showProgress(std::string_view title, std::uint64_t done, std::uint64_t found);

  // The window that a box belongs to; null when none is up.
  [[nodiscard]] QWidget* activeWindow() const;

 private:
  std::unique_ptr<DrawnWindow> open(const Window& window, std::function<void()> onClose) override;
  void hear(bool mayWait) override;
  void tidyUp() override;
  void dropProgress() override;
  void hearSockets();

  std::unique_ptr<QSocketNotifier> sockets_;
  std::unique_ptr<QProgressDialog> progress_;
};

}  // namespace trelvin::desktop
