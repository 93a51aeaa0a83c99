// A progress line for long runs: "trov decode: 12.4 MB read, 3021 packets",
// rewritten in place on a terminal and erased when the run ends.
#pragma once

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <ostream>
#include <string>

namespace trov {

// Whether the C stream (stdout, stderr) is a terminal.
bool isTerminal(std::FILE *stream);

class ProgressLine {
public:
    using Clock = std::chrono::steady_clock;

    // Writes to `out` with `prefix` ("trov decode"); nothing when `out` is
    // null. The line first shows `after` the start (short runs show none),
    // then at most once per `every`.
    ProgressLine(std::ostream *out, std::string prefix, Clock::duration after = std::chrono::milliseconds(500),
                 Clock::duration every = std::chrono::milliseconds(250));
    ~ProgressLine() { finish(); }

    // The bytes read and packets framed so far.
    void update(uint64_t bytes, uint64_t packets);
    // Erases the line, if one is shown.
    void finish();

private:
    std::ostream *out_;
    std::string prefix_;
    Clock::time_point next_;
    Clock::duration every_;
    size_t shown_ = 0; // characters of the line on the terminal
};

} // namespace trov
