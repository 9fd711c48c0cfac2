#include "support/LogCapture.h"

namespace canvaro_test {

LogCapture::LogCapture(int verbosity) : previousVerbosity_(FLAGS_v) {
  // The library logs only once glog is set up, as a host would set it up; the test process keeps
  // no log files and prints errors only.
  if (!google::IsGoogleLoggingInitialized()) {
    google::InitGoogleLogging("canvaro_tests");
    for (google::LogSeverity severity = 0; severity < google::NUM_SEVERITIES; ++severity) {
      google::SetLogDestination(severity, "");
    }
  }
  if (verbosity > FLAGS_v) FLAGS_v = verbosity;
  google::AddLogSink(this);
}

LogCapture::~LogCapture() {
  google::RemoveLogSink(this);
  FLAGS_v = previousVerbosity_;
}

void LogCapture::send(google::LogSeverity severity, const char*, const char*, int,
                      const struct ::tm*, const char* message, size_t messageLen) {
  std::lock_guard<std::mutex> lock(mutex_);
  lines_.push_back(LogLine{severity, std::string(message, messageLen)});
}

std::vector<LogLine> LogCapture::Lines() const {
  std::lock_guard<std::mutex> lock(mutex_);
  return lines_;
}

std::vector<std::string> LogCapture::Messages() const {
  std::vector<std::string> messages;
  for (const LogLine& line : Lines()) messages.push_back(line.message);
  return messages;
}

std::vector<std::string> LogCapture::Messages(google::LogSeverity severity) const {
  std::vector<std::string> messages;
  for (const LogLine& line : Lines()) {
    if (line.severity == severity) messages.push_back(line.message);
  }
  return messages;
}

void LogCapture::Clear() {
  std::lock_guard<std::mutex> lock(mutex_);
  lines_.clear();
}

}  // namespace canvaro_test
