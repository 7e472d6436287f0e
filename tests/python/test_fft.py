import numpy as np
import pytest

import orv
from conftest import assert_fft_close

EPS32 = np.finfo(np.float32).eps
EPS64 = np.finfo(np.float64).eps
NORMS = ["backward", "ortho", "forward"]


@pytest.mark.parametrize("n", [1, 2, 8, 64, 1024])
@pytest.mark.parametrize("dtype,eps", [(np.complex64, EPS32), (np.complex128, EPS64)])
@pytest.mark.parametrize("norm", NORMS)
def test_fft_ifft(tier, rng, n, dtype, eps, norm):
    z = (rng.standard_normal((3, n)) + 1j * rng.standard_normal((3, n))).astype(dtype)
    f = orv.fft.fft(z, norm=norm)
    assert f.dtype == dtype
    assert_fft_close(f, np.fft.fft(z.astype(np.complex128), norm=norm), n, eps)
    g = orv.fft.ifft(z, norm=norm)
    assert_fft_close(g, np.fft.ifft(z.astype(np.complex128), norm=norm), n, eps)


@pytest.mark.parametrize("n", [1, 2, 4, 16, 256, 4096])
@pytest.mark.parametrize("dtype,eps", [(np.float32, EPS32), (np.float64, EPS64)])
@pytest.mark.parametrize("norm", NORMS)
def test_rfft_irfft(tier, rng, n, dtype, eps, norm):
    x = rng.standard_normal((2, 3, n)).astype(dtype)
    X = orv.fft.rfft(x, norm=norm)
    assert X.dtype == np.result_type(dtype, np.complex64) and X.shape == (2, 3, n // 2 + 1)
    assert_fft_close(X, np.fft.rfft(x.astype(np.float64), norm=norm), n, eps)
    # The inverse of a spectrum that is not one of a real signal: imaginary
    # parts of the first and last terms are ignored, as numpy does.
    Y = X + 1j * rng.standard_normal(X.shape).astype(dtype)
    y = orv.fft.irfft(Y, n=n, norm=norm)
    assert y.dtype == dtype and y.shape == x.shape
    assert_fft_close(y, np.fft.irfft(Y.astype(np.complex128), n=n, norm=norm), n, eps, c=8)


@pytest.mark.parametrize("m,n", [(10, 8), (5, 8), (9, None), (33, 16)])
def test_rfft_n_pads_and_truncates(rng, m, n):
    x = rng.standard_normal(m) if n is not None else rng.standard_normal(16)
    ref = np.fft.rfft(x, n=n)
    assert_fft_close(orv.fft.rfft(x, n=n), ref, len(ref), EPS64)
    X = rng.standard_normal(m) + 1j * rng.standard_normal(m)
    ref = np.fft.irfft(X, n=n)
    assert_fft_close(orv.fft.irfft(X, n=n), ref, len(ref), EPS64, c=8)


@pytest.mark.parametrize("shape", [(1, 1), (1, 8), (8, 1), (2, 2), (4, 16), (32, 8), (2, 3, 16, 16)])
@pytest.mark.parametrize("dtype,eps", [(np.float32, EPS32), (np.float64, EPS64)])
@pytest.mark.parametrize("norm", NORMS)
def test_rfft2_irfft2(tier, rng, shape, dtype, eps, norm):
    x = rng.standard_normal(shape).astype(dtype)
    n = shape[-1] * shape[-2]
    X = orv.fft.rfft2(x, norm=norm)
    assert X.dtype == np.result_type(dtype, np.complex64)
    assert_fft_close(X, np.fft.rfft2(x.astype(np.float64), norm=norm), n, eps, c=8)
    # Not the spectrum of a real image: numpy's inverse over columns, then rows.
    Y = (X + 1j * rng.standard_normal(X.shape)).astype(X.dtype)
    s = shape[-2:]
    y = orv.fft.irfft2(Y, s=s, norm=norm)
    assert y.dtype == dtype and y.shape == shape
    assert_fft_close(y, np.fft.irfft2(Y.astype(np.complex128), s=s, norm=norm), n, eps, c=8)


def test_rfft2_s_pads_and_truncates(rng):
    x = rng.standard_normal((6, 12)).astype(np.float32)
    X = orv.fft.rfft2(x, s=(8, 16))
    assert_fft_close(X, np.fft.rfft2(x, s=(8, 16)), 128, EPS32, c=8)
    assert orv.fft.irfft2(X).shape == (8, 16)
    assert_fft_close(orv.fft.irfft2(X, s=(4, 8)), np.fft.irfft2(X, s=(4, 8)), 32, EPS32, c=8)


def test_noncontiguous_and_integer_input(rng):
    x = rng.standard_normal((16, 32))[:, ::2].T
    assert_fft_close(orv.fft.rfft(x), np.fft.rfft(x), 16, EPS64)
    i = np.arange(8)
    assert orv.fft.fft(i).dtype == np.complex128
    assert_fft_close(orv.fft.fft(i), np.fft.fft(i), 8, EPS64)


@pytest.mark.parametrize("call,exc,text", [
    (lambda: orv.fft.fft(np.ones(12)), ValueError, "12"),
    (lambda: orv.fft.rfft(np.ones(8), n=6), ValueError, "6"),
    (lambda: orv.fft.irfft(np.ones(4)), ValueError, "6"),
    (lambda: orv.fft.rfft2(np.ones((8, 3))), ValueError, "3"),
    (lambda: orv.fft.rfft2(np.ones(8)), ValueError, "two dimensions"),
    (lambda: orv.fft.fft(np.ones(8), norm="none"), ValueError, "norm"),
    (lambda: orv.fft.rfft(np.ones(8, complex)), TypeError, "real"),
    (lambda: orv.fft.fft(np.array(["a"] * 8)), TypeError, "numeric"),
    (lambda: orv.fft.fft(np.float64(1.0)), ValueError, "dimension"),
])
def test_fft_errors(call, exc, text):
    with pytest.raises(exc, match=text):
        call()
