// Attribute lists: attributes framed inside record values and events.
//
// Wire: a u16 count, then per attribute a u16 identifier, a u16 value length
// and the value, which its attribute's codec writes in array form. Record:
// an AttributeList head {u16 count, entries @+8}; the AttributeEntry array
// and then each value's record follow in the data area, each at a multiple
// of 8 (entries null when the count is 0).
//
// Lists nested in record values and lists in events keep different rules:
//   nested  coded at the packet's version, one nesting level deeper than the
//           value holding them (deeper than kMaxNesting: 5); an identifier
//           without a codec is refused (10); a value is read within its
//           announced length and must fill it exactly (else 5).
//   event   coded at version 0, at the top nesting level; an identifier
//           without a codec travels as `length` raw bytes (copied; bytes the
//           packet lacks read as 0, the size pass lets only the last run
//           short); a codec reads its value from the cursor and consumes
//           what it reads: the announced length plays no part.
// Either way a decoded entry keeps its length only for a raw value (0 when
// a codec decoded it), and the reported size is the entries (16 bytes each)
// and each value's size rounded up to 8.
#pragma once

#include "engine/FieldWalker.h"

namespace trov {

extern const ListOps kNestedAttributeLists;
extern const ListOps kEventAttributeLists;

} // namespace trov
