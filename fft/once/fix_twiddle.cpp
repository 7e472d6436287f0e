// The fixed base sine table of order 10, shared by every specification of
// order up to 10: T[k] = sin(2 pi k / 1024), k = 0 .. 256, T[256] = 1, then
// zero padding. Computed while compiling: a long double series on the first
// octant (sine) and the second (cosine of the complementary angle), rounded
// once to double; the single-precision table rounds that double to float.
#include <array>

#include "orvsfft.h"

namespace {

constexpr long double kPi = 3.141592653589793238462643383279502884L;

// Taylor series of sin (odd = true) or cos about 0, |x| <= pi/4, summed from
// the smallest term up.
constexpr long double series(long double x, bool odd) {
    long double terms[32] = {};
    long double term = odd ? x : 1.0L;
    int n = 0;
    for (int i = odd ? 1 : 0; n < 32 && term != 0.0L; i += 2) {
        terms[n++] = term;
        term = -term * x * x / ((i + 1) * (i + 2));
    }
    long double s = 0.0L;
    while (n > 0) s += terms[--n];
    return s;
}

constexpr std::array<double, 264> make_table() {
    std::array<double, 264> t{};
    for (int k = 0; k <= 256; ++k)
        t[k] = static_cast<double>(k <= 128 ? series(k * kPi / 512, true) : series((256 - k) * kPi / 512, false));
    return t;
}

constexpr std::array<double, 264> kTable = make_table();
static_assert(kTable[0] == 0.0 && kTable[256] == 1.0 && kTable[257] == 0.0);

}  // namespace

#define ORV_E4(f, b) f(b), f(b + 1), f(b + 2), f(b + 3)
#define ORV_E16(f, b) ORV_E4(f, b), ORV_E4(f, b + 4), ORV_E4(f, b + 8), ORV_E4(f, b + 12)
#define ORV_E64(f, b) ORV_E16(f, b), ORV_E16(f, b + 16), ORV_E16(f, b + 32), ORV_E16(f, b + 48)
#define ORV_E256(f, b) ORV_E64(f, b), ORV_E64(f, b + 64), ORV_E64(f, b + 128), ORV_E64(f, b + 192)
#define ORV_AS_DOUBLE(i) kTable[i]
#define ORV_AS_FLOAT(i) static_cast<float>(kTable[i])

const Orv32f fft_fix_twiddle_table_32f[264] = {ORV_E256(ORV_AS_FLOAT, 0), ORV_E4(ORV_AS_FLOAT, 256),
                                               ORV_E4(ORV_AS_FLOAT, 260)};
const Orv64f fft_fix_twiddle_table_64f[260] = {ORV_E256(ORV_AS_DOUBLE, 0), ORV_E4(ORV_AS_DOUBLE, 256)};
