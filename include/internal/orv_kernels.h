// Tier-prefixed declarations of the kernels and internal workers that the
// library exports. Each area declares the unprefixed prototypes of its
// kernels in kernels_<area>.h (never defined: they give the signature), and
// the generated orvkernels.inc declares every built tier variant from them.
#pragma once

#include "orvtiers.h"

#if __has_include("internal/kernels_vector.h")
#include "internal/kernels_vector.h"
#endif
#if __has_include("internal/kernels_convert.h")
#include "internal/kernels_convert.h"
#endif
#if __has_include("internal/kernels_elementary.h")
#include "internal/kernels_elementary.h"
#endif
#if __has_include("internal/kernels_fft.h")
#include "internal/kernels_fft.h"
#endif
#if __has_include("internal/kernels_image.h")
#include "internal/kernels_image.h"
#endif
#if __has_include("internal/kernels_conv.h")
#include "internal/kernels_conv.h"
#endif
#if __has_include("internal/kernels_filter.h")
#include "internal/kernels_filter.h"
#endif

ORV_EXTERN_C_BEGIN
#define ORV_TIER_DECL(tier, name) ORV_API __typeof__(name) tier##_##name;
#include "internal/orvkernels.inc"
#undef ORV_TIER_DECL
ORV_EXTERN_C_END
