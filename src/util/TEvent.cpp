#include <ZxCore3D/util/TEvent.h>

#include <chrono>

TEvent::TEvent(bool signalled) : m_Signalled(signalled) {}

void TEvent::Set() {
  {
    const std::lock_guard<std::mutex> lock(m_Mutex);
    m_Signalled = true;
  }
  m_Condition.notify_one();
}

void TEvent::Reset() {
  const std::lock_guard<std::mutex> lock(m_Mutex);
  m_Signalled = false;
}

void TEvent::Wait() {
  std::unique_lock<std::mutex> lock(m_Mutex);
  while (!m_Signalled) {
    m_Condition.wait(lock);
  }
  m_Signalled = false;
}

bool TEvent::Wait(unsigned int ms) {
  using TClock = std::chrono::system_clock;
  std::unique_lock<std::mutex> lock(m_Mutex);
  while (!m_Signalled) {
    // Each pass has the full time; and a wait that ran out does not look at the flag any more.
    const TClock::time_point deadline = TClock::now() + std::chrono::milliseconds(ms);
    m_Condition.wait_until(lock, deadline);
    if (TClock::now() >= deadline) {
      return false;
    }
  }
  m_Signalled = false;
  return true;
}
