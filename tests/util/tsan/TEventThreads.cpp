// Events between many threads, for the thread sanitizer; a program of its own, since that sanitizer
// must be in every object that is linked.
//
// It ends with 0 when every signal that was sent was taken by exactly one waiter.

#include <ZxCore3D/util/TEvent.h>

#include <atomic>
#include <cstdio>
#include <thread>
#include <vector>

namespace {

// Two events hand a plain, unprotected number to and fro: a missing synchronisation is a race.
bool PingPong(int rounds) {
  TEvent ping(false);
  TEvent pong(false);
  long number = 0;
  std::thread other([&] {
    for (int i = 0; i < rounds; ++i) {
      ping.Wait();
      ++number;
      pong.Set();
    }
  });
  for (int i = 0; i < rounds; ++i) {
    ++number;
    ping.Set();
    while (!pong.Wait(1000)) {
    }
  }
  other.join();
  return number == 2L * rounds;
}

// Each signal is sent only when the one before it was taken, by whichever waiter.
bool ManyWaiters(int waiters, int signals) {
  TEvent event(false);
  std::atomic<int> taken{0};
  std::atomic<bool> over{false};
  std::vector<std::thread> threads;
  for (int i = 0; i < waiters; ++i) {
    threads.emplace_back([&, i] {
      while (!over) {
        if (i % 2 == 0 ? event.Wait(1) : event.Wait(0)) {
          ++taken;
        }
      }
    });
  }
  for (int i = 1; i <= signals; ++i) {
    event.Set();
    while (taken < i) {
      std::this_thread::yield();
    }
  }
  over = true;
  for (std::thread& thread : threads) {
    thread.join();
  }
  return taken == signals && !event.Wait(0);
}

// Sets, resets and waits at random: only the sanitizer has something to say.
void Storm(int threads, int rounds) {
  TEvent event(false);
  std::vector<std::thread> all;
  for (int i = 0; i < threads; ++i) {
    all.emplace_back([&, i] {
      for (int round = 0; round < rounds; ++round) {
        switch ((i + round) % 4) {
        case 0:
          event.Set();
          break;
        case 1:
          event.Reset();
          break;
        case 2:
          event.Wait(0);
          break;
        default:
          event.Wait(1);
          break;
        }
      }
    });
  }
  for (std::thread& thread : all) {
    thread.join();
  }
}

} // namespace

int main() {
  const bool ok = PingPong(2000) && ManyWaiters(4, 2000);
  Storm(6, 400);
  std::puts(ok ? "every signal was taken once" : "signals were lost or taken twice");
  return ok ? 0 : 1;
}
