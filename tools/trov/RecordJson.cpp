// Records as JSON: a reader of the one walk over described records
// (RecordWalk.h), which finds every value; this file only says how each
// looks in JSON. Records and the walk's own records (typed values, entries,
// options, method and event-list members) are objects, lists are arrays,
// numbers are numbers. Bytes are lowercase hex; characters a string when all
// of them are printable ASCII, else {"hex": "..."}; an attribute value kept
// as its wire bytes is {"hex": "..."}. A pointer left null behind a count,
// or a code without a layout, is null; a record the walk does not go into is
// {"unprinted": why}.
#include "RecordJson.h"

#include <vector>

#include "RecordWalk.h"

namespace trov {
namespace {

class Printer : public describe::RecordReader {
public:
    Json take() { return std::move(result_); }

    void beginRecord(const TrovLayoutInfo &) override { open(Json::object()); }
    void member(const TrovFieldInfo &field) override { key_ = field.name; }
    void endRecord() override { close(); }
    void beginList(uint32_t) override { open(Json::array()); }
    void endList() override { close(); }
    void number(uint32_t value) override { put(value); }
    void absent() override { put(nullptr); }
    void unread(describe::Unread why) override {
        put(Json{{"unprinted", why == describe::Unread::TooDeep ? "nested too deep" : "raw bytes"}});
    }

    void bytes(const uint8_t *data, size_t size, describe::Text text) override {
        if (text == describe::Text::Unparsed) return put(Json{{"hex", hexString(data, size)}});
        if (text == describe::Text::Chars)
            for (size_t i = 0; i < size; ++i)
                if (data[i] < 0x20 || data[i] > 0x7e) return put(Json{{"hex", hexString(data, size)}});
        if (text == describe::Text::Chars)
            return put(size == 0 ? std::string() : std::string(reinterpret_cast<const char *>(data), size));
        put(hexString(data, size));
    }

    void numbers(const describe::Numbers &numbers) override {
        Json a = Json::array();
        for (uint32_t i = 0; i < numbers.count; ++i) {
            if (numbers.parts == 1) a.push_back(numbers.at(i, 0));
            else a.push_back(Json::array({numbers.at(i, 0), numbers.at(i, 1)}));
        }
        put(std::move(a));
    }

private:
    // An object or array being filled, and the member it goes to.
    struct Open {
        Json value;
        std::string key;
    };

    void open(Json container) { open_.push_back({std::move(container), std::move(key_)}); }
    void close() {
        Open done = std::move(open_.back());
        open_.pop_back();
        key_ = std::move(done.key);
        put(std::move(done.value));
    }
    void put(Json value) {
        if (open_.empty()) result_ = std::move(value);
        else if (open_.back().value.is_object()) open_.back().value[key_] = std::move(value);
        else open_.back().value.push_back(std::move(value));
    }

    std::vector<Open> open_;
    std::string key_;
    Json result_;
};

} // namespace

std::string hexString(const uint8_t *data, size_t size) {
    static const char digits[] = "0123456789abcdef";
    std::string s;
    s.reserve(2 * size);
    for (size_t i = 0; i < size; ++i) {
        s += digits[data[i] >> 4];
        s += digits[data[i] & 15];
    }
    return s;
}

Json recordToJson(const TrovLayoutInfo &layout, const void *record, uint8_t version, bool request) {
    Printer printer;
    describe::readRecord(layout, record, version, request, printer);
    Json j = printer.take();
    return j.is_null() ? Json::object() : j;
}

} // namespace trov
