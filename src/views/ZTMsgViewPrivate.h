#pragma once
// What the files of the message view share and nobody else needs.

#include <exception>
#include <stdexcept>
#include <string>

#include "ZTMsgView.h"

namespace zentrail {

// Keeps an update bracket balanced on every way out, exceptions included.
class TUpdateGuard {
 public:
  explicit TUpdateGuard(TZTMessageView& view) : FView(view) { FView.BeginUpdate(); }
  ~TUpdateGuard() noexcept(false) {
    // An exception already on its way wins over a bracket failure.
    if (std::uncaught_exceptions() > 0) {
      try {
        FView.EndUpdate();
      } catch (...) {
      }
    } else {
      FView.EndUpdate();
    }
  }
  TUpdateGuard(const TUpdateGuard&) = delete;
  TUpdateGuard& operator=(const TUpdateGuard&) = delete;

 private:
  TZTMessageView& FView;
};

[[noreturn]] inline void IndexFailure(int32_t index) {
  throw std::out_of_range("List index out of bounds (" + std::to_string(index) + ")");
}

}  // namespace zentrail
