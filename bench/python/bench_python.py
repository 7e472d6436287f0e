#!/usr/bin/python3
"""Times orv's Python calls beside numpy, scipy and OpenCV on one thread.

Each case first checks that orv and the peer agree, then takes the median of
repeated timings (timeit.repeat) in this process, and prints one Markdown
table: case, peer, peer ms, orv ms, ratio orv/peer (below 1: orv is faster).

    PYTHONPATH=build/python /usr/bin/python3 bench/python/bench_python.py [--quick] [--filter TEXT]

Set OMP_NUM_THREADS=1 (done here before numpy loads) for one-thread peers;
scipy.fft runs with workers=1 and OpenCV with setNumThreads(1).
"""

import argparse
import os
import statistics
import sys
import timeit

for _v in ("OMP_NUM_THREADS", "OPENBLAS_NUM_THREADS"):
    os.environ.setdefault(_v, "1")

import numpy as np  # noqa: E402
import scipy.fft  # noqa: E402
import scipy.signal  # noqa: E402

import orv  # noqa: E402
import orv.fft  # noqa: E402
import orv.image  # noqa: E402
import orv.signal  # noqa: E402
import orv.vector  # noqa: E402

try:
    import cv2

    cv2.setNumThreads(1)
except ImportError:  # pragma: no cover
    cv2 = None

RNG = np.random.default_rng(1)


def seconds(fn, budget):
    """Median seconds per call of fn: repeats of as many calls as fill about
    budget / 7 seconds each."""
    number = 1
    while True:
        t = timeit.timeit(fn, number=number)
        if t >= budget / 70 or number >= 1 << 22:
            break
        number *= 4 if t < budget / 700 else 2
    per_repeat = max(1, int(number * (budget / 7) / max(t, 1e-9)))
    runs = timeit.repeat(fn, number=per_repeat, repeat=7)
    return statistics.median(runs) / per_repeat


class Mismatch(Exception):
    """orv's result is not the peer's: the case is reported, not timed."""


def check(name, got, want, rtol, atol=0.0):
    got = np.asarray(got)
    want = np.asarray(want)
    if got.shape != want.shape:
        raise Mismatch(f"shape {got.shape}, the peer's {want.shape}")
    err = np.abs(got.astype(np.complex128) - want.astype(np.complex128)).max()
    scale = np.abs(want).max() or 1.0
    if err > rtol * scale + atol:
        raise Mismatch(f"max difference {err:.3g} at scale {scale:.3g}")


class Table:
    def __init__(self, budget, pattern):
        self.rows = []
        self.budget = budget
        self.pattern = pattern

    def wants(self, case):
        return self.pattern is None or self.pattern in case

    def add(self, case, peer, peer_fn, orv_fn):
        """Times both; peer_fn None reuses the peer time of the row before."""
        p = self.rows[-1][2] if peer_fn is None else seconds(peer_fn, self.budget)
        o = seconds(orv_fn, self.budget)
        self.rows.append((case, peer, p, o))
        print(f"  {case:44s} {peer:26s} {p * 1e3:10.4f} {o * 1e3:10.4f}  {o / p:6.2f}", file=sys.stderr, flush=True)

    def case(self, case, body):
        """Runs body (checks, then adds rows); a mismatch becomes a row."""
        if not self.wants(case):
            return
        try:
            body()
        except Mismatch as e:
            self.rows.append((case, "-", None, str(e)))
            print(f"  {case}: WRONG RESULT, {e}", file=sys.stderr, flush=True)

    def markdown(self):
        out = ["| case | peer | peer ms | orv ms | orv/peer |", "|---|---|---:|---:|---:|"]
        for case, peer, p, o in self.rows:
            if p is None:
                out.append(f"| {case} | {peer} | | | wrong result ({o}): not timed |")
            else:
                out.append(f"| {case} | {peer} | {fmt(p)} | {fmt(o)} | {o / p:.2f} |")
        return "\n".join(out)


def fmt(s):
    ms = s * 1e3
    return f"{ms:.5f}" if ms < 0.01 else f"{ms:.4f}" if ms < 0.1 else f"{ms:.3f}" if ms < 10 else f"{ms:.1f}"


def bench_fft(t, quick):
    sizes = [256, 4096, 65536] if quick else [256, 4096, 65536, 1 << 20]
    for n in sizes:
        x = (RNG.standard_normal(n) + 1j * RNG.standard_normal(n)).astype(np.complex64)
        r = RNG.standard_normal(n).astype(np.float32)
        half = scipy.fft.rfft(r)

        def fft():
            check("fft", orv.fft.fft(x), np.fft.fft(x), 1e-5)
            t.add(f"fft c64 n={n}", "numpy.fft.fft", lambda: np.fft.fft(x), lambda: orv.fft.fft(x))
            t.add(f"fft c64 n={n}", "scipy.fft.fft", lambda: scipy.fft.fft(x, workers=1), lambda: orv.fft.fft(x))

        def rfft():
            check("rfft", orv.fft.rfft(r), np.fft.rfft(r), 1e-5)
            t.add(f"rfft f32 n={n}", "numpy.fft.rfft", lambda: np.fft.rfft(r), lambda: orv.fft.rfft(r))
            t.add(f"rfft f32 n={n}", "scipy.fft.rfft", lambda: scipy.fft.rfft(r, workers=1), lambda: orv.fft.rfft(r))

        def irfft():
            check("irfft", orv.fft.irfft(half), np.fft.irfft(half), 1e-5)
            t.add(f"irfft c64 n={n}", "numpy.fft.irfft", lambda: np.fft.irfft(half), lambda: orv.fft.irfft(half))
            t.add(f"irfft c64 n={n}", "scipy.fft.irfft", lambda: scipy.fft.irfft(half, workers=1),
                  lambda: orv.fft.irfft(half))

        t.case(f"fft c64 n={n}", fft)
        t.case(f"rfft f32 n={n}", rfft)
        t.case(f"irfft c64 n={n}", irfft)
    for h, w in ([(256, 256), (1024, 1024)] if quick else [(256, 256), (1024, 1024), (2048, 2048)]):
        img = RNG.standard_normal((h, w)).astype(np.float32)
        case = f"rfft2 f32 {h}x{w}"

        def rfft2():
            check(case, orv.fft.rfft2(img), np.fft.rfft2(img), 1e-5)
            t.add(case, "numpy.fft.rfft2", lambda: np.fft.rfft2(img), lambda: orv.fft.rfft2(img))
            t.add(case, "scipy.fft.rfft2", lambda: scipy.fft.rfft2(img, workers=1), lambda: orv.fft.rfft2(img))

        t.case(case, rfft2)


def bench_convolve(t, quick):
    cases = [(64, 16), (1024, 16), (1024, 256), (16384, 16), (16384, 256), (16384, 4096),
             (262144, 16), (262144, 256), (262144, 4096), (1 << 20, 16), (1 << 20, 4096)]
    if quick:
        cases = [(64, 16), (16384, 256), (262144, 4096)]
    for n, m in cases:
        case = f"convolve f32 {n}*{m}"
        a = RNG.standard_normal(n).astype(np.float32)
        b = RNG.standard_normal(m).astype(np.float32)

        def body():
            ref = scipy.signal.fftconvolve(a.astype(np.float64), b.astype(np.float64))
            check(case, orv.signal.convolve(a, b), ref, 1e-5, 1e-4 * np.sqrt(m))
            t.add(case, "scipy.signal.convolve", lambda: scipy.signal.convolve(a, b),
                  lambda: orv.signal.convolve(a, b))
            t.add(case, "scipy.signal.oaconvolve", lambda: scipy.signal.oaconvolve(a, b),
                  lambda: orv.signal.convolve(a, b))

        t.case(case, body)


def bench_convolve2d(t, quick):
    cases = [((512, 512), (3, 3)), ((512, 512), (7, 7)), ((512, 512), (15, 15)), ((1024, 1024), (31, 31))]
    if quick:
        cases = cases[:2]
    for shape, ks in cases:
        case = f"convolve2d valid f32 {shape[0]}x{shape[1]} * {ks[0]}x{ks[1]}"
        a = RNG.standard_normal(shape).astype(np.float32)
        k = RNG.standard_normal(ks).astype(np.float32)

        def body():
            ref = scipy.signal.fftconvolve(a.astype(np.float64), k.astype(np.float64), mode="valid")
            check(case, orv.signal.convolve2d_valid(a, k), ref, 1e-5)
            if ks[0] <= 15:  # the direct peer takes seconds beyond
                t.add(case, "scipy.signal.convolve2d", lambda: scipy.signal.convolve2d(a, k, mode="valid"),
                      lambda: orv.signal.convolve2d_valid(a, k))
            t.add(case, "scipy.signal.fftconvolve", lambda: scipy.signal.fftconvolve(a, k, mode="valid"),
                  lambda: orv.signal.convolve2d_valid(a, k))

        t.case(case, body)


def bench_filter2d(t, quick):
    if cv2 is None:
        print("cv2 missing: filter2d cases skipped", file=sys.stderr)
        return
    for dtype in (np.float32, np.uint8):
        img = RNG.standard_normal((1080, 1920)).astype(np.float32)
        if dtype == np.uint8:
            img = RNG.integers(0, 256, (1080, 1920), dtype=np.uint8)
        atol = 1.0 if dtype == np.uint8 else 0.0
        for n in ((3, 5) if quick else (3, 5, 7)):
            case = f"filter2d {np.dtype(dtype).name} 1920x1080 {n}x{n}"
            k = RNG.random((n, n)).astype(np.float32)
            k /= k.sum()
            # cv2.filter2D correlates: the flipped kernel convolves, with the
            # anchor mirrored (centred here either way).
            kf = np.ascontiguousarray(k[::-1, ::-1])
            r = n // 2
            padded = np.ascontiguousarray(np.pad(img, r, mode="edge")[:, :, None])

            def body():
                want = cv2.filter2D(img, -1, kf, borderType=cv2.BORDER_REPLICATE)
                check(case, orv.image.filter2d(img, k, border="replicate"), want, 1e-5, atol)
                check(case, orv._orv.filter2d(padded, k, r, r)[:, :, 0], want, 1e-5, atol)
                t.add(case, "cv2.filter2D", lambda: cv2.filter2D(img, -1, kf, borderType=cv2.BORDER_REPLICATE),
                      lambda: orv.image.filter2d(img, k, border="replicate"))
                # The library alone: the binding on an image padded beforehand
                # (orv.image.filter2d pads a copy of the image on every call).
                t.add(case + " (binding, pre-padded)", "cv2.filter2D", None,
                      lambda: orv._orv.filter2d(padded, k, r, r))

            t.case(case, body)


def bench_overhead(t):
    one = np.ones(1)

    def empty(x):
        return None

    assert orv.vector.sum(one) == 1.0
    if t.wants("call overhead"):
        t.add("call overhead: sum of 1 float64", "empty Python function", lambda: empty(one),
              lambda: orv.vector.sum(one))
        t.add("call overhead: binding sum_64f, 1 float64", "empty Python function", lambda: empty(one),
              lambda: orv._orv.sum_64f(one))
        t.add("call overhead: sum of 1 float64", "numpy.sum", lambda: np.sum(one), lambda: orv.vector.sum(one))


def main():
    ap = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    ap.add_argument("--quick", action="store_true", help="fewer sizes and a shorter budget per case")
    ap.add_argument("--budget", type=float, default=None, help="seconds of timing per function and case")
    ap.add_argument("--filter", default=None, help="only cases whose name contains this text")
    args = ap.parse_args()
    t = Table(args.budget or (0.3 if args.quick else 1.0), args.filter)
    print(f"orv {orv.__version__}, tier {orv.tier()}, numpy {np.__version__}, scipy {scipy.__version__}"
          + (f", OpenCV {cv2.__version__}" if cv2 else ""), file=sys.stderr)
    bench_overhead(t)
    bench_fft(t, args.quick)
    bench_convolve(t, args.quick)
    bench_convolve2d(t, args.quick)
    bench_filter2d(t, args.quick)
    print(t.markdown())


if __name__ == "__main__":
    main()
