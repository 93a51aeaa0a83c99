// Records as JSON: the record printer (RecordPrinter.h), which says how
// each value of the walk looks, making nlohmann JSON values.
#include "RecordJson.h"

#include "RecordPrinter.h"

namespace trov {
namespace {

struct JsonValues {
    Json object() { return Json::object(); }
    Json array() { return Json::array(); }
    Json number(uint32_t value) { return Json(value); }
    Json null() { return Json(nullptr); }
    Json text(const char *data, size_t size) { return Json(std::string(data, size)); }
    Json hex(const uint8_t *data, size_t size) { return Json(hexString(data, size)); }
    void set(Json &object, const char *key, Json &&value) { object[key] = std::move(value); }
    void append(Json &array, Json &&value) { array.push_back(std::move(value)); }
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
    JsonValues values;
    RecordPrinter<JsonValues> printer(values);
    describe::readRecord(layout, record, version, request, printer);
    Json j = printer.take();
    return j.is_null() ? Json::object() : j;
}

} // namespace trov
