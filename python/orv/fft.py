"""Fast Fourier transforms of power-of-two length, numpy's conventions.

Transforms run over the last axis (the last two for :func:`rfft2` and
:func:`irfft2`); leading axes are a batch. Lengths must be powers of two.
``norm`` is "backward" (the inverse divides by n, the default), "ortho" (both
divide by sqrt(n)) or "forward" (the forward divides by n).

Precision follows the input: complex64 and float32 are transformed in single
precision, complex128 and float64 in double precision; other numeric dtypes
are converted to the double-precision type. The library's complex transforms
are single precision only: complex128 transforms are computed exactly in
double precision from two real double-precision transforms (the real and
imaginary parts). The library's 2-D transform is single precision: float64
2-D transforms are composed of double-precision 1-D ones (see :func:`rfft2`).

Specifications of the transforms are built on first use and kept per
(kind, length, norm, tier); calls from several threads share them.
Non-contiguous inputs are copied.
"""

import operator

import numpy as np

from . import _orv

__all__ = ["fft", "ifft", "rfft", "irfft", "rfft2", "irfft2"]

_FLAGS = {
    None: _orv.FFT_DIV_INV,
    "backward": _orv.FFT_DIV_INV,
    "ortho": _orv.FFT_DIV_SQRT,
    "forward": _orv.FFT_DIV_FWD,
}


def _flag(norm):
    flag = _FLAGS.get(norm) if isinstance(norm, (str, type(None))) else None
    if flag is None:
        raise ValueError('norm must be "backward", "ortho" or "forward", got %r' % (norm,))
    return flag


def _pow2(n, what="FFT length"):
    n = operator.index(n)
    if n < 1 or n & (n - 1):
        raise ValueError("%s must be a power of two, got %d" % (what, n))
    return n


def _numeric(a, name):
    a = np.asarray(a)
    if a.dtype.kind not in "biufc":
        raise TypeError("%s: numeric array expected, got dtype %s" % (name, a.dtype))
    return a


def _fit(a, n, axis):
    """a truncated or zero-padded to n along axis."""
    m = a.shape[axis]
    if m == n:
        return a
    if m > n:
        index = [slice(None)] * a.ndim
        index[axis] = slice(0, n)
        return a[tuple(index)]
    pad = [(0, 0)] * a.ndim
    pad[axis] = (0, n - m)
    return np.pad(a, pad)


def _complex(a, name):
    a = _numeric(a, name)
    if a.ndim < 1:
        raise ValueError("%s: at least one dimension expected" % name)
    single = a.dtype in (np.complex64, np.float32, np.float16)
    return a, (np.complex64 if single else np.complex128)


def _c2c(a, norm, inverse, name):
    flag = _flag(norm)
    a, dtype = _complex(a, name)
    _pow2(a.shape[-1])
    f = _orv.fft_c64 if dtype is np.complex64 else _orv.fft_c128
    return f(np.ascontiguousarray(a, dtype), inverse, flag)


def fft(a, norm="backward"):
    """Discrete Fourier transform over the last axis, like ``numpy.fft.fft``.

    complex64 (and float32) input gives complex64, computed in single
    precision; complex128 and every other numeric dtype give complex128,
    computed in double precision. The length must be a power of two.
    """
    return _c2c(a, norm, False, "fft")


def ifft(a, norm="backward"):
    """Inverse of :func:`fft` over the last axis, like ``numpy.fft.ifft``."""
    return _c2c(a, norm, True, "ifft")


def rfft(a, n=None, norm="backward"):
    """Transform of real input over the last axis, like ``numpy.fft.rfft``.

    Returns the n//2 + 1 non-negative-frequency terms. ``n`` truncates or
    zero-pads the input and must be a power of two (default: the length of
    the last axis). float32 input gives complex64; float64 and integer input
    give complex128 (double precision). Complex input is a ``TypeError``.
    """
    flag = _flag(norm)
    a = _numeric(a, "rfft")
    if a.dtype.kind == "c":
        raise TypeError("rfft: real input expected, got %s" % a.dtype)
    if a.ndim < 1:
        raise ValueError("rfft: at least one dimension expected")
    n = _pow2(a.shape[-1] if n is None else n)
    a = _fit(a, n, -1)
    if a.dtype == np.float32 or a.dtype == np.float16:
        return _orv.rfft_32f(np.ascontiguousarray(a, np.float32), flag)
    return _orv.rfft_64f(np.ascontiguousarray(a, np.float64), flag)


def irfft(a, n=None, norm="backward"):
    """Inverse of :func:`rfft`, like ``numpy.fft.irfft``: real output of
    length ``n`` (default 2 * (m - 1) for m input values), which must be a
    power of two. The input is truncated or zero-padded to n//2 + 1 values;
    the imaginary parts of the first and (for n > 1) last are ignored.
    complex64 (and float32) input gives float32; other input float64.
    """
    flag = _flag(norm)
    a, dtype = _complex(a, "irfft")
    if n is None:
        n = 2 * (a.shape[-1] - 1)
    n = _pow2(n, "irfft output length")
    a = _fit(a, n // 2 + 1, -1)
    f = _orv.irfft_32f if dtype is np.complex64 else _orv.irfft_64f
    return f(np.ascontiguousarray(a, dtype), n, flag)


def _shape2(a, s, name):
    if a.ndim < 2:
        raise ValueError("%s: at least two dimensions expected" % name)
    if s is None:
        return None
    s = tuple(int(x) for x in s)
    if len(s) != 2:
        raise ValueError("%s: s must have two entries" % name)
    return s


def _columns_c128(a, inverse, flag):
    """The complex128 transform of every column (axis -2) of a."""
    t = np.ascontiguousarray(np.swapaxes(a, -1, -2))
    return np.ascontiguousarray(np.swapaxes(_orv.fft_c128(t, inverse, flag), -1, -2))


def rfft2(a, s=None, norm="backward"):
    """2-D transform of real input over the last two axes, like
    ``numpy.fft.rfft2``: shape (..., H, W//2 + 1).

    ``s = (H, W)`` truncates or zero-pads the input; both must be powers of
    two. float32 input uses the library's 2-D real transform (single
    precision) and gives complex64. float64 and integer input give
    complex128 computed in double precision by the library's 1-D transforms
    (real rows, then complex columns), since the 2-D transform has no
    double-precision form.
    """
    flag = _flag(norm)
    a = _numeric(a, "rfft2")
    if a.dtype.kind == "c":
        raise TypeError("rfft2: real input expected, got %s" % a.dtype)
    s = _shape2(a, s, "rfft2")
    if s is not None:
        a = _fit(_fit(a, s[0], -2), s[1], -1)
    _pow2(a.shape[-2], "FFT height")
    _pow2(a.shape[-1], "FFT width")
    if a.dtype == np.float32 or a.dtype == np.float16:
        return _orv.rfft2_32f(np.ascontiguousarray(a, np.float32), flag)
    return _columns_c128(_orv.rfft_64f(np.ascontiguousarray(a, np.float64), flag), False, flag)


def irfft2(a, s=None, norm="backward"):
    """Inverse of :func:`rfft2`, like ``numpy.fft.irfft2``: real output of
    shape ``s = (H, W)`` (default (m0, 2 * (m1 - 1)) for input (..., m0,
    m1)), both powers of two. complex64 (and float32) input gives float32
    (2-D transform, single precision); other input gives float64 computed
    in double precision (complex columns, then real rows).
    """
    flag = _flag(norm)
    a, dtype = _complex(a, "irfft2")
    s = _shape2(a, s, "irfft2")
    if s is None:
        s = (a.shape[-2], 2 * (a.shape[-1] - 1))
    h = _pow2(s[0], "irfft2 output height")
    w = _pow2(s[1], "irfft2 output width")
    a = _fit(_fit(a, h, -2), w // 2 + 1, -1)
    if dtype is np.complex64:
        return _orv.irfft2_32f(np.ascontiguousarray(a, np.complex64), w, flag)
    return _orv.irfft_64f(_columns_c128(a.astype(np.complex128), True, flag), w, flag)
