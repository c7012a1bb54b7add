#pragma once
// GaldrineScopeGuard runs its action when the scope ends, on every way out, unless it was
// dismissed. It is how "wipe on every exit" and "remove the staged file unless published"
// are written once instead of at each return.

#include <utility>

template <typename Action>
class [[nodiscard]] GaldrineScopeGuard {
 public:
  explicit GaldrineScopeGuard(Action action) : action_(std::move(action)) {}
  GaldrineScopeGuard(const GaldrineScopeGuard&) = delete;
  GaldrineScopeGuard& operator=(const GaldrineScopeGuard&) = delete;
  ~GaldrineScopeGuard() {
    if (active_) action_();
  }
  void dismiss() noexcept { active_ = false; }

 private:
  Action action_;
  bool active_ = true;
};
