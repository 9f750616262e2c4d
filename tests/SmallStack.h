#pragma once

#include <algorithm>
#include <cstddef>
#include <functional>

#include <gtest/gtest.h>
#include <pthread.h>
#include <unistd.h>

namespace zx_test {

/// The stack that every operation of the library fits into, the thread's own needs included; or the
/// least that the system gives a thread, which is 128 KiB on arm64.
inline std::size_t SmallStack() {
  return std::max<std::size_t>(64 * 1024, static_cast<std::size_t>(sysconf(_SC_THREAD_STACK_MIN)));
}

// The sanitizers put red zones around each array.
#ifdef __SANITIZE_ADDRESS__
inline constexpr bool kStackIsTrue = false;
#else
inline constexpr bool kStackIsTrue = true;
#endif

/// Runs `body` on a thread with a small stack; behind its end lies a page that can't be touched, so
/// that what needs more ends the program.
inline void OnASmallStack(const std::function<void()>& body) {
  if (!kStackIsTrue) {
    GTEST_SKIP() << "the sanitizer makes frames larger";
  }
  pthread_attr_t attributes;
  ASSERT_EQ(0, pthread_attr_init(&attributes));
  ASSERT_EQ(0, pthread_attr_setstacksize(&attributes, SmallStack()));
  pthread_t thread;
  const auto run = [](void* given) -> void* {
    (*static_cast<const std::function<void()>*>(given))();
    return nullptr;
  };
  ASSERT_EQ(0,
            pthread_create(&thread, &attributes, run, const_cast<std::function<void()>*>(&body)));
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
}

} // namespace zx_test
