#include <ZxCore3D/util/TTimeReporter.h>

#include <ZxRunKit/Format.h>

TTimeReporter::TTimeReporter() : m_FullTime(0.0) {}

void TTimeReporter::Clear() {
  m_Items.clear();
  m_FullTime = 0.0;
}

void TTimeReporter::AddTime(const char* name, double t) {
  if (name != nullptr) {
    m_Items.push_back({t, name});
  }
}

bool TTimeReporter::SetFullTime(const char* name, double t) {
  if (t < 0.0) {
    return false;
  }
  if (name != nullptr) {
    m_FullName = name;
  }
  m_FullTime = t;
  return true;
}

std::string TTimeReporter::GetReport() const {
  std::string report;
  const bool full = m_FullTime != 0.0;
  const double factor = full ? 100.0 / m_FullTime : 0.0;
  const std::size_t total = m_Items.size() + (full ? 1 : 0);
  std::size_t line = 0;
  for (const TItem& item : m_Items) {
    report +=
        full ? Zentrix::ssprintf("%s %f s (%f%%)", item.Name.c_str(), item.Time, item.Time * factor)
             : Zentrix::ssprintf("%s %f s", item.Name.c_str(), item.Time);
    if (++line < total) {
      report += '\n';
    }
  }
  if (full) {
    report += Zentrix::ssprintf("%s %f s", m_FullName.c_str(), m_FullTime);
  }
  return report;
}
