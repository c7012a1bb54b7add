#pragma once
// BenchmarkMoment is one reading of the wall clock and of the process's user and system CPU
// time, so that a benchmark program can say where the time between two readings went.

#include <sys/resource.h>

#include <chrono>

namespace galdrine::bench {

struct Moment {
  double wallSeconds;
  double userSeconds;
  double systemSeconds;

  [[nodiscard]] static Moment now() {
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval& value) {
      return static_cast<double>(value.tv_sec) + static_cast<double>(value.tv_usec) * 1e-6;
    };
    const auto wall = std::chrono::steady_clock::now().time_since_epoch();
    return {std::chrono::duration<double>(wall).count(), seconds(usage.ru_utime), seconds(usage.ru_stime)};
  }
};

}  // namespace galdrine::bench
