#include "OperationTimes.h"

#include <algorithm>
#include <cstdio>

namespace canvaro_tool {

void OperationTimes::Add(const std::string& name, double seconds) {
  auto it = std::find_if(stats_.begin(), stats_.end(),
                         [&](const Stat& stat) { return stat.name == name; });
  if (it == stats_.end()) {
    stats_.push_back({name});
    it = stats_.end() - 1;
  }
  ++it->count;
  it->seconds += seconds;
  it->longest = std::max(it->longest, seconds);
}

void OperationTimes::Print(std::ostream& out) const {
  char line[160];
  std::snprintf(line, sizeof line, "  %-18s %6s %11s %11s %11s\n", "operation", "count", "total ms",
                "mean ms", "longest ms");
  out << line;
  for (const Stat& stat : stats_) {
    std::snprintf(line, sizeof line, "  %-18s %6zu %11.1f %11.2f %11.2f\n", stat.name.c_str(),
                  stat.count, stat.seconds * 1e3,
                  stat.seconds * 1e3 / static_cast<double>(stat.count), stat.longest * 1e3);
    out << line;
  }
}

}  // namespace canvaro_tool
