// The band threshold: every element against the rule at every sampled
// length and pair of offsets, in place, with NaN, signed zeros and equal
// levels; nothing written outside the destination, or at all on failure.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>

#include "orvs.h"
#include "support/tier_registry.h"
#include "vector/reduce_testing.h"

namespace {

using namespace orv::test::reduce;
using Thresh = orv::test::TierFn<decltype(orvsThreshold_LTValGTVal_64f)>;

const double kNaN = std::numeric_limits<double>::quiet_NaN();

struct Levels {
    double levelLT, valueLT, levelGT, valueGT;
};

double band(double x, const Levels& l) {
    if (l.levelGT < x) return l.valueGT;
    if (l.levelLT <= x) return x;
    return l.valueLT;
}

// A destination inside a buffer of marker bytes, to see every byte written.
class Marked {
public:
    Marked(int n, size_t offset) : bytes_(n * sizeof(double) + 128, 0xA5), n_(n) {
        auto base = reinterpret_cast<uintptr_t>(bytes_.data());
        begin_ = ((base + 63) & ~uintptr_t{63}) + offset - base;
    }
    double* data() { return reinterpret_cast<double*>(bytes_.data() + begin_); }
    double get(int i) const {
        double x;
        std::memcpy(&x, bytes_.data() + begin_ + i * sizeof(double), sizeof x);
        return x;
    }
    bool outside_untouched() const {
        for (size_t i = 0; i < bytes_.size(); ++i)
            if ((i < begin_ || i >= begin_ + n_ * sizeof(double)) && bytes_[i] != 0xA5) return false;
        return true;
    }
    bool all_untouched() const {
        for (auto b : bytes_)
            if (b != 0xA5) return false;
        return true;
    }

private:
    std::vector<unsigned char> bytes_;
    int n_;
    size_t begin_;
};

class ThresholdTest : public ::testing::TestWithParam<Thresh> {};

TEST_P(ThresholdTest, EveryElementByTheRule) {
    const Levels cases[] = {{-2, -100, 3, 100}, {1, -5, 1, 5}, {-0.0, 7, 0.0, -7}};
    for (const Levels& l : cases)
        for (int n : short_lengths()) {
            auto v = small_ints<double>(n, n);
            for (int i = 0; i < n; i += 7) v[i] = i % 3 ? -0.0 : kNaN;
            for (auto [os, od] : {std::pair<size_t, size_t>{0, 0}, {8, 8}, {0, 8}, {8, 0}, {16, 24}, {3, 0},
                                  {0, 5}, {13, 29}, {4, 12}}) {
                Placed<double> src(v, os);
                Marked dst(n, od);
                ASSERT_EQ(GetParam().fn(src.data(), dst.data(), n, l.levelLT, l.valueLT, l.levelGT, l.valueGT),
                          orvStsNoErr);
                for (int i = 0; i < n; ++i)
                    ASSERT_TRUE(same_bits(dst.get(i), band(v[i], l)))
                        << "element " << i << " of " << n << " offsets " << os << "," << od;
                ASSERT_TRUE(dst.outside_untouched()) << "len " << n << " offsets " << os << "," << od;
                ASSERT_EQ(std::memcmp(src.values().data(), v.data(), n * sizeof(double)), 0);
            }
        }
}

// A NaN fails both comparisons and becomes valueLT; equal levels keep an
// element equal to them; each element is read before it is written.
TEST_P(ThresholdTest, NaNEqualLevelsAndInPlace) {
    for (size_t off : offsets()) {
        std::vector<double> v = {kNaN, 1.0, 0.5, 2.0, -kNaN, 1.0, 3.0};
        Placed<double> a(v, off);
        ASSERT_EQ(GetParam().fn(a.data(), a.data(), 7, 1.0, -1.0, 1.0, 9.0), orvStsNoErr);
        EXPECT_EQ(a.values(), (std::vector<double>{-1, 1, -1, 9, -1, 1, 9})) << "offset " << off;
    }
    // One element at a destination that is an odd multiple of 8.
    Marked one(1, 8);
    double x = 5;
    ASSERT_EQ(GetParam().fn(&x, one.data(), 1, 0, 0, 1, 1), orvStsNoErr);
    EXPECT_EQ(one.get(0), 1);
    EXPECT_TRUE(one.outside_untouched());
}

TEST_P(ThresholdTest, ChecksInOrderAndWritesNothingOnFailure) {
    double x[2] = {1, 2};
    Marked dst(2, 0);
    EXPECT_EQ(GetParam().fn(nullptr, dst.data(), 0, 5, 0, 1, 0), orvStsNullPtrErr);
    EXPECT_EQ(GetParam().fn(x, nullptr, 2, 0, 0, 1, 0), orvStsNullPtrErr);
    EXPECT_EQ(GetParam().fn(x, dst.data(), 0, 5, 0, 1, 0), orvStsSizeErr);
    EXPECT_EQ(GetParam().fn(x, dst.data(), -3, 0, 0, 1, 0), orvStsSizeErr);
    EXPECT_EQ(GetParam().fn(x, dst.data(), 2, 1.5, 0, 1, 0), orvStsThresholdErr);
    EXPECT_TRUE(dst.all_untouched());
    EXPECT_EQ(GetParam().fn(x, dst.data(), 2, kNaN, 0, 1, 0), orvStsNoErr);
}

ORV_INSTANTIATE_TIERS(ThresholdTest, orvsThreshold_LTValGTVal_64f);

}  // namespace
