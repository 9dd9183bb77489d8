/*
 * Calls every exported routine many times with seeded, reproducible inputs
 * and prints one hash of all output bits per routine, so that the Linux
 * library and the Windows DLL can be compared line by line (CI runs both and
 * diffs the output).
 *
 *   shellfe_agreement               one line per routine: name, calls, hash
 *   shellfe_agreement --trace NAME  one line per call of NAME: index, hash
 *   shellfe_agreement --show NAME I every array of call I of NAME in hex,
 *                                   before and after the call
 *
 * Inputs come from a 64-bit generator seeded by the routine's name and the
 * call's index, built from integer bits and exact float arithmetic only, so
 * both platforms generate the same inputs without their mathematical
 * libraries. They are valid (arrays as large as the routine's extents, indices
 * inside them) but awkward: angle sweeps, huge and non-finite angles,
 * collapsed and clockwise elements, subnormals, values on and beside the
 * thresholds, product sizes 1 to 70 and a few large ones. The double-precision
 * routines get the inputs of the compatible routine each mirrors, from the
 * same generator, widened, plus values only double holds. A routine's return
 * value is stored in a one-element RESULT array of the call and hashed with
 * the rest. The outputs of the error estimate, result and panel routines lie
 * between guard elements of random bits, so that a write beside them
 * changes the hash too.
 *
 * The dense products are also run through each instruction set the CPU
 * supports (NAME/isa lines), by the kernels linked into this program, and must
 * give the exported routine's bits on every one.
 *
 * The program fails when a routine of the interface description has no
 * driver here (the list is generated from the description at build time).
 */
#include "shellfe.h"

#include <inttypes.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "described_routines.h" /* SHELLFE_DESCRIBED_ROUTINES: "NAME", ... */

/* Forced instruction sets (forced_kernels.cpp). */
int agreement_isa_count(void);
const char* agreement_isa_name(int isa);
int agreement_isa_supported(int isa);
void agreement_product(int isa, int kind, const void* a, const void* b, void* c, int32_t m,
                       int32_t k, int32_t n);

/* ---- generator ------------------------------------------------------------ */

typedef struct {
    uint64_t s;
} Rng;

static uint64_t next(Rng* r) { /* splitmix64 */
    uint64_t z = (r->s += 0x9E3779B97F4A7C15u);
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9u;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBu;
    return z ^ (z >> 31);
}
static int32_t irange(Rng* r, int32_t lo, int32_t hi) { /* lo..hi inclusive */
    return lo + (int32_t)(next(r) % (uint64_t)(hi - lo + 1));
}
static int chance(Rng* r, int percent) { return (int)(next(r) % 100) < percent; }
static float bits_f(uint32_t b) {
    float f;
    memcpy(&f, &b, 4);
    return f;
}
static double bits_d(uint64_t b) {
    double d;
    memcpy(&d, &b, 8);
    return d;
}
/* 2^e for a normal exponent, -1022 <= e <= 1023. */
static double pow2(int e) { return bits_d((uint64_t)(e + 1023) << 52); }
/* The double k representable steps away from a positive finite x. */
static double ulps(double x, int64_t k) {
    uint64_t b;
    memcpy(&b, &x, 8);
    return bits_d(b + (uint64_t)k);
}
/* Uniform in [lo, hi), exactly: 24 random bits scaled. */
static float uniform(Rng* r, float lo, float hi) {
    float u = (float)(next(r) >> 40) * (1.0f / 16777216.0f);
    return lo + (hi - lo) * u;
}
static double uniform_d(Rng* r, double lo, double hi) {
    double u = (double)(next(r) >> 11) * (1.0 / 9007199254740992.0);
    return lo + (hi - lo) * u;
}
/* A float of any finite magnitude, sign and kind (subnormals, zeros, powers
 * of two), or an infinity or NaN when `nonfinite`. */
static float awkward(Rng* r, int nonfinite) {
    uint32_t b = (uint32_t)next(r);
    switch (next(r) % 16) {
        case 0: return bits_f(b & 0x807FFFFFu);                /* subnormal or zero */
        case 1: return (b & 1) ? -0.0f : 0.0f;
        case 2: return bits_f((b & 0x80000000u) | ((b & 0x3Fu) + 100u) << 23); /* power of two */
        case 3: return nonfinite ? bits_f((b & 0x80000000u) | 0x7F800000u) : 1.0f;
        case 4: return nonfinite ? bits_f(b | 0x7F800001u) : -1.0f; /* NaN, any payload and sign */
        case 5: {
            uint32_t e = (b >> 23) & 0xFFu;
            if (e == 0xFFu) e = 0xFEu;
            return bits_f((b & 0x807FFFFFu) | (e << 23));     /* any finite */
        }
        default: return uniform(r, -100.0f, 100.0f);
    }
}
/* A material angle in degrees: ordinary, on the grid of whole and
 * fifteen degrees, near the 0.001 radian cut, huge, or not finite. */
static float angle(Rng* r) {
    uint32_t b = (uint32_t)next(r);
    switch (next(r) % 12) {
        case 0: return (float)irange(r, -720, 720);
        case 1: return 15.0f * (float)irange(r, -48, 48);
        case 2: return uniform(r, -0.06f, 0.06f);                      /* around the cut */
        case 3: return bits_f((b & 0x807FFFFFu) | (uint32_t)irange(r, 150, 254) << 23); /* >= 2^23 */
        case 4: return bits_f((b & 0x807FFFFFu) | (uint32_t)irange(r, 157, 190) << 23); /* 1e9..1e19 */
        case 5: return bits_f(0x4EDA938Cu);                             /* 1.83e9 degrees */
        case 6: return bits_f((b & 0x80000000u) | 0x7F800000u);         /* infinite */
        case 7: return bits_f(b | 0x7F800001u);                         /* NaN */
        case 8: return bits_f(b & 0x807FFFFFu);                         /* subnormal */
        default: return uniform(r, -400.0f, 400.0f);
    }
}

/* ---- one call: its arrays, their hash and their dump ------------------------ */

enum Kind { I32, F32, F64 };

typedef struct {
    const char* name;
    void* p;
    size_t count;
    enum Kind kind;
} Arg;

typedef struct {
    Arg args[40];
    int n;
    int show;
} Call;

static size_t kind_size(enum Kind k) { return k == F64 ? 8 : 4; }

/* A zero-filled array of `count` elements (at least one), kept with the call. */
static void* arr(Call* c, const char* name, enum Kind kind, int64_t count) {
    if (count < 1) count = 1;
    void* p = calloc((size_t)count, kind_size(kind));
    if (!p) {
        fprintf(stderr, "out of memory\n");
        exit(2);
    }
    c->args[c->n].name = name;
    c->args[c->n].p = p;
    c->args[c->n].count = (size_t)count;
    c->args[c->n].kind = kind;
    c->n++;
    return p;
}
#define FA(c, name, count) ((float*)arr(c, name, F32, count))
#define DA(c, name, count) ((double*)arr(c, name, F64, count))
#define IA(c, name, count) ((int32_t*)arr(c, name, I32, count))

/* An integer scalar argument. */
static int32_t* iscalar(Call* c, const char* name, int32_t v) {
    int32_t* p = IA(c, name, 1);
    *p = v;
    return p;
}
static float* fscalar(Call* c, const char* name, float v) {
    float* p = FA(c, name, 1);
    *p = v;
    return p;
}

/* Fills with random bits of a kind: floats from awkward(), ints small. */
static void fill_f(Rng* r, float* p, int64_t n, float lo, float hi, int awkward_percent) {
    for (int64_t i = 0; i < n; ++i)
        p[i] = chance(r, awkward_percent) ? awkward(r, 0) : uniform(r, lo, hi);
}
static void fill_d(Rng* r, double* p, int64_t n, double lo, double hi, int awkward_percent) {
    for (int64_t i = 0; i < n; ++i)
        p[i] = chance(r, awkward_percent) ? (double)awkward(r, 0) * uniform_d(r, 0.5, 2.0)
                                          : uniform_d(r, lo, hi);
}

static void dump(const Call* c, const char* when) {
    for (int a = 0; a < c->n; ++a) {
        const Arg* g = &c->args[a];
        printf("%s %s[%zu]:", when, g->name, g->count);
        for (size_t i = 0; i < g->count; ++i) {
            if (g->kind == F64) {
                uint64_t v;
                memcpy(&v, (const char*)g->p + 8 * i, 8);
                printf(" %016" PRIx64, v);
            } else {
                uint32_t v;
                memcpy(&v, (const char*)g->p + 4 * i, 4);
                printf(" %08" PRIx32, v);
            }
        }
        printf("\n");
    }
}

static uint64_t fnv(uint64_t h, const void* p, size_t n) {
    const unsigned char* b = (const unsigned char*)p;
    for (size_t i = 0; i < n; ++i) h = (h ^ b[i]) * 0x100000001B3u;
    return h;
}

/* Hash of every array of the call after it, in order; frees them. */
static uint64_t finish(Call* c) {
    uint64_t h = 0xCBF29CE484222325u;
    for (int a = 0; a < c->n; ++a) {
        h = fnv(h, &c->args[a].count, sizeof c->args[a].count);
        h = fnv(h, c->args[a].p, c->args[a].count * kind_size(c->args[a].kind));
        free(c->args[a].p);
    }
    c->n = 0;
    return h;
}

/* Marks the moment of the call: the arrays as they go in. */
#define CALL(c, invocation)                   \
    do {                                      \
        if ((c)->show) dump((c), "in ");      \
        invocation;                           \
        if ((c)->show) dump((c), "out");      \
    } while (0)

/* ---- the double-precision route --------------------------------------------- */

/* The extension routines take the compatible routines' inputs: a driver
 * generates them in single precision exactly as for the compatible routine,
 * widens them, and then adds what only double can hold (values a few steps
 * beside the widened thresholds, low-order bits, exact angles beyond float
 * range). */

/* The double of the same value; a NaN keeps its sign, payload and quiet
 * bit (a conversion would quiet a signalling one). */
static double widen_f(float f) {
    uint32_t b;
    memcpy(&b, &f, 4);
    if ((b & 0x7F800000u) == 0x7F800000u && (b & 0x007FFFFFu))
        return bits_d((uint64_t)(b & 0x80000000u) << 32 | 0x7FF0000000000000u |
                      (uint64_t)(b & 0x007FFFFFu) << 29);
    return (double)f;
}

/* Every single-precision array of the call becomes a double one with the
 * same values, keeping its name and place in the hash. */
static void widen(Call* c) {
    for (int a = 0; a < c->n; ++a) {
        Arg* g = &c->args[a];
        if (g->kind != F32) continue;
        double* d = (double*)calloc(g->count, 8);
        if (!d) {
            fprintf(stderr, "out of memory\n");
            exit(2);
        }
        for (size_t x = 0; x < g->count; ++x) d[x] = widen_f(((const float*)g->p)[x]);
        free(g->p);
        g->p = d;
        g->kind = F64;
    }
}

static Arg* named(Call* c, const char* name) {
    for (int a = 0; a < c->n; ++a)
        if (strcmp(c->args[a].name, name) == 0) return &c->args[a];
    fprintf(stderr, "no array %s in the call\n", name);
    exit(2);
}
/* A widened array of the call, by name. */
static double* D(Call* c, const char* name) {
    Arg* g = named(c, name);
    if (g->kind != F64) {
        fprintf(stderr, "%s is not a double array\n", name);
        exit(2);
    }
    return (double*)g->p;
}

/* Half of the calls: every finite non-zero value moved by up to 2^-24 of
 * itself, so that it has bits below single precision (zeros stay, so
 * collapsed elements stay collapsed). */
static void roughen(Rng* r, double* p, int64_t n) {
    if (!chance(r, 50)) return;
    for (int64_t x = 0; x < n; ++x)
        if (p[x] != 0.0 && p[x] - p[x] == 0.0) p[x] *= 1.0 + uniform_d(r, -0x1p-24, 0x1p-24);
}

/* A single-precision threshold widened, or one of its two double
 * neighbours on either side, of either sign. */
static double beside(Rng* r, float cut) {
    double v = ulps((double)cut, irange(r, -2, 2));
    return chance(r, 20) ? -v : v;
}
/* Some of the values replaced by beside(cut). */
static void near_cut(Rng* r, double* p, int64_t n, float cut, int percent) {
    for (int64_t x = 0; x < n; ++x)
        if (chance(r, percent)) p[x] = beside(r, cut);
}

/* A material angle in degrees only double holds: multiples of 90 degrees
 * up to 2^52 (reduced exactly, they must give sines of exactly 0 and 1),
 * their neighbours, the 0.001 radian cut in degrees and its neighbours,
 * magnitudes beyond float range. One draw per statement: the order in which
 * a compiler evaluates operands is not fixed. */
static double angle_d(Rng* r) {
    const double cut = (double)0.001f * (180.0 / 3.14159265358979323846);
    double sign = chance(r, 50) ? -1.0 : 1.0;
    uint64_t kind = next(r) % 9;
    int32_t k = kind == 5 ? irange(r, 53, 1023) : kind == 6 ? irange(r, -1022, -150) : irange(r, 1, 8);
    switch (kind) {
        case 0: return 90.0 * (double)irange(r, -12, 12);
        case 1: return sign * 90.0 * (double)(next(r) >> (k + 17)); /* below 2^46: exact */
        case 2: return sign * ulps(90.0 * (double)k, irange(r, -2, 2));
        case 3: return sign * ulps(cut, irange(r, -4, 4));
        case 4: return sign * cut * uniform_d(r, 0.99, 1.01);
        case 5: case 6: return sign * pow2(k) * uniform_d(r, 1.0, 2.0);
        default: return uniform_d(r, -400.0, 400.0);
    }
}

/* A material or layer table (column-major, `rows` rows): moduli with low
 * bits, and some angles (column 17) from angle_d(). */
static void table_d(Rng* r, double* prop, int32_t rows, int32_t first, int32_t last) {
    roughen(r, prop, 17 * (int64_t)rows);
    for (int32_t row = first; row <= last; ++row)
        if (chance(r, 50)) prop[row + 17 * rows] = angle_d(r);
}

/* The layer formulas: compatible (0), either physical one, both, and now
 * and then a bit no formula reads. */
static int32_t* options(Rng* r, Call* c) {
    int32_t v = irange(r, 0, 3);
    if (chance(r, 20)) v |= (int32_t)(UINT32_C(1) << irange(r, 2, 31));
    return iscalar(c, "OPTIONS", v);
}

/* An element whose Jacobian determinant is (double)1.0e-7f or a step or two
 * beside it: x spans the reference coordinate, y is scaled by the
 * determinant, and every point sits at the reference origin, where the
 * derivatives are exact. */
static void cut_element(Rng* r, double* xy, double* gpos, int64_t lpos, int32_t ntype) {
    static const double quad[9][2] = {{-1, -1}, {0, -1}, {1, -1}, {1, 0}, {1, 1},
                                      {0, 1},   {-1, 1}, {-1, 0}, {0, 0}};
    static const double tri6[6][2] = {{0, 0}, {0.5, 0}, {1, 0}, {0.5, 0.5}, {0, 1}, {0, 0.5}};
    static const double tri3[3][2] = {{0, 0}, {1, 0}, {0, 1}};
    double det = ulps((double)1.0e-7f, irange(r, -2, 2));
    for (int32_t k = 1; k <= 9; ++k) {
        const double* u = ntype == 3 ? tri6[(k - 1) % 6] : ntype == 6 ? tri3[(k - 1) % 3] : quad[k - 1];
        xy[k + 10] = u[0];
        xy[k + 20] = u[1] * det;
    }
    for (int64_t x = 0; x < lpos; ++x) gpos[x] = 0.0;
}

/* The widened element geometry of the element routines: sometimes on the
 * degenerate-point cut, otherwise with low bits. */
static void element_d(Rng* r, Call* c, int32_t ntype) {
    Arg *gpos = named(c, "GPOS"), *tnode = named(c, "TNODE");
    if (chance(r, 15))
        cut_element(r, D(c, "XY"), (double*)gpos->p, (int64_t)gpos->count, ntype);
    else
        roughen(r, D(c, "XY"), 30);
    roughen(r, (double*)tnode->p, (int64_t)tnode->count);
    roughen(r, D(c, "ESTIF"), (int64_t)named(c, "ESTIF")->count);
}

/* ---- drivers --------------------------------------------------------------- */

typedef void (*Driver)(Rng*, Call*, int64_t index, int variant);

/* Sizes of the products: all 1..70 in turn, random ones, empty ones and a
 * few large ones. */
static void product_sizes(Rng* r, int64_t i, int32_t* m, int32_t* k, int32_t* n) {
    if (i < 70) {
        *m = *k = *n = (int32_t)i + 1;
    } else if (i < 280) {
        int32_t s = (int32_t)(i - 70) % 70 + 1;
        *m = s;
        *k = irange(r, 1, 70);
        *n = irange(r, 1, 70);
        if (i % 3 == 1) { int32_t t = *m; *m = *n; *n = t; }
        if (i % 3 == 2) { int32_t t = *m; *m = *k; *k = t; }
    } else if (i % 40 == 0) {
        *m = irange(r, 100, 300);
        *k = irange(r, 200, 600);
        *n = irange(r, 100, 300);
    } else if (i % 40 == 1) {
        *m = irange(r, -1, 3);
        *k = irange(r, -2, 1);
        *n = irange(r, -1, 3);
    } else {
        *m = irange(r, 1, 70);
        *k = irange(r, 1, 70);
        *n = irange(r, 1, 70);
    }
}

/* kind as in agreement_product(); variant < 0: the exported routine,
 * otherwise the kernel of that instruction set. */
static void drive_product(Rng* r, Call* c, int64_t i, int kind, int isa) {
    int32_t m, k, n;
    product_sizes(r, i, &m, &k, &n);
    int64_t la = (int64_t)(k + 1) * (m + 1), lb = (int64_t)(n + 1) * (k + 1);
    if (kind == 1 || kind == 4) lb = (int64_t)(n + 1) * n + k + 1;
    if (kind == 2) la = (int64_t)(k + 1) * k + m + 1;
    int64_t lc = (int64_t)(n + 1) * (m + 1);
    if (la < 1) la = 1;
    if (lb < 1) lb = 1;
    if (lc < 1) lc = 1;
    int32_t *pm = iscalar(c, "MDIM", m), *pk = iscalar(c, "KDIM", k), *pn = iscalar(c, "NDIM", n);
    /* Mostly ordinary values; a quarter of the calls carry awkward ones,
     * infinities and NaNs included. */
    int awk = (i % 4 == 3) ? 5 : 0;
    if (kind <= 2) {
        float *a = FA(c, "AMAT", la), *b = FA(c, "BMAT", lb), *cm = FA(c, "CMAT", lc);
        for (int64_t x = 0; x < la; ++x) a[x] = chance(r, awk) ? awkward(r, 1) : uniform(r, -2, 2);
        for (int64_t x = 0; x < lb; ++x) b[x] = chance(r, awk) ? awkward(r, 1) : uniform(r, -2, 2);
        for (int64_t x = 0; x < lc; ++x) cm[x] = bits_f((uint32_t)next(r) | 0x7F800001u);
        if (isa < 0) {
            CALL(c, (kind == 0   ? MATMULDLLDOTNET(a, b, cm, pm, pk, pn)
                     : kind == 1 ? MATMULBTDLLDOTNET(a, b, cm, pm, pk, pn)
                                 : MATMULATDLLDOTNET(a, b, cm, pm, pk, pn)));
        } else {
            CALL(c, agreement_product(isa, kind, a, b, cm, m, k, n));
        }
    } else {
        double *a = DA(c, "AMAT", la), *b = DA(c, "BMAT", lb), *cm = DA(c, "CMAT", lc);
        for (int64_t x = 0; x < la; ++x) a[x] = chance(r, awk) ? (double)awkward(r, 1) : uniform_d(r, -2, 2);
        for (int64_t x = 0; x < lb; ++x) b[x] = chance(r, awk) ? (double)awkward(r, 1) : uniform_d(r, -2, 2);
        for (int64_t x = 0; x < lc; ++x) cm[x] = bits_d(next(r) | 0x7FF0000000000001u);
        if (isa < 0) {
            CALL(c, (kind == 3 ? MATMULDOUBLEDLLDOTNET(a, b, cm, pm, pk, pn)
                               : MATMULBTDOUBLEDLLDOTNET(a, b, cm, pm, pk, pn)));
        } else {
            CALL(c, agreement_product(isa, kind, a, b, cm, m, k, n));
        }
    }
}
static void d_matmul(Rng* r, Call* c, int64_t i, int v) { drive_product(r, c, i, 0, v); }
static void d_matmulbt(Rng* r, Call* c, int64_t i, int v) { drive_product(r, c, i, 1, v); }
static void d_matmulat(Rng* r, Call* c, int64_t i, int v) { drive_product(r, c, i, 2, v); }
static void d_matmuld(Rng* r, Call* c, int64_t i, int v) { drive_product(r, c, i, 3, v); }
static void d_matmulbtd(Rng* r, Call* c, int64_t i, int v) { drive_product(r, c, i, 4, v); }

/* A material row: E1, nu12, E2, G12, transverse shear moduli, angle; the
 * other columns random. Column-major table (0:rows-1, 0:cols-1). */
static void material_row(Rng* r, float* prop, int32_t rows, int32_t cols, int32_t row) {
    for (int32_t j = 0; j < cols; ++j) prop[row + j * rows] = uniform(r, -1, 1);
    float e1 = uniform(r, 1e3f, 3e5f);
    prop[row + 1 * rows] = e1;
    prop[row + 2 * rows] = uniform(r, 0.0f, 0.45f);
    prop[row + 8 * rows] = chance(r, 30) ? e1 : uniform(r, 1e3f, 3e5f);
    prop[row + 9 * rows] = uniform(r, 1e2f, 1e5f);
    if (cols > 11) {
        prop[row + 10 * rows] = uniform(r, 1e2f, 1e5f);
        prop[row + 11 * rows] = chance(r, 30) ? prop[row + 10 * rows] : uniform(r, 1e2f, 1e5f);
    }
    if (cols > 17) prop[row + 17 * rows] = angle(r);
    if (chance(r, 3)) prop[row + 1 * rows] = awkward(r, 0);
}

/* Layers for the plate rigidities: (0:nlay, 0:17) and faces (0:nlay+1). */
static void layers(Rng* r, float* play, float* zlay, int32_t nlay) {
    for (int32_t l = 0; l <= nlay; ++l) material_row(r, play, nlay + 1, 18, l);
    float z = uniform(r, -0.2f, 0.0f);
    for (int32_t l = 0; l <= nlay + 1; ++l) {
        zlay[l] = z;
        z += chance(r, 5) ? 0.0f : uniform(r, 0.001f, 0.1f);
    }
    if (nlay == 2 && chance(r, 40)) { /* two identical unrotated isotropic layers */
        for (int32_t j = 0; j < 18; ++j) play[2 + j * 3] = play[1 + j * 3];
        play[1 + 17 * 3] = play[2 + 17 * 3] = 0.0f;
        play[1 + 8 * 3] = play[2 + 8 * 3] = play[1 + 1 * 3];
        play[1 + 11 * 3] = play[2 + 11 * 3] = play[1 + 10 * 3];
    }
}

/* ext: the double-precision mirror (shellfe_membrane_material). */
static void drive_modip(Rng* r, Call* c, int64_t i, int ext) {
    int32_t nmat = irange(r, 0, 3), imat = irange(r, 0, nmat);
    float* dmat = FA(c, "DMAT", 16);
    float* prop = FA(c, "PROP", 17 * (nmat + 1) + imat + 1);
    int32_t rows = nmat + 1;
    for (int32_t x = 0; x < 17 * (nmat + 1) + imat + 1; ++x) prop[x] = uniform(r, -1, 1);
    prop[imat + 1 * rows] = uniform(r, 1e3f, 3e5f);
    prop[imat + 2 * rows] = uniform(r, 0.0f, 0.45f);
    prop[imat + 8 * rows] = uniform(r, 1e3f, 3e5f);
    prop[imat + 9 * rows] = uniform(r, 1e2f, 1e5f);
    prop[imat + 17 * rows] = angle(r);
    if (i == 0) { /* the values of a reported disagreement */
        prop[imat + 1 * rows] = 2e5f;
        prop[imat + 2 * rows] = 0.3f;
        prop[imat + 8 * rows] = 7e4f;
        prop[imat + 9 * rows] = 3e4f;
        prop[imat + 17 * rows] = bits_f(0x4EDA938Cu);
    }
    if (chance(r, 3)) prop[imat + 1 * rows] = awkward(r, 1);
    for (int x = 0; x < 16; ++x) dmat[x] = bits_f((uint32_t)next(r));
    int32_t *pi = iscalar(c, "IMAT", imat), *pn = iscalar(c, "NMAT", nmat);
    if (!ext) {
        CALL(c, MODIPDLLDOTNET(dmat, prop, pi, pn));
        return;
    }
    widen(c);
    double* dprop = D(c, "PROP");
    table_d(r, dprop, rows, imat, imat);
    CALL(c, shellfe_membrane_material(D(c, "DMAT"), dprop, pi, pn));
}
static void d_modip(Rng* r, Call* c, int64_t i, int v) { (void)v; drive_modip(r, c, i, 0); }
static void d_membrane_material(Rng* r, Call* c, int64_t i, int v) { (void)v; drive_modip(r, c, i, 1); }

/* Widened layers: moduli and faces with low bits, angles from angle_d(). */
static void layers_d(Rng* r, Call* c, const char* table, int32_t nlay) {
    table_d(r, D(c, table), nlay + 1, 0, nlay);
    roughen(r, D(c, "ZLAY"), nlay + 2);
}

static void drive_modpb(Rng* r, Call* c, int ext) {
    int32_t nlay = irange(r, 1, 6);
    int32_t ibend = irange(r, 0, 2), ishear = irange(r, 0, 1);
    float *db = FA(c, "DBEND", 16), *ds = FA(c, "DSHEAR", 9);
    float *prop = FA(c, "PROP", 18 * (nlay + 1)), *zlay = FA(c, "ZLAY", nlay + 2);
    layers(r, prop, zlay, nlay);
    for (int x = 0; x < 16; ++x) db[x] = bits_f((uint32_t)next(r));
    for (int x = 0; x < 9; ++x) ds[x] = bits_f((uint32_t)next(r));
    int32_t *pb = iscalar(c, "IBEND", ibend), *ps = iscalar(c, "ISHEAR", ishear),
            *pl = iscalar(c, "NLAY", nlay);
    if (!ext) {
        CALL(c, MODPBDLLDOTNET(db, ds, pb, ps, prop, zlay, pl));
        return;
    }
    widen(c);
    layers_d(r, c, "PROP", nlay);
    int32_t* opt = options(r, c);
    CALL(c, shellfe_plate_rigidities(D(c, "DBEND"), D(c, "DSHEAR"), pb, ps, D(c, "PROP"), D(c, "ZLAY"), pl, opt));
}
static void d_modpb(Rng* r, Call* c, int64_t i, int v) { (void)i; (void)v; drive_modpb(r, c, 0); }
static void d_plate_rigidities(Rng* r, Call* c, int64_t i, int v) { (void)i; (void)v; drive_modpb(r, c, 1); }

/* Node coordinates of a plane element of `nnode` nodes into XY (0:9, 0:2):
 * a distorted square or triangle, sometimes clockwise, collapsed or tiny. */
static void element_xy(Rng* r, float* xy, int32_t nnode, int32_t ntype) {
    static const float quad[9][2] = {{-1, -1}, {0, -1}, {1, -1}, {1, 0}, {1, 1},
                                     {0, 1},   {-1, 1}, {-1, 0}, {0, 0}};
    static const float tri[6][2] = {{0, 0}, {0.5f, 0}, {1, 0}, {0.5f, 0.5f}, {0, 1}, {0, 0.5f}};
    float scale = chance(r, 10) ? bits_f((uint32_t)irange(r, 60, 140) << 23) : uniform(r, 0.2f, 5.0f);
    float skew = uniform(r, -0.3f, 0.3f);
    int flip = chance(r, 10), collapse = chance(r, 5);
    for (int k = 0; k < 30; ++k) xy[k] = uniform(r, -1, 1);
    for (int32_t k = 1; k <= 9; ++k) {
        float u, w;
        if (ntype == 3 || ntype == 6) {
            u = tri[(k - 1) % 6][0];
            w = tri[(k - 1) % 6][1];
        } else {
            u = quad[k - 1][0];
            w = quad[k - 1][1];
        }
        u += uniform(r, -0.1f, 0.1f) + skew * w;
        w += uniform(r, -0.1f, 0.1f);
        if (flip) w = -w;
        if (collapse) w = 0.0f;
        xy[k + 10] = u * scale;
        xy[k + 20] = w * scale;
    }
    (void)nnode;
}

/* GPOS, GWEI (0:2, 0:*) for a rule of up to `npts` points per row. */
static void rule(Rng* r, float* gpos, float* gwei, int64_t lpos, int64_t lwei) {
    for (int64_t x = 0; x < lpos; ++x) gpos[x] = uniform(r, -1, 1);
    for (int64_t x = 0; x < lwei; ++x) gwei[x] = uniform(r, 0.1f, 1.0f);
    /* row 2 holds triangle points inside the reference triangle */
    for (int64_t x = 2; x < lpos; x += 3) gpos[x] = uniform(r, 0.0f, 0.5f);
}

static int32_t element_type(Rng* r) {
    static const int32_t types[] = {1, 2, 3, 4, 6, 1, 2, 3, 6, 5, 0};
    return types[next(r) % 11];
}

static int32_t node_count(Rng* r, int32_t ntype) {
    if (chance(r, 5)) return irange(r, 10, 12); /* treated as nine */
    if (ntype == 3) return 6;
    if (ntype == 6 || ntype == 4) return 3;
    return chance(r, 50) ? 8 : 9;
}

static void drive_stiffp003(Rng* r, Call* c, int ext) {
    int32_t ntype = element_type(r), ngpx = irange(r, 1, 3), ngpy = irange(r, 1, 3);
    int32_t nnode = node_count(r, ntype), nnodt = chance(r, 80) ? nnode : irange(r, 1, 10);
    int32_t nelem = irange(r, 0, 3), iel = irange(r, 0, nelem), nmat = irange(r, 0, 2),
            imat = irange(r, 0, nmat);
    int tri = ntype == 3 || ntype == 6;
    int32_t big = ngpx > ngpy ? ngpx : ngpy;
    int64_t lpos = tri ? 6 * ngpy + 3 : 3 * big + 2, lwei = tri ? 3 * ngpy + 3 : 3 * big + 2;
    int32_t nt = nnodt < 9 ? nnodt : 9;
    int32_t *pgx = iscalar(c, "NGPX", ngpx), *pgy = iscalar(c, "NGPY", ngpy),
            *pty = iscalar(c, "NTYPE", ntype);
    float *gpos = FA(c, "GPOS", lpos), *gwei = FA(c, "GWEI", lwei);
    rule(r, gpos, gwei, lpos, lwei);
    int32_t* ngpt = iscalar(c, "NGPT", chance(r, 10) ? 2147483647 - irange(r, 0, 3) : irange(r, -5, 100));
    int32_t *piel = iscalar(c, "IEL", iel), *pnn = iscalar(c, "NNODE", nnode);
    float* xy = FA(c, "XY", 30);
    element_xy(r, xy, nnode, ntype);
    float* tnode = FA(c, "TNODE", (int64_t)nt * (nelem + 1) + iel + 1);
    fill_f(r, tnode, (int64_t)nt * (nelem + 1) + iel + 1, 0.05f, 0.5f, 3);
    int32_t* pim = iscalar(c, "IMAT", imat);
    float* prop = FA(c, "PROP", 17 * (nmat + 1) + imat + 1);
    for (int32_t x = 0; x < 17 * (nmat + 1) + imat + 1; ++x) prop[x] = uniform(r, -1, 1);
    prop[imat + 1 * (nmat + 1)] = uniform(r, 1e3f, 3e5f);
    prop[imat + 2 * (nmat + 1)] = uniform(r, 0.0f, 0.45f);
    prop[imat + 8 * (nmat + 1)] = uniform(r, 1e3f, 3e5f);
    prop[imat + 9 * (nmat + 1)] = uniform(r, 1e2f, 1e5f);
    prop[imat + 17 * (nmat + 1)] = angle(r);
    int32_t *pne = iscalar(c, "NELEM", nelem), *pnm = iscalar(c, "NMAT", nmat),
            *pnt = iscalar(c, "NNODT", nnodt);
    float* estif = FA(c, "ESTIF", 361);
    fill_f(r, estif, 361, -1, 1, 2);
    float* detj = fscalar(c, "DETJ", bits_f((uint32_t)next(r)));
    if (!ext) {
        CALL(c, STIFFP003DOTNET(pgx, pgy, pty, gpos, ngpt, piel, pnn, xy, tnode, NULL, pim, prop,
                                gwei, NULL, pne, pnm, NULL, NULL, pnt, estif, detj));
        return;
    }
    widen(c);
    table_d(r, D(c, "PROP"), nmat + 1, imat, imat);
    element_d(r, c, ntype);
    CALL(c, shellfe_membrane_stiffness(pgx, pgy, pty, D(c, "GPOS"), ngpt, piel, pnn, D(c, "XY"),
                                       D(c, "TNODE"), NULL, pim, D(c, "PROP"), D(c, "GWEI"), NULL,
                                       pne, pnm, NULL, NULL, pnt, D(c, "ESTIF"), D(c, "DETJ")));
}
static void d_stiffp003(Rng* r, Call* c, int64_t i, int v) { (void)i; (void)v; drive_stiffp003(r, c, 0); }
static void d_membrane_stiffness(Rng* r, Call* c, int64_t i, int v) { (void)i; (void)v; drive_stiffp003(r, c, 1); }

/* Shared set-up of the two plate element routines. */
typedef struct {
    int32_t *ngpx, *ngpy, *ntype, *ngpt, *iel, *nnode, *imat, *ioff, *nelem, *nmat, *ldes,
        *ndofn, *nnodt, *nlay;
    float *gpos, *gwei, *xy, *tnode, *prop, *estif, *play, *zlay, *detj;
} Plate;

static void plate_setup(Rng* r, Call* c, Plate* p) {
    int32_t ntype = element_type(r), ngpx = irange(r, 1, 3), ngpy = irange(r, 1, 3);
    int32_t nnode = node_count(r, ntype), nnodt = chance(r, 80) ? nnode : irange(r, 1, 10);
    int32_t nelem = irange(r, 0, 3), iel = irange(r, 0, nelem), nmat = irange(r, 0, 2),
            imat = irange(r, 0, nmat), nlay = irange(r, 1, 5);
    int32_t ndofn = irange(r, 3, 6), ioff = irange(r, 0, 2);
    int32_t nn = nnode < 9 ? nnode : 9, nt = nnodt < 9 ? nnodt : 9;
    int32_t ldes = ioff + 3 + ndofn * (nn - 1) + irange(r, 0, 3);
    int tri = ntype == 3 || ntype == 6;
    int32_t big = ngpx > ngpy ? ngpx : ngpy;
    int64_t lpos = tri ? 6 * ngpy + 3 : 3 * big + 2, lwei = tri ? 3 * ngpy + 3 : 3 * big + 2;
    int64_t lest = (int64_t)(ioff + 3 + ndofn * (nn - 1)) * (ldes + 2) + 1;
    p->ngpx = iscalar(c, "NGPX", ngpx);
    p->ngpy = iscalar(c, "NGPY", ngpy);
    p->ntype = iscalar(c, "NTYPE", ntype);
    p->gpos = FA(c, "GPOS", lpos);
    p->gwei = FA(c, "GWEI", lwei);
    rule(r, p->gpos, p->gwei, lpos, lwei);
    p->ngpt = iscalar(c, "NGPT", chance(r, 10) ? 2147483647 - irange(r, 0, 3) : irange(r, -5, 100));
    p->iel = iscalar(c, "IEL", iel);
    p->nnode = iscalar(c, "NNODE", nnode);
    p->xy = FA(c, "XY", 30);
    element_xy(r, p->xy, nnode, ntype);
    p->tnode = FA(c, "TNODE", (int64_t)nt * (nelem + 1) + iel + 1);
    fill_f(r, p->tnode, (int64_t)nt * (nelem + 1) + iel + 1, 0.05f, 0.5f, 3);
    p->imat = iscalar(c, "IMAT", imat);
    p->prop = FA(c, "PROP", 3 * (nmat + 1) + imat + 1);
    fill_f(r, p->prop, 3 * (nmat + 1) + imat + 1, -1, 1, 0);
    p->ioff = iscalar(c, "IOFF", ioff);
    p->estif = FA(c, "ESTIF", lest);
    fill_f(r, p->estif, lest, -1, 1, 2);
    p->nelem = iscalar(c, "NELEM", nelem);
    p->nmat = iscalar(c, "NMAT", nmat);
    p->ldes = iscalar(c, "LDES", ldes);
    p->ndofn = iscalar(c, "NDOFN", ndofn);
    p->nnodt = iscalar(c, "NNODT", nnodt);
    p->play = FA(c, "PLAY", 18 * (nlay + 1));
    p->zlay = FA(c, "ZLAY", nlay + 2);
    layers(r, p->play, p->zlay, nlay);
    p->nlay = iscalar(c, "NLAY", nlay);
    p->detj = fscalar(c, "DETJ", bits_f((uint32_t)next(r)));
}

/* The plate set-up widened for the double-precision routines, with their
 * own layers and geometry and an OPTIONS argument. */
typedef struct {
    double *gpos, *gwei, *xy, *tnode, *prop, *estif, *play, *zlay, *detj;
    int32_t* options;
} PlateD;

static void plate_d(Rng* r, Call* c, const Plate* p, PlateD* d) {
    widen(c);
    layers_d(r, c, "PLAY", *p->nlay);
    element_d(r, c, *p->ntype);
    d->gpos = D(c, "GPOS");
    d->gwei = D(c, "GWEI");
    d->xy = D(c, "XY");
    d->tnode = D(c, "TNODE");
    d->prop = D(c, "PROP");
    d->estif = D(c, "ESTIF");
    d->play = D(c, "PLAY");
    d->zlay = D(c, "ZLAY");
    d->detj = D(c, "DETJ");
    d->options = options(r, c);
}

static void drive_stiffp001(Rng* r, Call* c, int ext) {
    Plate p;
    plate_setup(r, c, &p);
    int32_t* ngpt2 = iscalar(c, "NGPT2", chance(r, 10) ? 2147483647 : irange(r, -5, 100));
    if (!ext) {
        CALL(c, STIFFP001DOTNET(p.ngpx, p.ngpy, p.ntype, p.gpos, p.ngpt, p.iel, ngpt2, NULL, p.nnode,
                                p.xy, p.tnode, NULL, p.imat, p.prop, p.ioff, p.estif, p.gwei, NULL,
                                NULL, p.nelem, p.nmat, p.ldes, p.ndofn, p.nnodt, p.play, p.zlay,
                                p.nlay, p.detj));
        return;
    }
    PlateD d;
    plate_d(r, c, &p, &d);
    CALL(c, shellfe_plate_bending_stiffness(p.ngpx, p.ngpy, p.ntype, d.gpos, p.ngpt, p.iel, ngpt2, NULL,
                                            p.nnode, d.xy, d.tnode, NULL, p.imat, d.prop, p.ioff,
                                            d.estif, d.gwei, NULL, NULL, p.nelem, p.nmat, p.ldes,
                                            p.ndofn, p.nnodt, d.play, d.zlay, p.nlay, d.detj, d.options));
}
static void d_stiffp001(Rng* r, Call* c, int64_t i, int v) { (void)i; (void)v; drive_stiffp001(r, c, 0); }
static void d_plate_bending(Rng* r, Call* c, int64_t i, int v) { (void)i; (void)v; drive_stiffp001(r, c, 1); }

static void drive_stiffp002(Rng* r, Call* c, int ext) {
    Plate p;
    plate_setup(r, c, &p);
    if (!ext) {
        CALL(c, STIFFP002DOTNET(p.ngpx, p.ngpy, p.ntype, p.gpos, p.ngpt, p.iel, p.nnode, p.xy,
                                p.tnode, NULL, p.imat, p.prop, p.ioff, p.estif, p.gwei, NULL,
                                p.nelem, p.nmat, p.ldes, p.ndofn, p.nnodt, p.play, p.zlay, p.nlay,
                                p.detj));
        return;
    }
    PlateD d;
    plate_d(r, c, &p, &d);
    CALL(c, shellfe_plate_shear_stiffness(p.ngpx, p.ngpy, p.ntype, d.gpos, p.ngpt, p.iel, p.nnode, d.xy,
                                          d.tnode, NULL, p.imat, d.prop, p.ioff, d.estif, d.gwei, NULL,
                                          p.nelem, p.nmat, p.ldes, p.ndofn, p.nnodt, d.play, d.zlay,
                                          p.nlay, d.detj, d.options));
}
static void d_stiffp002(Rng* r, Call* c, int64_t i, int v) { (void)i; (void)v; drive_stiffp002(r, c, 0); }
static void d_plate_shear(Rng* r, Call* c, int64_t i, int v) { (void)i; (void)v; drive_stiffp002(r, c, 1); }

static void drive_jacob(Rng* r, Call* c, int ext) {
    int32_t ntype = element_type(r);
    int32_t nenod = irange(r, 1, 9);
    float *cartd = FA(c, "CARTD", 30), *deriv = FA(c, "DERIV", 40);
    float* detj = fscalar(c, "DETJ", bits_f((uint32_t)next(r)));
    float* elcod = FA(c, "ELCOD", 30);
    fill_f(r, deriv, 40, -2, 2, 3);
    element_xy(r, elcod, nenod, ntype);
    for (int x = 0; x < 30; ++x) cartd[x] = bits_f((uint32_t)next(r));
    int32_t* pn = iscalar(c, "NENOD", nenod);
    if (!ext) {
        CALL(c, JACOB2DLLDOTNET(cartd, deriv, detj, elcod, pn));
        return;
    }
    widen(c);
    roughen(r, D(c, "DERIV"), 40);
    roughen(r, D(c, "ELCOD"), 30);
    CALL(c, shellfe_jacobian(D(c, "CARTD"), D(c, "DERIV"), D(c, "DETJ"), D(c, "ELCOD"), pn));
}
static void d_jacob(Rng* r, Call* c, int64_t i, int v) { (void)i; (void)v; drive_jacob(r, c, 0); }
static void d_jacobian(Rng* r, Call* c, int64_t i, int v) { (void)i; (void)v; drive_jacob(r, c, 1); }

static void drive_stiest(Rng* r, Call* c, int ext) {
    int32_t nenod = irange(r, 1, 9), ndofn = irange(r, 3, 6);
    int32_t span = ndofn * nenod > ndofn * (nenod - 1) + 2 ? ndofn * nenod : ndofn * (nenod - 1) + 2;
    int32_t ldes = span + irange(r, 0, 3), ldcn = nenod + irange(r, 0, 2), ielem = irange(r, 0, 3);
    int32_t maxnode = 30;
    float* e2 = FA(c, "ESTIF2", 40 * 9 + 1 > 361 ? 40 * 9 + 1 : 361);
    fill_f(r, e2, 361, -1e3f, 1e3f, 3);
    int64_t le = (int64_t)span * (ldes + 2) + 1;
    float* es = FA(c, "ESTIF", le);
    fill_f(r, es, le, -1e3f, 1e3f, 2);
    /* rotational diagonals around the 0.0001 cut */
    for (int32_t n = 0; n < nenod; ++n)
        for (int32_t d = 1; d <= ndofn; ++d) {
            int32_t a = ndofn * n + d;
            if (chance(r, 40)) es[a + a * (ldes + 1)] = chance(r, 50) ? 0.0001f : uniform(r, 0, 0.001f);
        }
    int32_t* pne = iscalar(c, "NENOD", nenod);
    int32_t* flags = IA(c, "NODFLG", maxnode + 1);
    for (int32_t n = 0; n <= maxnode; ++n) flags[n] = chance(r, 80) ? 0 : irange(r, -1, 2);
    int32_t *pnd = iscalar(c, "NDOFN", ndofn), *pld = iscalar(c, "LDES", ldes),
            *plc = iscalar(c, "LDCN", ldcn), *pie = iscalar(c, "IELEM", ielem);
    int32_t* ielnod = IA(c, "IELNOD", (int64_t)nenod * (ldcn + 1) + ielem + 1);
    for (int64_t x = 0; x < (int64_t)nenod * (ldcn + 1) + ielem + 1; ++x) ielnod[x] = irange(r, -9, 9);
    ielnod[ielem] = chance(r, 80) ? 0 : irange(r, -1, 1);
    for (int32_t n = 1; n <= nenod; ++n) ielnod[ielem + n * (ldcn + 1)] = irange(r, -maxnode, maxnode);
    float* ratio = fscalar(c, "RATIO", chance(r, 10) ? awkward(r, 0) : uniform(r, 0, 2e4f));
    if (!ext) {
        CALL(c, STIESTDLLDOTNET(e2, es, pne, flags, pnd, pld, NULL, plc, pie, ielnod, ratio));
        return;
    }
    widen(c);
    double *de = D(c, "ESTIF"), *dratio = D(c, "RATIO");
    roughen(r, D(c, "ESTIF2"), 361);
    roughen(r, de, le);
    /* rotational diagonals beside the widened 0.0001 cut */
    for (int32_t n = 0; n < nenod; ++n)
        for (int32_t d = 1; d <= ndofn; ++d) {
            int32_t a = ndofn * n + d;
            if (chance(r, 30)) de[a + a * (ldes + 1)] = ulps((double)0.0001f, irange(r, -2, 2));
        }
    if (chance(r, 20)) { /* RATIO times a diagonal on and beside the drilling value 10 */
        int32_t a = ndofn * irange(r, 0, nenod - 1);
        a += irange(r, 1, ndofn);
        int32_t k = irange(r, -6, 6);
        de[a + a * (ldes + 1)] = pow2(k);
        *dratio = ulps(10.0 * pow2(-k), irange(r, -1, 1));
    }
    CALL(c, shellfe_finish_shell_element(D(c, "ESTIF2"), de, pne, flags, pnd, pld, NULL, plc, pie, ielnod, dratio));
}
static void d_stiest(Rng* r, Call* c, int64_t i, int v) { (void)i; (void)v; drive_stiest(r, c, 0); }
static void d_finish_shell(Rng* r, Call* c, int64_t i, int v) { (void)i; (void)v; drive_stiest(r, c, 1); }

static void drive_buildestif1(Rng* r, Call* c, int ext) {
    int32_t nnode = irange(r, 1, 4), nsel = irange(r, 1, 6);
    int32_t ldk = 6 * nnode + irange(r, 0, 3);
    int64_t ls = (int64_t)6 * nnode * (ldk + 2) + 1;
    int32_t *pn = iscalar(c, "NNODE", nnode), *ps = iscalar(c, "NSEL", nsel),
            *pl = iscalar(c, "LDK", ldk);
    float* src = FA(c, "ESRC", ls);
    fill_f(r, src, ls, -1, 1, 5);
    int inplace = chance(r, 25);
    float* dst = inplace ? src : FA(c, "EDST", ls);
    if (!inplace) fill_f(r, dst, ls, -1, 1, 0);
    int32_t* idof = IA(c, "IDOF", nsel + 1);
    for (int32_t q = 0; q <= nsel; ++q) idof[q] = irange(r, 1, 6);
    if (!ext) {
        CALL(c, BUILDESTIF1DOTNET(pn, ps, pl, src, dst, idof));
        return;
    }
    widen(c);
    double* dsrc = D(c, "ESRC");
    roughen(r, dsrc, ls);
    CALL(c, shellfe_select_dofs(pn, ps, pl, dsrc, inplace ? dsrc : D(c, "EDST"), idof));
}
static void d_buildestif1(Rng* r, Call* c, int64_t i, int v) { (void)i; (void)v; drive_buildestif1(r, c, 0); }
static void d_select_dofs(Rng* r, Call* c, int64_t i, int v) { (void)i; (void)v; drive_buildestif1(r, c, 1); }

/* Values around the 1.0e-10 cut of stored matrix entries. */
static float entry(Rng* r) {
    switch (next(r) % 8) {
        case 0: return 1.0e-10f;
        case 1: return -1.0e-10f;
        case 2: return bits_f(0x2EDBE6FFu + (uint32_t)irange(r, -1, 1)); /* 1e-10 and neighbours */
        case 3: return 0.0f;
        case 4: return awkward(r, 0);
        default: return uniform(r, -10, 10);
    }
}

static void drive_crs(Rng* r, Call* c, int mass) {
    int32_t ndofn = irange(r, 1, 6), ndofs = irange(r, 1, ndofn);
    int32_t count = irange(r, 0, 8), maxnode = 20;
    int32_t irown = irange(r, 0, ndofs);
    int32_t ldnm = (count > 0 ? (count - 1) * ndofn + ndofs : ndofs) + irange(r, 0, 3);
    int32_t nnz0 = irange(r, 0, 10), nrows0 = irange(r, 0, 5);
    int32_t *pds = iscalar(c, "NDOFS", ndofs), *pld = iscalar(c, "LDNM", ldnm);
    int32_t* nnz = iscalar(c, "NNZ", nnz0);
    int32_t* rowptr = IA(c, "IROWPTR", nrows0 + 1);
    int32_t* icol = IA(c, "ICOL", nnz0 + count * ndofs);
    int32_t* nrows = iscalar(c, "NROWS", nrows0);
    int32_t* ifix = IA(c, "IFIX", (maxnode - 1) * ndofn + ndofs + 1);
    for (int32_t e = 0; e < (maxnode - 1) * ndofn + ndofs + 1; ++e) ifix[e] = chance(r, 20) ? 1 : irange(r, -1, 2) * chance(r, 20);
    int64_t ls = (int64_t)irown * (ldnm + 1) + (count > 0 ? (count - 1) * ndofn : 0) + ndofs + 1;
    float* snode = NULL;
    double* dnode = NULL;
    if (mass) {
        dnode = DA(c, "DNODE", ls);
        for (int64_t x = 0; x < ls; ++x) dnode[x] = chance(r, 20) ? 1.000000013351432e-10 * (double)irange(r, -1, 1) : (double)entry(r) * uniform_d(r, 0.9, 1.1);
    } else {
        snode = FA(c, "SNODE", ls);
        for (int64_t x = 0; x < ls; ++x) snode[x] = entry(r);
    }
    double* val = DA(c, "VAL", nnz0 + count * ndofs);
    int32_t* pir = iscalar(c, "IROWN", irown);
    int32_t* nodlst = IA(c, "NODLST", count + 1);
    nodlst[0] = count;
    for (int32_t j = 1; j <= count; ++j) nodlst[j] = irange(r, 1, maxnode);
    int32_t* pdn = iscalar(c, "NDOFN", ndofn);
    if (mass)
        CALL(c, ADDTOCRSMASSDLLDLL(pds, pld, nnz, rowptr, icol, NULL, nrows, ifix, dnode, val, NULL, pir, nodlst, NULL, pdn));
    else
        CALL(c, ADDTOCRSSTIFFDLLDOTNET(pds, pld, nnz, rowptr, icol, NULL, nrows, ifix, snode, val, NULL, pir, nodlst, NULL, pdn));
}
static void d_crs_stiff(Rng* r, Call* c, int64_t i, int v) { (void)i; (void)v; drive_crs(r, c, 0); }
static void d_crs_mass(Rng* r, Call* c, int64_t i, int v) { (void)i; (void)v; drive_crs(r, c, 1); }

/* One element's connectivity around node INODE, for the node-matrix
 * gatherers: IELNOD stored row after row (slot e at e*(LDCN+1) + IELEM). */
typedef struct {
    int32_t inode, nenod, ielem, ldcn, ndofe, ndofn, ldes, ldnm, maxnode, maxloc;
    int32_t *ielnod, *locnod;
} Gather;

static void gather_setup(Rng* r, Gather* g) {
    g->maxnode = 16;
    g->inode = irange(r, 1, g->maxnode);
    g->nenod = irange(r, 1, 8);
    g->ielem = irange(r, 0, 3);
    g->ldcn = g->ielem + irange(r, 0, 2);
    g->ndofn = irange(r, 1, 6);
    g->ndofe = irange(r, 1, g->ndofn);
    g->ldes = g->nenod * g->ndofe + irange(r, 0, 2);
    g->maxloc = g->maxnode;
    g->ldnm = g->maxloc * g->ndofn + irange(r, 0, 2);
}

static void gather_tables(Rng* r, Call* c, Gather* g) {
    int64_t li = (int64_t)g->nenod * (g->ldcn + 1) + g->ielem + 1;
    g->ielnod = IA(c, "IELNOD", li);
    for (int64_t x = 0; x < li; ++x) g->ielnod[x] = irange(r, 1, g->maxnode);
    int32_t hits = 0;
    for (int32_t e = 1; e <= g->nenod; ++e) {
        int32_t n = chance(r, 30) ? g->inode : irange(r, 1, g->maxnode);
        g->ielnod[e * (g->ldcn + 1) + g->ielem] = n;
        hits += n == g->inode;
    }
    if (!hits) g->ielnod[irange(r, 1, g->nenod) * (g->ldcn + 1) + g->ielem] = g->inode;
    g->locnod = IA(c, "LOCNOD", g->maxnode + 1);
    for (int32_t n = 0; n <= g->maxnode; ++n) g->locnod[n] = irange(r, 1, g->maxloc);
}

/* mode 0: single precision, 1: with a double load vector (the 01 variant),
 * 2: everything double (shellfe_gather_node_stiffness). */
static void drive_node_stiff(Rng* r, Call* c, int mode) {
    Gather g;
    gather_setup(r, &g);
    int64_t le = (int64_t)g.nenod * g.ndofe * (g.ldes + 2) + 1;
    float* estif = FA(c, "ESTIF", le);
    for (int64_t x = 0; x < le; ++x) estif[x] = entry(r);
    int32_t* pin = iscalar(c, "INODE", g.inode);
    int32_t* pne = iscalar(c, "NENOD", g.nenod);
    int64_t ls = (int64_t)(g.ndofe + 1) * (g.ldnm + 1);
    float* snode = FA(c, "SNODE", ls);
    fill_f(r, snode, ls, -1, 1, 2);
    int32_t* pie = iscalar(c, "IELEM", g.ielem);
    int64_t lsp = (int64_t)(g.inode - 1) * g.ndofe + g.ndofe + 1;
    float* spring = FA(c, "SPRING", lsp);
    fill_f(r, spring, lsp, 0, 1e4f, 3);
    int32_t* ivisit = IA(c, "IVISIT", g.inode + 1);
    for (int32_t n = 0; n <= g.inode; ++n) ivisit[n] = chance(r, 60) ? 0 : -1;
    gather_tables(r, c, &g);
    int32_t ldsf = g.inode + irange(r, 0, 2);
    int64_t lf = (int64_t)(g.ndofe - 1) * (ldsf + 1) + g.inode + 1;
    int32_t* isprf = IA(c, "ISPRF", lf);
    for (int64_t x = 0; x < lf; ++x) isprf[x] = chance(r, 50) ? 1 : irange(r, -1, 2);
    int32_t *pde = iscalar(c, "NDOFE", g.ndofe), *pdn = iscalar(c, "NDOFN", g.ndofn),
            *pld = iscalar(c, "LDES", g.ldes), *plf = iscalar(c, "LDSF", ldsf),
            *plm = iscalar(c, "LDNM", g.ldnm), *plc = iscalar(c, "LDCN", g.ldcn);
    int64_t lu = (int64_t)(g.maxnode - 1) * g.ndofn + g.ndofe + 1;
    float* upres = FA(c, "UPRES", lu);
    for (int64_t x = 0; x < lu; ++x) upres[x] = chance(r, 50) ? 0.0f : entry(r);
    int64_t lfl = (int64_t)(g.inode - 1) * g.ndofn + g.ndofe + 1;
    int32_t* nnz = iscalar(c, "NNZCNT", irange(r, 0, 100));
    int32_t* map = IA(c, "IDOFMAP", g.ndofe + 1);
    for (int32_t d = 0; d <= g.ndofe; ++d) map[d] = irange(r, 1, g.ndofe);
    if (mode == 1) {
        double* fload = DA(c, "FLOAD", lfl);
        fill_d(r, fload, lfl, -1, 1, 2);
        CALL(c, BUILDALLNODESTIFFDLLDOTNET01(estif, pin, pne, snode, pie, spring, ivisit, NULL, g.ielnod, isprf, pde, pdn, pld, plf, plm, NULL, plc, NULL, upres, fload, g.locnod, nnz, map));
        return;
    }
    float* fload = FA(c, "FLOAD", lfl);
    fill_f(r, fload, lfl, -1, 1, 2);
    if (mode == 0) {
        CALL(c, BUILDALLNODESTIFFDLLDOTNET(estif, pin, pne, snode, pie, spring, ivisit, NULL, g.ielnod, isprf, pde, pdn, pld, plf, plm, NULL, plc, NULL, upres, fload, g.locnod, nnz, map));
        return;
    }
    widen(c);
    /* entries and prescribed displacements beside the widened 1.0e-10 cut */
    double *de = D(c, "ESTIF"), *dupres = D(c, "UPRES");
    near_cut(r, de, le, 1.0e-10f, 15);
    near_cut(r, dupres, lu, 1.0e-10f, 15);
    roughen(r, D(c, "SPRING"), lsp);
    roughen(r, D(c, "FLOAD"), lfl);
    CALL(c, shellfe_gather_node_stiffness(de, pin, pne, D(c, "SNODE"), pie, D(c, "SPRING"), ivisit, NULL, g.ielnod, isprf, pde, pdn, pld, plf, plm, NULL, plc, NULL, dupres, D(c, "FLOAD"), g.locnod, nnz, map));
}
static void d_node_stiff(Rng* r, Call* c, int64_t i, int v) { (void)i; (void)v; drive_node_stiff(r, c, 0); }
static void d_node_stiff01(Rng* r, Call* c, int64_t i, int v) { (void)i; (void)v; drive_node_stiff(r, c, 1); }
static void d_gather_node(Rng* r, Call* c, int64_t i, int v) { (void)i; (void)v; drive_node_stiff(r, c, 2); }

static void d_node_mass(Rng* r, Call* c, int64_t i, int v) {
    (void)i; (void)v;
    Gather g;
    gather_setup(r, &g);
    int64_t le = (int64_t)g.nenod * g.ndofe * (g.ldes + 2) + 1;
    double* emass = DA(c, "EMASS", le);
    for (int64_t x = 0; x < le; ++x) emass[x] = chance(r, 15) ? 1.000000013351432e-10 * (double)irange(r, -1, 1) : (double)entry(r) * uniform_d(r, 0.9, 1.1);
    int32_t* pin = iscalar(c, "INODE", g.inode);
    int32_t* pne = iscalar(c, "NENOD", g.nenod);
    int64_t ls = (int64_t)(g.ndofe + 1) * (g.ldnm + 1);
    double* dnode = DA(c, "DNODE", ls);
    fill_d(r, dnode, ls, -1, 1, 2);
    int32_t* pie = iscalar(c, "IELEM", g.ielem);
    gather_tables(r, c, &g);
    int32_t *pde = iscalar(c, "NDOFE", g.ndofe), *pdn = iscalar(c, "NDOFN", g.ndofn),
            *pld = iscalar(c, "LDES", g.ldes), *plm = iscalar(c, "LDNM", g.ldnm),
            *plc = iscalar(c, "LDCN", g.ldcn);
    int32_t* nnz = iscalar(c, "NNZCNT", irange(r, 0, 100));
    CALL(c, BUILDALLNODEMASSDLL(emass, pin, pne, dnode, pie, NULL, g.ielnod, pde, pdn, pld, NULL, plm, NULL, plc, g.locnod, nnz));
}

/* Skyline assembly: a uniform band, IDIAG(I+1) = I*NBAND + 1, so every
 * stored coupling has its own place. */
/* ext: the double-precision mirrors (shellfe_add_shell_to_skyline*). */
static void drive_skyline(Rng* r, Call* c, int mapped, int ext) {
    int32_t ndof = irange(r, 1, 6), nslot = mapped ? 8 : irange(r, 1, 9);
    int32_t ielem = irange(r, 0, 3), ldcn = ielem + irange(r, 0, 2);
    int32_t maxnode = 12;
    int32_t neq = maxnode * ndof;
    int32_t nband = chance(r, 30) ? neq : irange(r, 1, 2 * ndof + 2);
    int32_t ldes = nslot * ndof + irange(r, 0, 2);
    int64_t le = (int64_t)nslot * ndof * (ldes + 2) + 1;
    float* estif = FA(c, "ESTIF", le);
    fill_f(r, estif, le, -1e3f, 1e3f, 3);
    int64_t li = (int64_t)nslot * (ldcn + 1) + ielem + 1;
    int32_t* ielnod = IA(c, "IELNOD", li);
    for (int64_t x = 0; x < li; ++x) ielnod[x] = irange(r, 1, maxnode);
    for (int32_t a = 1; a <= nslot; ++a)
        ielnod[a * (ldcn + 1) + ielem] = chance(r, 15) ? 0 : irange(r, 1, maxnode); /* 0: empty */
    int32_t* idiag = IA(c, "IDIAG", neq + 2);
    for (int32_t e = 0; e <= neq + 1; ++e) idiag[e] = (e > 0 ? e - 1 : 0) * nband + 1;
    int32_t *pnb = iscalar(c, "NBAND", nband), *pnd = iscalar(c, "NDOF", ndof);
    double* sky = DA(c, "SKY", (int64_t)(neq + 1) * nband + 2);
    fill_d(r, sky, (int64_t)(neq + 1) * nband + 2, -1, 1, 0);
    int32_t* numnod = IA(c, "NUMNOD", maxnode + 1);
    for (int32_t n = 0; n <= maxnode; ++n) numnod[n] = irange(r, 1, maxnode);
    int32_t *pie = iscalar(c, "IELEM", ielem), *plc = iscalar(c, "LDCN", ldcn),
            *pld = iscalar(c, "LDES", ldes);
    int32_t* map = NULL;
    if (mapped) {
        map = IA(c, "IDOFMAP", ndof + 1);
        for (int32_t d = 0; d <= ndof; ++d) map[d] = irange(r, 1, ndof);
    }
    int32_t* pns = mapped ? NULL : iscalar(c, "NSLOT", nslot);
    if (!ext) {
        if (mapped)
            CALL(c, ADDSHELLTOSDLLDOTNET(estif, ielnod, NULL, idiag, pnb, pnd, sky, numnod, map, pie, plc, NULL, NULL, pld));
        else
            CALL(c, ADDSHELLTOSDOTNET(estif, ielnod, NULL, idiag, pnb, pnd, sky, numnod, pie, plc, NULL, NULL, pld, pns));
        return;
    }
    widen(c);
    double* de = D(c, "ESTIF");
    roughen(r, de, le);
    if (mapped)
        CALL(c, shellfe_add_shell_to_skyline_mapped(de, ielnod, NULL, idiag, pnb, pnd, sky, numnod, map, pie, plc, NULL, NULL, pld));
    else
        CALL(c, shellfe_add_shell_to_skyline(de, ielnod, NULL, idiag, pnb, pnd, sky, numnod, pie, plc, NULL, NULL, pld, pns));
}
static void d_sky_map(Rng* r, Call* c, int64_t i, int v) { (void)i; (void)v; drive_skyline(r, c, 1, 0); }
static void d_sky(Rng* r, Call* c, int64_t i, int v) { (void)i; (void)v; drive_skyline(r, c, 0, 0); }
static void d_sky_map_d(Rng* r, Call* c, int64_t i, int v) { (void)i; (void)v; drive_skyline(r, c, 1, 1); }
static void d_sky_d(Rng* r, Call* c, int64_t i, int v) { (void)i; (void)v; drive_skyline(r, c, 0, 1); }

static void drive_loads(Rng* r, Call* c, int dbl) {
    int32_t nenod = irange(r, 1, 9), ndof = irange(r, 1, 8), ielem = irange(r, 0, 3);
    int32_t ldcn = ielem + irange(r, 0, 2), maxnode = 12, ldnf = maxnode + irange(r, 0, 2);
    int32_t* pne = iscalar(c, "NENOD", nenod);
    int64_t li = (int64_t)nenod * (ldcn + 1) + ielem + 1;
    int32_t* ielnod = IA(c, "IELNOD", li);
    for (int64_t x = 0; x < li; ++x) ielnod[x] = irange(r, 1, maxnode);
    for (int32_t a = 1; a <= nenod; ++a)
        ielnod[a * (ldcn + 1) + ielem] = irange(r, 1, maxnode) * (chance(r, 20) ? -1 : 1);
    int32_t* plc = iscalar(c, "LDCN", ldcn);
    int32_t* numnod = IA(c, "NUMNOD", maxnode + 1);
    for (int32_t n = 0; n <= maxnode; ++n) numnod[n] = irange(r, 1, maxnode);
    int32_t *pnf = iscalar(c, "LDNF", ldnf), *pnd = iscalar(c, "NDOF", ndof);
    int64_t lg = (int64_t)(maxnode - 1) * ndof + 7 + ndof;
    int64_t le = (int64_t)nenod * ndof + 1, ln = (int64_t)ndof * (ldnf + 1) + maxnode + 1;
    void* gload = dbl ? (void*)DA(c, "GLOAD", lg) : (void*)FA(c, "GLOAD", lg);
    if (dbl) fill_d(r, (double*)gload, lg, -1, 1, 2); else fill_f(r, (float*)gload, lg, -1, 1, 2);
    float* eload = FA(c, "ELOAD", le);
    fill_f(r, eload, le, -100, 100, 5);
    float* nodfrc = FA(c, "NODFRC", ln);
    fill_f(r, nodfrc, ln, -1, 1, 2);
    int32_t* pie = iscalar(c, "IELEM", ielem);
    if (dbl)
        CALL(c, FELOADTOGLOADDOTNET01(pne, ielnod, plc, numnod, pnf, pnd, (double*)gload, eload, nodfrc, NULL, pie));
    else
        CALL(c, FELOADTOGLOADDOTNET(pne, ielnod, plc, numnod, pnf, pnd, (float*)gload, eload, nodfrc, NULL, pie));
}
static void d_loads(Rng* r, Call* c, int64_t i, int v) { (void)i; (void)v; drive_loads(r, c, 0); }
static void d_loads01(Rng* r, Call* c, int64_t i, int v) { (void)i; (void)v; drive_loads(r, c, 1); }

static void d_findload(Rng* r, Call* c, int64_t i, int v) {
    (void)i; (void)v;
    int32_t npt = irange(r, -1, 40);
    int32_t* pn = iscalar(c, "NPT", npt);
    int32_t* ipt = iscalar(c, "IPT", irange(r, -5, 5));
    float scale = chance(r, 10) ? 1e4f : 10.0f;
    float *xp = fscalar(c, "XP", uniform(r, -scale, scale)), *yp = fscalar(c, "YP", uniform(r, -scale, scale));
    float *xpt = FA(c, "XPT", npt + 1), *ypt = FA(c, "YPT", npt + 1);
    for (int32_t k = 0; k <= npt; ++k) {
        /* a grid, so that equal distances occur */
        xpt[k] = chance(r, 5) ? awkward(r, 1) : (float)irange(r, -10, 10) * scale / 10.0f;
        ypt[k] = chance(r, 5) ? awkward(r, 1) : (float)irange(r, -10, 10) * scale / 10.0f;
    }
    if (chance(r, 20)) *xp = (float)irange(r, -10, 10) * scale / 10.0f;
    if (chance(r, 5)) *yp = awkward(r, 1);
    CALL(c, FINDLOADPOINT(pn, ipt, xp, yp, xpt, ypt));
}

static void d_incidence(Rng* r, Call* c, int64_t i, int v) {
    (void)i; (void)v;
    int32_t nmem = irange(r, 0, 5), maxnode = 15;
    int32_t* pn = iscalar(c, "NMEM", nmem);
    int32_t* maxmem = iscalar(c, "MAXMEM", irange(r, -3, 3));
    int32_t* nodmem = IA(c, "NODMEM", 51 * (maxnode + 1));
    for (int32_t n = 0; n <= maxnode; ++n) {
        nodmem[51 * n] = irange(r, 0, 5);
        for (int k = 1; k <= 50; ++k) nodmem[51 * n + k] = irange(r, -1, 99);
    }
    int32_t* memslt = IA(c, "MEMSLT", 9 * (nmem + 1));
    for (int32_t x = 0; x < 9 * (nmem + 1); ++x) memslt[x] = chance(r, 20) ? irange(r, -2, 0) : irange(r, 1, maxnode);
    CALL(c, FEMEMBERSTONODES1DOTNET(NULL, pn, maxmem, nodmem, memslt));
}

static void d_packnod(Rng* r, Call* c, int64_t i, int v) {
    (void)i; (void)v;
    int32_t nnode = irange(r, 0, 40), nmem = irange(r, 1, 10), ldnmem = irange(r, 1, 5);
    int32_t* idel = IA(c, "IDEL", nnode + 1);
    for (int32_t n = 0; n <= nnode; ++n) idel[n] = chance(r, 85) ? 0 : -1;
    int32_t* nodmem = IA(c, "NODMEM", (int64_t)(nnode + 1) * (ldnmem + 1));
    for (int32_t n = 0; n <= nnode; ++n) {
        int32_t cnt = irange(r, 0, ldnmem);
        nodmem[n * (ldnmem + 1)] = chance(r, 10) ? irange(r, -1, 0) : cnt;
        for (int32_t k = 1; k <= ldnmem; ++k) nodmem[n * (ldnmem + 1) + k] = irange(r, 1, nmem);
    }
    int32_t* pn = iscalar(c, "NNODE", nnode);
    int32_t* memslt = IA(c, "MEMSLT", 9 * (nmem + 1));
    for (int32_t x = 0; x < 9 * (nmem + 1); ++x) memslt[x] = irange(r, 0, nnode > 0 ? nnode : 1);
    int32_t *pm = iscalar(c, "NMEM", nmem), *pl = iscalar(c, "LDNMEM", ldnmem);
    float* xyz = FA(c, "XYZN", 3 * (nnode + 1));
    float grid = chance(r, 50) ? 0.001f : 0.0005f;
    for (int32_t x = 0; x < 3 * (nnode + 1); ++x)
        xyz[x] = chance(r, 5) ? awkward(r, 1) : (float)irange(r, 0, 4) * grid + (chance(r, 20) ? uniform(r, -1e-4f, 1e-4f) : 0.0f);
    CALL(c, PACKNODFE1DOTNET(idel, nodmem, pn, memslt, pm, pl, xyz));
}

static void d_beams(Rng* r, Call* c, int64_t i, int v) {
    (void)i; (void)v;
    int32_t nbeam = irange(r, 0, 8), nel = irange(r, 0, 8), maxnode = 20;
    int32_t *pb = iscalar(c, "NBEAM", nbeam), *pe = iscalar(c, "NEL", nel);
    int32_t* eltab = IA(c, "ELTAB", 10 * (nel + 1));
    for (int32_t e = 0; e <= nel; ++e) {
        eltab[10 * e] = chance(r, 80) ? 0 : irange(r, -1, 1);
        for (int s = 1; s <= 8; ++s) eltab[10 * e + s] = irange(r, 1, maxnode);
        eltab[10 * e + 9] = chance(r, 20) ? 0 : irange(r, -5, 50);
    }
    int32_t *ib1 = IA(c, "IBN1", nbeam + 1), *ib2 = IA(c, "IBN2", nbeam + 1);
    int32_t* info = IA(c, "IBINFO", nbeam + 1);
    for (int32_t b = 0; b <= nbeam; ++b) {
        ib1[b] = irange(r, 1, maxnode);
        ib2[b] = irange(r, 1, maxnode);
        if (nel > 0 && chance(r, 60)) { /* on an element edge */
            int32_t e = irange(r, 1, nel), s = irange(r, 1, 8);
            ib1[b] = eltab[10 * e + s];
            ib2[b] = eltab[10 * e + (s % 8) + 1];
            if (chance(r, 50)) { int32_t t = ib1[b]; ib1[b] = ib2[b]; ib2[b] = t; }
        }
        info[b] = chance(r, 80) ? 0 : irange(r, -3, 3);
    }
    int32_t* flg = IA(c, "IBMFLG", maxnode + 1);
    for (int32_t n = 0; n <= maxnode; ++n) flg[n] = irange(r, 0, 2);
    CALL(c, SETBEAMINFODLLDOTNET(pb, pe, eltab, ib1, ib2, info, flg));
}

static void d_compare(Rng* r, Call* c, int64_t i, int v) {
    (void)i; (void)v;
    int32_t mcol = irange(r, -1, 6), nrowt = irange(r, -1, 6);
    int64_t l = (mcol < 1 || nrowt < 1) ? 1 : (int64_t)(nrowt + 1) * (mcol + 1);
    float *a = FA(c, "ARRA", l), *b = FA(c, "ARRB", l);
    float mag = chance(r, 30) ? 1e-8f : (chance(r, 30) ? 1e-4f : 1.0f);
    for (int64_t x = 0; x < l; ++x) {
        a[x] = chance(r, 5) ? awkward(r, 1) : uniform(r, -mag, mag);
        b[x] = chance(r, 50) ? a[x] : a[x] * (1.0f + uniform(r, -1e-7f, 1e-7f));
    }
    int32_t *pm = iscalar(c, "MCOL", mcol), *pn = iscalar(c, "NROWT", nrowt);
    int32_t* same = iscalar(c, "ISAME", irange(r, -2, 2));
    CALL(c, COMPAREARRAY(a, b, pm, pn, same));
}

static void d_packmesh(Rng* r, Call* c, int64_t i, int v) {
    (void)i; (void)v;
    int32_t nbase = irange(r, 0, 10), nmid = 4 * irange(r, 0, 8) - (int32_t)irange(r, 0, 1);
    int32_t ntot = nbase + (nmid > 0 ? nmid : 0);
    int32_t nel = (ntot - nbase + 3) / 4, ldel = nel + irange(r, 0, 2);
    int32_t* idel = IA(c, "IDEL", ntot + 1);
    for (int32_t n = 0; n <= ntot; ++n) idel[n] = chance(r, 90) ? 0 : -1;
    int32_t *pb = iscalar(c, "NBASE", nbase), *pt = iscalar(c, "NTOT", ntot);
    float* xyp = FA(c, "XYP", 3 * (ntot + 1));
    float tol = chance(r, 50) ? 0.01f : 0.001f;
    for (int32_t x = 0; x < 3 * (ntot + 1); ++x)
        xyp[x] = chance(r, 3) ? awkward(r, 1) : (float)irange(r, 0, 3) * tol + (chance(r, 30) ? uniform(r, -tol, tol) : 0.0f);
    int64_t le = (ntot - 1 <= nbase) ? 1 : (int64_t)8 * (ldel + 1) + nel + 1;
    int32_t* elslot = IA(c, "ELSLOT", le);
    for (int64_t x = 0; x < le; ++x) elslot[x] = irange(r, 0, ntot);
    int32_t* pl = iscalar(c, "LDEL", ldel);
    float* ptol = fscalar(c, "TOLM", tol);
    CALL(c, PACKMESHNODESDOTNET(idel, pb, pt, xyp, elslot, pl, ptol));
}

static void d_natural(Rng* r, Call* c, int64_t i, int v) {
    (void)i; (void)v;
    int32_t iel = irange(r, 0, 3), ldcn = iel + irange(r, 0, 2), nnode = irange(r, 4, 10);
    int32_t* piel = iscalar(c, "IEL", iel);
    float* xi = fscalar(c, "XI", uniform(r, -1, 1));
    float* eta = fscalar(c, "ETA", bits_f((uint32_t)next(r)));
    int64_t li = (int64_t)7 * (ldcn + 1) + iel + 1;
    int32_t* ielnod = IA(c, "IELNOD", li);
    for (int64_t x = 0; x < li; ++x) ielnod[x] = irange(r, 1, nnode);
    float* xyz = FA(c, "XYZN", 3 * (nnode + 1));
    /* a plane quadrilateral, turned; sometimes collapsed */
    static const float corner[4][2] = {{0, 0}, {1, 0}, {1, 1}, {0, 1}};
    for (int32_t x = 0; x < 3 * (nnode + 1); ++x) xyz[x] = uniform(r, -1, 1);
    int collapse = chance(r, 10);
    for (int s = 0; s < 4; ++s) {
        int32_t n = 1 + s; /* corners are nodes 1..4, in slots 1, 3, 5, 7 */
        ielnod[iel + (2 * s + 1) * (ldcn + 1)] = n;
        float u = corner[s][0] + uniform(r, -0.2f, 0.2f), w = corner[s][1] + uniform(r, -0.2f, 0.2f);
        if (collapse) w = 0.0f;
        xyz[n] = u * 3.0f;
        xyz[n + (nnode + 1)] = w * 3.0f;
        xyz[n + 2 * (nnode + 1)] = uniform(r, -0.01f, 0.01f);
    }
    float *px = fscalar(c, "XP", uniform(r, -1, 4)), *py = fscalar(c, "YP", uniform(r, -1, 4)),
          *pz = fscalar(c, "ZP", uniform(r, -1, 1));
    int32_t* pl = iscalar(c, "LDCN", ldcn);
    /* direction cosines of the plane: the z-up plane or a turned one */
    float c1 = 0.0f, c2 = 1.0f, c3 = 1.0f, c4 = 1.0f;
    if (chance(r, 50)) {
        c1 = uniform(r, -1, 1);
        c2 = uniform(r, -1, 1);
        c3 = uniform(r, -1, 1);
        c4 = uniform(r, -1, 1);
    }
    float *d1 = fscalar(c, "DC1", c1), *d2 = fscalar(c, "DC2", c2), *d3 = fscalar(c, "DC3", c3),
          *d4 = fscalar(c, "DC4", c4);
    int32_t* pn = iscalar(c, "NNODE", nnode);
    CALL(c, NORMALISEDCORDDOTNET(piel, xi, eta, px, py, pz, ielnod, xyz, pl, NULL, d1, d2, d3, d4, pn));
}

/* ---- planar geometry -------------------------------------------------------- */

/* A NaN of any payload and sign, quiet or signalling, or an infinity. */
static double nonfinite_d(Rng* r) {
    uint64_t b = next(r);
    return chance(r, 70) ? bits_d(b | 0x7FF0000000000001u) : bits_d((b & 0x8000000000000000u) | 0x7FF0000000000000u);
}
/* One of the n values replaced by a NaN or an infinity. */
static void spoil(Rng* r, double* p, int n) {
    int32_t k = irange(r, 0, n - 1);
    p[k] = nonfinite_d(r);
}
/* A double of any finite magnitude, sign and kind, or a NaN or infinity. */
static double awkward_d(Rng* r) {
    uint64_t b = next(r);
    switch (next(r) % 8) {
        case 0: return bits_d(b & 0x800FFFFFFFFFFFFFu);                    /* subnormal or zero */
        case 1: return (b & 1) ? -0.0 : 0.0;
        case 2: return (b & 2) ? -pow2(irange(r, -1074 + 52, 1023)) : pow2(irange(r, -1022, 1023));
        case 3: return nonfinite_d(r);
        case 4: {
            uint64_t e = (b >> 52) & 0x7FFu;
            if (e == 0x7FFu) e = 0x7FEu;
            return bits_d((b & 0x800FFFFFFFFFFFFFu) | (e << 52));          /* any finite */
        }
        default: return uniform_d(r, -100.0, 100.0);
    }
}

/* The five constants of the orientation predicate as a host computes them. */
static void predicate_constants(Call* c, double** k) {
    const double eps = 0x1p-53;
    static const char* const names[5] = {"CCWERRBOUNDA", "CCWERRBOUNDB", "CCWERRBOUNDC", "SPLITTER",
                                         "RESULTERRBOUND"};
    for (int j = 0; j < 5; ++j) k[j] = DA(c, names[j], 1);
    *k[0] = (3.0 + 16.0 * eps) * eps;
    *k[1] = (2.0 + 12.0 * eps) * eps;
    *k[2] = (9.0 + 64.0 * eps) * eps * eps;
    *k[3] = 0x1p27 + 1.0;
    *k[4] = (3.0 + 8.0 * eps) * eps;
}

/* Three plane points for the orientation test, by kind:
 *   0, 1  random (the plain determinant settles them);
 *   2, 3  the 256 x 256 grid of ulp steps above (0.5, 0.5) against the
 *         line through (12, 12) and (24, 24), or another long line through
 *         (0.5, 0.5), whose differences round: the later stages;
 *   4     exactly collinear, on y = +-2^k x, on an axis-parallel line, or
 *         on a line of small integers (exact differences);
 *   5     near a random line: a point of the line a few ulps off;
 *   6     small integers nearly collinear: exact differences, rounded
 *         products;
 * any of them possibly scaled by a power of two from tiny to near overflow,
 * and a few with NaN or infinite coordinates. */
static void orient_points(Rng* r, int64_t i, double* p) {
    int kind = (int)(i % 7);
    switch (kind) {
        case 0:
        case 1:
            for (int k = 0; k < 6; ++k) p[k] = uniform_d(r, -1.0, 1.0) * (kind ? 1e3 : 1.0);
            break;
        case 2:
        case 3: {
            int32_t gi = irange(r, 0, 255), gj = irange(r, 0, 255);
            p[0] = 0.5 + gi * 0x1p-53;
            p[1] = 0.5 + gj * 0x1p-53;
            if (kind == 2) {
                p[2] = 12.0; p[3] = 12.0; p[4] = 24.0; p[5] = 24.0;
            } else { /* through (0.5, 0.5) with slope 2^-1 .. 2^1, ends exact */
                double s = pow2(irange(r, -1, 1)), t1 = uniform_d(r, 1.0, 40.0), t2 = -uniform_d(r, 1.0, 40.0);
                p[2] = 0.5 + t1; p[3] = 0.5 + s * t1; p[4] = 0.5 + t2; p[5] = 0.5 + s * t2;
            }
            break;
        }
        case 4: {
            int line = irange(r, 0, 3);
            double slope = pow2(irange(r, -2, 2));
            for (int k = 0; k < 3; ++k) {
                double x = uniform_d(r, -50.0, 50.0);
                int32_t t = irange(r, -20, 20);
                if (line == 0) { p[2 * k] = x; p[2 * k + 1] = x * slope; }
                else if (line == 1) { p[2 * k] = x; p[2 * k + 1] = -x; }
                else if (line == 2) { p[2 * k] = x; p[2 * k + 1] = 0.75; }
                else { p[2 * k] = 3.0 + 7.0 * t; p[2 * k + 1] = -2.0 + 5.0 * t; }
            }
            break;
        }
        case 5: {
            double ax = uniform_d(r, -10, 10), ay = uniform_d(r, -10, 10);
            double bx = uniform_d(r, -10, 10), by = uniform_d(r, -10, 10), t = uniform_d(r, -2, 3);
            p[0] = ax; p[1] = ay; p[2] = bx; p[3] = by;
            p[4] = ax + t * (bx - ax);
            p[5] = ay + t * (by - ay);
            int k = irange(r, 0, 5);
            int64_t step = irange(r, -3, 3);
            if (p[k] != 0.0) p[k] = ulps(p[k], step);
            break;
        }
        default: {
            /* (0, 0), (m, m+k), (m+1, m+k+1) with m near 2^30: the
             * determinant is -k exactly, the differences are exact and the
             * products round; k decides the stage */
            double m = (double)irange(r, 1 << 30, 0x7FFFFFFF), k = (double)irange(r, -1500, 1500);
            p[0] = 0.0; p[1] = 0.0;
            p[2] = m; p[3] = m + k;
            p[4] = m + 1.0; p[5] = m + k + 1.0;
            break;
        }
    }
    /* roles shuffled: the stages must agree for every order */
    for (int k = 2; k > 0; --k) {
        int j = irange(r, 0, k);
        double tx = p[2 * k], ty = p[2 * k + 1];
        p[2 * k] = p[2 * j]; p[2 * k + 1] = p[2 * j + 1];
        p[2 * j] = tx; p[2 * j + 1] = ty;
    }
    if (chance(r, 15)) { /* tiny, huge, or beyond the products' range */
        int e = chance(r, 50) ? irange(r, -500, 500)
                              : (chance(r, 50) ? irange(r, -1020, -900) : irange(r, 480, 1010));
        double s = pow2(e);
        for (int k = 0; k < 6; ++k) p[k] *= s;
    }
    if (chance(r, 4)) spoil(r, p, 6);
    if (chance(r, 1)) spoil(r, p, 6);
}

static void d_orient2d(Rng* r, Call* c, int64_t i, int v) {
    (void)v;
    double *pa = DA(c, "PA", 2), *pb = DA(c, "PB", 2), *pc = DA(c, "PC", 2);
    double p[6];
    orient_points(r, i, p);
    pa[0] = p[0]; pa[1] = p[1]; pb[0] = p[2]; pb[1] = p[3]; pc[0] = p[4]; pc[1] = p[5];
    double* k[5];
    predicate_constants(c, k);
    double* res = DA(c, "RESULT", 1);
    CALL(c, *res = ORIENT2D(pa, pb, pc, k[0], k[1], k[2], k[3], k[4]));
}

static void d_pointdist(Rng* r, Call* c, int64_t i, int v) {
    (void)i; (void)v;
    double *pa = DA(c, "PA", 2), *pb = DA(c, "PB", 2);
    for (int k = 0; k < 2; ++k) {
        pa[k] = chance(r, 10) ? awkward_d(r) : uniform_d(r, -10, 10);
        pb[k] = chance(r, 10) ? awkward_d(r) : (chance(r, 10) ? pa[k] : uniform_d(r, -10, 10));
    }
    double* res = DA(c, "RESULT", 1);
    CALL(c, *res = POINTDIST2D(pa, pb));
}

static void d_triarea(Rng* r, Call* c, int64_t i, int v) {
    (void)i; (void)v;
    double *pa = DA(c, "PA", 3), *pb = DA(c, "PB", 3), *pc = DA(c, "PC", 3);
    double s = chance(r, 10) ? pow2(irange(r, -600, 600)) : 1.0;
    for (int k = 0; k < 3; ++k) {
        pa[k] = uniform_d(r, -5, 5) * s;
        pb[k] = uniform_d(r, -5, 5) * s;
        pc[k] = chance(r, 20) ? pa[k] + (pb[k] - pa[k]) * 2.0 : uniform_d(r, -5, 5) * s; /* collinear */
    }
    if (chance(r, 10)) {
        double* all[3] = {pa, pb, pc};
        int32_t which = irange(r, 0, 2), k = irange(r, 0, 2);
        all[which][k] = awkward_d(r);
    }
    double* res = DA(c, "RESULT", 1);
    CALL(c, *res = TRIAREA3D(pa, pb, pc));
}

/* Two segments whose lengths sit on and beside LENTOL, and whose cross
 * product sits on and beside PARTOL^2, or random ones. */
static void d_lineintersect(Rng* r, Call* c, int64_t i, int v) {
    (void)v;
    double *p1 = DA(c, "P1", 2), *p2 = DA(c, "P2", 2), *q1 = DA(c, "Q1", 2), *q2 = DA(c, "Q2", 2);
    double *ps = DA(c, "S", 1), *pt = DA(c, "T", 1);
    double *lentol = DA(c, "LENTOL", 1), *partol = DA(c, "PARTOL", 1);
    *ps = bits_d(0x7FF4DEADBEEF0001u); /* written only for code 11 */
    *pt = bits_d(0xFFF4DEADBEEF0002u);
    double x0 = (double)irange(r, -8, 8), y0 = (double)irange(r, -8, 8);
    switch (i % 4) {
        case 0: { /* lengths exact: axis-parallel, or 3-4-5 scaled by 2^e */
            double s = pow2(irange(r, -30, 30));
            int which = irange(r, 0, 1);
            double len;
            if (chance(r, 50)) { p1[0] = x0; p1[1] = y0; p2[0] = x0 + 3.0 * s; p2[1] = y0 + 4.0 * s; len = 5.0 * s; }
            else { p1[0] = x0; p1[1] = y0; p2[0] = x0; p2[1] = y0 - 6.0 * s; len = 6.0 * s; }
            q1[0] = y0; q1[1] = x0; q2[0] = y0 + 7.0 * s; q2[1] = x0 + 1.0 * s;
            if (which) { /* the second segment carries the exact length */
                double t[4] = {p1[0], p1[1], p2[0], p2[1]};
                p1[0] = q1[0]; p1[1] = q1[1]; p2[0] = q2[0]; p2[1] = q2[1];
                q1[0] = t[0]; q1[1] = t[1]; q2[0] = t[2]; q2[1] = t[3];
            }
            *lentol = ulps(len, irange(r, -1, 1));
            *partol = chance(r, 50) ? 0.0 : 1e-6;
            break;
        }
        case 1: { /* den = A*B - E*C exactly, PARTOL^2 on and beside it */
            int32_t pp = irange(r, 1, 3000);
            int32_t a = pp, b = pp * (chance(r, 50) ? 1 : -1), e = irange(r, -3, 3), cc = 0;
            if (chance(r, 50)) { /* a second product, den stays p^2 */
                cc = irange(r, -5, 5);
                b = chance(r, 50) ? pp : -pp;
                e = 0;
            }
            p1[0] = x0; p1[1] = y0; p2[0] = x0 + a; p2[1] = y0 + e;
            q1[0] = y0 - 1.0; q1[1] = x0 + 2.0; q2[0] = q1[0] + cc; q2[1] = q1[1] + b;
            double pt0 = (double)pp;
            int step = irange(r, -2, 2);
            *partol = step == 0 ? pt0 : ulps(pt0, step);
            if (chance(r, 30)) *partol = -*partol;
            if (chance(r, 20)) *partol = uniform_d(r, 0.0, 2.0) * pt0;
            *lentol = chance(r, 50) ? 0.0 : 1e-3;
            break;
        }
        case 2: /* crossing or not, inside or outside the segments */
            for (int k = 0; k < 2; ++k) {
                p1[k] = uniform_d(r, -1, 1); p2[k] = uniform_d(r, -1, 1);
                q1[k] = uniform_d(r, -1, 1); q2[k] = uniform_d(r, -1, 1);
            }
            if (chance(r, 20)) { q1[0] = p1[0]; q1[1] = p1[1]; } /* shared end */
            if (chance(r, 10)) { q2[0] = p2[0] + (p2[0] - p1[0]); q2[1] = p2[1] + (p2[1] - p1[1]); } /* collinear */
            *lentol = chance(r, 70) ? 1e-9 : uniform_d(r, 0, 1);
            *partol = chance(r, 70) ? 1e-6 : uniform_d(r, 0, 1);
            break;
        default: /* zero-length, zero tolerances, awkward values */
            for (int k = 0; k < 2; ++k) {
                p1[k] = chance(r, 20) ? awkward_d(r) : x0;
                p2[k] = chance(r, 20) ? awkward_d(r) : (chance(r, 50) ? p1[k] : uniform_d(r, -1, 1));
                q1[k] = chance(r, 20) ? awkward_d(r) : y0;
                q2[k] = chance(r, 20) ? awkward_d(r) : (chance(r, 50) ? q1[k] : uniform_d(r, -1, 1));
            }
            *lentol = chance(r, 50) ? 0.0 : awkward_d(r);
            *partol = chance(r, 50) ? 0.0 : awkward_d(r);
            break;
    }
    int32_t* res = IA(c, "RESULT", 1);
    CALL(c, *res = LINEINTERSECT2D(p1, p2, q1, q2, ps, pt, lentol, partol));
}

/* A node table XY (LDN+1, 3) for the mesher routines: nodes on a small
 * grid (ties, exact collinearity), duplicates, a few on a long line an ulp
 * or two off it, now and then a NaN or infinite coordinate. */
static double* mesh_nodes(Rng* r, Call* c, int32_t nn) {
    double* xy = DA(c, "XY", 3 * (int64_t)nn);
    for (int32_t n = 0; n < nn; ++n) {
        double x, y;
        int kind = irange(r, 0, 9);
        if (kind < 5) {
            x = irange(r, 0, 4);
            y = irange(r, 0, 4);
        } else if (kind < 7 && n > 0) { /* a duplicate */
            int32_t m = irange(r, 0, n - 1);
            x = xy[m];
            y = xy[m + nn];
        } else if (kind < 9) { /* on or beside the line through (0.5, 0.5) and (3.5, 3.5) */
            int32_t along = irange(r, 0, 3), fine = irange(r, 0, 7), off = irange(r, -2, 2);
            x = 0.5 + along + fine * 0x1p-51;
            y = x + off * 0x1p-51;
        } else {
            x = uniform_d(r, -1, 5);
            y = uniform_d(r, -1, 5);
        }
        xy[n] = x;
        xy[n + nn] = y;
        xy[n + 2 * nn] = chance(r, 50) ? nonfinite_d(r) : uniform_d(r, -1, 1); /* z, not read */
    }
    if (chance(r, 10)) { /* the same mesh tiny or huge */
        double s = pow2(irange(r, -400, 400));
        for (int32_t n = 0; n < 2 * nn; ++n) xy[n] *= s;
    }
    if (chance(r, 5)) spoil(r, xy, 2 * nn);
    return xy;
}

static double mesh_tolerance(Rng* r, double s) {
    switch (irange(r, 0, 5)) {
        case 0: return 0.0;
        case 1: return 1e-12 * s;
        case 2: return 0.5 * s;
        case 3: return 1.0 * s;
        case 4: return awkward_d(r);
        default: return uniform_d(r, 0.0, 2.0) * s;
    }
}

static void d_checknewtriang(Rng* r, Call* c, int64_t i, int v) {
    (void)i; (void)v;
    int32_t nn = irange(r, 3, 24), ldn = nn - 1;
    int32_t nedge = chance(r, 5) ? irange(r, -1, 0) : irange(r, 1, 14), lde = (nedge > 0 ? nedge : 1) - 1 + irange(r, 0, 2);
    int32_t* edges = IA(c, "EDGES", 2 * (int64_t)(lde + 1));
    for (int32_t k = 0; k <= lde; ++k) {
        edges[k] = irange(r, 1, nn);
        edges[k + lde + 1] = chance(r, 5) ? edges[k] : irange(r, 1, nn);      /* degenerate edge */
        if (k > 0 && chance(r, 10)) { edges[k] = edges[k - 1]; edges[k + lde + 1] = edges[k + lde]; } /* repeated */
    }
    double* xy = mesh_nodes(r, c, nn);
    int32_t iedge = nedge > 0 ? irange(r, 0, nedge - 1) : 0;
    int32_t a = edges[iedge], b = edges[iedge + lde + 1];
    double* p = DA(c, "P", 2);
    int32_t nodex = irange(r, -1, nn + 2);
    switch (irange(r, 0, 3)) {
        case 0: /* an existing node as the apex, left out of the tests */
            nodex = irange(r, 1, nn);
            p[0] = xy[nodex - 1]; p[1] = xy[nodex - 1 + nn];
            break;
        case 1: /* on the base line or beside it */
            p[0] = xy[a - 1] + (xy[b - 1] - xy[a - 1]) * 2.0;
            p[1] = xy[a - 1 + nn] + (xy[b - 1 + nn] - xy[a - 1 + nn]) * 2.0;
            if (chance(r, 50) && p[0] > 0) p[0] = ulps(p[0], irange(r, -2, 2));
            break;
        case 2: p[0] = uniform_d(r, -1, 5); p[1] = uniform_d(r, -1, 5); break;
        default: p[0] = irange(r, -1, 5) * 0.5; p[1] = irange(r, -1, 5) * 0.5; break;
    }
    if (chance(r, 3)) spoil(r, p, 2);
    double* k[5];
    predicate_constants(c, k);
    int32_t *pie = iscalar(c, "IEDGE", iedge), *pnx = iscalar(c, "NODEX", nodex);
    int32_t *pne = iscalar(c, "NEDGE", nedge), *plde = iscalar(c, "LDE", lde), *pldn = iscalar(c, "LDN", ldn);
    double *lentol = DA(c, "LENTOL", 1), *partol = DA(c, "PARTOL", 1), *ontol = DA(c, "ONTOL", 1);
    *lentol = chance(r, 60) ? 1e-9 : mesh_tolerance(r, 1.0);
    *partol = chance(r, 60) ? 1e-6 : mesh_tolerance(r, 1.0);
    *ontol = mesh_tolerance(r, 1.0);
    int32_t* res = IA(c, "RESULT", 1);
    CALL(c, *res = CHECKNEWTRIANG(pie, pnx, p, xy, pne, edges, k[0], k[1], k[2], k[3], plde, pldn,
                                  lentol, partol, ontol, k[4]));
}

static void d_getnearnodes(Rng* r, Call* c, int64_t i, int v) {
    (void)i; (void)v;
    int32_t nn = irange(r, 3, 30), ldn = nn - 1;
    int32_t ncol = chance(r, 3) ? 0 : irange(r, 1, 4);
    int32_t nrow = chance(r, 5) ? irange(r, -1, 0) : irange(r, 1, 12), ldt = (nrow > 0 ? nrow : 1) - 1 + irange(r, 0, 2);
    int64_t lt = (int64_t)(ldt + 1) * (ncol > 0 ? ncol : 1);
    int32_t* table = IA(c, "TABLE", lt);
    for (int64_t x = 0; x < lt; ++x) table[x] = irange(r, 1, nn);
    double* xy = mesh_nodes(r, c, nn);
    int32_t na = irange(r, 1, nn), nb = irange(r, 1, nn);
    double* p = DA(c, "P", 2);
    if (chance(r, 50)) { /* the middle of the base edge, ties in distance */
        p[0] = 0.5 * (xy[na - 1] + xy[nb - 1]);
        p[1] = 0.5 * (xy[na - 1 + nn] + xy[nb - 1 + nn]);
    } else {
        p[0] = irange(r, 0, 8) * 0.5;
        p[1] = irange(r, 0, 8) * 0.5;
    }
    if (chance(r, 3)) spoil(r, p, 2);
    int32_t kmax = chance(r, 20) ? 1 : irange(r, 1, 12);
    int32_t* nearl = IA(c, "NEAR", kmax + 2); /* two sentinels past KMAX */
    for (int32_t x = 0; x < kmax + 2; ++x) nearl[x] = -777 - x;
    int32_t* nwithin = iscalar(c, "NWITHIN", -555);
    int32_t* nnear = iscalar(c, "NNEAR", 0);
    double* radius = DA(c, "RADIUS", 1);
    switch (irange(r, 0, 3)) {
        case 0: *radius = 0.0; break;
        case 1: *radius = (double)irange(r, 1, 4); break; /* on grid distances */
        case 2: *radius = 1.5; break;
        default: *radius = chance(r, 80) ? uniform_d(r, 0, 5) : awkward_d(r); break;
    }
    double* k[5];
    predicate_constants(c, k);
    int32_t *pna = iscalar(c, "NA", na), *pnb = iscalar(c, "NB", nb), *pnr = iscalar(c, "NROW", nrow);
    int32_t *pldt = iscalar(c, "LDT", ldt), *pldn = iscalar(c, "LDN", ldn);
    int32_t *pk = iscalar(c, "KMAX", kmax), *pnc = iscalar(c, "NCOL", ncol);
    int32_t* res = IA(c, "RESULT", 1);
    CALL(c, *res = GETNEARNODES(pna, pnb, p, xy, pnr, table, radius, nwithin, nnear, nearl, k[0], k[1],
                                k[2], k[3], pldt, pldn, k[4], pk, pnc));
}

static void d_getvertices(Rng* r, Call* c, int64_t i, int v) {
    (void)i; (void)v;
    int32_t nlast = irange(r, -1, 8), nv = irange(r, -1, 5), kfirst = irange(r, 0, 10);
    int64_t rows = nlast + 1 > 0 ? nlast + 1 : 1, cols = nv > 0 ? nv : 1;
    int32_t* elemnod = IA(c, "ELEMNOD", rows * cols);
    for (int64_t x = 0; x < rows * cols; ++x) elemnod[x] = chance(r, 10) ? -irange(r, 0, 9) : irange(r, 1, 99);
    int64_t lv = (nlast >= kfirst && nv > 0) ? (int64_t)(nlast - kfirst + 1) * nv : 0;
    int32_t* verts = IA(c, "VERTS", lv + 2); /* two sentinels past the end */
    for (int64_t x = 0; x < lv + 2; ++x) verts[x] = -999;
    int32_t *pl = iscalar(c, "NLAST", nlast), *pk = iscalar(c, "KFIRST", kfirst), *pv = iscalar(c, "NV", nv);
    /* the unused arguments are passed as null pointers: they must not be read */
    CALL(c, GETELEMENTVERTICES(verts, elemnod, NULL, pl, NULL, pk, pv));
}

/* ---- error estimate, results and panels ------------------------------------ */

/* An array of `count` elements (at least one) with GUARD more on either
 * side, everything random bits; returns its first element. A write beside
 * the array changes the hash. */
#define GUARD 2
static void* guarded(Rng* r, Call* c, const char* name, enum Kind kind, int64_t count) {
    if (count < 1) count = 1;
    size_t size = kind_size(kind);
    unsigned char* p = (unsigned char*)arr(c, name, kind, count + 2 * GUARD);
    for (int64_t x = 0; x < count + 2 * GUARD; ++x) {
        uint64_t b = next(r);
        memcpy(p + (size_t)x * size, &b, size);
    }
    return p + GUARD * size;
}
#define FG(r, c, name, count) ((float*)guarded(r, c, name, F32, count))
#define IG(r, c, name, count) ((int32_t*)guarded(r, c, name, I32, count))
/* Output and in-out scalars, between guards as well. */
static float* fguarded(Rng* r, Call* c, const char* name, float v) {
    float* p = FG(r, c, name, 1);
    *p = v;
    return p;
}
static int32_t* iguarded(Rng* r, Call* c, const char* name, int32_t v) {
    int32_t* p = IG(r, c, name, 1);
    *p = v;
    return p;
}

/* A NaN of any payload and sign, quiet or signalling. */
static float nan_f(Rng* r) { return bits_f((uint32_t)next(r) | 0x7F800001u); }
/* A NaN or an infinity. */
static float nonfinite_f(Rng* r) {
    uint32_t b = (uint32_t)next(r);
    return chance(r, 60) ? bits_f(b | 0x7F800001u) : bits_f((b & 0x80000000u) | 0x7F800000u);
}

/* Element family codes: every known one, and unknown ones that give zero
 * shape functions. */
static int32_t family_code(Rng* r) {
    static const int32_t codes[] = {1, 2, 3, 4, 6, 1, 3, 6, 0, 5, 7, -1, 99};
    return codes[next(r) % (sizeof codes / sizeof codes[0])];
}

/* The moment error estimate; `separate`: the variant with the bound of
 * IETYP and CONN of its own. */
static void drive_error_estimate(Rng* r, Call* c, int separate) {
    int32_t iel = irange(r, 1, 4), nelem = iel + irange(r, 0, 2);
    int32_t nelemc = separate ? iel + irange(r, 0, 2) : nelem;
    int32_t icsig = irange(r, 0, 3), nsrow = 9 * iel + irange(r, 0, 3);
    int32_t nnodt = chance(r, 5) ? irange(r, -1, 0) : irange(r, 1, 11);
    int32_t nlay = chance(r, 3) ? 0 : irange(r, 1, 6), nmat = irange(r, 0, 3), imat = irange(r, 0, nmat);
    int32_t maxnode = 20;
    int64_t ls = (int64_t)(icsig + 3) * (nsrow + 1) + 9 * iel;
    float* sige = FA(c, "SIGE", ls);
    fill_f(r, sige, ls, -100, 100, 3);
    int32_t* piel = iscalar(c, "IEL", iel);
    int64_t lt = (int64_t)nelemc + 1 + iel + 1;
    int32_t* ietyp = IA(c, "IETYP", lt);
    for (int64_t x = 0; x < lt; ++x) ietyp[x] = family_code(r);
    int32_t* pne = iscalar(c, "NELEM", nelem);
    float* gpos = FA(c, "GPOS", 11);
    fill_f(r, gpos, 11, -1, 1, 0);
    switch (irange(r, 0, 3)) {
        case 0: /* the three-point rule */
            gpos[4] = -0.774596669f; gpos[7] = 0.0f; gpos[10] = 0.774596669f;
            break;
        case 1: /* inside the reference triangle, as a triangle host might pass */
            for (int k = 1; k <= 3; ++k) gpos[1 + 3 * k] = uniform(r, 0.0f, 1.0f);
            break;
        case 2: gpos[1 + 3 * irange(r, 1, 3)] = chance(r, 50) ? awkward(r, 1) : uniform(r, -4, 4); break;
        default: break;
    }
    int32_t* pnt = iscalar(c, "NNODT", nnodt);
    int64_t ltn = nnodt > 0 ? (int64_t)(nnodt < 9 ? nnodt : 9) * (nelem + 1) + iel + 1 : 1;
    float* tnode = FA(c, "TNODE", ltn);
    fill_f(r, tnode, ltn, 0.05f, 0.5f, 3);
    float *play = FA(c, "PLAY", 18 * (nlay + 1)), *zlay = FA(c, "ZLAY", nlay + 2);
    layers(r, play, zlay, nlay);
    for (int32_t l = 0; l <= nlay; ++l) { /* mostly huge finite angles rather than non-finite ones */
        float* a = &play[l + 17 * (nlay + 1)];
        uint32_t b;
        memcpy(&b, a, 4);
        if ((b & 0x7F800000u) == 0x7F800000u && chance(r, 85))
            *a = bits_f((b & 0x807FFFFFu) | (uint32_t)irange(r, 150, 254) << 23);
    }
    switch (irange(r, 0, 19)) { /* singular bending rigidities: a zero pivot */
        case 0: /* no thickness */
            for (int32_t l = 1; l <= nlay + 1; ++l) zlay[l] = zlay[0];
            break;
        case 1: /* no stiffness */
            for (int32_t l = 0; l <= nlay; ++l) play[l + 1 * (nlay + 1)] = play[l + 8 * (nlay + 1)] = play[l + 9 * (nlay + 1)] = 0.0f;
            break;
        case 2: /* no shear modulus in unrotated layers: the last pivot is zero */
            for (int32_t l = 0; l <= nlay; ++l) play[l + 9 * (nlay + 1)] = play[l + 17 * (nlay + 1)] = 0.0f;
            break;
        default: break;
    }
    int32_t* pnl = iscalar(c, "NLAY", nlay);
    int64_t lc = 8 * (int64_t)(nelemc + 1) + iel + 1;
    int32_t* conn = IA(c, "CONN", lc);
    for (int64_t x = 0; x < lc; ++x) conn[x] = irange(r, -maxnode, maxnode);
    for (int32_t k = 1; k <= 8; ++k) /* negative numbers address the same node */
        conn[iel + k * (nelemc + 1)] = chance(r, 3) ? 0 : irange(r, 1, maxnode) * (chance(r, 30) ? -1 : 1);
    ietyp[iel + (nelemc + 1)] = family_code(r);
    float* errn = FG(r, c, "ERRN", maxnode + 1);
    for (int32_t n = 0; n <= maxnode; ++n) errn[n] = chance(r, 50) ? 0.0f : uniform(r, 0, 10);
    float* errt = fguarded(r, c, "ERRT", chance(r, 50) ? 0.0f : uniform(r, 0, 100));
    int64_t lp = 3 * (int64_t)(nmat + 1) + imat + 1;
    float* prop = FG(r, c, "PROP", lp);
    fill_f(r, prop, lp, -1, 1, 0);
    float* wdet = FA(c, "WDET", 10 * (int64_t)iel + 10);
    fill_f(r, wdet, 10 * (int64_t)iel + 10, 0.01f, 1.0f, 3);
    float* sigs = FA(c, "SIGS", 36);
    fill_f(r, sigs, 36, -100, 100, 3);
    if (chance(r, 15)) /* smoothed moments equal to the element's own */
        for (int32_t m = 1; m <= 3; ++m)
            for (int32_t k = 1; k <= 8; ++k) sigs[m + 4 * k] = sige[9 * (iel - 1) + k + (int64_t)(icsig + m) * (nsrow + 1)];
    float* erre = FG(r, c, "ERRE", iel + 1);
    for (int32_t e = 0; e <= iel; ++e) erre[e] = chance(r, 50) ? 0.0f : uniform(r, 0, 10);
    int32_t *pic = iscalar(c, "ICSIG", icsig), *pns = iscalar(c, "NSROW", nsrow),
            *pnm = iscalar(c, "NMAT", nmat), *pim = iscalar(c, "IMAT", imat);
    /* the unused arguments are passed as null pointers: they must not be read */
    if (separate) {
        int32_t* pnc = iscalar(c, "NELEMC", nelemc);
        CALL(c, STERRORDLLDOTNET1(sige, piel, ietyp, pne, gpos, NULL, pnt, tnode, play, zlay, pnl, conn,
                                  errn, errt, prop, wdet, sigs, erre, pic, pns, NULL, pnm, pim, pnc));
    } else {
        CALL(c, STERRORDLLDOTNET(sige, piel, ietyp, pne, gpos, NULL, pnt, tnode, play, zlay, pnl, conn,
                                 errn, errt, prop, wdet, sigs, erre, pic, pns, NULL, pnm, pim));
    }
}
static void d_sterror(Rng* r, Call* c, int64_t i, int v) { (void)i; (void)v; drive_error_estimate(r, c, 0); }
static void d_sterror1(Rng* r, Call* c, int64_t i, int v) { (void)i; (void)v; drive_error_estimate(r, c, 1); }

/* The result net on a small mesh of eight-node quadrilaterals, one or two
 * levels of it (the second at a z on, inside or beyond the 0.001 band),
 * a few elements mixing both levels, nodes on a grid whose plan distances
 * meet the radius exactly, and now and then a NaN result or coordinate. */
static void d_castnet(Rng* r, Call* c, int64_t i, int v) {
    (void)i; (void)v;
    static const int32_t slot[8][2] = {{0, 0}, {1, 0}, {2, 0}, {2, 1}, {2, 2}, {1, 2}, {0, 2}, {0, 1}};
    static const float steps[] = {0.25f, 0.5f, 1.0f, 2.0f, 0.3f};
    int32_t nx = irange(r, 1, 4), ny = irange(r, 1, 4), levels = chance(r, 60) ? 2 : 1;
    int32_t cols = 2 * nx + 1, nl = cols * (2 * ny + 1), nnode = levels * nl, nquad = nx * ny;
    int32_t nelem = levels * nquad + (levels == 2 ? irange(r, 0, 3) : 0);
    int32_t ldcn = nelem + irange(r, 0, 2), ldmem = irange(r, 1, 6);
    float h = steps[next(r) % 5];
    float z0 = chance(r, 50) ? 0.0f : (float)irange(r, -3, 3) * 0.5f;
    float dz;
    switch (irange(r, 0, 5)) {
        case 0: dz = 0.001f; break;
        case 1: dz = bits_f(0x3A83126Fu - 1u); break; /* just below 0.001 */
        case 2: dz = -0.001f; break;
        case 3: dz = 0.0005f; break;
        case 4: dz = 3.0f; break;
        default: dz = 0.0f; break;
    }
    int32_t *pnn = iscalar(c, "NNODE", nnode), *pne = iscalar(c, "NELEM", nelem);
    float* xyz = FA(c, "XYZN", 3 * (int64_t)(nnode + 1));
    for (int32_t q = 0; q <= nnode; ++q) {
        int32_t local = q == 0 ? 0 : (q - 1) % nl, lev = q == 0 ? 0 : (q - 1) / nl;
        float x = (float)(local % cols) * h, y = (float)(local / cols) * h, z = lev ? z0 + dz : z0;
        if (chance(r, 10)) x += uniform(r, -0.1f, 0.1f) * h;
        if (chance(r, 5)) z += chance(r, 50) ? 0.001f : uniform(r, -0.002f, 0.002f);
        if (chance(r, 2)) { if (chance(r, 50)) x = nonfinite_f(r); else z = nonfinite_f(r); }
        xyz[q] = x;
        xyz[q + (nnode + 1)] = y;
        xyz[q + 2 * (nnode + 1)] = z;
    }
    int32_t* ielnod = IA(c, "IELNOD", 9 * (int64_t)(ldcn + 1));
    for (int64_t x = 0; x < 9 * (int64_t)(ldcn + 1); ++x) ielnod[x] = irange(r, -nnode, nnode);
    for (int32_t e = 1; e <= nelem; ++e) {
        int32_t lev = (e - 1) / nquad, local = (e - 1) % nquad;
        for (int32_t s = 1; s <= 8; ++s) {
            int32_t q;
            if (lev < levels) { /* the quadrilateral's own nodes */
                int32_t a = 2 * (local % nx) + slot[s - 1][0], b = 2 * (local / nx) + slot[s - 1][1];
                q = 1 + lev * nl + a + b * cols;
            } else { /* mixing the levels */
                q = irange(r, 1, nnode);
            }
            if (chance(r, 5)) q = 0;              /* an empty slot */
            else if (chance(r, 15)) q = -q;       /* sign ignored */
            ielnod[e + s * (ldcn + 1)] = q;
        }
    }
    /* node-to-element records, as many elements as fit */
    int64_t lm = (int64_t)(ldmem + 1) * (nnode + 1);
    int32_t* nodmem = IA(c, "NODMEM", lm);
    for (int64_t x = 0; x < lm; ++x) nodmem[x] = irange(r, 1, nelem);
    for (int32_t q = 0; q <= nnode; ++q) nodmem[q * (ldmem + 1)] = 0;
    int backwards = chance(r, 30);
    for (int32_t k = 1; k <= nelem; ++k) {
        int32_t e = backwards ? nelem + 1 - k : k;
        for (int32_t s = 1; s <= 8; ++s) {
            int32_t q = ielnod[e + s * (ldcn + 1)];
            if (q < 0) q = -q;
            int32_t* rec = nodmem + (int64_t)q * (ldmem + 1);
            if (q == 0 || rec[0] >= ldmem) continue;
            int dup = 0;
            for (int32_t t = 1; t <= rec[0]; ++t) dup |= rec[t] == e;
            if (!dup) rec[++rec[0]] = e;
        }
    }
    int32_t nstart = irange(r, 1, nnode);
    if (chance(r, 5)) nodmem[nstart * (ldmem + 1)] = irange(r, -1, 0); /* a start without elements */
    int32_t ncomp = irange(r, 1, 4), icomp = irange(r, 0, ncomp - 1), icase = irange(r, 0, 2);
    int32_t ldres = icomp + ncomp * (nnode - 1) + 1 + irange(r, 0, 3);
    int64_t lr = (int64_t)icase * (ldres + 1) + icomp + (int64_t)ncomp * (nnode - 1) + 2;
    float* res = FA(c, "RES", lr);
    int negative = chance(r, 15), grid = chance(r, 30);
    for (int64_t x = 0; x < lr; ++x) {
        float val = grid ? (float)irange(r, -5, 5) : uniform(r, -100, 100); /* ties between values */
        if (negative) val = -(float)irange(r, 1, 50) * 0.5f;
        res[x] = chance(r, 2) ? nonfinite_f(r) : val;
    }
    float rad;
    switch (irange(r, 0, 7)) {
        case 0: rad = 0.0f; break;
        case 1: rad = h * (float)irange(r, 1, 4); break; /* on grid distances */
        case 2: rad = 5.0f * h; break;                   /* 3-4-5 */
        case 3: rad = bits_f(0x7F800000u); break;
        case 4: rad = chance(r, 50) ? nan_f(r) : -h; break;
        case 5: rad = 1e30f; break;
        default: rad = uniform(r, 0, 6) * h; break;
    }
    float* peak = fguarded(r, c, "PEAK", bits_f((uint32_t)next(r)));
    int32_t *pic = iscalar(c, "ICASE", icase), *pio = iscalar(c, "ICOMP", icomp), *pnc = iscalar(c, "NCOMP", ncomp);
    float* prad = fscalar(c, "RADIUS", rad);
    int32_t* pst = iscalar(c, "NSTART", nstart);
    float *vhigh = fguarded(r, c, "VHIGH", bits_f((uint32_t)next(r))), *vlow = fguarded(r, c, "VLOW", bits_f((uint32_t)next(r)));
    float* vavg = fguarded(r, c, "VAVG", bits_f((uint32_t)next(r)));
    int32_t *plm = iscalar(c, "LDMEM", ldmem), *plc = iscalar(c, "LDCN", ldcn), *plr = iscalar(c, "LDRES", ldres);
    CALL(c, CASTNETFMDOTNET(peak, res, pic, pio, pnc, pnn, xyz, prad, pst, vhigh, vlow, nodmem, pne, plm,
                            plc, ielnod, vavg, plr));
}

/* Members and nodes near a peak. Every sixteenth call lists well over 512
 * distinct nodes, revisiting earlier members' nodes, so that the ring of
 * the last variant wraps and lists some of them again. */
static void drive_peak(Rng* r, Call* c, int64_t i, int which) {
    int big = i % 16 == 5;
    int32_t nmem = big ? irange(r, 30, 60) : (chance(r, 5) ? irange(r, -1, 0) : irange(r, 1, 12));
    int32_t ldxyz = big ? irange(r, 700, 3000) : irange(r, 1, 40), maxc = big ? 40 : 8;
    int32_t rows = nmem + 1 > 0 ? nmem + 1 : 0;
    int32_t igrp = irange(r, -1, 2);
    int32_t* pnm = iscalar(c, "NMEM", nmem);
    int32_t* memtab = IA(c, "MEMTAB", 3 * (int64_t)rows);
    int32_t* memgrp = IA(c, "MEMGRP", rows);
    int32_t* memnod = IA(c, "MEMNOD", (int64_t)(1 + maxc) * rows);
    int64_t slots = 0;
    for (int32_t j = 0; j < rows; ++j) {
        memtab[j] = irange(r, -9, 9);
        memtab[rows + j] = chance(r, big ? 95 : 75) ? 1 : irange(r, -1, 2); /* inactive ones */
        memtab[2 * rows + j] = chance(r, 5) ? irange(r, -1, 0) : irange(r, big ? 20 : 1, maxc);
        memgrp[j] = chance(r, big ? 95 : 70) ? igrp + 1 : irange(r, -1, 4);
        for (int32_t k = 0; k <= maxc; ++k) {
            int32_t n = chance(r, 2) ? 0 : irange(r, 1, ldxyz);
            if (big && j > 1 && k > 0 && chance(r, 30)) /* a node of an earlier member */
                n = memnod[irange(r, 1, maxc) * rows + irange(r, 1, j - 1)];
            memnod[k * rows + j] = n;
        }
        if (j > 0 && memtab[2 * rows + j] > 0) slots += memtab[2 * rows + j];
    }
    float* xyz = FA(c, "XYZN", 3 * (int64_t)(ldxyz + 1));
    float s = chance(r, 50) ? 1.0f : (chance(r, 50) ? 0.5f : 0.1f);
    int32_t span = big ? 30 : 5;
    for (int32_t n = 0; n <= ldxyz; ++n)
        for (int d = 0; d < 3; ++d) /* a grid: distances such as 3-4-5 meet the radius exactly */
            xyz[n + d * (ldxyz + 1)] = chance(r, 1) ? nonfinite_f(r) : (float)irange(r, -span, span) * s;
    int32_t ipeak = chance(r, 2) ? 0 : irange(r, 1, ldxyz);
    float rad;
    switch (irange(r, 0, 7)) {
        case 0: rad = (float)irange(r, 0, 6) * s; break;
        case 1: rad = 5.0f * s; break;
        case 2: rad = bits_f(0x7F800000u); break;
        case 3: rad = chance(r, 50) ? nan_f(r) : -s; break;
        case 4: rad = big ? 1e30f : 0.0f; break;
        default: rad = uniform(r, 0, (float)span * 2.0f) * s; break;
    }
    if (big && chance(r, 70)) rad = 1e30f;
    int32_t *pip = iscalar(c, "IPEAK", ipeak);
    float* prad = fscalar(c, "RAD", rad);
    int32_t nmfnd = chance(r, 50) ? 0 : irange(r, 1, 10), nnfnd = chance(r, 50) ? 0 : irange(r, 1, 10);
    int32_t* pmf = iguarded(r, c, "NMFND", nmfnd); /* continued counters */
    int32_t* mfnd = IG(r, c, "MFND", nmfnd + (nmem > 0 ? nmem : 0) + 1);
    int32_t* pnf = iguarded(r, c, "NNFND", nnfnd);
    int32_t* nfnd = IG(r, c, "NFND", nnfnd + slots + 1);
    int32_t *pld = iscalar(c, "LDXYZ", ldxyz), *pig = iscalar(c, "IGRP", igrp);
    if (which == 0)
        CALL(c, GETPEAKMEMNODESDOTNET(pnm, memtab, memgrp, memnod, xyz, pip, prad, pmf, mfnd, pnf, nfnd, pld, pig));
    else if (which == 1)
        CALL(c, GETPEAKMEMNODESDOTNET1(pnm, memtab, memgrp, memnod, xyz, pip, prad, pmf, mfnd, pnf, nfnd, pld, pig));
    else
        CALL(c, GETPEAKMEMNODESDOTNET2(pnm, memtab, memgrp, memnod, xyz, pip, prad, pmf, mfnd, pnf, nfnd, pld, pig));
}
static void d_peak(Rng* r, Call* c, int64_t i, int v) { (void)v; drive_peak(r, c, i, 0); }
static void d_peak1(Rng* r, Call* c, int64_t i, int v) { (void)v; drive_peak(r, c, i, 1); }
static void d_peak2(Rng* r, Call* c, int64_t i, int v) { (void)v; drive_peak(r, c, i, 2); }

/* A normalised corner value: on a band limit, within 1e-6 of one or just
 * beyond, inside a band, outside the limits, or not finite. */
static float band_value(Rng* r, const float* lim, int32_t nbnd, int32_t home, float previous) {
    int32_t k = chance(r, 75) ? home + irange(r, -1, 1) : irange(r, 0, nbnd); /* mostly near home */
    float l = lim[k < 0 ? 0 : (k > nbnd ? nbnd : k)];
    switch (irange(r, 0, 9)) {
        case 0: return l;
        case 1: return l + uniform(r, -1e-6f, 1e-6f);
        case 2: return l + (chance(r, 50) ? 1e-6f : -1e-6f);
        case 3: return l + (chance(r, 50) ? 1.1e-6f : -1.1e-6f);
        case 4: return previous;
        case 5: return chance(r, 50) ? uniform(r, -0.5f, 1.5f) : uniform(r, -5, 5);
        case 6: return chance(r, 20) ? nonfinite_f(r) : l + uniform(r, -0.05f, 0.05f);
        default: return l + uniform(r, -0.2f, 0.2f);
    }
}

/* Colour bands with corner values on and beside the limits, 4, 8 and other
 * corner counts, both forced modes with corners on the tolerances and the
 * value range, and degenerate or non-finite scales. */
static void d_colour(Rng* r, Call* c, int64_t i, int v) {
    (void)i; (void)v;
    int32_t nbnd = chance(r, 3) ? 0 : irange(r, 1, 10);
    int32_t ncorn = chance(r, 40) ? 4 : (chance(r, 67) ? 8 : irange(r, 1, 12));
    int32_t* ncolr = iguarded(r, c, "NCOLR", (int32_t)next(r));
    float* lim = FG(r, c, "BNDLIM", nbnd + 1);
    if (chance(r, 50)) { /* even bands of the unit range */
        for (int32_t k = 0; k <= nbnd; ++k) lim[k] = (float)k / (float)(nbnd > 0 ? nbnd : 1);
    } else {
        lim[0] = uniform(r, -0.2f, 0.1f);
        for (int32_t k = 1; k <= nbnd; ++k) lim[k] = lim[k - 1] + (chance(r, 5) ? 0.0f : uniform(r, 0.01f, 0.4f));
    }
    float vmin = 0.0f, vmax = 1.0f; /* the unit scale keeps the values as chosen */
    if (chance(r, 50)) {
        vmin = uniform(r, -100, 100);
        vmax = vmin + uniform(r, 0.1f, 200);
        if (chance(r, 5)) { float t = vmin; vmin = vmax; vmax = t; }
    }
    if (chance(r, 7)) vmax = vmin;
    if (chance(r, 2)) vmin = nonfinite_f(r);
    float* vcorn = FG(r, c, "VCORN", ncorn + 1);
    float t = uniform(r, 0, 1);
    int32_t home = irange(r, 0, nbnd);
    for (int32_t k = 1; k <= ncorn; ++k) {
        t = band_value(r, lim, nbnd, home, t);
        vcorn[k] = vmin + t * (vmax - vmin);
    }
    int32_t* ibinit = iguarded(r, c, "IBINIT", chance(r, 60) ? 0 : irange(r, -1, nbnd + 1));
    int32_t *pnc = iscalar(c, "NCORN", ncorn), *pnb = iscalar(c, "NBND", nbnd);
    float *pvmin = fscalar(c, "VMIN", vmin), *pvmax = fscalar(c, "VMAX", vmax);
    /* corners 1..4 are always read, and other counts read positions 0 and
     * NCORN + 1: those hold bands as a host's array might */
    int32_t lb = ncorn + 2 > 5 ? ncorn + 2 : 5;
    int32_t* iband = IG(r, c, "IBAND", lb);
    for (int32_t k = 0; k < lb; ++k) iband[k] = irange(r, -nbnd - 1, nbnd + 1);
    int32_t* isplit = iguarded(r, c, "ISPLIT", irange(r, -2, 2));
    int32_t mode;
    switch (irange(r, 0, 9)) {
        case 0: case 1: case 2: mode = -999; break;
        case 3: case 4: mode = 1; break;
        case 5: mode = chance(r, 50) ? irange(r, 2, 5) : 2147483647; break;
        case 6: mode = irange(r, -1000, -998); break;
        default: mode = chance(r, 50) ? 0 : irange(r, -5, -1); break;
    }
    int32_t ldrf = irange(r, 0, 3), irefa = irange(r, 0, ldrf), irefb = irange(r, 0, ldrf);
    int32_t ldxc = ncorn + irange(r, 0, 2);
    float* xyzr = FG(r, c, "XYZR", 3 * (int64_t)(ldrf + 1));
    for (int32_t p = 0; p < 3 * (ldrf + 1); ++p) xyzr[p] = (float)irange(r, -4, 4);
    float tol;
    switch (irange(r, 0, 6)) {
        case 0: tol = 0.5f; break;
        case 1: tol = 0.25f; break;
        case 2: tol = 0.0f; break;
        case 3: tol = chance(r, 30) ? nonfinite_f(r) : 1e30f; break;
        default: tol = uniform(r, 0, 2); break;
    }
    float* xyzc = FG(r, c, "XYZC", 3 * (int64_t)(ldxc + 1));
    int32_t ref = mode == -999 ? irefa : irefb;
    for (int32_t k = 0; k <= ldxc; ++k) {
        /* along an axis from the reference point: at the tolerance, at 1.25
         * of it (the mean test's limit), inside, or anywhere */
        int axis = irange(r, 0, 2);
        float off;
        switch (irange(r, 0, 4)) {
            case 0: off = tol; break;
            case 1: off = 1.25f * tol; break;
            case 2: off = uniform(r, 0, 1) * tol; break;
            case 3: off = 0.0f; break;
            default: off = uniform(r, -4, 4); break;
        }
        if (chance(r, 50)) off = -off;
        for (int d = 0; d < 3; ++d)
            xyzc[d * (ldxc + 1) + k] = xyzr[d * (ldrf + 1) + ref] + (d == axis ? off : 0.0f);
        if (chance(r, 1)) xyzc[irange(r, 0, 2) * (ldxc + 1) + k] = nonfinite_f(r);
    }
    /* the value range closed on corner values, either way round */
    float lo = vcorn[irange(r, 1, ncorn)], hi = vcorn[irange(r, 1, ncorn)];
    for (int32_t k = 1; k <= ncorn; ++k) {
        if (chance(r, 30) && vcorn[k] < lo) lo = vcorn[k];
        if (chance(r, 30) && vcorn[k] > hi) hi = vcorn[k];
    }
    if (chance(r, 50)) { float x = lo; lo = hi; hi = x; }
    if (chance(r, 10)) lo = uniform(r, -100, 100);
    if (chance(r, 3)) hi = nan_f(r);
    int32_t *pmode = iscalar(c, "MODE", mode), *pfix = iscalar(c, "IBFIX", irange(r, -2, nbnd + 2));
    int32_t* pra = iscalar(c, "IREFA", irefa);
    float *pvlo = fscalar(c, "VLO", lo), *pvhi = fscalar(c, "VHI", hi);
    int32_t *prb = iscalar(c, "IREFB", irefb), *plr = iscalar(c, "LDRF", ldrf), *plx = iscalar(c, "LDXC", ldxc);
    float* ptol = fscalar(c, "TOL", tol);
    int32_t* ibraw = IG(r, c, "IBRAW", ncorn + 1);
    CALL(c, CHECKNUMCOLOURDOTNET(ncolr, lim, vcorn, ibinit, pnc, pvmin, pvmax, pnb, iband, isplit, pmode,
                                 pfix, pra, pvlo, pvhi, xyzc, prb, plr, plx, ptol, xyzr, ibraw));
}

static int32_t panel_kind(Rng* r) {
    static const int32_t kinds[] = {1, 2, 3, 4, 6, 1, 3, 4, 6, 5, 0, 7, -1};
    return kinds[next(r) % (sizeof kinds / sizeof kinds[0])];
}

/* A reference coordinate: the nodes of the kinds, grid points, inside,
 * beyond the element, or awkward. */
static float reference_coordinate(Rng* r) {
    static const float nodes[] = {-1.0f, 0.0f, 1.0f, 0.5f, 1.0f / 3.0f, -0.774596669f, 0.774596669f};
    switch (irange(r, 0, 7)) {
        case 0: case 1: return nodes[next(r) % 7];
        case 2: return (float)irange(r, -16, 16) * 0.125f;
        case 3: return uniform(r, -3, 3);
        case 4: return awkward(r, chance(r, 30));
        default: return uniform(r, -1, 1);
    }
}

static void d_sfr1(Rng* r, Call* c, int64_t i, int v) {
    (void)i; (void)v;
    float* shp = FG(r, c, "SHP", 40);
    float *xi = fscalar(c, "XI", reference_coordinate(r)), *eta = fscalar(c, "ETA", reference_coordinate(r));
    int32_t* nt = iscalar(c, "NTYPE", panel_kind(r));
    CALL(c, SFR1DLLDOTNET(shp, xi, eta, nt));
}

/* A curved panel, cells of a grid over it (or beyond it) with huge and
 * tiny sides, NaN in the rows no kind reads and, now and then, in the rows
 * a kind multiplies by zero. */
static void d_subdivide(Rng* r, Call* c, int64_t i, int v) {
    (void)i; (void)v;
    static const float quad[8][2] = {{-1, -1}, {0, -1}, {1, -1}, {1, 0}, {1, 1}, {0, 1}, {-1, 1}, {-1, 0}};
    int32_t kind = panel_kind(r);
    int32_t used = kind == 3 || kind == 4 ? 6 : (kind == 6 ? 3 : 8);
    float* xyz = FA(c, "XYZ", 30);
    float* nodval = FA(c, "NODVAL", 10);
    float scale = chance(r, 10) ? bits_f((uint32_t)irange(r, 60, 190) << 23) : uniform(r, 0.5f, 20);
    for (int32_t n = 1; n <= 8; ++n) {
        xyz[n] = (quad[n - 1][0] + uniform(r, -0.2f, 0.2f)) * scale;
        xyz[n + 10] = (quad[n - 1][1] + uniform(r, -0.2f, 0.2f)) * scale;
        xyz[n + 20] = uniform(r, -0.3f, 0.3f) * scale; /* curved */
        nodval[n] = chance(r, 3) ? awkward(r, 0) : uniform(r, -50, 50);
    }
    for (int d = 0; d < 3; ++d) { /* rows 0 and 9 are never read */
        xyz[d * 10] = nan_f(r);
        xyz[d * 10 + 9] = nan_f(r);
    }
    nodval[0] = nan_f(r);
    nodval[9] = nan_f(r);
    if (used < 8 && chance(r, 25)) { /* a NaN in a row multiplied by zero */
        int32_t n = irange(r, used + 1, 8);
        if (chance(r, 50)) xyz[n + 10 * irange(r, 0, 2)] = nan_f(r);
        else nodval[n] = nan_f(r);
    }
    float* pts = FG(r, c, "PTS", 15);
    float* vals = FG(r, c, "VALS", 5);
    int32_t cells = irange(r, 1, 8);
    float delta = 2.0f / (float)cells, lo = -1.0f;
    if (kind == 3 || kind == 6) { delta = 1.0f / (float)cells; lo = 0.0f; }
    int32_t ci = irange(r, 0, cells - 1), cj = irange(r, 0, cells - 1);
    if (chance(r, 15)) { ci = irange(r, -3, cells + 2); cj = irange(r, -3, cells + 2); } /* outside */
    float xi = lo + (float)ci * delta, eta = lo + (float)cj * delta;
    switch (irange(r, 0, 9)) {
        case 0: delta = bits_f((uint32_t)irange(r, 200, 254) << 23); break; /* huge */
        case 1: delta = bits_f((uint32_t)irange(r, 1, 60) << 23); break;    /* tiny */
        case 2: delta = bits_f((uint32_t)next(r) & 0x807FFFFFu); break;     /* subnormal or zero */
        case 3: delta = -delta; break;
        case 4: xi = reference_coordinate(r); eta = reference_coordinate(r); break;
        case 5: if (chance(r, 20)) delta = nonfinite_f(r); break;
        default: break;
    }
    float *peta = fscalar(c, "ETA", eta), *pxi = fscalar(c, "XI", xi), *pd = fscalar(c, "DELTA", delta);
    int32_t* nt = iscalar(c, "NTYPE", kind);
    CALL(c, SUBDIVIDEPANELDLLDOTNET(xyz, pts, vals, peta, pxi, pd, nt, nodval));
}

/* ---- the routines and their drivers ----------------------------------------- */

typedef struct {
    const char* name;
    Driver drive;
    int64_t calls;
    int forced_kind; /* dense products: the kind for the forced kernels, else -1 */
} Routine;

static const Routine routines[] = {
    {"MATMULDLLDOTNET", d_matmul, 600, 0},
    {"MATMULBTDLLDOTNET", d_matmulbt, 600, 1},
    {"MATMULATDLLDOTNET", d_matmulat, 600, 2},
    {"MATMULDOUBLEDLLDOTNET", d_matmuld, 600, 3},
    {"MATMULBTDOUBLEDLLDOTNET", d_matmulbtd, 600, 4},
    {"STIESTDLLDOTNET", d_stiest, 20000, -1},
    {"MODPBDLLDOTNET", d_modpb, 100000, -1},
    {"JACOB2DLLDOTNET", d_jacob, 100000, -1},
    {"MODIPDLLDOTNET", d_modip, 200000, -1},
    {"STIFFP003DOTNET", d_stiffp003, 30000, -1},
    {"STIFFP001DOTNET", d_stiffp001, 20000, -1},
    {"STIFFP002DOTNET", d_stiffp002, 20000, -1},
    {"BUILDESTIF1DOTNET", d_buildestif1, 20000, -1},
    {"ADDTOCRSSTIFFDLLDOTNET", d_crs_stiff, 50000, -1},
    {"ADDTOCRSMASSDLLDLL", d_crs_mass, 50000, -1},
    {"BUILDALLNODESTIFFDLLDOTNET", d_node_stiff, 30000, -1},
    {"BUILDALLNODESTIFFDLLDOTNET01", d_node_stiff01, 30000, -1},
    {"BUILDALLNODEMASSDLL", d_node_mass, 30000, -1},
    {"ADDSHELLTOSDLLDOTNET", d_sky_map, 20000, -1},
    {"ADDSHELLTOSDOTNET", d_sky, 20000, -1},
    {"FELOADTOGLOADDOTNET", d_loads, 50000, -1},
    {"FELOADTOGLOADDOTNET01", d_loads01, 50000, -1},
    {"FINDLOADPOINT", d_findload, 50000, -1},
    {"FEMEMBERSTONODES1DOTNET", d_incidence, 30000, -1},
    {"PACKNODFE1DOTNET", d_packnod, 30000, -1},
    {"SETBEAMINFODLLDOTNET", d_beams, 50000, -1},
    {"COMPAREARRAY", d_compare, 50000, -1},
    {"PACKMESHNODESDOTNET", d_packmesh, 30000, -1},
    {"NORMALISEDCORDDOTNET", d_natural, 100000, -1},
    {"POINTDIST2D", d_pointdist, 50000, -1},
    {"LINEINTERSECT2D", d_lineintersect, 100000, -1},
    {"ORIENT2D", d_orient2d, 350000, -1},
    {"TRIAREA3D", d_triarea, 50000, -1},
    {"CHECKNEWTRIANG", d_checknewtriang, 50000, -1},
    {"GETELEMENTVERTICES", d_getvertices, 20000, -1},
    {"GETNEARNODES", d_getnearnodes, 50000, -1},
    {"STERRORDLLDOTNET", d_sterror, 30000, -1},
    {"STERRORDLLDOTNET1", d_sterror1, 30000, -1},
    {"CASTNETFMDOTNET", d_castnet, 30000, -1},
    {"GETPEAKMEMNODESDOTNET", d_peak, 20000, -1},
    {"GETPEAKMEMNODESDOTNET1", d_peak1, 20000, -1},
    {"GETPEAKMEMNODESDOTNET2", d_peak2, 20000, -1},
    {"CHECKNUMCOLOURDOTNET", d_colour, 100000, -1},
    {"SFR1DLLDOTNET", d_sfr1, 100000, -1},
    {"SUBDIVIDEPANELDLLDOTNET", d_subdivide, 100000, -1},
    /* The double-precision route: the inputs of the compatible routine it
     * mirrors, widened. */
    {"shellfe_plate_rigidities", d_plate_rigidities, 30000, -1},
    {"shellfe_jacobian", d_jacobian, 30000, -1},
    {"shellfe_membrane_material", d_membrane_material, 60000, -1},
    {"shellfe_membrane_stiffness", d_membrane_stiffness, 10000, -1},
    {"shellfe_plate_bending_stiffness", d_plate_bending, 6000, -1},
    {"shellfe_plate_shear_stiffness", d_plate_shear, 6000, -1},
    {"shellfe_finish_shell_element", d_finish_shell, 6000, -1},
    {"shellfe_select_dofs", d_select_dofs, 6000, -1},
    {"shellfe_gather_node_stiffness", d_gather_node, 10000, -1},
    {"shellfe_add_shell_to_skyline", d_sky_d, 6000, -1},
    {"shellfe_add_shell_to_skyline_mapped", d_sky_map_d, 5000, -1},
};
#define NROUTINES ((int)(sizeof routines / sizeof routines[0]))

static uint64_t seed_of(const char* name, int64_t index) {
    uint64_t h = fnv(0xCBF29CE484222325u, name, strlen(name));
    return h ^ ((uint64_t)index * 0xD1B54A32D192ED03u);
}

/* Runs call `index` of routine `r` (variant: -1 exported, else an
 * instruction set) and returns its hash. */
static uint64_t run_call(const Routine* rt, int64_t index, int variant, int show) {
    Rng rng = {seed_of(rt->name, index)};
    Call c;
    c.n = 0;
    c.show = show;
    rt->drive(&rng, &c, index, variant);
    return finish(&c);
}

static const Routine* find(const char* name) {
    for (int i = 0; i < NROUTINES; ++i)
        if (strcmp(routines[i].name, name) == 0) return &routines[i];
    return NULL;
}

/* NAME or NAME/isa: the routine and the variant. */
static const Routine* parse(const char* arg, int* variant) {
    char name[128];
    const char* slash = strchr(arg, '/');
    size_t len = slash ? (size_t)(slash - arg) : strlen(arg);
    if (len >= sizeof name) return NULL;
    memcpy(name, arg, len);
    name[len] = 0;
    *variant = -1;
    if (slash) {
        for (int isa = 0; isa < agreement_isa_count(); ++isa)
            if (strcmp(agreement_isa_name(isa), slash + 1) == 0) *variant = isa;
        if (*variant < 0) return NULL;
    }
    return find(name);
}

int main(int argc, char** argv) {
    static const char* const described[] = {SHELLFE_DESCRIBED_ROUTINES};
    const int ndescribed = (int)(sizeof described / sizeof described[0]);
    int failed = 0;
    for (int d = 0; d < ndescribed; ++d)
        if (!find(described[d])) {
            fprintf(stderr, "no driver for %s, a routine of the interface description\n", described[d]);
            failed = 1;
        }
    if (failed) return 1;

    if (argc == 3 && strcmp(argv[1], "--trace") == 0) {
        int variant;
        const Routine* rt = parse(argv[2], &variant);
        if (!rt) return 2;
        for (int64_t i = 0; i < rt->calls; ++i)
            printf("%" PRId64 " %016" PRIx64 "\n", i, run_call(rt, i, variant, 0));
        return 0;
    }
    if (argc == 4 && strcmp(argv[1], "--show") == 0) {
        int variant;
        const Routine* rt = parse(argv[2], &variant);
        if (!rt) return 2;
        run_call(rt, strtoll(argv[3], NULL, 10), variant, 1);
        return 0;
    }
    if (argc != 1) {
        fprintf(stderr, "usage: %s [--trace NAME[/isa] | --show NAME[/isa] INDEX]\n", argv[0]);
        return 2;
    }

    for (int i = 0; i < NROUTINES; ++i) {
        const Routine* rt = &routines[i];
        uint64_t h = 0xCBF29CE484222325u;
        for (int64_t k = 0; k < rt->calls; ++k) {
            uint64_t ch = run_call(rt, k, -1, 0);
            h = fnv(h, &ch, sizeof ch);
        }
        printf("%s %" PRId64 " %016" PRIx64 "\n", rt->name, rt->calls, h);
        if (rt->forced_kind < 0) continue;
        /* Every kernel the CPU runs must give the exported routine's bits. */
        for (int isa = 0; isa < agreement_isa_count(); ++isa) {
            if (!agreement_isa_supported(isa)) continue;
            uint64_t hi = 0xCBF29CE484222325u;
            for (int64_t k = 0; k < rt->calls; ++k) {
                uint64_t ch = run_call(rt, k, isa, 0);
                hi = fnv(hi, &ch, sizeof ch);
            }
            printf("%s/%s %" PRId64 " %016" PRIx64 "\n", rt->name, agreement_isa_name(isa), rt->calls, hi);
            if (hi != h) {
                fprintf(stderr, "%s: the %s kernel differs from the exported routine\n", rt->name,
                        agreement_isa_name(isa));
                failed = 1;
            }
        }
    }
    return failed;
}
