// Captures glog lines for the lifetime of the object, so tests can check the exact texts.
//
//   LogCapture log(/*verbosity=*/30);
//   storage.SwapExcept({});
//   EXPECT_THAT(log.Messages(), Contains("Swap started"));
//
// Lines from any thread are captured (the sink is thread-safe). Verbose logging is raised to
// `verbosity` while the capture lives and restored afterwards.
#pragma once

#include <mutex>
#include <string>
#include <vector>

#include <glog/logging.h>

namespace canvaro_test {

struct LogLine {
  google::LogSeverity severity;
  std::string message;
};

class LogCapture : public google::LogSink {
 public:
  explicit LogCapture(int verbosity = 0);
  ~LogCapture() override;

  void send(google::LogSeverity severity, const char* fullFilename, const char* baseFilename,
            int line, const struct ::tm* tmTime, const char* message, size_t messageLen) override;

  std::vector<LogLine> Lines() const;
  // The message texts only, in order.
  std::vector<std::string> Messages() const;
  // The message texts of one severity, in order.
  std::vector<std::string> Messages(google::LogSeverity severity) const;
  void Clear();

 private:
  mutable std::mutex mutex_;
  std::vector<LogLine> lines_;
  int previousVerbosity_;
};

}  // namespace canvaro_test
