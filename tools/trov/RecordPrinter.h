// How a record looks as a packet object's "fields": one reader of the walk
// over described records (RecordWalk.h), written once for any kind of value
// it makes. The tool makes JSON values (RecordJson.cpp); a language binding
// makes its own objects with the same shapes by giving another `Values`.
//
// Records and the walk's own records (typed values, entries, options, method
// and event-list members) are objects, lists are arrays, numbers are numbers.
// Bytes are lowercase hex; characters a string when all of them are
// printable ASCII, else {"hex": "..."}; an attribute value kept as its wire
// bytes is {"hex": "..."}. A pointer left null behind a count, or a code
// without a layout, is null; a record the walk does not go into is
// {"unprinted": why}.
//
// `Values` makes and fills values (V is its value type, moved around):
//   V object();  V array();  V number(uint32_t);  V null();
//   V text(const char *data, size_t size);          // ASCII only
//   V hex(const uint8_t *data, size_t size);        // lowercase hex text
//   void set(V &object, const char *key, V &&value);
//   void append(V &array, V &&value);
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "RecordWalk.h"

namespace trov {

template <class Values> class RecordPrinter final : public describe::RecordReader {
public:
    using V = decltype(std::declval<Values &>().null());

    explicit RecordPrinter(Values &values) : values_(values), result_(values.null()) {}

    // The printed record; an empty object when the walk gave nothing.
    V take() {
        if (!printed_) return values_.object();
        return std::move(result_);
    }

    void beginRecord(const TrovLayoutInfo &) override { open(values_.object(), true); }
    void member(const TrovFieldInfo &field) override { key_ = field.name; }
    void endRecord() override { close(); }
    void beginList(uint32_t) override { open(values_.array(), false); }
    void endList() override { close(); }
    void number(uint32_t value) override { put(values_.number(value)); }
    void absent() override { put(values_.null()); }
    void unread(describe::Unread why) override {
        V note = values_.object();
        const char *text = why == describe::Unread::TooDeep ? "nested too deep" : "raw bytes";
        values_.set(note, "unprinted", values_.text(text, why == describe::Unread::TooDeep ? 15 : 9));
        put(std::move(note));
    }

    void bytes(const uint8_t *data, size_t size, describe::Text text) override {
        bool asHex = text == describe::Text::Unparsed;
        if (text == describe::Text::Chars)
            for (size_t i = 0; i < size && !asHex; ++i) asHex = data[i] < 0x20 || data[i] > 0x7e;
        if (asHex) {
            V object = values_.object();
            values_.set(object, "hex", values_.hex(data, size));
            return put(std::move(object));
        }
        if (text == describe::Text::Chars) return put(values_.text(reinterpret_cast<const char *>(data), size));
        put(values_.hex(data, size));
    }

    void numbers(const describe::Numbers &numbers) override {
        V list = values_.array();
        for (uint32_t i = 0; i < numbers.count; ++i) {
            if (numbers.parts == 1) {
                values_.append(list, values_.number(numbers.at(i, 0)));
                continue;
            }
            V pair = values_.array();
            values_.append(pair, values_.number(numbers.at(i, 0)));
            values_.append(pair, values_.number(numbers.at(i, 1)));
            values_.append(list, std::move(pair));
        }
        put(std::move(list));
    }

private:
    // An object or array being filled, and the member it goes to.
    struct Open {
        V value;
        const char *key;
        bool object;
    };

    void open(V container, bool object) { open_.push_back({std::move(container), key_, object}); }
    void close() {
        Open done = std::move(open_.back());
        open_.pop_back();
        key_ = done.key;
        put(std::move(done.value));
    }
    void put(V value) {
        if (open_.empty()) {
            result_ = std::move(value);
            printed_ = true;
        } else if (open_.back().object) {
            values_.set(open_.back().value, key_, std::move(value));
        } else {
            values_.append(open_.back().value, std::move(value));
        }
    }

    Values &values_;
    std::vector<Open> open_;
    const char *key_ = "";
    V result_;
    bool printed_ = false;
};

} // namespace trov
