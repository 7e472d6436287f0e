/* orv shared types: element types, image geometry, the status type, the
 * version record, processor feature bits and processor type codes.
 * Plain C99; usable from C++. */
#ifndef ORVTYPES_H
#define ORVTYPES_H

#include <stdint.h>
#include "orvstatus.h"

#ifdef __cplusplus
#define ORV_EXTERN_C_BEGIN extern "C" {
#define ORV_EXTERN_C_END }
#else
#define ORV_EXTERN_C_BEGIN
#define ORV_EXTERN_C_END
#endif

#define ORV_API __attribute__((visibility("default")))

typedef int32_t OrvStatus;

typedef uint8_t Orv8u;
typedef int8_t Orv8s;
typedef uint16_t Orv16u;
typedef int16_t Orv16s;
typedef uint32_t Orv32u;
typedef int32_t Orv32s;
typedef uint64_t Orv64u;
typedef int64_t Orv64s;
typedef float Orv32f;
typedef double Orv64f;
typedef struct { Orv32f re; Orv32f im; } Orv32fc;
typedef struct { Orv64f re; Orv64f im; } Orv64fc;

/* Algorithm hint: a plain 32-bit value; functions that take one name what
 * each value selects. */
typedef int32_t OrvHintAlgorithm;
enum { orvAlgHintNone = 0, orvAlgHintFast = 1, orvAlgHintAccurate = 2 };

/* Width then height, in pixels. */
typedef struct { int width; int height; } OrviSize;
/* x then y. */
typedef struct { int x; int y; } OrviPoint;

/* Version record of one domain as built for one tier. tierCode holds the
 * tier's two letters and two NUL bytes. */
typedef struct {
    int major;
    int minor;
    int buildMajor;
    int buildNumber;
    char tierCode[4];
    const char* libName;
    const char* versionText;
    const char* buildDate;
} OrvLibVersion;

/* Rounding of the float-to-integer conversions. The argument is a plain
 * int: 0 and 1 select the first two, any other value rounds half away from
 * zero. */
enum { orvRndZero = 0, orvRndNear = 1, orvRndFinancial = 2 };

/* Feature bits of orvGetCpuFeatures and orvGetEnabledCpuFeatures. */
#define orvFeatMMX    0x1ULL
#define orvFeatSSE    0x2ULL
#define orvFeatSSE2   0x4ULL
#define orvFeatSSE3   0x8ULL
#define orvFeatSSSE3  0x10ULL
#define orvFeatMOVBE  0x20ULL
#define orvFeatSSE41  0x40ULL
#define orvFeatSSE42  0x80ULL
#define orvFeatAVX    0x100ULL
#define orvFeatAVXOS  0x200ULL
#define orvFeatAES    0x400ULL
#define orvFeatCLMUL  0x800ULL
#define orvFeatFamB   0x1000ULL

/* Processor type codes: the result of orvGetCpuType and the argument of
 * orvInitCpu / orvStaticInitCpu. */
typedef enum {
    orvCpuUnknown = 0,
    orvCpuT1 = 1, orvCpuT2, orvCpuT3, orvCpuT4, orvCpuT5, orvCpuT6,
    orvCpuT7, orvCpuT8, orvCpuT9, orvCpuT10, orvCpuT11,
    orvCpuT32 = 32,
    orvCpuT33 = 33, /* family 6 model 15 with SSSE3, up to 2 cores */
    orvCpuT34 = 34, /* family 6 model 15 with SSSE3, more than 2 cores */
    orvCpuT35 = 35, /* family 6 model 23 with SSE4.1 */
    orvCpuT36 = 36, /* family 6 model 28 with SSSE3 and MOVBE */
    orvCpuT37 = 37, /* family 6 model 26 with SSE4.2 */
    orvCpuT38 = 38,
    orvCpuSSE = 64,
    orvCpuSSE2 = 65,
    orvCpuSSE3 = 66,
    orvCpuSSSE3 = 67,
    orvCpuSSE41 = 68,
    orvCpuSSE42 = 69,
    orvCpuAVX = 70,
    orvCpuT71 = 71,
    orvCpuX8664 = 96
} OrvCpuType;

#endif
