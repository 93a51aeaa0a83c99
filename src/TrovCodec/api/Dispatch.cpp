// The built-in view of the tables, and TROV_InitCoder, which installs it.
#include "api/Dispatch.h"

namespace trov {

const Tables &builtinTables() {
    static constexpr Tables kBuiltin{AttributeCodecTable,  DataTypeCodecTable, FUCodecTable,       FPCodecTable,
                                     FUMethodCodecTable,   FPMethodCodecTable, FUEventCodecTable,  FPEventCodecTable,
                                     &RawMethodCodecRow,   &AttributeCodecIndex, &DataTypeCodecIndex, &FUCodecIndex,
                                     &FPCodecIndex,        &FUMethodCodecIndex, &FPMethodCodecIndex, &FUEventCodecIndex,
                                     &FPEventCodecIndex};
    return kBuiltin;
}

} // namespace trov

extern "C" TROV_API int32_t TROV_InitCoder(void) {
    trov::installedTables.store(&trov::builtinTables(), std::memory_order_relaxed);
    return 1;
}
