#pragma once

#include <string>
#include <vector>

#include <ZxCore3D/types/Export.h>

/// Named timings, in seconds, as a text of one line each. One thread at a time.
class ZX_CORE3D_API TTimeReporter {
public:
  /// One timing.
  struct TItem {
    double Time;      ///< seconds
    std::string Name; ///< as it was given
  };

  /// No timings and no total.
  TTimeReporter();

  /// Drops the timings and the total; the total's name stays.
  void Clear();
  /// Appends a timing. The name may not be null: nothing is appended then.
  void AddTime(const char* name, double t);
  /// Sets the total that percentages refer to, and its name unless `name` is null; 0.0 is no total.
  /// False, with nothing changed, for a `t` below 0.0.
  bool SetFullTime(const char* name, double t);
  /// One line for each timing, with its share of the total if there is one, and then the total. No
  /// line feed at the end; empty when there is nothing to tell.
  std::string GetReport() const;

private:
  std::vector<TItem> m_Items;
  double m_FullTime;
  std::string m_FullName;
};

namespace Zx3D {
using ::TTimeReporter;
} // namespace Zx3D
