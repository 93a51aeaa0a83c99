// The library's own tables, their indexes and the view TROV_InitCoder
// installs (the view and the lookups: engine/Tables.h).
#pragma once

#include "TrovCodec.h"
#include "api/RecordLayout.h"
#include "engine/HeaderCodec.h"
#include "engine/Tables.h"

namespace trov {

// ---- the tables, each defined in its family ----------------------------------

extern const AttributeCodecRow AttributeCodecTable[];
extern const DataTypeCodecRow DataTypeCodecTable[];
extern const BodyCodecRow FUCodecTable[];
extern const BodyCodecRow FPCodecTable[];
extern const MethodCodecRow FUMethodCodecTable[];
extern const MethodCodecRow FPMethodCodecTable[];
extern const EventCodecRow FUEventCodecTable[];
extern const EventCodecRow FPEventCodecTable[];

// Their indexes, each defined beside its table.
extern const RowIndex AttributeCodecIndex;
extern const RowIndex DataTypeCodecIndex;
extern const RowIndex FUCodecIndex;
extern const RowIndex FPCodecIndex;
extern const RowIndex FUMethodCodecIndex;
extern const RowIndex FPMethodCodecIndex;
extern const RowIndex FUEventCodecIndex;
extern const RowIndex FPEventCodecIndex;

// The stand-alone row for method codes of 0x2000 and above that have no row.
extern const MethodCodecRow RawMethodCodecRow;

// The built-in tables with their indexes: the view TROV_InitCoder installs.
const Tables &builtinTables();

} // namespace trov
