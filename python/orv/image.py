"""Dense 2-D filters of images."""

import numpy as np

from . import _orv

__all__ = ["filter2d"]

_DTYPES = (np.float32, np.uint8, np.uint16, np.int16)
_BORDERS = {"constant": "constant", "replicate": "edge", "wrap": "wrap"}


def filter2d(img, kernel, anchor=None, border="constant", cval=0):
    """Convolve an image with a dense kernel; the result has img's shape and dtype.

    ``img`` is (H, W) or (H, W, C) with C in 1, 3, 4, of dtype float32,
    uint8, uint16 or int16; channels are filtered independently. ``kernel``
    is a 2-D real array (converted to float32). The operation is a true
    convolution anchored at ``anchor = (ax, ay)`` (column, row; default
    (kW // 2, kH // 2)):

        out[y, x] = sum_{i < kH, j < kW} kernel[i, j] * img[y + ay - i, x + ax - j]

    Pixels outside the image come from ``border``: "constant" (``cval``,
    which must be representable in img's dtype), "replicate" (the nearest
    edge pixel) or "wrap" (periodic). With ``anchor = (kW - 1, kH - 1)``,
    ``out[:H - kH + 1, :W - kW + 1]`` is the valid convolution whatever the
    border.

    Sums are single precision. Integer results are rounded and saturated to
    the dtype; the rounding of the tiers' routes may differ, so integer
    results can differ by 1 between tiers. Non-contiguous images are copied.
    """
    img = np.asarray(img)
    if img.dtype not in _DTYPES:
        raise TypeError("filter2d: image dtype must be float32, uint8, uint16 or int16, got %s" % img.dtype)
    if img.ndim not in (2, 3):
        raise ValueError("filter2d: image of shape (H, W) or (H, W, C) expected, got %s" % (img.shape,))
    if img.ndim == 3 and img.shape[2] not in (1, 3, 4):
        raise ValueError("filter2d: 1, 3 or 4 channels expected, got %d" % img.shape[2])
    if img.shape[0] == 0 or img.shape[1] == 0:
        raise ValueError("filter2d: empty image")
    kernel = np.asarray(kernel)
    if kernel.dtype.kind not in "biuf":
        raise TypeError("filter2d: real kernel expected, got %s" % kernel.dtype)
    if kernel.ndim != 2 or kernel.size == 0:
        raise ValueError("filter2d: non-empty 2-D kernel expected, got shape %s" % (kernel.shape,))
    kh, kw = kernel.shape
    ax, ay = (kw // 2, kh // 2) if anchor is None else (int(anchor[0]), int(anchor[1]))
    if not (0 <= ax < kw and 0 <= ay < kh):
        raise ValueError("filter2d: anchor %s outside the %dx%d kernel" % ((ax, ay), kw, kh))
    try:
        mode = _BORDERS[border]
    except (KeyError, TypeError):
        raise ValueError('filter2d: border must be "constant", "replicate" or "wrap", got %r' % (border,)) from None

    src = img if img.ndim == 3 else img[:, :, None]
    pad = ((kh - 1 - ay, ay), (kw - 1 - ax, ax), (0, 0))
    if mode == "constant":
        if img.dtype.kind in "iu":
            info = np.iinfo(img.dtype)
            if not (info.min <= cval <= info.max) or cval != int(cval):
                raise ValueError("filter2d: cval %r not representable in %s" % (cval, img.dtype))
        padded = np.pad(src, pad, mode="constant", constant_values=img.dtype.type(cval))
    else:
        padded = np.pad(src, pad, mode=mode)
    out = _orv.filter2d(np.ascontiguousarray(padded), np.ascontiguousarray(kernel, np.float32), ax, ay)
    return out.reshape(img.shape)
