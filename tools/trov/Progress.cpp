// The progress line: carriage returns rewrite it in place; spaces erase it.
#include "Progress.h"

#include <cstdio>
#include <utility>

#ifdef _WIN32
#include <io.h>
#else
#include <unistd.h>
#endif

namespace trov {

bool isTerminal(std::FILE *stream) {
#ifdef _WIN32
    return _isatty(_fileno(stream)) != 0;
#else
    return isatty(fileno(stream)) != 0;
#endif
}

ProgressLine::ProgressLine(std::ostream *out, std::string prefix, Clock::duration after, Clock::duration every)
    : out_(out), prefix_(std::move(prefix)), next_(Clock::now() + after), every_(every) {}

void ProgressLine::update(uint64_t bytes, uint64_t packets) {
    if (out_ == nullptr) return;
    const Clock::time_point now = Clock::now();
    if (now < next_) return;
    next_ = now + every_;
    char line[96];
    const int n = bytes < 1000000
                      ? std::snprintf(line, sizeof line, "%s: %llu bytes read, %llu packets", prefix_.c_str(),
                                      static_cast<unsigned long long>(bytes), static_cast<unsigned long long>(packets))
                      : std::snprintf(line, sizeof line, "%s: %.1f MB read, %llu packets", prefix_.c_str(),
                                      static_cast<double>(bytes) / 1e6, static_cast<unsigned long long>(packets));
    const size_t length = n < 0 ? 0 : static_cast<size_t>(n) < sizeof line ? static_cast<size_t>(n) : sizeof line - 1;
    *out_ << '\r' << line;
    if (length < shown_) *out_ << std::string(shown_ - length, ' ');
    out_->flush();
    shown_ = length > shown_ ? length : shown_;
}

void ProgressLine::finish() {
    if (out_ == nullptr || shown_ == 0) return;
    *out_ << '\r' << std::string(shown_, ' ') << '\r';
    out_->flush();
    shown_ = 0;
}

} // namespace trov
