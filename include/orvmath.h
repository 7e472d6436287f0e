/* orv scalar math: the error layer behind the library's own cos, sin, log
 * and sqrt (declared by <math.h>; exported under the version node
 * ORV_MATH_7.0, so a program gets them when it resolves them from orv).
 *
 * log and sqrt report a pole (log of +-0) or a domain error (log of a
 * negative number or -inf, sqrt below -0) through __libm_error_support.
 * What happens is set by _LIB_VERSIONZMT:
 *   3 (default)  errno only: 34 for the pole, 33 for a domain error
 *  -1            nothing
 *   2            errno as for 3; log of zero returns -inf
 *   0            the hook gets a record (log: -HUGE, sqrt: 0.0); if it
 *                returns 0, a message on stderr and errno 33
 *   other        the hook gets a record (log: -inf, sqrt: NaN); if it
 *                returns 0, errno 33
 * The hook may replace the record's retval, which is then returned. The
 * default hooks return 1. Messages are translated through the catalogue
 * "libm.cat" when one opens. None of this is thread-safe. */
#ifndef ORVMATH_H
#define ORVMATH_H

#include "orvtypes.h"

ORV_EXTERN_C_BEGIN

/* Record types: 1 domain error, 2 singularity. */
typedef struct {
    int type;
    const char* name;
    double arg1, arg2, retval;
} OrvMathException;
typedef struct {
    int type;
    const char* name;
    float arg1, arg2, retval;
} OrvMathExceptionF;
typedef struct {
    int type;
    const char* name;
    long double arg1, arg2, retval;
} OrvMathExceptionL;

/* A hook receives a pointer to the record of its element type. */
typedef int (*OrvMatherrFunction)(void* exc);

extern ORV_API int _LIB_VERSIONZMT;
extern ORV_API OrvMatherrFunction __libm_pmatherr, __libm_pmatherrf, __libm_pmatherrl;

/* The default hooks: return 1. */
ORV_API int matherr(void* exc);
ORV_API int matherrf(void* exc);
ORV_API int matherrl(void* exc);

/* Installs fn and returns the address of the hook pointer; a null fn puts
 * the default hook back and returns it. */
ORV_API void* __libm_setusermatherr(OrvMatherrFunction fn);
ORV_API void* __libm_setusermatherrf(OrvMatherrFunction fn);
ORV_API void* __libm_setusermatherrl(OrvMatherrFunction fn);

/* Reports error `code` of the whole error layer (2: log of zero, 3: log of
 * a negative number, 49: sqrt of a negative number) for the arguments at
 * arg1 and arg2; the result at retval may be replaced. */
ORV_API void __libm_error_support(const void* arg1, const void* arg2, void* retval, int code);

ORV_EXTERN_C_END

#endif
