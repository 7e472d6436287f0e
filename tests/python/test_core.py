import threading
import warnings

import numpy as np
import pytest

import orv

EPS64 = np.finfo(np.float64).eps


@pytest.mark.parametrize("n", [0, 1, 2, 7, 1000])
@pytest.mark.parametrize("dtype", [np.float32, np.float64, np.int32])
def test_vector(tier, rng, n, dtype):
    a = (rng.uniform(-30, 30, n)).astype(dtype)
    b = (rng.uniform(-30, 30, n)).astype(dtype)
    e = orv.vector.exp(a)
    assert e.dtype == (np.float32 if dtype == np.float32 else np.float64) and e.shape == a.shape
    np.testing.assert_allclose(e, np.exp(a.astype(np.float64)), rtol=2 * np.finfo(e.dtype).eps)
    bound = 4 * EPS64 * np.log2(n + 2) * np.abs(a.astype(np.float64)).sum()
    assert abs(orv.vector.sum(a) - a.astype(np.float64).sum()) <= bound + (abs(a.sum()) * 6e-8 if dtype == np.float32 else 0)
    ref = np.dot(a.astype(np.float64), b.astype(np.float64))
    assert abs(orv.vector.dot(a, b) - ref) <= 4 * EPS64 * np.log2(n + 2) * np.abs(a.astype(np.float64)) @ np.abs(b)


@pytest.mark.parametrize("n", [1, 2, 3])
def test_exp_special_values(tier, n):
    for x in [-np.inf, np.inf, np.nan, -800.0, 800.0, 709.0, -708.0]:
        a = np.full(n, 0.5)
        a[-1] = x
        with np.errstate(over="ignore"):
            np.testing.assert_allclose(orv.vector.exp(a), np.exp(a), rtol=2 * EPS64)


def test_vector_shapes_and_errors():
    x = np.linspace(-2, 2, 24).reshape(2, 3, 4)[:, ::2]
    np.testing.assert_allclose(orv.vector.exp(x), np.exp(x), rtol=2 * EPS64)
    assert orv.vector.sum(x) == pytest.approx(x.sum())
    with pytest.raises(ValueError):
        orv.vector.dot(np.ones(3), np.ones(4))
    with pytest.raises(TypeError):
        orv.vector.exp(np.ones(3, complex))


def test_tiers_and_version():
    auto = orv.tier()
    assert auto in ("m7", "u8", "n8", "y8", "e9") and auto == orv.available_tiers()[-1]
    for t in orv.available_tiers():
        orv.force_tier(t)
        assert orv.tier() == t and orv.lib_version()["tier"] == t
    orv.force_tier(None)
    assert orv.tier() == auto
    with pytest.raises(ValueError):
        orv.force_tier("z9")
    assert orv.__version__.startswith("%d.%d" % (orv.lib_version()["major"], orv.lib_version()["minor"]))


def test_status_becomes_error_or_warning():
    with pytest.raises(orv.OrvError) as info:
        orv._orv._raise_status(-8, "orvsSomething")
    assert info.value.status == -8 and isinstance(info.value, RuntimeError)
    assert orv._orv.status_string(-8) in str(info.value) and "orvsSomething" in str(info.value)
    with warnings.catch_warnings(record=True) as w:
        warnings.simplefilter("always")
        orv._orv._raise_status(1, "orvsSomething")
    assert len(w) == 1 and issubclass(w[0].category, RuntimeWarning)


def test_threads_share_specifications(rng):
    """Threads transform at once (GIL released, cached specifications shared)."""
    x = rng.standard_normal((8, 4096))
    ref = np.fft.rfft(x)
    errors = []

    def work():
        for _ in range(20):
            if np.abs(orv.fft.rfft(x) - ref).max() > 1e-9 * np.abs(ref).max():
                errors.append(1)

    threads = [threading.Thread(target=work) for _ in range(4)]
    for t in threads:
        t.start()
    for t in threads:
        t.join()
    assert not errors
