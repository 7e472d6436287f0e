// Kernels and hooks of the elementary functions, exported under tier
// prefixes. Unprefixed prototypes only: they give the signatures.
#pragma once

#include "orvtypes.h"

ORV_EXTERN_C_BEGIN

/* exp of each element, pairs first, a last odd element apart; no checks. */
void ownsExp64f_M7(const Orv64f* pSrc, Orv64f* pDst, int len);
/* The same on float input widened to double. */
void ownsExp32f64f_M7(const Orv32f* pSrc, Orv64f* pDst, int len);

/* Error hooks of the vector functions (e9): called with a status code
 * (orvStsSingularity, ...) and the position of the element; the result at
 * pRes1[index] is read back after the call. */
void vqkdError(int code, int index, const Orv64f* pArg1, const Orv64f* pArg2, Orv64f* pRes1, Orv64f* pRes2,
               const char* pFuncName);
void vqksError(int code);

ORV_EXTERN_C_END
