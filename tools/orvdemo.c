/* orvdemo: a few image and sound steps through the library, each timed
 * against a plain C loop computing the same thing.
 *
 *   orvdemo [image.pgm|image.ppm] [sound.wav] [-o outdir] [-t m7|u8|n8|y8|e9]
 *
 * Without inputs it renders its own scene and sound. Writes PGM/PPM/WAV
 * files to outdir (default orvdemo-out). -t forces a tier instead of the one
 * selected for this processor. Exits non-zero when a step fails or its
 * result differs from the plain C loop's beyond the step's tolerance. */
#define _POSIX_C_SOURCE 200809L
#include <errno.h>
#include <math.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <time.h>

#include "orvi.h"
#include "orvs.h"

#ifndef M_PI
#define M_PI 3.14159265358979323846
#endif

#define REPS 3

/* ---- Tier-specific entry points ------------------------------------------
 * The 2-D filters and the 1-D FFT have no dispatch stub; pick the tier the
 * library selected. Jump index 2 (u8) has no such code and uses n8. */
typedef __typeof__(orviFilter32f_8u_C1R)* FilterFn;
typedef __typeof__(orvsFFTInitAlloc_R_32f)* FftInitFn;
typedef __typeof__(orvsFFTFwd_RToPack_32f)* FftFwdFn;
typedef __typeof__(orvsFFTFree_R_32f)* FftFreeFn;
typedef __typeof__(orvsFFTGetBufSize_R_32f)* FftBufFn;

typedef struct {
    const char* name;
    FilterFn filterC1, filterC3;
    FftInitFn fftInit;
    FftFwdFn fftFwd;
    FftFreeFn fftFree;
    FftBufFn fftBufSize;
} Tier;

#define TIER(t)                                                                             \
    {                                                                                       \
#t, t##_orviFilter32f_8u_C1R, t##_orviFilter32f_8u_C3R, t##_orvsFFTInitAlloc_R_32f, \
            t##_orvsFFTFwd_RToPack_32f, t##_orvsFFTFree_R_32f, t##_orvsFFTGetBufSize_R_32f  \
    }
static const Tier kTiers[4] = {TIER(m7), TIER(n8), TIER(y8), TIER(e9)};
static const int kTierOfIndex[6] = {0, 0, 1, 1, 2, 3};

/* ---- Helpers ---------------------------------------------------------------- */
static double now_s(void) {
    struct timespec ts;
    clock_gettime(CLOCK_MONOTONIC, &ts);
    return ts.tv_sec + ts.tv_nsec * 1e-9;
}

/* A status below zero is an error; above zero a warning, reported once. */
static int check(OrvStatus st, const char* what) {
    if (st < 0) {
        fprintf(stderr, "orvdemo: %s failed: %s (%d)\n", what, orvGetStatusString(st), (int)st);
        return 0;
    }
    if (st > 0) fprintf(stderr, "orvdemo: %s warns: %s (%d)\n", what, orvGetStatusString(st), (int)st);
    return 1;
}

static void* xmalloc(size_t n) {
    void* p = malloc(n ? n : 1);
    if (!p) fprintf(stderr, "orvdemo: out of memory (%zu bytes)\n", n);
    return p;
}

/* Prints a step's timings; a result further than tol from the plain C loop's
 * fails the step. */
static int report(const char* step, double tLib, double tRef, double maxDiff, double tol) {
    printf("  %-34s orv %8.2f ms   plain C %8.2f ms   x%5.1f   max diff %.3g\n", step, tLib * 1e3, tRef * 1e3,
           tLib > 0 ? tRef / tLib : 0.0, maxDiff);
    if (maxDiff <= tol) return 1;
    fprintf(stderr, "orvdemo: %s differs from the plain C result by %g (allowed %g)\n", step, maxDiff, tol);
    return 0;
}

static unsigned rng_state = 12345u;
static float frand(void) { /* uniform in [-1, 1) */
    rng_state = rng_state * 1664525u + 1013904223u;
    return (float)((rng_state >> 8) * (1.0 / 8388608.0) - 1.0);
}

static unsigned char clamp8(double v) { return v <= 0 ? 0 : v >= 255 ? 255 : (unsigned char)(v + 0.5); }

/* ---- Images --------------------------------------------------------------------- */
typedef struct {
    int w, h, ch; /* ch 1 (gray) or 3 (RGB) */
    unsigned char* px;
} Image;

static int skip_ws_comments(FILE* f) {
    int c;
    for (;;) {
        c = fgetc(f);
        if (c == '#') {
            while (c != '\n' && c != EOF) c = fgetc(f);
        } else if (c != ' ' && c != '\t' && c != '\n' && c != '\r') {
            break;
        }
    }
    if (c != EOF) ungetc(c, f);
    return c;
}

static int read_uint(FILE* f, int* v) {
    if (skip_ws_comments(f) == EOF) return 0;
    return fscanf(f, "%d", v) == 1;
}

/* Binary PGM (P5) or PPM (P6), maxval up to 65535; 16-bit samples are scaled
 * to 8 bits. */
static int read_pnm(const char* path, Image* img) {
    FILE* f = fopen(path, "rb");
    if (!f) {
        fprintf(stderr, "orvdemo: cannot open %s: %s\n", path, strerror(errno));
        return 0;
    }
    char magic[3] = {0};
    int w = 0, h = 0, maxv = 0, ok = 0;
    if (fread(magic, 1, 2, f) != 2 || magic[0] != 'P' || (magic[1] != '5' && magic[1] != '6')) {
        fprintf(stderr, "orvdemo: %s is not a binary PGM/PPM (P5/P6)\n", path);
        goto done;
    }
    if (!read_uint(f, &w) || !read_uint(f, &h) || !read_uint(f, &maxv) || w < 1 || h < 1 || maxv < 1 || maxv > 65535 ||
        (long long)w * h > (1 << 26)) {
        fprintf(stderr, "orvdemo: %s has a bad header\n", path);
        goto done;
    }
    fgetc(f); /* the single whitespace before the raster */
    img->w = w;
    img->h = h;
    img->ch = magic[1] == '5' ? 1 : 3;
    size_t n = (size_t)w * h * img->ch, bps = maxv > 255 ? 2 : 1;
    unsigned char* raw = xmalloc(n * bps);
    img->px = xmalloc(n);
    if (!raw || !img->px) {
        free(raw);
        goto done;
    }
    if (fread(raw, bps, n, f) != n) {
        fprintf(stderr, "orvdemo: %s is truncated\n", path);
        free(raw);
        goto done;
    }
    for (size_t i = 0; i < n; ++i) {
        unsigned v = bps == 2 ? (unsigned)raw[2 * i] << 8 | raw[2 * i + 1] : raw[i];
        img->px[i] = (unsigned char)((v * 255u + maxv / 2) / (unsigned)maxv);
    }
    free(raw);
    ok = 1;
done:
    fclose(f);
    return ok;
}

static int write_file_report(const char* path, int ok) {
    if (ok)
        printf("  wrote %s\n", path);
    else
        fprintf(stderr, "orvdemo: cannot write %s: %s\n", path, strerror(errno));
    return ok;
}

static int write_pnm(const char* path, const unsigned char* px, int w, int h, int ch) {
    FILE* f = fopen(path, "wb");
    int ok = f != NULL;
    if (ok) {
        fprintf(f, "P%c\n%d %d\n255\n", ch == 1 ? '5' : '6', w, h);
        ok = fwrite(px, (size_t)w * ch, h, f) == (size_t)h;
        ok = (fclose(f) == 0) && ok;
    }
    return write_file_report(path, ok);
}

/* A 1024x768 test scene: gradients, rings, bars like lines of text, noise. */
static int render_scene(Image* img) {
    img->w = 1024;
    img->h = 768;
    img->ch = 3;
    img->px = xmalloc((size_t)img->w * img->h * 3);
    if (!img->px) return 0;
    for (int y = 0; y < img->h; ++y) {
        for (int x = 0; x < img->w; ++x) {
            double r = 255.0 * x / img->w, g = 255.0 * y / img->h, b = 128 + 100 * sin(x * 0.02) * cos(y * 0.015);
            /* three filled discs and concentric rings */
            static const int cx[3] = {260, 520, 780}, cy[3] = {250, 420, 250}, cr[3] = {150, 120, 170};
            for (int k = 0; k < 3; ++k) {
                double d = hypot(x - cx[k], y - cy[k]);
                if (d < cr[k]) {
                    r = k == 0 ? 230 : 40;
                    g = k == 1 ? 220 : 60;
                    b = k == 2 ? 240 : 50;
                    if (fmod(d, 24.0) < 4.0) r = g = b = 250;
                }
            }
            /* a text-like block: short dark bars on rows of 14 px */
            if (y >= 600 && y < 740 && x >= 64 && x < 960 && (y - 600) % 14 < 8) {
                int word = (x - 64) / 36, in = (x - 64) % 36;
                if (in < 12 + (word * 7) % 20 && (x / 3) % 2 == 0) r = g = b = 20;
            }
            double n = 12.0 * frand();
            unsigned char* p = img->px + ((size_t)y * img->w + x) * 3;
            p[0] = clamp8(r + n);
            p[1] = clamp8(g + n);
            p[2] = clamp8(b + n);
        }
    }
    return 1;
}

/* ---- Sound ------------------------------------------------------------------------ */
typedef struct {
    int rate, n;
    float* s; /* samples in [-1, 1] */
} Sound;

static unsigned rd16(const unsigned char* p) { return p[0] | p[1] << 8; }
static unsigned long rd32(const unsigned char* p) { return rd16(p) | (unsigned long)rd16(p + 2) << 16; }

/* PCM 16-bit WAV; the first channel of a multi-channel file. */
static int read_wav(const char* path, Sound* snd) {
    FILE* f = fopen(path, "rb");
    if (!f) {
        fprintf(stderr, "orvdemo: cannot open %s: %s\n", path, strerror(errno));
        return 0;
    }
    unsigned char hdr[12], ck[8], fmt[40];
    int ok = 0, channels = 0, bits = 0, haveFmt = 0;
    if (fread(hdr, 1, 12, f) != 12 || memcmp(hdr, "RIFF", 4) || memcmp(hdr + 8, "WAVE", 4)) {
        fprintf(stderr, "orvdemo: %s is not a WAV file\n", path);
        goto done;
    }
    while (fread(ck, 1, 8, f) == 8) {
        unsigned long size = rd32(ck + 4);
        if (!memcmp(ck, "fmt ", 4)) {
            if (size < 16 || size > sizeof fmt || fread(fmt, 1, size, f) != size) break;
            unsigned tag = rd16(fmt);
            channels = (int)rd16(fmt + 2);
            snd->rate = (int)rd32(fmt + 4);
            bits = (int)rd16(fmt + 14);
            if (tag == 0xFFFE && size >= 26) tag = rd16(fmt + 24); /* extensible: sub-format */
            if (tag != 1 || bits != 16 || channels < 1 || snd->rate < 1) {
                fprintf(stderr, "orvdemo: %s: only 16-bit PCM is read\n", path);
                goto done;
            }
            haveFmt = 1;
        } else if (!memcmp(ck, "data", 4)) {
            if (!haveFmt) break;
            size_t frame = (size_t)channels * 2, frames = size / frame;
            unsigned char* raw = xmalloc(frames * frame);
            snd->s = xmalloc(frames * sizeof(float));
            if (!raw || !snd->s) {
                free(raw);
                goto done;
            }
            frames = fread(raw, frame, frames, f);
            for (size_t i = 0; i < frames; ++i) snd->s[i] = (short)rd16(raw + i * frame) / 32768.0f;
            free(raw);
            snd->n = (int)frames;
            ok = frames > 0;
            if (!ok) fprintf(stderr, "orvdemo: %s has no samples\n", path);
            goto done;
        } else if (fseek(f, (long)(size + (size & 1)), SEEK_CUR) != 0) {
            break;
        }
    }
    fprintf(stderr, "orvdemo: %s: no fmt or data chunk\n", path);
done:
    fclose(f);
    return ok;
}

static void put16(unsigned char* p, unsigned v) { p[0] = v & 255, p[1] = v >> 8 & 255; }
static void put32(unsigned char* p, unsigned long v) { put16(p, v & 0xFFFF), put16(p + 2, v >> 16); }

static int write_wav(const char* path, const float* s, int n, int rate) {
    unsigned char h[44];
    unsigned long bytes = (unsigned long)n * 2;
    memcpy(h, "RIFF", 4), put32(h + 4, 36 + bytes), memcpy(h + 8, "WAVEfmt ", 8);
    put32(h + 16, 16), put16(h + 20, 1), put16(h + 22, 1), put32(h + 24, rate), put32(h + 28, rate * 2UL);
    put16(h + 32, 2), put16(h + 34, 16), memcpy(h + 36, "data", 4), put32(h + 40, bytes);
    unsigned char* raw = xmalloc(bytes);
    if (!raw) return 0;
    for (int i = 0; i < n; ++i) {
        double v = s[i] * 32767.0;
        v = v > 32767 ? 32767 : v < -32768 ? -32768 : v;
        put16(raw + 2 * i, (unsigned)(int)lrint(v) & 0xFFFF);
    }
    FILE* f = fopen(path, "wb");
    int ok = f && fwrite(h, 44, 1, f) == 1 && fwrite(raw, 1, bytes, f) == bytes;
    if (f) ok = (fclose(f) == 0) && ok;
    free(raw);
    return write_file_report(path, ok);
}

/* 3 s at 44.1 kHz: a 100 Hz to 8 kHz exponential chirp, tones at 440, 1320
 * and 5000 Hz, and white noise. */
static int synth_sound(Sound* snd) {
    snd->rate = 44100;
    snd->n = 3 * snd->rate;
    snd->s = xmalloc((size_t)snd->n * sizeof(float));
    if (!snd->s) return 0;
    const double T = 3.0, f0 = 100, f1 = 8000, k = log(f1 / f0) / T;
    for (int i = 0; i < snd->n; ++i) {
        double t = (double)i / snd->rate;
        double chirp = sin(2 * M_PI * f0 * (exp(k * t) - 1) / k);
        double tones = sin(2 * M_PI * 440 * t) + 0.5 * sin(2 * M_PI * 1320 * t) +
                       (t > 1.0 && t < 2.0 ? 0.4 * sin(2 * M_PI * 5000 * t) : 0);
        snd->s[i] = (float)(0.35 * chirp + 0.2 * tones + 0.01 * frand());
    }
    return 1;
}

/* ---- Image steps -------------------------------------------------------------------- */
/* Plain C form of the library filter: true convolution of the interior,
 * border pixels copied. */
static void ref_filter(const unsigned char* src, unsigned char* dst, int w, int h, int ch, const float* k, int kw,
                       int kh) {
    int ax = kw / 2, ay = kh / 2;
    memcpy(dst, src, (size_t)w * h * ch);
    for (int y = ay; y < h - (kh - 1 - ay); ++y)
        for (int x = ax; x < w - (kw - 1 - ax); ++x)
            for (int c = 0; c < ch; ++c) {
                float s = 0;
                for (int i = 0; i < kh; ++i)
                    for (int j = 0; j < kw; ++j)
                        s += k[i * kw + j] * src[((size_t)(y + ay - i) * w + (x + ax - j)) * ch + c];
                dst[((size_t)y * w + x) * ch + c] = clamp8(s);
            }
}

/* The library filter over the interior; the border keeps the source. */
static OrvStatus lib_filter(const Tier* t, const unsigned char* src, unsigned char* dst, int w, int h, int ch,
                            const float* k, int kw, int kh) {
    int ax = kw / 2, ay = kh / 2, step = w * ch;
    OrviSize roi = {w - kw + 1, h - kh + 1};
    OrviSize ks = {kw, kh};
    OrviPoint anchor = {ax, ay};
    size_t off = (size_t)ay * step + (size_t)ax * ch;
    memcpy(dst, src, (size_t)w * h * ch);
    FilterFn fn = ch == 3 ? t->filterC3 : t->filterC1;
    return fn(src + off, step, dst + off, step, roi, k, ks, anchor);
}

static double max_diff_8u(const unsigned char* a, const unsigned char* b, size_t n) {
    int m = 0;
    for (size_t i = 0; i < n; ++i) {
        int d = abs(a[i] - b[i]);
        if (d > m) m = d;
    }
    return m;
}

static double max_diff_32f(const float* a, const float* b, size_t n) {
    double m = 0;
    for (size_t i = 0; i < n; ++i) {
        double d = fabs((double)a[i] - b[i]);
        if (d > m || d != d) m = d;
    }
    return m;
}

static int filter_step(const Tier* t, const char* label, const Image* in, const float* k, int kw, int kh,
                       unsigned char* out, unsigned char* ref, const char* path) {
    size_t n = (size_t)in->w * in->h * in->ch;
    double tl = 1e30, tr = 1e30;
    if (in->w < kw || in->h < kh) {
        fprintf(stderr, "orvdemo: image smaller than the %dx%d kernel; %s skipped\n", kw, kh, label);
        return 1;
    }
    for (int r = 0; r < REPS; ++r) {
        double t0 = now_s();
        if (!check(lib_filter(t, in->px, out, in->w, in->h, in->ch, k, kw, kh), label)) return 0;
        double t1 = now_s();
        ref_filter(in->px, ref, in->w, in->h, in->ch, k, kw, kh);
        double t2 = now_s();
        tl = fmin(tl, t1 - t0), tr = fmin(tr, t2 - t1);
    }
    /* The library rounds the float sum once; the plain loop may land on the
     * other side of a half. */
    if (!report(label, tl, tr, max_diff_8u(out, ref, n), 1)) return 0;
    return write_pnm(path, out, in->w, in->h, in->ch);
}

/* Valid convolution of the luminance with a normalised disc of radius R. */
static int disc_step(const Image* in, const char* path) {
    enum { R = 15, K = 2 * R + 1 };
    int w = in->w, h = in->h, ow = w - K + 1, oh = h - K + 1, ok = 0;
    if (ow < 1 || oh < 1) {
        fprintf(stderr, "orvdemo: image smaller than the %dx%d disc; disc blur skipped\n", K, K);
        return 1;
    }
    float* lum = xmalloc((size_t)w * h * sizeof(float));
    float* out = xmalloc((size_t)ow * oh * sizeof(float));
    float* ref = xmalloc((size_t)ow * oh * sizeof(float));
    unsigned char* px = xmalloc((size_t)ow * oh);
    float disc[K * K];
    if (!lum || !out || !ref || !px) goto done;
    double sum = 0;
    for (int i = 0; i < K * K; ++i) {
        int dx = i % K - R, dy = i / K - R;
        disc[i] = dx * dx + dy * dy <= R * R ? 1.0f : 0.0f;
        sum += disc[i];
    }
    for (int i = 0; i < K * K; ++i) disc[i] = (float)(disc[i] / sum);
    for (size_t i = 0; i < (size_t)w * h; ++i) {
        const unsigned char* p = in->px + i * in->ch;
        lum[i] = in->ch == 3 ? 0.299f * p[0] + 0.587f * p[1] + 0.114f * p[2] : p[0];
    }
    OrviSize is = {w, h}, ks = {K, K};
    double tl = 1e30, tr = 1e30;
    for (int r = 0; r < REPS; ++r) {
        double t0 = now_s();
        OrvStatus st = orviConvValid_32f_C1R(lum, w * (int)sizeof(float), is, disc, K * (int)sizeof(float), ks, out,
                                             ow * (int)sizeof(float));
        if (!check(st, "orviConvValid_32f_C1R")) goto done;
        double t1 = now_s();
        for (int y = 0; y < oh; ++y)
            for (int x = 0; x < ow; ++x) {
                float s = 0;
                for (int j = 0; j < K; ++j)
                    for (int i = 0; i < K; ++i)
                        s += lum[(size_t)(y + j) * w + x + i] * disc[(K - 1 - j) * K + K - 1 - i];
                ref[(size_t)y * ow + x] = s;
            }
        double t2 = now_s();
        tl = fmin(tl, t1 - t0), tr = fmin(tr, t2 - t1);
    }
    if (!report("31x31 disc blur (valid conv, 32f)", tl, tr, max_diff_32f(out, ref, (size_t)ow * oh), 0.01)) goto done;
    for (size_t i = 0; i < (size_t)ow * oh; ++i) px[i] = clamp8(out[i]);
    ok = write_pnm(path, px, ow, oh, 1);
done:
    free(lum), free(out), free(ref), free(px);
    return ok;
}

/* ---- Sound steps -------------------------------------------------------------------- */
enum { NFFT = 1024, ORDER = 10, HOP = 256, BINS = NFFT / 2 + 1 };

/* Plain C radix-2 FFT of a real frame; returns |X[k]|^2 for k = 0 .. N/2. */
static void ref_power(const float* x, float* pw) {
    static double re[NFFT], im[NFFT], cs[NFFT / 2], sn[NFFT / 2];
    if (sn[1] == 0)
        for (int k = 0; k < NFFT / 2; ++k) cs[k] = cos(2 * M_PI * k / NFFT), sn[k] = -sin(2 * M_PI * k / NFFT);
    for (int i = 0; i < NFFT; ++i) {
        int r = 0;
        for (int b = 0; b < ORDER; ++b) r |= ((i >> b) & 1) << (ORDER - 1 - b);
        re[r] = x[i], im[r] = 0;
    }
    for (int len = 2; len <= NFFT; len <<= 1) {
        for (int i = 0; i < NFFT; i += len)
            for (int k = 0; k < len / 2; ++k) {
                double wr = cs[k * (NFFT / len)], wi = sn[k * (NFFT / len)];
                double *ur = &re[i + k], *ui = &im[i + k], *vr = &re[i + k + len / 2], *vi = &im[i + k + len / 2];
                double tr = *vr * wr - *vi * wi, ti = *vr * wi + *vi * wr;
                *vr = *ur - tr, *vi = *ui - ti, *ur += tr, *ui += ti;
            }
    }
    for (int k = 0; k < BINS; ++k) pw[k] = (float)(re[k] * re[k] + im[k] * im[k]);
}

/* |X[k]|^2 from a Pack spectrum: R0 R1 I1 ... R(N/2). */
static void pack_power(const float* p, float* pw) {
    pw[0] = p[0] * p[0];
    for (int k = 1; k < NFFT / 2; ++k) pw[k] = p[2 * k - 1] * p[2 * k - 1] + p[2 * k] * p[2 * k];
    pw[NFFT / 2] = p[NFFT - 1] * p[NFFT - 1];
}

/* Spectrogram image: one column per frame, low frequencies at the bottom,
 * 80 dB below the peak mapped to black. */
static int spectrogram_step(const Tier* t, const Sound* snd, const char* path) {
    int frames = snd->n >= NFFT ? (snd->n - NFFT) / HOP + 1 : 0, ok = 0;
    if (frames < 1) {
        fprintf(stderr, "orvdemo: sound shorter than one %d-sample frame; spectrogram skipped\n", NFFT);
        return 1;
    }
    OrvFFTSpec_R_32f* spec = NULL;
    Orv8u* buf = NULL;
    float* pw = xmalloc((size_t)frames * BINS * sizeof(float));
    float* pwRef = xmalloc((size_t)frames * BINS * sizeof(float));
    unsigned char* px = xmalloc((size_t)frames * BINS);
    float win[NFFT], frame[NFFT], pack[NFFT];
    if (!pw || !pwRef || !px) goto done;
    if (!check(t->fftInit(&spec, ORDER, OrvFftNoDiv, orvAlgHintNone), "orvsFFTInitAlloc_R_32f")) goto done;
    int bufSize = 0;
    if (!check(t->fftBufSize(spec, &bufSize), "orvsFFTGetBufSize_R_32f")) goto done;
    if (bufSize > 0 && !(buf = orvMalloc(bufSize))) {
        fprintf(stderr, "orvdemo: out of memory for the FFT buffer\n");
        goto done;
    }
    for (int i = 0; i < NFFT; ++i) win[i] = (float)(0.5 - 0.5 * cos(2 * M_PI * i / NFFT));
    double tl = 1e30, tr = 1e30;
    for (int r = 0; r < REPS; ++r) {
        double t0 = now_s();
        for (int f = 0; f < frames; ++f) {
            const float* x = snd->s + (size_t)f * HOP;
            for (int i = 0; i < NFFT; ++i) frame[i] = x[i] * win[i];
            if (!check(t->fftFwd(frame, pack, spec, buf), "orvsFFTFwd_RToPack_32f")) goto done;
            pack_power(pack, pw + (size_t)f * BINS);
        }
        double t1 = now_s();
        for (int f = 0; f < frames; ++f) {
            const float* x = snd->s + (size_t)f * HOP;
            for (int i = 0; i < NFFT; ++i) frame[i] = x[i] * win[i];
            ref_power(frame, pwRef + (size_t)f * BINS);
        }
        double t2 = now_s();
        tl = fmin(tl, t1 - t0), tr = fmin(tr, t2 - t1);
    }
    float peak = 1e-20f;
    for (size_t i = 0; i < (size_t)frames * BINS; ++i) peak = fmaxf(peak, pw[i]);
    /* Difference in dB where the power is within 80 dB of the peak. */
    double dbDiff = 0;
    for (size_t i = 0; i < (size_t)frames * BINS; ++i)
        if (pw[i] > peak * 1e-8f) dbDiff = fmax(dbDiff, fabs(10 * log10((pw[i] + 1e-30) / (pwRef[i] + 1e-30))));
    if (!report("spectrogram (1024-pt real FFT, dB)", tl, tr, dbDiff, 0.1)) goto done;
    for (int f = 0; f < frames; ++f)
        for (int k = 0; k < BINS; ++k) {
            double db = 10 * log10(pw[(size_t)f * BINS + k] / peak + 1e-12);
            px[(size_t)(BINS - 1 - k) * frames + f] = clamp8(255.0 * (db + 80.0) / 80.0);
        }
    ok = write_pnm(path, px, frames, BINS, 1);
done:
    if (spec) check(t->fftFree(spec), "orvsFFTFree_R_32f");
    orvFree(buf);
    free(pw), free(pwRef), free(px);
    return ok;
}

/* Low-pass at 2 kHz: Blackman-windowed sinc of 255 taps; the output drops the
 * filter's delay so it lines up with the input. */
static int lowpass_step(const Sound* snd, const char* path) {
    enum { TAPS = 255 };
    const double fc = 2000.0 / snd->rate;
    int full = snd->n + TAPS - 1, ok = 0;
    float h[TAPS];
    float* out = xmalloc((size_t)full * sizeof(float));
    float* ref = xmalloc((size_t)full * sizeof(float));
    if (!out || !ref) goto done;
    double sum = 0;
    for (int i = 0; i < TAPS; ++i) {
        double m = i - (TAPS - 1) / 2.0, x = 2 * M_PI * i / (TAPS - 1);
        double sinc = m == 0 ? 2 * fc : sin(2 * M_PI * fc * m) / (M_PI * m);
        h[i] = (float)(sinc * (0.42 - 0.5 * cos(x) + 0.08 * cos(2 * x)));
        sum += h[i];
    }
    for (int i = 0; i < TAPS; ++i) h[i] = (float)(h[i] / sum);
    double tl = 1e30, tr = 1e30;
    for (int r = 0; r < REPS; ++r) {
        double t0 = now_s();
        if (!check(orvsConv_32f(snd->s, snd->n, h, TAPS, out), "orvsConv_32f")) goto done;
        double t1 = now_s();
        for (int k = 0; k < full; ++k) {
            int i0 = k - snd->n + 1 > 0 ? k - snd->n + 1 : 0, i1 = k < TAPS - 1 ? k : TAPS - 1;
            float s = 0;
            for (int i = i0; i <= i1; ++i) s += h[i] * snd->s[k - i];
            ref[k] = s;
        }
        double t2 = now_s();
        tl = fmin(tl, t1 - t0), tr = fmin(tr, t2 - t1);
    }
    if (!report("low-pass 2 kHz (255-tap conv, 32f)", tl, tr, max_diff_32f(out, ref, (size_t)full), 1e-5)) goto done;
    ok = write_wav(path, out + (TAPS - 1) / 2, snd->n, snd->rate);
done:
    free(out), free(ref);
    return ok;
}

/* ---- Main ----------------------------------------------------------------------------- */
static int ends_with(const char* s, const char* suffix) {
    size_t n = strlen(s), m = strlen(suffix);
    if (n < m) return 0;
    for (size_t i = 0; i < m; ++i)
        if ((s[n - m + i] | 0x20) != suffix[i]) return 0;
    return 1;
}

static void usage(void) {
    fprintf(stderr, "usage: orvdemo [image.pgm|image.ppm] [sound.wav] [-o outdir] [-t m7|u8|n8|y8|e9]\n");
}

/* The processor type code that forces a tier, or 0. */
static int tier_code(const char* t) {
    static const struct {
        const char* name;
        int code;
    } codes[] = {{"m7", 66}, {"u8", 67}, {"n8", 36}, {"y8", 68}, {"e9", 70}};
    for (size_t i = 0; i < sizeof codes / sizeof codes[0]; ++i)
        if (!strcmp(t, codes[i].name)) return codes[i].code;
    return 0;
}

int main(int argc, char** argv) {
    const char *imgPath = NULL, *wavPath = NULL, *outDir = "orvdemo-out";
    int forced = 0;
    for (int i = 1; i < argc; ++i) {
        if (!strcmp(argv[i], "-o") && i + 1 < argc) {
            outDir = argv[++i];
        } else if (!strcmp(argv[i], "-t") && i + 1 < argc && (forced = tier_code(argv[i + 1])) != 0) {
            ++i;
        } else if (ends_with(argv[i], ".pgm") || ends_with(argv[i], ".ppm") || ends_with(argv[i], ".pnm")) {
            imgPath = argv[i];
        } else if (ends_with(argv[i], ".wav")) {
            wavPath = argv[i];
        } else {
            usage();
            return 2;
        }
    }

    OrvStatus init = forced ? orvInitCpu(forced) : orvInit();
    if (init < 0) {
        fprintf(stderr, "orvdemo: %s\n", orvGetStatusString(init));
        return 1;
    }
    unsigned index = orvJumpIndexForMergedLibs;
    const Tier* tier = &kTiers[kTierOfIndex[index < 6 ? index : 0]];
    const OrvLibVersion* v = orvsGetLibVersion();
    printf("orv %d.%d.%d.%d  %s  %s (%s)\n", v->major, v->minor, v->buildMajor, v->buildNumber, v->libName,
           v->versionText, v->buildDate);
    printf("tier %s (jump index %u); filters and FFT called as %s_*\n", v->tierCode, index, tier->name);
    if (init > 0) printf("note: %s\n", orvGetStatusString(init));

    if (mkdir(outDir, 0777) != 0 && errno != EEXIST) {
        fprintf(stderr, "orvdemo: cannot create %s: %s\n", outDir, strerror(errno));
        return 1;
    }

    Image img = {0, 0, 0, NULL};
    Sound snd = {0, 0, NULL};
    unsigned char *out = NULL, *ref = NULL;
    int ok = 0;
    char path[4096];
    if (imgPath ? !read_pnm(imgPath, &img) : !render_scene(&img)) goto done;
    if (wavPath ? !read_wav(wavPath, &snd) : !synth_sound(&snd)) goto done;
    printf("image %dx%d %s (%s), sound %d samples at %d Hz (%s)\n", img.w, img.h, img.ch == 3 ? "RGB" : "gray",
           imgPath ? imgPath : "rendered", snd.n, snd.rate, wavPath ? wavPath : "synthesised");

    const char* ext = img.ch == 3 ? "ppm" : "pgm";
    snprintf(path, sizeof path, "%s/input.%s", outDir, ext);
    if (!write_pnm(path, img.px, img.w, img.h, img.ch)) goto done;
    snprintf(path, sizeof path, "%s/input.wav", outDir);
    if (!write_wav(path, snd.s, snd.n, snd.rate)) goto done;

    size_t n = (size_t)img.w * img.h * img.ch;
    out = xmalloc(n);
    ref = xmalloc(n);
    if (!out || !ref) goto done;

    printf("steps (best of %d runs):\n", REPS);
    /* 7x7 Gaussian, sigma 1.5, normalised. */
    float gauss[49];
    double gsum = 0;
    for (int i = 0; i < 49; ++i)
        gsum += gauss[i] = (float)exp(-((i % 7 - 3) * (i % 7 - 3) + (i / 7 - 3) * (i / 7 - 3)) / 4.5);
    for (int i = 0; i < 49; ++i) gauss[i] = (float)(gauss[i] / gsum);
    static const float sharpen[9] = {0, -1, 0, -1, 5, -1, 0, -1, 0};

    snprintf(path, sizeof path, "%s/blur.%s", outDir, ext);
    if (!filter_step(tier, "Gaussian blur 7x7 (8u filter)", &img, gauss, 7, 7, out, ref, path)) goto done;
    snprintf(path, sizeof path, "%s/sharpen.%s", outDir, ext);
    if (!filter_step(tier, "sharpen 3x3 (8u filter)", &img, sharpen, 3, 3, out, ref, path)) goto done;
    snprintf(path, sizeof path, "%s/disc-blur.pgm", outDir);
    if (!disc_step(&img, path)) goto done;
    snprintf(path, sizeof path, "%s/spectrogram.pgm", outDir);
    if (!spectrogram_step(tier, &snd, path)) goto done;
    snprintf(path, sizeof path, "%s/lowpass.wav", outDir);
    if (!lowpass_step(&snd, path)) goto done;
    ok = 1;
done:
    free(img.px), free(snd.s), free(out), free(ref);
    return ok ? 0 : 1;
}
