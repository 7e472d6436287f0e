/* Unprefixed prototypes of the vector kernels and workers that the library
 * exports under tier prefixes. Never defined under these names: they give
 * the signatures from which the tier declarations are generated. */
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

ORV_EXTERN_C_END
