#include "Progress.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>

namespace canvaro_tool {

namespace {
constexpr int kBarWidth = 30;
constexpr std::size_t kLabelWidth = 40;
}  // namespace

Progress::Progress(int total) : total_(std::max(total, 1)), enabled_(isatty(STDERR_FILENO) != 0) {}

Progress::~Progress() { Finish(); }

void Progress::Update(int done, const std::string& label) {
  if (!enabled_) return;
  const int filled = std::clamp(done * kBarWidth / total_, 0, kBarWidth);
  std::string text = label.substr(0, kLabelWidth);
  text.resize(kLabelWidth, ' ');
  std::fprintf(stderr, "\r  [%s%s] %d/%d %s",
               std::string(static_cast<std::size_t>(filled), '#').c_str(),
               std::string(static_cast<std::size_t>(kBarWidth - filled), '.').c_str(), done, total_,
               text.c_str());
  std::fflush(stderr);
  shown_ = true;
}

void Progress::Finish() {
  if (!shown_) return;
  std::fprintf(stderr, "\r%s\r", std::string(kBarWidth + kLabelWidth + 20, ' ').c_str());
  std::fflush(stderr);
  shown_ = false;
}

}  // namespace canvaro_tool
