// The four passes over any plan of the field model (Field.h).
//
// Encode size: adds up the wire bytes of a record (through the value codecs
// for values, attributes and lists). Encode: writes them; the cursor's
// writers refuse what does not fit. Decode size: checks that the packet
// holds every field (every count, length, identifier and type is tested
// before use), moves the cursor past the item and adds up the data area, in
// the protocol's 16-bit figure and the true extent. Decode: fills the fixed
// part and puts every field's data into the data area in field order, each
// piece at a multiple of 8; it trusts the size pass.
//
// The engine knows no table: whatever a field needs from above (the codec of
// an attribute identifier or a data type, the attribute lists) comes in
// through FieldEnv.
#pragma once

#include <cstdint>

#include "engine/CodecTypes.h"
#include "engine/Field.h"

namespace trov {

// An attribute list's four operations over its AttributeList head at `head`.
struct ListOps {
    TrovResult (*encCalc)(const void *head, uint8_t nesting, uint8_t version, WireSize &size);
    void (*encode)(PacketCursor &cursor, const void *head, uint8_t nesting, uint8_t version);
    // Reads the count itself; adds the entries and values to `data`.
    TrovResult (*decCalc)(PacketCursor &cursor, uint8_t nesting, uint8_t version, Sizes &data);
    // Fills the head; entries and values from `data` on; returns their end.
    uint8_t *(*decode)(PacketCursor &cursor, void *head, uint8_t *data, uint8_t nesting,
                       uint8_t version);
};

struct FieldEnv {
    uint8_t version = 0; // the packet's version byte: attribute fields and lists
    uint8_t nesting = 0; // the array flag of the value holding the fields (nesting depth)
    const ValueCodecOps *(*attribute)(uint16_t id, uint8_t version) = nullptr;
    const ValueCodecOps *(*dataType)(uint16_t type) = nullptr;
    const ListOps *attributes = nullptr;      // Attributes fields
    const ListOps *eventAttributes = nullptr; // EventAttributes fields
};

// Results: 0; 1 a null pointer behind a count (at once when the plan's rules
// say so, else only `nullData`), or a value's pointer null; 10 an attribute
// identifier without a codec; 13 a data type without a codec; a value
// codec's own result.
TrovResult walkEncCalc(const Plan &plan, const uint8_t *record, WireSize &size, const FieldEnv &env);
void walkEncode(const Plan &plan, PacketCursor &cursor, const uint8_t *record, const FieldEnv &env);
// Results: 0; 5 the packet ends early (or a value outgrows the room its
// type reserves, or a trailing block is longer than 65535 bytes); 10, 13, a
// codec's own result. On failure the cursor and `data` are unchanged.
TrovResult walkDecCalc(const Plan &plan, PacketCursor &cursor, Sizes &data, const FieldEnv &env);
// Returns the end of the data written (each piece rounded up to 8).
uint8_t *walkDecode(const Plan &plan, PacketCursor &cursor, uint8_t *record, uint8_t *data,
                    const FieldEnv &env);

} // namespace trov
