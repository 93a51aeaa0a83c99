// The event codec tables: event code -> the operations that size and decode
// an event body. Events travel only towards the host, so each row holds the
// decode side alone; the encode-side mirrors live beside each layout and are
// not registered. 120 codes in the FU table, from two families: events with
// fixed fields and a byte string, and events with an attribute list (or a
// structure). Codes that share a layout share its operations. The FP family
// has no events: its table is the terminator row alone.
#include "engine/Tables.h"
#include "events/AttributeEvents.h"
#include "events/StringEvents.h"

namespace trov {
namespace {

// The row of an event code, from whichever family decodes it. A code that
// neither family knows dereferences null here and fails to compile.
consteval EventCodecRow eventRow(uint16_t code) {
    const EventCodec *c = findStringEventOps(code);
    if (c == nullptr) c = findAttributeEventCodec(code);
    return {code, 0, c->decCalc, c->decode};
}

static_assert(kStringEventCodecs.size() + kAttributeEventCodecs.size() == 120,
              "the two event families together decode 120 codes");

} // namespace

extern constexpr EventCodecRow FUEventCodecTable[] = {
    eventRow(0x0002), eventRow(0x0003), eventRow(0x0004), eventRow(0x0005), eventRow(0x000B), eventRow(0x000E),
    eventRow(0x000F), eventRow(0x0010), eventRow(0x0011), eventRow(0x0012), eventRow(0x0013), eventRow(0x0014),
    eventRow(0x0018), eventRow(0x001A), eventRow(0x0028), eventRow(0x002D), eventRow(0x0030), eventRow(0x0035),
    eventRow(0x0036), eventRow(0x0037), eventRow(0x0038), eventRow(0x0039), eventRow(0x003A), eventRow(0x003C),
    eventRow(0x003F), eventRow(0x0040), eventRow(0x0041), eventRow(0x0042), eventRow(0x0043), eventRow(0x0044),
    eventRow(0x0045), eventRow(0x0046), eventRow(0x0047), eventRow(0x0048), eventRow(0x0049), eventRow(0x004A),
    eventRow(0x0052), eventRow(0x0053), eventRow(0x0054), eventRow(0x0055), eventRow(0x0056), eventRow(0x0057),
    eventRow(0x0058), eventRow(0x0059), eventRow(0x005A), eventRow(0x005B), eventRow(0x005C), eventRow(0x005D),
    eventRow(0x005E), eventRow(0x005F), eventRow(0x006A), eventRow(0x0071), eventRow(0x0078), eventRow(0x007A),
    eventRow(0x007D), eventRow(0x0081), eventRow(0x0082), eventRow(0x0098), eventRow(0x0099), eventRow(0x009A),
    eventRow(0x009B), eventRow(0x009C), eventRow(0x009D), eventRow(0x009E), eventRow(0x009F), eventRow(0x00A0),
    eventRow(0x00A1), eventRow(0x00A2), eventRow(0x00A3), eventRow(0x00A4), eventRow(0x00A5), eventRow(0x00A6),
    eventRow(0x00A7), eventRow(0x00A8), eventRow(0x00A9), eventRow(0x00AA), eventRow(0x00AB), eventRow(0x00AC),
    eventRow(0x00AE), eventRow(0x00AF), eventRow(0x00B0), eventRow(0x00B1), eventRow(0x00B2), eventRow(0x00B3),
    eventRow(0x00B4), eventRow(0x00B5), eventRow(0x00B6), eventRow(0x00B7), eventRow(0x00B8), eventRow(0x00B9),
    eventRow(0x00BA), eventRow(0x00BB), eventRow(0x00BC), eventRow(0x00BD), eventRow(0x00BE), eventRow(0x00BF),
    eventRow(0x00C0), eventRow(0x00C1), eventRow(0x00C2), eventRow(0x00C3), eventRow(0x00C4), eventRow(0x00C5),
    eventRow(0x00D9), eventRow(0x00DA), eventRow(0x00DB), eventRow(0x00DE), eventRow(0x00DF), eventRow(0x00E0),
    eventRow(0x00E1), eventRow(0x00E2), eventRow(0x012C), eventRow(0x012D), eventRow(0x012E), eventRow(0x012F),
    eventRow(0x0130), eventRow(0x0131), eventRow(0x0132), eventRow(0x0133), eventRow(0x0135), eventRow(0x0136),
    {0, 0, nullptr, nullptr},
};

extern constexpr EventCodecRow FPEventCodecTable[] = {
    {0, 0, nullptr, nullptr},
};

// The lookup indexes of the two tables above, built at compile time.
extern constexpr RowIndex FUEventCodecIndex = kRowIndexOf<FUEventCodecTable>.view();
extern constexpr RowIndex FPEventCodecIndex = kRowIndexOf<FPEventCodecTable>.view();

} // namespace trov
