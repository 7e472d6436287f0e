/* orv image domain: rectangles of pixels given by first pixel, row step in
 * bytes and size. Names without a stub exist only under tier prefixes,
 * declared in orvtiers.h. */
#ifndef ORVI_H
#define ORVI_H

#include "orvcore.h"

ORV_EXTERN_C_BEGIN

/* Version record of the image domain for the tier that serves the call. */
ORV_API const OrvLibVersion* orviGetLibVersion(void);

ORV_EXTERN_C_END

#include "orvtiers.h"

#endif
