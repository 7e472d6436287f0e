// _orv: the compiled half of the orv package. Functions here take arrays of
// exactly the dtype and layout they need (the Python modules convert and
// check arguments) and return new arrays.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <string>

#include "common.h"

namespace orvpy {

void Status::raise() const {
    if (code == 0) return;
    std::string msg = std::string(where) + ": " + orvGetStatusString(code);
    if (code > 0) {
        if (PyErr_WarnEx(PyExc_RuntimeWarning, msg.c_str(), 2) < 0) throw py::error_already_set();
        return;
    }
    py::object cls = py::module_::import("orv._errors").attr("OrvError");
    py::object exc = cls(code, msg);
    PyErr_SetObject(cls.ptr(), exc.ptr());
    throw py::error_already_set();
}

int order_of(py::ssize_t n, const char* what) {
    if (n < 1 || (n & (n - 1)) != 0 || n > (py::ssize_t{1} << 30))
        throw py::value_error(std::string(what) + " must be a power of two, got " + std::to_string(n));
    int order = 0;
    while ((py::ssize_t{1} << order) < n) ++order;
    return order;
}

int as_int(py::ssize_t n, const char* what) {
    if (n > INT_MAX) throw py::value_error(std::string(what) + " too large for the library: " + std::to_string(n));
    return static_cast<int>(n);
}

namespace {

constexpr const char* kTierNames[6] = {"m7", "m7", "u8", "n8", "y8", "e9"};

struct TierInfo {
    const char* name;
    int code;       // orvInitCpu argument
    Orv64u needs;   // feature bits the tier requires
};
constexpr TierInfo kTiers[] = {
    {"m7", 66, orvFeatSSE3},
    {"u8", 67, orvFeatSSE3 | orvFeatSSSE3},
    {"n8", 36, orvFeatSSE3 | orvFeatSSSE3},
    {"y8", 68, orvFeatSSE3 | orvFeatSSSE3 | orvFeatSSE41},
    {"e9", 70, orvFeatSSE3 | orvFeatSSSE3 | orvFeatSSE41 | orvFeatAVX | orvFeatAVXOS},
};

Orv64u cpu_features() {
    Orv64u mask = 0;
    orvGetCpuFeatures(&mask, nullptr);
    return mask;
}

py::list available_tiers() {
    const Orv64u f = cpu_features();
    py::list out;
    for (const auto& t : kTiers)
        if ((f & t.needs) == t.needs) out.append(t.name);
    return out;
}

void force_tier(const std::string& name) {
    Status st;
    if (name == "auto") {
        st.ok(orvInitCpu(-1), "orvInitCpu");
    } else {
        const TierInfo* t = std::find_if(std::begin(kTiers), std::end(kTiers),
                                         [&](const TierInfo& x) { return name == x.name; });
        if (t == std::end(kTiers))
            throw py::value_error("unknown tier '" + name + "' (one of m7, u8, n8, y8, e9, auto)");
        if ((cpu_features() & t->needs) != t->needs)
            throw py::value_error("this processor cannot run tier " + name);
        st.ok(orvInitCpu(t->code), "orvInitCpu");
    }
    // orvInitCpu's warnings (a processor of another vendor) are the normal case.
    if (st.code < 0) st.raise();
}

py::dict lib_version() {
    const OrvLibVersion* v = orvsGetLibVersion();
    py::dict d;
    d["major"] = v->major;
    d["minor"] = v->minor;
    d["build_major"] = v->buildMajor;
    d["build_number"] = v->buildNumber;
    d["tier"] = std::string(v->tierCode, strnlen(v->tierCode, 4));
    d["name"] = v->libName ? v->libName : "";
    d["version"] = v->versionText ? v->versionText : "";
    d["build_date"] = v->buildDate ? v->buildDate : "";
    return d;
}

// ---- Vector functions: any length (split into int-sized pieces) ----------

constexpr py::ssize_t kChunk = INT_MAX / 2;

// The library screens out-of-range input its own way: a lone last element
// has narrower limits than a pair, -inf gives NaN, and a NaN spoils its
// pair's other result. Pairs only are passed (a last odd element goes with
// a zero), and elements whose result is NaN are redone alone the way
// numpy's exp answers them.
int exp_fixed(const double* s, double* d, py::ssize_t n) {
    const py::ssize_t even = n & ~py::ssize_t{1};
    for (py::ssize_t i = 0; i < even; i += kChunk) {
        const int st = orvsExp_64f(s + i, d + i, static_cast<int>(std::min(kChunk, even - i)));
        if (st < 0) return st;
    }
    double pair[2] = {0, 0};
    for (py::ssize_t i = 0; i < n; ++i) {
        if (i < even && d[i] == d[i]) continue;
        const double x = s[i];
        if (x != x) {
            d[i] = x + x;
        } else if (x == -HUGE_VAL) {
            d[i] = 0;
        } else {
            pair[0] = x;
            pair[1] = 0;
            const int st = orvsExp_64f(pair, pair, 2);
            if (st < 0) return st;
            d[i] = pair[0];
        }
    }
    return 0;
}

carray<double> exp_64f(const carray<double>& a) {
    carray<double> out(a.request().shape);
    const double* s = a.data();
    double* d = out.mutable_data();
    const py::ssize_t n = a.size();
    Status st;
    {
        py::gil_scoped_release nogil;
        st.ok(exp_fixed(s, d, n), "orvsExp_64f");
    }
    st.raise();
    return out;
}

template <class T, class F>
double sum_chunks(const T* s, py::ssize_t n, F f) {
    double total = 0;
    Status st;
    {
        py::gil_scoped_release nogil;
        for (py::ssize_t i = 0; i < n; i += kChunk) {
            double part = 0;
            if (!st.ok(f(s + i, static_cast<int>(std::min(kChunk, n - i)), &part), "orvsSum")) break;
            total += part;
        }
    }
    st.raise();
    return total;
}

double sum_32f(const carray<float>& a) {
    return sum_chunks(a.data(), a.size(), [](const float* p, int n, double* r) {
        Orv32f s = 0;
        const int st = orvsSum_32f(p, n, &s, orvAlgHintAccurate);
        *r = s;
        return st;
    });
}

double sum_64f(const carray<double>& a) {
    return sum_chunks(a.data(), a.size(), [](const double* p, int n, double* r) { return orvsSum_64f(p, n, r); });
}

template <class T, class F>
double dot_chunks(const carray<T>& a, const carray<T>& b, F f, const char* name) {
    if (a.size() != b.size()) throw py::value_error("dot: lengths differ");
    const T* x = a.data();
    const T* y = b.data();
    const py::ssize_t n = a.size();
    double total = 0;
    Status st;
    {
        py::gil_scoped_release nogil;
        for (py::ssize_t i = 0; i < n; i += kChunk) {
            double part = 0;
            if (!st.ok(f(x + i, y + i, static_cast<int>(std::min(kChunk, n - i)), &part), name)) break;
            total += part;
        }
    }
    st.raise();
    return total;
}

// ---- 1-D full convolution -------------------------------------------------

template <class T, class F>
carray<T> conv_full(const carray<T>& a, const carray<T>& b, F f, const char* name) {
    const int na = as_int(a.size(), "convolve: length");
    const int nb = as_int(b.size(), "convolve: length");
    if (na < 1 || nb < 1) throw py::value_error("convolve: empty input");
    as_int(py::ssize_t{na} + nb - 1, "convolve: result length");
    carray<T> out(py::ssize_t{na} + nb - 1);
    const T* x = a.data();
    const T* y = b.data();
    T* d = out.mutable_data();
    Status st;
    {
        py::gil_scoped_release nogil;
        st.ok(f(x, na, y, nb, d), name);
    }
    st.raise();
    return out;
}

}  // namespace
}  // namespace orvpy

PYBIND11_MODULE(_orv, m) {
    using namespace orvpy;
    m.doc() = "Compiled core of the orv package; use the orv modules instead.";

    m.def("tier", [] { return kTierNames[slot()]; }, "Tier the jump index currently selects.");
    m.def("jump_index", [] { return static_cast<int>(orvJumpIndexForMergedLibs); });
    m.def("available_tiers", &available_tiers, "Tiers this processor can run.");
    m.def("force_tier", &force_tier, py::arg("name"));
    m.def("lib_version", &lib_version);
    m.def("status_string", [](int s) { return std::string(orvGetStatusString(s)); });
    // Raises what a call returning status s raises: the one path every
    // binding takes, reachable from tests without provoking the library.
    m.def("_raise_status", [](int s, const char* where) {
        Status st;
        st.ok(s, where);
        st.raise();
    });

    m.def("exp_64f", &exp_64f);
    m.def("sum_32f", &sum_32f);
    m.def("sum_64f", &sum_64f);
    m.def("dot_64f", [](const carray<double>& a, const carray<double>& b) {
        return dot_chunks(a, b, [](const double* x, const double* y, int n, double* r) {
            return orvsDotProd_64f(x, y, n, r);
        }, "orvsDotProd_64f");
    });
    m.def("dot_32f", [](const carray<float>& a, const carray<float>& b) {
        return dot_chunks(a, b, [](const float* x, const float* y, int n, double* r) {
            return orvsDotProd_32f64f(x, y, n, r);
        }, "orvsDotProd_32f64f");
    });
    m.def("conv_32f", [](const carray<float>& a, const carray<float>& b) {
        return conv_full(a, b, [](const float* x, int nx, const float* y, int ny, float* d) {
            // The library's direct path (shorter input below 64 samples)
            // runs in chunks of 4096 samples, and tier e9 keeps only the
            // later chunk's part at each seam. Pieces below 4096 samples go
            // through one chunk each; their seams are added here.
            if (nx < ny) std::swap(x, y), std::swap(nx, ny);
            if (ny >= 64 || nx < 4096) return orvsConv_32f(x, nx, y, ny, d);
            constexpr int kPiece = 4095;
            float part[kPiece + 63];
            for (int off = 0; off < nx; off += kPiece) {
                const int c = std::min(kPiece, nx - off), len = c + ny - 1;
                const OrvStatus st = orvsConv_32f(x + off, c, y, ny, part);
                if (st < 0) return st;
                const int seam = off ? ny - 1 : 0;
                for (int i = 0; i < seam; ++i) d[off + i] += part[i];
                std::copy(part + seam, part + len, d + off + seam);
            }
            return OrvStatus{orvStsNoErr};
        }, "orvsConv_32f");
    });
    m.def("conv_64f", [](const carray<double>& a, const carray<double>& b) {
        return conv_full(a, b, [](const double* x, int nx, const double* y, int ny, double* d) {
            return orvsConv_64f(x, nx, y, ny, d);
        }, "orvsConv_64f");
    });

    init_fft(m);
    init_image(m);
}
