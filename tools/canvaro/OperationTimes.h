// Time spent per kind of operation, for the demo's summary.
//
//   OperationTimes times;
//   auto picture = times.Time("render", [&] { return effect->Apply(*source); });
//   times.Print(std::cout);   // name, count, total, mean, longest
//
// One thread.
#pragma once

#include <chrono>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

namespace canvaro_tool {

class OperationTimes {
 public:
  // Runs `operation` and adds its duration under `name` (also when it throws).
  template <class Operation>
  decltype(auto) Time(const std::string& name, Operation&& operation) {
    const Timer timer(*this, name);
    return std::forward<Operation>(operation)();
  }

  void Add(const std::string& name, double seconds);
  // One line per operation, in order of first use.
  void Print(std::ostream& out) const;

 private:
  struct Stat {
    std::string name;
    std::size_t count = 0;
    double seconds = 0;
    double longest = 0;
  };
  class Timer {
   public:
    Timer(OperationTimes& times, const std::string& name)
        : times_(times), name_(name), start_(std::chrono::steady_clock::now()) {}
    ~Timer() {
      times_.Add(name_,
                 std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count());
    }
    Timer(const Timer&) = delete;
    Timer& operator=(const Timer&) = delete;

   private:
    OperationTimes& times_;
    std::string name_;
    std::chrono::steady_clock::time_point start_;
  };

  std::vector<Stat> stats_;
};

}  // namespace canvaro_tool
