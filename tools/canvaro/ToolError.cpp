#include "ToolError.h"

#include <boost/exception/get_error_info.hpp>

#include "kelbra/Exception.h"

namespace canvaro_tool {

namespace {

// Keeps messages on one line: a description may hold line breaks.
std::string OneLine(std::string text) {
  for (char& c : text) {
    if (c == '\n' || c == '\r') c = ' ';
  }
  while (!text.empty() && text.back() == ' ') text.pop_back();
  return text.empty() ? "unknown error" : text;
}

}  // namespace

std::string Describe(const std::exception& error) {
  try {
    if (const auto* boostError = dynamic_cast<const boost::exception*>(&error)) {
      if (const std::string* text = boost::get_error_info<Kelbra::TagDescription>(*boostError)) {
        return OneLine(*text);
      }
    }
    return OneLine(error.what());
  } catch (...) {
    return "unknown error";
  }
}

std::string DescribeCurrent() {
  try {
    throw;
  } catch (const std::exception& error) {
    return Describe(error);
  } catch (...) {
    return "unknown error";
  }
}

}  // namespace canvaro_tool
