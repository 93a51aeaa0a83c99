// Records as JSON, field by field, through the library's layout description.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include <nlohmann/json.hpp>

#include "TrovLayout.h"

namespace trov {

using Json = nlohmann::ordered_json;

// The "fields" object of a record of `layout`: one member per field, nested
// values, event lists and method parameters included. `version` is the
// header's version byte (nested layouts are looked up with it); `request`
// says which side of a method's parameters a method body carries.
Json recordToJson(const TrovLayoutInfo &layout, const void *record, uint8_t version, bool request);

// `size` bytes as lowercase hex, two digits a byte ("a7e5").
std::string hexString(const uint8_t *data, size_t size);

} // namespace trov
