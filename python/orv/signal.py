"""Convolution of signals and images.

Non-contiguous inputs are copied.
"""

import numpy as np

from . import _orv

__all__ = ["convolve", "convolve2d_valid"]


def _real(a, name):
    a = np.asarray(a)
    if a.dtype.kind not in "biuf":
        raise TypeError("%s: real numeric array expected, got dtype %s" % (name, a.dtype))
    return a


def _pair(a, b, ndim, name):
    """Two real non-empty arrays of ndim dimensions, or the error saying why not."""
    a = _real(a, name)
    b = _real(b, name)
    if a.ndim != ndim or b.ndim != ndim:
        raise ValueError("%s: %d-D arrays expected, got %d-D and %d-D" % (name, ndim, a.ndim, b.ndim))
    if a.size == 0 or b.size == 0:
        raise ValueError("%s: empty input" % name)
    return a, b


def convolve(a, b):
    """Full linear convolution of two 1-D arrays, like ``numpy.convolve(a, b)``
    (``mode="full"``): length len(a) + len(b) - 1.

    Two float32 inputs are convolved in single precision (float32 result);
    any other real numeric dtypes in double precision (float64 result).
    """
    a, b = _pair(a, b, 1, "convolve")
    if a.dtype == np.float32 and b.dtype == np.float32:
        return _orv.conv_32f(np.ascontiguousarray(a), np.ascontiguousarray(b))
    return _orv.conv_64f(np.ascontiguousarray(a, np.float64), np.ascontiguousarray(b, np.float64))


def convolve2d_valid(a, k):
    """Valid 2-D convolution, like ``scipy.signal.convolve2d(a, k, mode="valid")``.

    One input must be at least as large as the other in both axes (else
    ``ValueError``); the result has shape (|Ha - Hk| + 1, |Wa - Wk| + 1).
    The library computes in single precision: inputs are converted to
    float32 and the result is float32 whatever the input dtype. Large
    kernels go through FFT products, with an error relative to
    sum |a| |k| of the order of the float32 epsilon times log2 of the size.
    """
    a, k = _pair(a, k, 2, "convolve2d_valid")
    fits = (a.shape[0] >= k.shape[0] and a.shape[1] >= k.shape[1]) or \
           (k.shape[0] >= a.shape[0] and k.shape[1] >= a.shape[1])
    if not fits:
        raise ValueError("convolve2d_valid: one input must be at least as large as the other in both "
                         "axes, got %s and %s" % (a.shape, k.shape))
    return _orv.conv_valid_32f(np.ascontiguousarray(a, np.float32), np.ascontiguousarray(k, np.float32))
