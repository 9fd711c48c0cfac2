// Runs the built `canvaro` program as a subprocess and collects its exit status and output, for
// the tool's tests:
//
//   ToolRun run = RunTool({"verify", dir.string()});
//   EXPECT_EQ(run.status, 0) << run.err;
//
// or just RunToolOk(...), which expects status 0 itself. The program's path comes from the build
// (CANVARO_TOOL). Output goes through files in a fresh temporary directory, so large outputs cannot
// block the child. A failure is checked with
//
//   EXPECT_TRUE(FailedWith(RunTool({"export", dir.string()}), 2, "--out"));
#pragma once

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/TempDir.h"

namespace canvaro_test {

struct ToolRun {
  int status = -1;  // the exit status; 128 + signal when the program was killed
  std::string out;
  std::string err;
};

inline ToolRun RunTool(const std::vector<std::string>& args) {
  TempDir scratch;
  const std::string outFile = (scratch.path() / "out").string();
  const std::string errFile = (scratch.path() / "err").string();
  std::vector<std::string> argv{CANVARO_TOOL};
  argv.insert(argv.end(), args.begin(), args.end());
  std::vector<char*> pointers;
  for (auto& arg : argv) pointers.push_back(arg.data());
  pointers.push_back(nullptr);

  const pid_t child = fork();
  if (child == 0) {
    const int out = open(outFile.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    const int err = open(errFile.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    if (out < 0 || err < 0 || dup2(out, 1) < 0 || dup2(err, 2) < 0) _exit(126);
    execv(pointers[0], pointers.data());
    _exit(127);
  }
  ToolRun run;
  int status = 0;
  if (child > 0 && waitpid(child, &status, 0) == child) {
    run.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  }
  run.out = ReadFile(outFile);
  run.err = ReadFile(errFile);
  return run;
}

// Runs the program and expects it to succeed.
inline ToolRun RunToolOk(const std::vector<std::string>& args) {
  ToolRun run = RunTool(args);
  EXPECT_EQ(run.status, 0) << args.front() << ": " << run.out << run.err;
  return run;
}

// Whether `run` ended with `status` and one line on stderr that contains `expected`.
inline ::testing::AssertionResult FailedWith(const ToolRun& run, int status,
                                             const std::string& expected) {
  if (run.status == status && std::count(run.err.begin(), run.err.end(), '\n') == 1 &&
      run.err.find(expected) != std::string::npos) {
    return ::testing::AssertionSuccess();
  }
  return ::testing::AssertionFailure() << "status " << run.status << ", stderr: " << run.err;
}

}  // namespace canvaro_test
