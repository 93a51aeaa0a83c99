// The JSON library writes a syntax error as
//   [json.exception.parse_error.101] parse error at line 1, column 3: syntax
//   error while parsing value - invalid literal; last read: '{x'
// and some add "; expected string literal". What is kept: line and column
// (moved by the line the text starts on), the reason, what was read last and
// what was expected.
#include "JsonErrors.h"

#include <cstdlib>

namespace trov {
namespace {

// The number after `label` in `text`, or 0.
uint64_t numberAfter(const std::string &text, const std::string &label) {
    const size_t at = text.find(label);
    if (at == std::string::npos) return 0;
    return std::strtoull(text.c_str() + at + label.size(), nullptr, 10);
}

// `text` without `prefix` at its start.
std::string dropPrefix(std::string text, const std::string &prefix) {
    if (text.rfind(prefix, 0) == 0) text.erase(0, prefix.size());
    return text;
}

} // namespace

std::string jsonSyntaxError(const Json::parse_error &error, const std::string &name, uint64_t firstLine) {
    const std::string what = error.what();
    const uint64_t line = numberAfter(what, " at line ");
    const uint64_t column = numberAfter(what, ", column ");
    // The part after the position: "syntax error while parsing value - REASON; last read: 'X'; expected Y".
    std::string rest = what;
    const size_t colon = what.find(": ", what.find("parse error"));
    if (colon != std::string::npos) rest = what.substr(colon + 2);
    std::string reason = rest, lastRead, expected;
    if (const size_t dash = rest.find(" - "); rest.rfind("syntax error", 0) == 0 && dash != std::string::npos)
        reason = rest.substr(dash + 3);
    if (const size_t at = reason.find("; expected "); at != std::string::npos) {
        expected = reason.substr(at + 11);
        reason.erase(at);
    }
    if (const size_t at = reason.find("; last read: "); at != std::string::npos) {
        lastRead = reason.substr(at + 13);
        reason.erase(at);
    }
    reason = dropPrefix(reason, "syntax error while parsing ");

    std::string message = name;
    if (line != 0) message += ":" + std::to_string(firstLine + line - 1) + ":" + std::to_string(column);
    message += ": syntax error: " + reason;
    // What was read last may be a whole string: its end is what matters.
    if (lastRead.size() > 42) lastRead = "'..." + lastRead.substr(lastRead.size() - 40);
    if (!lastRead.empty() && lastRead != "''") message += " near " + lastRead;
    if (!expected.empty()) message += "; expected " + expected;
    return message;
}

} // namespace trov
