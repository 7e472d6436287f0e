import numpy as np
import pytest

import orv

TIERS = orv.available_tiers()


@pytest.fixture(params=TIERS)
def tier(request):
    """Runs the test once per tier this processor can run, then restores the automatic choice."""
    orv.force_tier(request.param)
    yield request.param
    orv.force_tier("auto")


@pytest.fixture
def rng():
    return np.random.default_rng(20261123)


def assert_fft_close(got, ref, n, eps, c=4.0):
    """Max error within c * eps * log2(n) * max|ref| (plus one eps for n <= 2)."""
    assert got.shape == ref.shape
    scale = max(np.abs(ref).max(), 1e-300)
    bound = c * eps * (np.log2(max(n, 2)) + 1) * scale
    err = np.abs(got - ref).max()
    assert err <= bound, "error %g above %g" % (err, bound)
