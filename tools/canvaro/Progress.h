// A progress bar for long runs, drawn in place on stderr when stderr is a terminal and silent
// otherwise (logs and pipes get the command's normal lines only).
//
//   Progress progress(steps);
//   for (int i = 1; i <= steps; ++i) { ...; progress.Update(i, "blur 3 px"); }
//   progress.Finish();   // clears the bar
//
// One thread.
#pragma once

#include <string>

namespace canvaro_tool {

class Progress {
 public:
  explicit Progress(int total);
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  // Shows `done` of the total with a short label.
  void Update(int done, const std::string& label);
  // Removes the bar from the terminal.
  void Finish();

 private:
  int total_;
  bool enabled_;
  bool shown_ = false;
};

}  // namespace canvaro_tool
