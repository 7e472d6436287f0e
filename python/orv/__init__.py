"""orv: numerical routines for signals and images, for numpy arrays.

Modules: :mod:`orv.fft` (power-of-two FFTs), :mod:`orv.signal` (convolution),
:mod:`orv.image` (2-D filters), :mod:`orv.vector` (exp, sum, dot).

Every function takes array-likes and returns new numpy arrays; inputs that are
not C-contiguous are copied first (``np.ascontiguousarray``). The library runs
with the GIL released, so threads calling orv run in parallel.

The library builds each computation once per instruction-set tier (m7 SSE3,
u8 and n8 SSSE3, y8 SSE4.1, e9 AVX) and picks the best one the processor runs
when it is loaded. :func:`tier` tells which, :func:`force_tier` changes it.

Errors: ``TypeError`` for an unsupported dtype, ``ValueError`` for bad shapes
or lengths, :class:`OrvError` for an error status of the library; a warning
status becomes a ``RuntimeWarning``.
"""

from . import _orv
from ._errors import OrvError
from . import fft, image, signal, vector

__all__ = ["OrvError", "fft", "signal", "image", "vector", "tier", "available_tiers",
           "force_tier", "lib_version", "__version__"]


def tier():
    """Name of the tier the library currently uses: "m7", "u8", "n8", "y8" or "e9"."""
    return _orv.tier()


def available_tiers():
    """Tiers this processor can run, lowest first."""
    return list(_orv.available_tiers())


def force_tier(name):
    """Make the library use tier ``name`` ("m7", "u8", "n8", "y8", "e9").

    ``None`` or ``"auto"`` returns to the tier chosen from the processor's
    features. The choice is process-wide: it changes the tier for every
    thread and for every other user of the library in the process. A call
    already running finishes on the tier it started with. Raises
    ``ValueError`` for an unknown tier or one the processor cannot run.
    """
    _orv.force_tier("auto" if name is None else str(name))


def lib_version():
    """Version record of the library as built for the current tier (a dict:
    major, minor, build_major, build_number, tier, name, version, build_date)."""
    return dict(_orv.lib_version())


def _version():
    v = _orv.lib_version()
    return "%d.%d.%d.%d" % (v["major"], v["minor"], v["build_major"], v["build_number"])


__version__ = _version()
