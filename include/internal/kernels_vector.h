// Unprefixed prototypes of the vector kernels: never defined, they give the
// signature from which orvkernels.inc declares each tier's variant. Kernels
// check nothing: counts are at least 1 and pointers valid.
#pragma once

#include "orvtypes.h"

ORV_EXTERN_C_BEGIN

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

ORV_EXTERN_C_END
