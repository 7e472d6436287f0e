"""orv's 2-D filters over chunked dask arrays.

Each block is filtered by the in-memory function (:func:`orv.image.filter2d`,
:func:`orv.signal.convolve2d_valid`) after it has been extended by the rows and
columns its kernel reaches into the neighbouring blocks, so an image far larger
than memory is filtered block by block and the result has the same chunks as
the input.

``filter2d`` gives the same bits as the in-memory call on the whole image: each
output pixel is the same sum over the same neighbourhood, and the library picks
the summation route by the width of the region alone. The routes for narrow
regions sum in another order, so column chunks are kept at least
``max(32, kW + 16)`` wide (narrower ones are merged into their neighbour); rows
may be chunked freely.

dask is imported when a function is called, so ``import orv`` and
``import orv.dask`` work without it.
"""

import functools
import operator

import numpy as np

__all__ = ["filter2d", "convolve2d_valid"]

# dask's boundary for each border of orv.image.filter2d other than "constant".
_PERIODIC = {"wrap"}
_BORDERS = ("constant", "replicate", "wrap")


def _dask_array():
    try:
        import dask.array as da
    except ImportError as exc:  # pragma: no cover - exercised only without dask
        raise ImportError("orv.dask needs dask: install dask[array] (Debian: python3-dask)") from exc
    return da


def _min_width(kw):
    """Least column chunk for which every block takes the whole image's route."""
    return max(32, kw + 16)


def _widen(chunks, least):
    """Chunks along one axis, each at least ``least`` long (or one chunk)."""
    from dask.array.overlap import ensure_minimum_chunksize

    if len(chunks) == 1 or min(chunks) >= least:
        return chunks
    if sum(chunks) <= least:
        return (sum(chunks),)
    return ensure_minimum_chunksize(least, chunks)


def _kernel2d(kernel, what):
    k = np.asarray(kernel)
    if k.ndim != 2 or k.shape[0] < 1 or k.shape[1] < 1:
        raise ValueError(f"{what} must be a non-empty 2-D array, got shape {k.shape}")
    return np.ascontiguousarray(k)


def _filter_block(block, kernel, anchor, border, cval):
    from . import image

    return image.filter2d(block, kernel, anchor=anchor, border=border, cval=cval)


def filter2d(darr, kernel, anchor=None, border="constant", cval=0):
    """Convolve a dask image with ``kernel``, block by block.

    The dask counterpart of :func:`orv.image.filter2d`, with the same
    arguments and the same result (bit for bit) as that call on the whole image:

        out[y, x] = sum_{i<kH, j<kW} kernel[i, j] * ext[y + ay - i, x + ax - j]

    where ``ext`` is the image extended by ``border``.

    Parameters
    ----------
    darr : dask.array.Array or array-like
        Image of shape (H, W) or (H, W, C) with C in 1, 3, 4; dtype float32,
        uint8, uint16 or int16. The channel axis is made one chunk.
    kernel : 2-D array of float
        Coefficients (kH, kW), applied as a true convolution (not flipped back).
    anchor : (ax, ay), optional
        Column and row of the kernel cell that meets the output pixel; default
        ``(kW // 2, kH // 2)``. Each block is extended by ``kH - 1 - ay`` rows
        above, ``ay`` below, ``kW - 1 - ax`` columns on the left and ``ax`` on
        the right.
    border : {"constant", "replicate", "wrap"}
        How pixels outside the image are made: ``cval``, the nearest edge pixel,
        or the image repeated. Along an axis of one chunk the in-memory call
        extends the image itself; with "constant" and "replicate" the outer
        blocks are extended by the in-memory call too, with "wrap" dask copies
        the opposite edge ("periodic").
    cval : number
        The value outside the image for ``border="constant"``.

    Returns
    -------
    dask.array.Array
        Same shape and dtype as ``darr``. Column chunks narrower than
        ``max(32, kW + 16)`` and row chunks smaller than the kernel's reach
        are merged into their neighbours, so the chunks may differ from the
        input's.

    Examples
    --------
    >>> import dask.array as da, numpy as np, orv.dask
    >>> img = da.random.random((8192, 8192), chunks=2048).astype(np.float32)
    >>> blur = orv.dask.filter2d(img, np.full((5, 5), 1 / 25, np.float32), border="replicate")
    >>> float(blur.mean().compute())  # doctest: +SKIP
    """
    da = _dask_array()
    from . import image

    darr = da.asarray(darr)
    kernel = _kernel2d(kernel, "kernel")
    if border not in _BORDERS:
        raise ValueError(f"border must be one of {_BORDERS}, got {border!r}")
    if darr.ndim not in (2, 3):
        raise ValueError(f"image must be (H, W) or (H, W, C), got {darr.ndim} dimensions")
    kh, kw = kernel.shape
    if anchor is None:
        ax, ay = kw // 2, kh // 2
    else:
        ax, ay = (operator.index(v) for v in anchor)
    # The in-memory call on one pixel checks dtype, channels, kernel, anchor,
    # border and cval now rather than inside a task.
    image.filter2d(np.zeros((1, 1) + darr.shape[2:], darr.dtype), kernel, anchor=(ax, ay), border=border, cval=cval)
    if darr.shape[0] == 0 or darr.shape[1] == 0:
        raise ValueError("filter2d: empty image")

    # reach[axis] = (before, after): rows above/below, columns left/right.
    reach = {0: (kh - 1 - ay, ay), 1: (kw - 1 - ax, ax)}
    least = {0: max(reach[0]), 1: max(max(reach[1]), _min_width(kw))}
    chunks = list(darr.chunks)
    for axis in (0, 1):
        chunks[axis] = _widen(chunks[axis], max(least[axis], 1))
    if darr.ndim == 3:
        chunks[2] = (darr.shape[2],)
    darr = darr.rechunk(tuple(chunks))

    depth, boundary = {}, {}
    for axis in (0, 1):
        before, after = reach[axis]
        if len(darr.chunks[axis]) == 1 or before + after == 0:
            depth[axis], boundary[axis] = 0, "none"
        elif border in _PERIODIC:
            # dask copies the opposite edge; only symmetric depths take it.
            depth[axis], boundary[axis] = max(before, after), "periodic"
        else:
            # The outer blocks are extended by the in-memory call's border.
            depth[axis], boundary[axis] = (before, after), "none"
    if darr.ndim == 3:
        depth[2], boundary[2] = 0, "none"

    func = functools.partial(_filter_block, kernel=kernel, anchor=(ax, ay), border=border, cval=cval)
    return da.map_overlap(
        func,
        darr,
        depth=depth,
        boundary=boundary,
        trim=True,
        allow_rechunk=False,
        dtype=darr.dtype,
        meta=np.empty((0,) * darr.ndim, darr.dtype),
    )


def _convolve_block(block, k):
    from . import signal

    return signal.convolve2d_valid(block, k)


def convolve2d_valid(darr, k):
    """Valid 2-D convolution of a dask image with ``k``, block by block.

    The dask counterpart of :func:`orv.signal.convolve2d_valid` (and of
    ``scipy.signal.convolve2d(a, k, mode="valid")``): the result has shape
    ``(H - kH + 1, W - kW + 1)`` and output block (i, j) comes from input
    block (i, j) extended by ``kH - 1`` rows below and ``kW - 1`` columns on
    the right, so the output chunks are the input chunks less ``kH - 1`` rows
    and ``kW - 1`` columns in the last block of each axis.

    Each block goes through the in-memory call, which picks its route by size:
    kernels of fewer than 225 taps go through the 2-D filter and give the same
    bits as the call on the whole image; larger kernels go through FFT tiles
    sized by the block, so the results agree with the whole-image call to
    float32 rounding: within ``1e-6 * max|a| * sum|k|`` (measured about
    ``1.5e-8 * max|a| * sum|k|``). For results that do not depend on the
    chunks with a large kernel, use :func:`filter2d` with
    ``anchor=(kW - 1, kH - 1)`` and take ``[:H - kH + 1, :W - kW + 1]``.

    Unlike the in-memory call, the kernel must fit in the image (the two are
    not swapped).

    Parameters
    ----------
    darr : dask.array.Array or array-like
        2-D image (H, W), computed in float32.
    k : 2-D array
        Kernel (kH, kW) with kH <= H and kW <= W.

    Returns
    -------
    dask.array.Array
        float32, shape (H - kH + 1, W - kW + 1). Row chunks are made at least
        kH and column chunks at least ``max(32, 2 * kW + 16)`` long.
    """
    da = _dask_array()
    from . import signal

    darr = da.asarray(darr)
    k = _kernel2d(k, "k")
    if darr.ndim != 2:
        raise ValueError(f"image must be 2-D, got {darr.ndim} dimensions")
    kh, kw = k.shape
    h, w = darr.shape
    if kh > h or kw > w:
        raise ValueError(f"kernel {k.shape} does not fit in the image {darr.shape}")
    # One output pixel now: checks dtype and kernel, and gives the result's dtype.
    dtype = signal.convolve2d_valid(np.zeros(k.shape, darr.dtype), k).dtype

    # Every block at least the kernel (the last one then yields an output) and
    # wide enough that its output takes the whole image's filter route.
    chunks = (_widen(darr.chunks[0], kh), _widen(darr.chunks[1], max(_min_width(kw), 2 * kw + 16)))
    darr = darr.rechunk(chunks)
    out_chunks = tuple(c[:-1] + (c[-1] - (n - 1),) for c, n in zip(chunks, (kh, kw)))
    if kh > 1 or kw > 1:
        darr = da.overlap.overlap(
            darr, depth={0: (0, kh - 1), 1: (0, kw - 1)}, boundary={0: "none", 1: "none"}, allow_rechunk=False
        )
    return da.map_blocks(
        functools.partial(_convolve_block, k=k),
        darr,
        chunks=out_chunks,
        dtype=dtype,
        meta=np.empty((0, 0), dtype),
    )
