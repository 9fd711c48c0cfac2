// The tool's two kinds of failure, and the one-line text of any exception.
//
// A command throws ToolError for a problem with its input (a missing file, a malformed document:
// exit status 1) and UsageError for a bad command line (exit status 2). main() catches both,
// and every other exception, and prints one line on stderr:
//
//   throw ToolError("cannot read " + path + ": no such file");
//   throw UsageError("--steps wants a number from 1 to 1000, not 'x'");
#pragma once

#include <exception>
#include <stdexcept>
#include <string>

namespace canvaro_tool {

inline constexpr int kExitProblem = 1;
inline constexpr int kExitUsage = 2;

class ToolError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// One line describing `error`: the description carried by a platform or library exception when
// it has one, what() otherwise; never throws, never prints a call stack.
std::string Describe(const std::exception& error);
// The same for the exception in flight (inside a catch block), also for non-standard ones.
std::string DescribeCurrent();

}  // namespace canvaro_tool
