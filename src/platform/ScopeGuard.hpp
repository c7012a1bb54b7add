#pragma once
// ScopeGuard runs its action when the scope ends, on every way out, unless it was
// dismissed. It is how "wipe on every exit" and "remove the staged file unless published"
// are written once instead of at each return.

#include <utility>

namespace galdrine {

template <typename Action>
class [[nodiscard]] ScopeGuard {
 public:
  explicit ScopeGuard(Action action) : action_(std::move(action)) {}
  ScopeGuard(const ScopeGuard&) = delete;
  ScopeGuard& operator=(const ScopeGuard&) = delete;
  ~ScopeGuard() {
    if (active_) action_();
  }
  void dismiss() noexcept { active_ = false; }

 private:
  Action action_;
  bool active_ = true;
};

}  // namespace galdrine
