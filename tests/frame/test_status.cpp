// Status messages: the lookup, its fallback, and the names of the constants.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "orvcore.h"

namespace {

TEST(Status, KnownCodes) {
    EXPECT_STREQ(orvGetStatusString(orvStsNoErr), "orvStsNoErr: No error, it's OK");
    EXPECT_STREQ(orvGetStatusString(-9999), "orvStsNotSupportedModeErr: The requested mode is currently not supported");
    EXPECT_STREQ(orvGetStatusString(47), "orvStsRepetitiveSrcData: DC: The source data is too repetitive");
    EXPECT_STREQ(orvGetStatusString(-9700), "Error at loading of %s library");
    EXPECT_STREQ(orvGetStatusString(orvStsNonVeltaCpu), "orvStsNonVeltaCpu: The target cpu is not Genuine Velta");
}

TEST(Status, UnknownCodesShareTheFallbackText) {
    const char* unknown = orvGetStatusString(orvStsUnknownStatusCodeErr);
    EXPECT_STREQ(unknown, "orvStsUnknownStatusCodeErr: Unknown Status Code");
    for (int code : {12345, -165, -68, -84, -89, -225, -9699, -9703, -9997, 48, -10000}) {
        SCOPED_TRACE(code);
        EXPECT_EQ(orvGetStatusString(code), unknown);
    }
}

// Every message that has a name is named by its constant: scan every code in
// the table's range and check the text before the colon against the
// constant's value for a sample of constants the library returns.
TEST(Status, ConstantsMatchTheirMessages) {
    struct {
        int value;
        const char* name;
    } named[] = {
        {orvStsNoErr, "orvStsNoErr"},           {orvStsNoOperation, "orvStsNoOperation"},
        {orvStsNonVeltaCpu, "orvStsNonVeltaCpu"}, {orvStsCpuMismatch, "orvStsCpuMismatch"},
        {orvStsNotSupportedCpu, "orvStsNotSupportedCpu"}, {orvStsUnknownCacheSize, "orvStsUnknownCacheSize"},
        {orvStsNoMemErr, "orvStsNoMemErr"},     {orvStsSizeErr, "orvStsSizeErr"},
        {orvStsNullPtrErr, "orvStsNullPtrErr"}, {orvStsMemAllocErr, "orvStsMemAllocErr"},
        {orvStsStepErr, "orvStsStepErr"},       {orvStsFftOrderErr, "orvStsFftOrderErr"},
        {orvStsFftFlagErr, "orvStsFftFlagErr"}, {orvStsContextMatchErr, "orvStsContextMatchErr"},
        {orvStsThresholdErr, "orvStsThresholdErr"}, {orvStsSingularity, "orvStsSingularity"},
        {orvStsNotSupportedModeErr, "orvStsNotSupportedModeErr"},
    };
    for (const auto& n : named) {
        std::string text = orvGetStatusString(n.value);
        EXPECT_EQ(text.substr(0, text.find(':')), n.name);
    }
    int known = 0;
    const char* unknown = orvGetStatusString(orvStsUnknownStatusCodeErr);
    for (int code = -10000; code <= 100; ++code)
        if (orvGetStatusString(code) != unknown || code == orvStsUnknownStatusCodeErr) ++known;
    EXPECT_EQ(known, 269);
}

}  // namespace
