"""orv.dask: chunked filtering equals the in-memory call on the whole image."""

import subprocess
import sys
import zlib

import numpy as np
import pytest

da = pytest.importorskip("dask.array")
dask = pytest.importorskip("dask")

import orv  # noqa: E402
import orv.dask  # noqa: E402

H, W = 30, 75

# Chunkings of the (H, W) image: seams inside, blocks of the kernel's size,
# blocks smaller than the kernel, uneven chunks with slivers of one pixel.
CHUNKS = [
    (16, 40),
    (5, 5),
    (2, 3),
    ((12, 1, 17), (9, 1, 33, 32)),
]

# (kernel shape, anchor): centred, first cell, last cell (the valid
# contract), asymmetric and even-sized kernels, single rows and columns.
KERNELS = [
    ((3, 3), None),
    ((4, 6), (5, 3)),
    ((1, 7), (2, 0)),
    ((7, 2), (0, 0)),
]

# dtype and channels (None: a 2-D image).
LAYOUTS = [
    (np.float32, None),
    (np.float32, 3),
    (np.uint8, None),
    (np.uint8, 4),
    (np.uint16, 1),
    (np.int16, 3),
]


def _image(rng, dtype, channels, shape=(H, W)):
    shape = shape if channels is None else shape + (channels,)
    if dtype == np.float32:
        return rng.standard_normal(shape).astype(np.float32)
    info = np.iinfo(dtype)
    return rng.integers(max(info.min, -3000), min(info.max, 3000), size=shape, endpoint=True).astype(dtype)


def _kernel(rng, shape, dtype):
    k = rng.standard_normal(shape).astype(np.float32)
    # Integer images: weights of sum one keep results mostly unsaturated.
    return k if dtype == np.float32 else np.abs(k) / np.abs(k).sum()


def _chunks(chunks, channels):
    return chunks if channels is None else tuple(chunks) + (-1,)


@pytest.mark.parametrize("border,cval", [("constant", 7), ("replicate", 0), ("wrap", 0)])
@pytest.mark.parametrize("kshape,anchor", KERNELS)
@pytest.mark.parametrize("dtype,channels", LAYOUTS)
def test_filter2d_equals_whole_image(dtype, channels, kshape, anchor, border, cval):
    rng = np.random.default_rng(zlib.crc32(repr((np.dtype(dtype).name, channels, kshape, border, cval)).encode()))
    img = _image(rng, dtype, channels)
    k = _kernel(rng, kshape, dtype)
    whole = orv.image.filter2d(img, k, anchor=anchor, border=border, cval=cval)
    for chunks in CHUNKS:
        lazy = orv.dask.filter2d(da.from_array(img, chunks=_chunks(chunks, channels)), k, anchor, border, cval)
        assert lazy.shape == img.shape and lazy.dtype == img.dtype
        got = lazy.compute(scheduler="synchronous")
        assert got.dtype == img.dtype
        np.testing.assert_array_equal(got, whole, err_msg=f"chunks {chunks}")


@pytest.mark.parametrize("channels", [None, 3])
@pytest.mark.parametrize("kshape", [(3, 3), (5, 5), (3, 9)])
def test_filter2d_narrow_chunks_every_tier(tier, kshape, channels):
    # Each tier's routes for narrow regions sum in another order; column
    # chunks much narrower than the kernel must still give the whole image's bits.
    rng = np.random.default_rng(11)
    img = _image(rng, np.float32, channels, shape=(20, 150))
    k = _kernel(rng, kshape, np.float32)
    whole = orv.image.filter2d(img, k, border="replicate")
    for chunks in [(7, 4), (20, 9), ((3, 17), (60, 1, 80, 9))]:
        lazy = orv.dask.filter2d(da.from_array(img, chunks=_chunks(chunks, channels)), k, border="replicate")
        np.testing.assert_array_equal(lazy.compute(scheduler="synchronous"), whole, err_msg=f"chunks {chunks}")


@pytest.mark.parametrize("scheduler", ["threads", "synchronous"])
@pytest.mark.parametrize("border", ["constant", "wrap"])
def test_filter2d_schedulers(scheduler, border):
    rng = np.random.default_rng(5)
    img = _image(rng, np.float32, None, shape=(300, 260))
    k = _kernel(rng, (5, 7), np.float32)
    whole = orv.image.filter2d(img, k, border=border)
    lazy = orv.dask.filter2d(da.from_array(img, chunks=(64, 50)), k, border=border)
    with dask.config.set(scheduler=scheduler):
        got = lazy.compute()
        total = float(lazy.sum(dtype=np.float64).compute())
    np.testing.assert_array_equal(got, whole)
    assert total == pytest.approx(float(whole.sum(dtype=np.float64)), rel=1e-12)


def test_filter2d_stays_lazy():
    # A 6 GB image: building the graph and computing a corner must touch
    # only the blocks that corner needs.
    big = da.ones((40_000, 40_000), dtype=np.float32, chunks=(4096, 4096))
    lazy = orv.dask.filter2d(big, np.full((3, 3), 1.0 / 9, np.float32), border="replicate")
    assert lazy.shape == big.shape and lazy.chunks == big.chunks
    corner = lazy[:5, :5].compute()
    np.testing.assert_allclose(corner, 1.0, rtol=1e-6)


def test_filter2d_one_chunk_wrap_reaches_across():
    # Rows shorter than the kernel's reach become one chunk, along which the
    # in-memory call wraps; a kernel taller than the image wraps more than once.
    rng = np.random.default_rng(2)
    img = _image(rng, np.float32, None, shape=(4, 90))
    k = _kernel(rng, (9, 3), np.float32)
    whole = orv.image.filter2d(img, k, border="wrap")
    got = orv.dask.filter2d(da.from_array(img, chunks=(2, 30)), k, border="wrap").compute()
    np.testing.assert_array_equal(got, whole)


@pytest.mark.parametrize("args,kwargs,error", [
    ((np.zeros((8, 8), np.float64), np.ones((3, 3))), {}, TypeError),
    ((np.zeros((8, 8, 2), np.float32), np.ones((3, 3))), {}, ValueError),
    ((np.zeros(8, np.float32), np.ones((3, 3))), {}, ValueError),
    ((np.zeros((8, 8), np.float32), np.ones(3)), {}, ValueError),
    ((np.zeros((8, 8), np.float32), np.ones((3, 3))), {"anchor": (3, 0)}, ValueError),
    ((np.zeros((8, 8), np.float32), np.ones((3, 3))), {"border": "reflect"}, ValueError),
    ((np.zeros((8, 8), np.uint8), np.ones((3, 3))), {"cval": 300}, ValueError),
])
def test_filter2d_rejects_when_called(args, kwargs, error):
    # Bad arguments fail when the graph is built, not inside a task.
    img, k = args
    with pytest.raises(error):
        orv.dask.filter2d(da.from_array(img, chunks=4), k, **kwargs)


@pytest.mark.parametrize("kshape", [(1, 1), (3, 3), (5, 12), (1, 30), (14, 14)])
def test_convolve2d_valid_small_kernels_exact(tier, kshape):
    # Fewer than 225 taps: each block takes the whole image's filter route
    # (in every tier, whose routes change at different widths).
    rng = np.random.default_rng(kshape[0] * 100 + kshape[1])
    a = rng.standard_normal((60, 100)).astype(np.float32)
    k = rng.standard_normal(kshape).astype(np.float32)
    whole = orv.signal.convolve2d_valid(a, k)
    for chunks in [(16, 40), (3, 3), ((30, 1, 29), (50, 3, 47))]:
        lazy = orv.dask.convolve2d_valid(da.from_array(a, chunks=chunks), k)
        assert lazy.shape == whole.shape and lazy.dtype == np.float32
        np.testing.assert_array_equal(lazy.compute(scheduler="synchronous"), whole, err_msg=f"chunks {chunks}")


@pytest.mark.parametrize("kshape", [(15, 15), (9, 40), (33, 33), (60, 8)])
@pytest.mark.parametrize("chunks", [(40, 64), (7, 5), (150, 170)])
def test_convolve2d_valid_large_kernels_close(kshape, chunks):
    # Larger kernels go through FFT tiles sized by the block: agreement to
    # single-precision rounding, and with scipy in double precision.
    scipy_signal = pytest.importorskip("scipy.signal")
    rng = np.random.default_rng(7)
    a = rng.standard_normal((150, 170)).astype(np.float32)
    k = rng.standard_normal(kshape).astype(np.float32)
    whole = orv.signal.convolve2d_valid(a, k)
    got = orv.dask.convolve2d_valid(da.from_array(a, chunks=chunks), k).compute()
    bound = 1e-6 * np.abs(a).max() * np.abs(k).sum()
    assert got.shape == whole.shape
    assert np.abs(got - whole).max() <= bound
    ref = scipy_signal.convolve2d(a.astype(np.float64), k.astype(np.float64), mode="valid")
    assert np.abs(got - ref).max() <= bound


@pytest.mark.parametrize("scheduler", ["threads", "synchronous"])
def test_convolve2d_valid_schedulers_and_chunks(scheduler):
    rng = np.random.default_rng(9)
    a = rng.standard_normal((200, 210)).astype(np.float32)
    k = rng.standard_normal((5, 4)).astype(np.float32)
    lazy = orv.dask.convolve2d_valid(da.from_array(a, chunks=(50, 70)), k)
    # Output block (i, j) is input block (i, j); the last ones lose kH-1, kW-1.
    assert lazy.chunks == ((50, 50, 50, 46), (70, 70, 67))
    with dask.config.set(scheduler=scheduler):
        np.testing.assert_array_equal(lazy.compute(), orv.signal.convolve2d_valid(a, k))


@pytest.mark.parametrize("ashape,kshape", [((10, 10), (11, 3)), ((10, 10), (3, 11)), ((10, 10, 1), (3, 3))])
def test_convolve2d_valid_rejects(ashape, kshape):
    with pytest.raises(ValueError):
        orv.dask.convolve2d_valid(da.zeros(ashape, dtype=np.float32, chunks=5), np.ones(kshape, np.float32))


def test_import_without_dask():
    # orv and orv.dask import without dask; the functions say what is missing.
    code = (
        "import sys; sys.modules['dask'] = None; sys.modules['dask.array'] = None\n"
        "import numpy as np, orv, orv.dask\n"
        "try:\n"
        "    orv.dask.filter2d(np.zeros((4, 4), np.float32), np.ones((3, 3)))\n"
        "except ImportError as e:\n"
        "    print('ImportError', e)\n"
    )
    out = subprocess.run([sys.executable, "-c", code], capture_output=True, text=True, timeout=60)
    assert out.returncode == 0, out.stderr
    assert "ImportError" in out.stdout and "dask" in out.stdout
