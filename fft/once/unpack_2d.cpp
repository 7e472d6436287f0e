// Unpacks a 2-D Pack spectrum into the H x (W/2 + 1) complex half spectrum.
// Plain moves, compiled once for every tier.
#include "orvi.h"

namespace {

bool power_of_two(int n) { return n > 0 && (n & (n - 1)) == 0; }

const Orv32f* row_at(const Orv32f* p, int step, int r) {
    return reinterpret_cast<const Orv32f*>(reinterpret_cast<const char*>(p) + static_cast<long>(step) * r);
}

// Term l (0 .. H-1) of the transform of a real column c stored down the
// column in 1-D Pack order: row 0 real DC, row H-1 real Nyquist, rows
// (2l-1, 2l) the real and imaginary parts of term l; the upper half is the
// conjugate of the lower.
Orv32fc real_column(const Orv32f* p, int step, int h, int c, int l) {
    if (l == 0) return {row_at(p, step, 0)[c], 0.0f};
    if (2 * l == h) return {row_at(p, step, h - 1)[c], 0.0f};
    const bool upper = 2 * l > h;
    const int k = upper ? h - l : l;
    const Orv32f re = row_at(p, step, 2 * k - 1)[c], im = row_at(p, step, 2 * k)[c];
    return {re, upper ? -im : im};
}

}  // namespace

extern "C" ORV_API OrvStatus orviFFTUnpack_Pack_32fc(const Orv32f* pSrc, int srcStep, Orv32fc* pDst, int dstStep,
                                                     OrviSize roiSize) {
    if (pSrc == nullptr || pDst == nullptr) return orvStsNullPtrErr;
    const int w = roiSize.width, h = roiSize.height;
    if (!power_of_two(w) || !power_of_two(h)) return orvStsSizeErr;
    const int half = w / 2;
    if (srcStep < 4L * w || dstStep < 8L * (half + 1)) return orvStsStepErr;
    for (int l = 0; l < h; ++l) {
        Orv32fc* out = reinterpret_cast<Orv32fc*>(reinterpret_cast<char*>(pDst) + static_cast<long>(dstStep) * l);
        out[0] = real_column(pSrc, srcStep, h, 0, l);
        if (half >= 1) out[half] = real_column(pSrc, srcStep, h, w - 1, l);
        // Column pair (2u-1, 2u) holds term u of every row's transform,
        // transformed down the column as complex values: row l is F[l][u].
        const Orv32f* row = row_at(pSrc, srcStep, l);
        for (int u = 1; u < half; ++u) out[u] = {row[2 * u - 1], row[2 * u]};
    }
    return orvStsNoErr;
}
