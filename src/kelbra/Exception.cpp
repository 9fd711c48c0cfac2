#include "kelbra/Exception.h"

#include <mutex>
#include <ostream>
#include <string_view>
#include <typeinfo>

#include <boost/core/demangle.hpp>
#include <boost/stacktrace.hpp>

namespace Kelbra {

Exception::~Exception() = default;

const char* Exception::what() const noexcept {
  try {
    message_ = boost::core::demangle(typeid(*this).name());
    // Exceptions thrown with boost::throw_exception arrive wrapped; name the exception itself.
    constexpr std::string_view kWrapper = "boost::wrapexcept<";
    if (message_.starts_with(kWrapper) && message_.ends_with('>')) {
      message_ = message_.substr(kWrapper.size(), message_.size() - kWrapper.size() - 1);
    }
    if (const std::string* description = boost::get_error_info<TagDescription>(*this)) {
      message_ += ": ";
      message_ += *description;
    }
    return message_.c_str();
  } catch (...) {
    return "Kelbra::Exception";
  }
}

struct CallStack::State {
  std::vector<boost::stacktrace::frame> frames;
  std::once_flag rendered;
  std::string text;
};

CallStack::CallStack(std::size_t skip) noexcept {
  try {
    auto state = std::make_shared<State>();
    // Unwinding records addresses only; names and lines are looked up in str().
    const boost::stacktrace::stacktrace captured(skip + 1, 64);
    state->frames.assign(captured.begin(), captured.end());
    state_ = std::move(state);
  } catch (...) {
    state_.reset();
  }
}

const std::string& CallStack::str() const {
  static const std::string kEmpty;
  if (state_ == nullptr) return kEmpty;
  std::call_once(state_->rendered, [this] {
    try {
      std::string text;
      for (std::size_t i = 0; i < state_->frames.size(); ++i) {
        text += (i < 10 ? " " : "") + std::to_string(i) + "# " +
                boost::stacktrace::to_string(state_->frames[i]) + "\n";
      }
      state_->text = std::move(text);
    } catch (...) {
      state_->text.clear();
    }
  });
  return state_->text;
}

bool CallStack::empty() const { return state_ == nullptr || state_->frames.empty(); }

std::ostream& operator<<(std::ostream& out, const CallStack& stack) { return out << stack.str(); }

std::string GetCallStack() {
  try {
    // Skip this function itself; the caller's frame comes first.
    return boost::stacktrace::to_string(boost::stacktrace::stacktrace(1, 64));
  } catch (...) {
    return {};
  }
}

}  // namespace Kelbra
