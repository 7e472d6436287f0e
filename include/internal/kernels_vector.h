// Unprefixed prototypes of the vector kernels: never defined, they give the
// signature from which orvkernels.inc declares each tier's variant. Kernels
// check nothing: counts are at least 1 and pointers valid.
#pragma once

#include "orvtypes.h"

ORV_EXTERN_C_BEGIN

/* Reductions: each returns its result; none checks its arguments. */
Orv64f ownorvsSum_64f(const Orv64f* pSrc, int len);
Orv64f ownorvsMean_64f(const Orv64f* pSrc, int len);
Orv32f ownorvsSum_32f(const Orv32f* pSrc, int len, OrvHintAlgorithm hint);
Orv64f ownorvsSum_32f_Fast(const Orv32f* pSrc, int len);
Orv64f ownorvsSum_32f_Accur(const Orv32f* pSrc, int len);
Orv64f ownorvsMax_64f(const Orv64f* pSrc, int len);
void MiniMax_64f_M7(const Orv64f* pSrc, int len, Orv64f* pMin, Orv64f* pMax);
/* Two passes: the maximum, then the first element with its bit pattern.
 * Called for a pSrc that is a multiple of 8 and len >= 32. */
void ownsMaxIndx_64f_M7(const Orv64f* pSrc, int len, Orv64f* pMax, int* pIndx);
void ownsMaxIndx_64f_AVX(const Orv64f* pSrc, int len, Orv64f* pMax, int* pIndx);
Orv64f DotProd_64f(const Orv64f* pSrc1, const Orv64f* pSrc2, int len);
Orv64f ownsDotProd_32f64f_M7(const Orv32f* pSrc1, const Orv32f* pSrc2, int len);
Orv64f ownsDotProd_32f64f_N8(const Orv32f* pSrc1, const Orv32f* pSrc2, int len);
Orv64f ownsDotProd_32f64f_E9(const Orv32f* pSrc1, const Orv32f* pSrc2, int len);

/* Thresholds: the band clamp of orvsThreshold_LTValGTVal_64f. */
void ownorvsThreshGTValLTVal_64f(const Orv64f* pSrc, Orv64f* pDst, int len, const Orv64f* pLevelLT,
                                 const Orv64f* pValueLT, const Orv64f* pLevelGT, const Orv64f* pValueGT);

/* Fill and copy: byte kernels serve every element type. */
void ownsZero_8u(Orv8u* pDst, int bytes);
void ownsZero_8u_E9(Orv8u* pDst, int bytes);
void ownsCopy_8u(const Orv8u* pSrc, Orv8u* pDst, int bytes);
void ownsCopy_8u_E9(const Orv8u* pSrc, Orv8u* pDst, int bytes);
void ownsSet_32s(Orv32s val, Orv32s* pDst, int count);
void ownsSet_64s(Orv64s val, Orv64s* pDst, int count);
void ownsSet_32s_M7(const Orv32s* pVal, Orv32s* pDst, int count);
void ownsSet_64s_M7(const Orv64s* pVal, Orv64s* pDst, int count);
void ownsSet_32s_E9(const Orv32s* pVal, Orv32s* pDst, int count);

/* Element-wise arithmetic, as the public functions with val last. */
void ownsAdd_64f(const Orv64f* pSrc1, const Orv64f* pSrc2, Orv64f* pDst, int len);
void ownsAdd_64f_I(const Orv64f* pSrc, Orv64f* pSrcDst, int len);
void ownsAddC_64f_I(Orv64f* pSrcDst, int len, Orv64f val);
void ownsSub_64f(const Orv64f* pSrc1, const Orv64f* pSrc2, Orv64f* pDst, int len);
void ownsSub_64f_I(const Orv64f* pSrc, Orv64f* pSrcDst, int len);
void ownsSubC_64f_I(Orv64f* pSrcDst, int len, Orv64f val);
void ownsSubCRev_64f(const Orv64f* pSrc, Orv64f* pDst, int len, Orv64f val);
void ownsMul_64f_I(const Orv64f* pSrc, Orv64f* pSrcDst, int len);
void ownsMulC_64f(const Orv64f* pSrc, Orv64f* pDst, int len, Orv64f val);
void ownsMulC_64f_I(Orv64f* pSrcDst, int len, Orv64f val);
void ownsMulC_32f_I(Orv32f* pSrcDst, int len, Orv32f val);
void ownorvsSqr_64f(const Orv64f* pSrc, Orv64f* pDst, int len);

ORV_EXTERN_C_END
