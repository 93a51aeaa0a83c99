// Sample records built by the walk over described records
// (tools/describe/RecordWalk.h), for the tests of the walk and of what reads
// and writes records through it.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "RecordWalk.h"
#include "api/PlainCode.h"

namespace walktest {

using trov::describe::Code;
using trov::describe::Count;
namespace describe = trov::describe;

// A leaf of a record: a number, or bytes.
using Leaves = std::vector<std::string>;
inline std::string number(uint32_t v) { return std::to_string(v); }
inline std::string bytes(const uint8_t *p, size_t n) { return "b:" + std::string(reinterpret_cast<const char *>(p), n); }

// Builds records with values that set the high bits, `elements` elements
// wherever a count is asked (counts given at their count fields, or later),
// in memory placed at odd addresses when asked; notes every leaf it gives.
class Sampler : public describe::RecordBuilder {
public:
    Sampler(uint32_t elements, bool later, bool misaligned, uint8_t selector)
        : elements_(elements), later_(later), misaligned_(misaligned), selector_(selector) {}
    Leaves given;
    uint16_t method = 0;    // the method code a method body is built with
    uint16_t attribute = 0; // the attribute a body's attribute field holds (0: a plain one)
    uint16_t dataType = 0;  // the data type of typed values (0: a plain one)

    void *allocate(size_t n, describe::Block) override {
        blocks_.push_back(std::make_unique<uint8_t[]>(n + 16));
        return blocks_.back().get() + (misaligned_ ? 1 : 0);
    }
    bool code(const Code &code, uint32_t &value) override {
        switch (code.of) {
        case Code::Of::Option: value = ++serial_ % 2 != 0 ? 1 : 7; break;
        case Code::Of::Selector: value = selector_; break;
        case Code::Of::DataType: value = dataType != 0 ? dataType : plainCode(true, code.version); break;
        case Code::Of::Method: value = method; break;
        case Code::Of::Attribute: // the one asked for, then a plain one for any nested value
            value = attribute != 0 ? std::exchange(attribute, uint16_t{0}) : plainCode(false, code.version);
            break;
        default: value = plainCode(false, code.version); break;
        }
        given.push_back(number(value));
        return true;
    }
    bool scalar(const TrovFieldInfo &, unsigned width, uint32_t &value) override {
        value = (0xC0A08070u + ++serial_) >> (32 - 8 * width);
        given.push_back(number(value));
        return true;
    }
    bool count(const Count &count, uint32_t &value) override {
        if (count.announced) return true;
        value = count.of == Count::Of::CountField && later_ ? describe::kLater
                : count.of == Count::Of::Option            ? 2 // kinds from 6: two bytes
                : count.of == Count::Of::CountField && count.counted == nullptr ? 0
                                                                                 : elements_;
        return true;
    }
    bool bytes(const TrovFieldInfo &, describe::Text, uint8_t *out, size_t size) override {
        for (size_t i = 0; i < size; ++i) out[i] = static_cast<uint8_t>(0xA5 ^ (++serial_ * 7));
        given.push_back(walktest::bytes(out, size));
        return true;
    }
    bool element(const describe::Numbers &numbers, uint32_t, uint32_t (&parts)[2]) override {
        for (unsigned p = 0; p < numbers.parts; ++p) {
            parts[p] = (0xF1E2D3C4u + ++serial_) >> (32 - 8 * numbers.partBytes(p));
            given.push_back(number(parts[p]));
        }
        return true;
    }
    describe::Answer missing(const describe::Miss &, void *&) override {
        given.push_back("missing");
        return describe::Answer::Stop;
    }

private:
    uint32_t elements_;
    bool later_, misaligned_;
    uint8_t selector_;
    uint32_t serial_ = 0;
    std::vector<std::unique_ptr<uint8_t[]>> blocks_;
};

} // namespace walktest
