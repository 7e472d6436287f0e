"""Elementwise and reducing operations on arrays of any shape.

float32 and float64 are computed in their own precision where the library
has the routine; other real numeric dtypes (integers, bool) are converted to
float64; complex input is a ``TypeError``. Non-contiguous inputs are copied.
"""

import numpy as np

from . import _orv

__all__ = ["exp", "sum", "dot"]

_sum = sum


def _real(a, name):
    a = np.asarray(a)
    if a.dtype == np.float32 or a.dtype == np.float64:
        return np.ascontiguousarray(a)
    if a.dtype.kind not in "biuf":
        raise TypeError("%s: real numeric array expected, got dtype %s" % (name, a.dtype))
    return np.ascontiguousarray(a, np.float32 if a.dtype == np.float16 else np.float64)


def exp(a):
    """Elementwise exponential, a new array of a's shape.

    float64 is computed by the library in double precision. The library has
    no single-precision exponential: float32 input is computed in double
    precision and rounded to float32. Infinities and NaNs give what
    ``numpy.exp`` gives; results underflow to 0 below about -708.4 and
    overflow to inf from about 709.44 (the library's limits).
    """
    a = _real(a, "exp")
    if a.dtype == np.float32:
        return _orv.exp_64f(a.astype(np.float64)).astype(np.float32)
    return _orv.exp_64f(a)


def sum(a):
    """Sum of all elements, as a Python float.

    float32 is summed by the library's accurate single-precision route (the
    result is a float32 value); float64 in double precision.
    """
    a = _real(a, "sum")
    if a.dtype == np.float32:
        return _orv.sum_32f(a)
    return _orv.sum_64f(a)


def dot(a, b):
    """Inner product of two 1-D arrays of equal length, as a Python float.

    Two float32 arrays are multiplied and summed in double precision
    (orvsDotProd_32f64f); otherwise both are converted to float64.
    """
    a = _real(a, "dot")
    b = _real(b, "dot")
    if a.ndim != 1 or b.ndim != 1:
        raise ValueError("dot: 1-D arrays expected, got %d-D and %d-D" % (a.ndim, b.ndim))
    if a.shape != b.shape:
        raise ValueError("dot: lengths differ (%d and %d)" % (a.size, b.size))
    if a.dtype == np.float32 and b.dtype == np.float32:
        return _orv.dot_32f(a, b)
    return _orv.dot_64f(a.astype(np.float64, copy=False), b.astype(np.float64, copy=False))
