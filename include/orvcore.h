/* orv core: tier selection, processor identification, status messages,
 * machine facts, aligned memory and floating-point control.
 *
 * Every computation of the library exists once per instruction-set tier
 * (m7 SSE3, u8 and n8 SSSE3, y8 SSE4.1, e9 AVX) under a tier-prefixed name
 * (e9_orvsAdd_64f). The unprefixed dispatched names jump through a six-slot
 * table indexed by orvJumpIndexForMergedLibs, which the library sets when it
 * is loaded. The functions declared here exist once, without prefix. */
#ifndef ORVCORE_H
#define ORVCORE_H

#include "orvtypes.h"

ORV_EXTERN_C_BEGIN

/* ---- Tier selection ----------------------------------------------------
 * Jump index: 0 and 1 m7, 2 u8 (or n8), 3 n8 (or u8), 4 y8, 5 e9.
 * The LP word is 1 when index 3 was selected, else 0. */
extern ORV_API Orv32u orvJumpIndexForMergedLibs;
extern ORV_API Orv32u orvJumpIndexForMergedLibsLP;

/* Select the tier from the processor's features. Returns 0, 36
 * (orvStsNotSupportedCpu) without SSE3, or 20 (orvStsNonVeltaCpu) on a
 * processor of another vendor, whose tier is still chosen by features. */
ORV_API OrvStatus orvStaticInit(void);
ORV_API OrvStatus orvInit(void);
/* Force the tier of a processor type code without consulting the processor.
 * Returns 36 for codes 1..11, 64, 65, 96 and 21 (orvStsCpuMismatch) for an
 * unknown code, leaving the selection as it was; -1 means orvInit. */
ORV_API OrvStatus orvStaticInitCpu(int cpu);
ORV_API OrvStatus orvInitCpu(int cpu);

/* ---- Processor identification ----------------------------------------- */
/* Stores the cached feature word in *pFeaturesMask. If pCpuidInfoRegs is not
 * null it receives EAX, EBX, ECX, EDX of CPUID leaf 1; or, when
 * *pFeaturesMask held the 8 bytes "queryreg" on entry, of the leaf and
 * subleaf found in pCpuidInfoRegs[0] and pCpuidInfoRegs[2]. */
ORV_API OrvStatus orvGetCpuFeatures(Orv64u* pFeaturesMask, Orv32u* pCpuidInfoRegs);
/* Feature bits enabled for the selected tier. */
ORV_API Orv64u orvGetEnabledCpuFeatures(void);
/* Replaces the enabled mask; moves no tier. Always 0. */
ORV_API OrvStatus orvSetCpuFeaturesMask(Orv64u mask);
ORV_API OrvStatus orvEnableCpu(int cpuType);
ORV_API int orvIsCpuEnabled(int cpuType);
/* Classifies the processor into an OrvCpuType code. */
ORV_API int orvGetCpuType(void);

typedef struct {
    Orv32u family, stepping, model, typeBits;
    Orv32u featureEdx, cacheEax, cacheEdx;
    Orv32u hasMMX;
    Orv32u reserved;
    Orv32u hasSSE, hasSSE2, hasHTT, hasSSE3, hasLM64, hasSSSE3;
    Orv32u coresPerDie;
    Orv32u hasSSE41, hasSSE42;
    Orv32u extFamily, extModel;
    Orv32u hasMOVBE, hasAVX, hasOSXSAVE;
} OrvCpuIdent;

/* Low-level queries. Each runs CPUID afresh; results are 0 or 1 unless
 * stated. */
ORV_API int ownGetMaskFeatures(Orv64u* pFeatures);  /* 1, or 0 without CPUID */
ORV_API int ownGetFeature(Orv64u mask);             /* all of mask enabled? */
ORV_API int ownSetFeatureMask(Orv64u mask);         /* always 1 */
ORV_API void ownGetReg(Orv32u regs[4], int leaf, int subleaf);
ORV_API Orv64s orv_has_cpuid(void);
ORV_API Orv64s orv_max_cpuid_input(void);           /* highest standard leaf */
ORV_API Orv64s orv_has_rdtsc(void);
ORV_API Orv64s orv_is_mmx_extension(void);
ORV_API Orv64s orv_is_ssx_extension(void);
ORV_API Orv64s orv_is_wni_extension(void);
ORV_API Orv64s orv_is_htt_extension(void);
ORV_API Orv64s orv_is_pni_extension(void);
/* Leaf 0x80000001 EDX bit 29; without that leaf, the highest extended leaf. */
ORV_API Orv64s orv_is_lm64_extension(void);
ORV_API Orv64s orv_is_mni_extension(void);
ORV_API Orv64s orv_is_sse41_extension(void);
ORV_API Orv64s orv_is_sse42_extension(void);
ORV_API Orv64s orv_is_movbe(void);
ORV_API Orv64s orv_is_avx_extension(void);          /* AVX usable: CPU and OS */
ORV_API Orv64s orv_is_GenuineVelta(void);           /* the tuned-for vendor */
ORV_API void orv_get_tessera_ident(OrvCpuIdent* ident);
ORV_API Orv64u orv_get_tessera_counter(void);       /* time-stamp counter */

/* ---- Status messages -------------------------------------------------- */
/* Fixed English text of a status; unknown codes give the text of
 * orvStsUnknownStatusCodeErr. Never null. */
ORV_API const char* orvGetStatusString(OrvStatus status);

/* ---- Machine facts ---------------------------------------------------- */
/* Largest data or unified cache in bytes. 36 with size 0 on a processor of
 * another vendor, 37 when no cache was found. The answer is cached. */
ORV_API OrvStatus orvGetMaxCacheSizeB(int* pCacheSize);
ORV_API int ownGetCacheSize(const Orv32u* table);   /* leaf-2 search, or -1 */
ORV_API int orvGetNumCoresOnDie(void);
ORV_API int orv_get_cores_on_die(void);
ORV_API Orv64u orvGetCpuClocks(void);
/* Measures the time-stamp counter rate over two whole seconds (blocks up
 * to about 3 s). */
ORV_API OrvStatus orvGetCpuFreqMhz(int* pMhz);
/* The library is single-threaded: both return 1 (orvStsNoOperation). */
ORV_API OrvStatus orvSetNumThreads(int numThreads);
ORV_API OrvStatus orvGetNumThreads(int* pNumThreads);

/* ---- Memory ----------------------------------------------------------- */
/* Blocks aligned to 32 bytes, the raw pointer stored in the 8 bytes before
 * the block. Release with orvFree or orvsFree only. */
ORV_API void* orvMalloc(int length);
ORV_API void orvFree(void* p);
/* Replaceable C allocator; replace i_malloc and i_free as a pair before the
 * first allocation. */
extern ORV_API void* (*i_malloc)(__SIZE_TYPE__ size);
extern ORV_API void (*i_free)(void* p);
extern ORV_API void* (*i_calloc)(__SIZE_TYPE__ n, __SIZE_TYPE__ size);
extern ORV_API void* (*i_realloc)(void* p, __SIZE_TYPE__ size);
extern ORV_API int i_version;      /* 1 */
extern ORV_API int i_min_version;  /* 0 */

/* ---- Floating-point control -------------------------------------------
 * Words are passed as 64-bit integers; only their low bits count. The
 * portable word of orv_control87 reads the rounding control at 0x30 but
 * writes it from 0x300, and reads 24-bit precision as 64-bit. */
ORV_API Orv64u orv_control87(Orv64u newValue, Orv64u mask);
ORV_API Orv64u orv_status87(void);
ORV_API Orv64u orv_clear87(void);
ORV_API Orv64u orv_set_rcpc_fpu(Orv64u newBits, Orv64u mask);
ORV_API void orv_set_cw_fpu(Orv64u word);
ORV_API Orv64u ps_set_cw_fpu(Orv64u newBits, Orv64u mask);
ORV_API Orv64u ps_get_cw_fpu(void);
ORV_API Orv64u ps_get_sw_fpu(void);
ORV_API Orv64u ps_clear_fpu(void);
ORV_API Orv64u ps_set_ssx(Orv64u newBits, Orv64u mask);
ORV_API Orv64u ps_get_ssx(void);
/* Sets the MXCSR rounding bits (0, 0x2000, 0x4000, 0x6000) if they differ;
 * returns the old MXCSR for orv_set_cw_ssx. */
ORV_API Orv64u orv_set_rc_ssx(Orv64u rc);
ORV_API void orv_set_cw_ssx(Orv64u word);
ORV_API Orv64u orv_clear_ssx(void);
ORV_API int orv_tst_daz_ssx(void);
ORV_API int orv_isnan(double x);
ORV_API int orv_finite(double x);

ORV_EXTERN_C_END

#endif
