// Status messages: one constant table, scanned linearly. An unknown code is
// looked up again as orvStsUnknownStatusCodeErr, by a second pass.
#include "orvcore.h"
#include "state.h"

namespace {

struct Message {
    OrvStatus code;
    const char* text;
};

constexpr Message orvMsg[] = {
#include "status_table.inc"
};

}  // namespace

ORV_FRAME_API const char* orvGetStatusString(OrvStatus status) {
    for (;;) {
        for (const auto& m : orvMsg)
            if (m.code == status) return m.text;
        status = orvStsUnknownStatusCodeErr;
    }
}
