#!/usr/bin/python3
"""Filters an image of several GB with orv.dask.filter2d, never held whole.

The image is made lazily, block by block, from its pixel coordinates; each
block is filtered by orv (extended by the kernel's reach into its
neighbours) and reduced to its mean on dask's local threaded scheduler. The
script checks a window across block seams against orv.image.filter2d on the
same pixels, then prints wall time, throughput and the process's peak RSS.

    PYTHONPATH=build/python /usr/bin/python3 bench/python/bench_dask.py [--small] [--size H W]
"""

import argparse
import resource
import sys
import time

import numpy as np

import dask
import dask.array as da

import orv
import orv.dask
import orv.image


def pattern_block(block_info=None):
    """A block of the test image: a cheap pattern of the global coordinates."""
    info = block_info[None]
    (y0, y1), (x0, x1) = info["array-location"]
    y = np.sin(np.arange(y0, y1) * 0.0123).astype(np.float32)
    x = np.cos(np.arange(x0, x1) * 0.0071).astype(np.float32) + (np.arange(x0, x1) % 5).astype(np.float32)
    return np.add.outer(y, x)


def pattern(shape, chunk):
    chunks = da.core.normalize_chunks((chunk, chunk), shape)
    return da.map_blocks(pattern_block, chunks=chunks, dtype=np.float32, meta=np.empty((0, 0), np.float32))


def peak_rss_mb():
    return resource.getrusage(resource.RUSAGE_SELF).ru_maxrss / 1024.0


def check_seams(img, out, kernel, chunk):
    """A window around the first interior block corner equals the in-memory
    filter of the same pixels (the window's own border lies beyond the
    kernel's reach of the part compared)."""
    kh, kw = kernel.shape
    y0, x0 = chunk - 40, chunk - 40
    m = 80
    src = img[y0 - kh:y0 + m + kh, x0 - kw:x0 + m + kw].compute()
    want = orv.image.filter2d(src, kernel)[kh:kh + m, kw:kw + m]
    got = out[y0:y0 + m, x0:x0 + m].compute()
    if not np.array_equal(got, want):
        raise SystemExit(f"seam check failed: max difference {np.abs(got - want).max()}")


def main():
    ap = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    ap.add_argument("--small", action="store_true", help="a 8192 x 8192 image (256 MB) for a quick run")
    ap.add_argument("--size", type=int, nargs=2, metavar=("H", "W"), help="image height and width")
    ap.add_argument("--chunk", type=int, default=2048, help="square block side (default 2048)")
    ap.add_argument("--kernel", type=int, default=5, help="side of the square kernel (default 5)")
    ap.add_argument("--workers", type=int, default=2, help="threads of the local scheduler (default 2)")
    ap.add_argument("--baseline", action="store_true", help="also time the same pipeline without the filter")
    args = ap.parse_args()
    h, w = args.size or ((8192, 8192) if args.small else (45056, 45056))
    kernel = np.full((args.kernel, args.kernel), 1.0 / args.kernel**2, np.float32)

    img = pattern((h, w), args.chunk)
    out = orv.dask.filter2d(img, kernel, border="replicate")
    mpix = h * w / 1e6
    print(f"orv {orv.__version__}, tier {orv.tier()}, dask {dask.__version__}")
    print(f"image {h} x {w} float32 = {h * w * 4 / 2**30:.2f} GiB in {img.npartitions} blocks of "
          f"{args.chunk} x {args.chunk}; kernel {args.kernel} x {args.kernel}, border replicate; "
          f"threaded scheduler, {args.workers} workers")
    check_seams(img, out, kernel, args.chunk)
    rss0 = peak_rss_mb()

    rows = []
    runs = [("pattern + mean (no filter)", img)] if args.baseline else []
    runs.append(("pattern + orv.dask.filter2d + mean", out))
    for name, arr in runs:
        t0 = time.perf_counter()
        with dask.config.set(scheduler="threads", num_workers=args.workers):
            mean = float(arr.mean(dtype=np.float64).compute())
        dt = time.perf_counter() - t0
        rows.append((name, dt, mpix / dt, mean))
        print(f"  {name}: {dt:.2f} s, {mpix / dt:.1f} MPix/s, mean {mean:.6f}", flush=True)

    print(f"peak RSS {peak_rss_mb():.0f} MB (before the reductions {rss0:.0f} MB; the image is "
          f"{h * w * 4 / 2**20:.0f} MB)")
    print()
    print("| pipeline | image | wall s | MPix/s | peak RSS MB |")
    print("|---|---|---:|---:|---:|")
    for name, dt, rate, _ in rows:
        print(f"| {name} | {h}x{w} f32 ({h * w * 4 / 2**30:.1f} GiB) | {dt:.1f} | {rate:.0f} | {peak_rss_mb():.0f} |")
    return 0


if __name__ == "__main__":
    sys.exit(main())
