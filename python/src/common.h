// Shared helpers of the _orv extension: tier tables, status handling, shape
// checks. Every library call runs with the GIL released; its status is kept
// in a Status and turned into a Python exception or warning afterwards.
#pragma once

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>

#include <climits>
#include <complex>
#include <cstddef>

#include "orvi.h"
#include "orvs.h"
#include "orvsfft.h"
#include "orvtiers.h"

namespace orvpy {

namespace py = pybind11;

// Slot of the tier the library selected: the jump index, 0..5 ->
// m7 m7 u8 n8 y8 e9. Read once per call so that a call uses one tier
// throughout even if another thread forces a different one meanwhile.
inline int slot() {
    const Orv32u j = orvJumpIndexForMergedLibs;
    return j <= 5 ? static_cast<int>(j) : 0;
}

// One entry per jump-index slot.
template <class F>
struct TierTable {
    F fn[6];
    F operator[](int s) const { return fn[s]; }
};

// Names exported by m7, n8, y8 and e9 (u8's slot uses n8) and by all five.
#define ORVPY_TIERS4(name) \
    ::orvpy::TierTable<decltype(&e9_##name)>{{&m7_##name, &m7_##name, &n8_##name, &n8_##name, &y8_##name, &e9_##name}}
#define ORVPY_TIERS5(name) \
    ::orvpy::TierTable<decltype(&e9_##name)>{{&m7_##name, &m7_##name, &u8_##name, &n8_##name, &y8_##name, &e9_##name}}

// First failure (or, failing that, first warning) of a sequence of calls.
struct Status {
    int code = 0;
    const char* where = "";
    // Records s from function w; false when s is an error (stop).
    bool ok(int s, const char* w) {
        if (s != 0 && (code == 0 || (s < 0 && code > 0))) {
            code = s;
            where = w;
        }
        return s >= 0;
    }
    // With the GIL held: raises orv.OrvError for an error, issues a
    // RuntimeWarning for a warning.
    void raise() const;
};

// n as 2^order; ValueError naming what otherwise.
int order_of(py::ssize_t n, const char* what);
// n as an int; ValueError when it does not fit.
int as_int(py::ssize_t n, const char* what);

template <class T>
using carray = py::array_t<T, py::array::c_style | py::array::forcecast>;

void init_fft(py::module_& m);
void init_image(py::module_& m);

}  // namespace orvpy
