#include <ZxCore3D/util/TPerformCounter.h>

#include <chrono>

std::int64_t TPerformCounter::s_tFreq = 0;
TPerformCounter::TimePoint TPerformCounter::s_tStart = 0;

void TPerformCounter::Initialize() {
  s_tFreq = 1000000000;
  s_tStart = Now();
}

void TPerformCounter::Finalize() {}

double TPerformCounter::ToSec(unsigned long t) { return static_cast<double>(t) * 1e-9; }

TPerformCounter::TimePoint TPerformCounter::Now() {
  return std::chrono::duration_cast<std::chrono::nanoseconds>(
             std::chrono::system_clock::now().time_since_epoch())
      .count();
}

std::int64_t TPerformCounter::Count() { return s_tStart - Now(); }

std::int64_t TPerformCounter::Elapsed(TimePoint a, TimePoint b) {
  return static_cast<std::int64_t>(static_cast<std::uint64_t>(b) - static_cast<std::uint64_t>(a));
}

TPerformCounter::TPerformCounter() : m_Start(Now()) {}

std::int64_t TPerformCounter::Restart() {
  const TimePoint now = Now();
  const std::int64_t elapsed = now - m_Start;
  m_Start = now;
  return elapsed;
}

std::int64_t TPerformCounter::Elapsed() const { return Now() - m_Start; }

TPerformCounterEx::TPerformCounterEx(bool run)
    : m_Start(run ? TPerformCounter::Now() : 0), m_Accumulated(0), m_Depth(run ? 1 : 0) {}

void TPerformCounterEx::Start() {
  if (m_Depth == 0) {
    m_Accumulated = 0;
    m_Start = TPerformCounter::Now();
  }
  ++m_Depth;
}

void TPerformCounterEx::Continue() {
  if (m_Depth == 0) {
    m_Start = TPerformCounter::Now();
  }
  ++m_Depth;
}

void TPerformCounterEx::Stop() {
  if (--m_Depth == 0) {
    m_Accumulated = _ElapsedAt(TPerformCounter::Now());
  }
}

void TPerformCounterEx::Reset() {
  m_Accumulated = 0;
  m_Depth = 0;
}

std::uint64_t TPerformCounterEx::Restart() {
  const TPerformCounter::TimePoint now = TPerformCounter::Now();
  const std::uint64_t elapsed = m_Depth == 0 ? m_Accumulated : _ElapsedAt(now);
  m_Accumulated = 0;
  m_Start = now;
  if (m_Depth == 0) {
    m_Depth = 1;
  }
  return elapsed;
}

std::uint64_t TPerformCounterEx::Elapsed() const {
  return m_Depth == 0 ? m_Accumulated : _ElapsedAt(TPerformCounter::Now());
}

std::uint64_t TPerformCounterEx::_ElapsedAt(TPerformCounter::TimePoint now) const {
  return m_Accumulated + static_cast<std::uint64_t>(now - m_Start);
}
