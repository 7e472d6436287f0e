import numpy as np
import pytest
import scipy.ndimage
import scipy.signal

import orv

EPS32 = np.finfo(np.float32).eps
EPS64 = np.finfo(np.float64).eps


@pytest.mark.parametrize("na,nb", [(1, 1), (7, 3), (3, 7), (100, 31), (1000, 257),
                                   (8191, 5), (63, 12289), (4096, 2), (20000, 100)])
@pytest.mark.parametrize("dtype,eps", [(np.float32, EPS32), (np.float64, EPS64)])
def test_convolve(tier, rng, na, nb, dtype, eps):
    a = rng.standard_normal(na).astype(dtype)
    b = rng.standard_normal(nb).astype(dtype)
    got = orv.signal.convolve(a, b)
    assert got.dtype == dtype
    ref = np.convolve(a.astype(np.float64), b.astype(np.float64))
    bound = 8 * eps * np.log2(na + nb) * np.convolve(np.abs(a), np.abs(b)).max()
    assert np.abs(got - ref).max() <= bound


def test_convolve_dtypes_and_errors():
    assert orv.signal.convolve([1, 2, 3], np.array([1, 1], np.float32)).dtype == np.float64
    np.testing.assert_array_equal(orv.signal.convolve([1, 2, 3], [0, 1]), [0, 1, 2, 3])
    with pytest.raises(ValueError):
        orv.signal.convolve(np.ones((2, 2)), np.ones(2))
    with pytest.raises(ValueError):
        orv.signal.convolve([], [1.0])
    with pytest.raises(TypeError):
        orv.signal.convolve([1j], [1.0])


@pytest.mark.parametrize("ashape,kshape", [
    ((1, 1), (1, 1)), ((9, 7), (3, 3)), ((3, 3), (9, 7)), ((20, 33), (20, 1)),
    ((64, 48), (5, 9)), ((100, 90), (20, 17)), ((60, 60), (40, 40)),
])
def test_convolve2d_valid(tier, rng, ashape, kshape):
    a = rng.standard_normal(ashape)
    k = rng.standard_normal(kshape)
    got = orv.signal.convolve2d_valid(a, k)
    assert got.dtype == np.float32
    ref = scipy.signal.convolve2d(a, k, mode="valid")
    bound = 8 * EPS32 * np.log2(a.size + k.size) * scipy.signal.convolve2d(np.abs(a), np.abs(k), "valid").max()
    assert got.shape == ref.shape and np.abs(got - ref).max() <= bound


def test_convolve2d_valid_needs_containment():
    with pytest.raises(ValueError, match="at least as large"):
        orv.signal.convolve2d_valid(np.ones((3, 5)), np.ones((5, 3)))


def _reference(img, k, anchor, border, cval):
    """filter2d computed in float64 with scipy.ndimage (correlation with the flipped kernel)."""
    kh, kw = k.shape
    ax, ay = anchor
    mode = {"constant": "constant", "replicate": "nearest", "wrap": "wrap"}[border]
    x = img.astype(np.float64)
    chans = [x] if x.ndim == 2 else [x[..., c] for c in range(x.shape[2])]
    # correlate's origin o puts the kernel centre at kh//2 + o: the flipped
    # kernel's row for source row y + ay - i is kh - 1 - i, centre kh - 1 - ay.
    origin = (kh - 1 - ay - kh // 2, kw - 1 - ax - kw // 2)
    out = [scipy.ndimage.correlate(c, k[::-1, ::-1], mode=mode, cval=cval, origin=origin) for c in chans]
    return out[0] if x.ndim == 2 else np.stack(out, -1)


INFO = {np.float32: (-1.0, 1.0), np.uint8: (0, 255), np.uint16: (0, 65535), np.int16: (-32768, 32767)}


@pytest.mark.parametrize("dtype", [np.float32, np.uint8, np.uint16, np.int16])
@pytest.mark.parametrize("shape,kshape,anchor", [
    ((1, 1), (1, 1), None), ((17, 23), (3, 3), None), ((17, 23, 3), (5, 2), (0, 4)),
    ((12, 9, 4), (4, 6), None), ((30, 31, 1), (7, 7), (6, 6)), ((5, 40), (9, 1), None),
])
@pytest.mark.parametrize("border", ["constant", "replicate", "wrap"])
def test_filter2d(tier, rng, dtype, shape, kshape, anchor, border):
    lo, hi = INFO[dtype]
    img = rng.uniform(lo, hi, shape).astype(dtype)
    k = rng.uniform(-1, 1, kshape) / np.prod(kshape) * 2
    cval = 3
    got = orv.image.filter2d(img, k, anchor=anchor, border=border, cval=cval)
    assert got.dtype == dtype and got.shape == img.shape
    kh, kw = kshape
    ref = _reference(img, k.astype(np.float32), anchor or (kw // 2, kh // 2), border, cval)
    if dtype == np.float32:
        assert np.abs(got - ref).max() <= 8 * EPS32 * np.log2(k.size + 1) * np.abs(k).sum() * max(abs(lo), hi)
    else:
        # Rounded and saturated; tiers may differ by one.
        assert np.abs(got.astype(np.float64) - np.clip(np.round(ref), lo, hi)).max() <= 1


def test_filter2d_last_anchor_is_valid_convolution(rng):
    img = rng.standard_normal((20, 25)).astype(np.float32)
    k = rng.standard_normal((4, 6))
    valid = scipy.signal.convolve2d(img, k, mode="valid")
    for border in ["constant", "replicate", "wrap"]:
        out = orv.image.filter2d(img, k, anchor=(5, 3), border=border, cval=7)
        np.testing.assert_allclose(out[:17, :20], valid, atol=1e-4)


@pytest.mark.parametrize("args,exc", [
    ((np.ones((4, 4)), np.ones((3, 3))), TypeError),                  # float64 image
    ((np.ones((4, 4, 2), np.float32), np.ones((3, 3))), ValueError),   # two channels
    ((np.ones(4, np.float32), np.ones((3, 3))), ValueError),
    ((np.ones((4, 4), np.float32), np.ones(3)), ValueError),
    ((np.ones((4, 4), np.float32), np.ones((3, 3), complex)), TypeError),
])
def test_filter2d_errors(args, exc):
    with pytest.raises(exc):
        orv.image.filter2d(*args)
    img = np.ones((4, 4), np.uint8)
    with pytest.raises(ValueError):
        orv.image.filter2d(img, np.ones((3, 3)), anchor=(3, 0))
    with pytest.raises(ValueError):
        orv.image.filter2d(img, np.ones((3, 3)), border="mirror")
    with pytest.raises(ValueError):
        orv.image.filter2d(img, np.ones((3, 3)), cval=256)
