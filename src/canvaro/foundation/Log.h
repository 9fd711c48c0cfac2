// The library's log lines. They go through glog once the host has set glog up
// (google::InitGoogleLogging); before that the library writes nothing, so that a host that never
// uses glog gets neither the lines nor glog's "Logging before InitGoogleLogging()" warning on
// stderr. Failures reach the host as exceptions either way; the lines are diagnostics.
#pragma once

#include <glog/logging.h>

#define CANVARO_LOG(severity) LOG_IF(severity, ::google::IsGoogleLoggingInitialized())
#define CANVARO_VLOG(level) VLOG_IF(level, ::google::IsGoogleLoggingInitialized())
