/*
 * The agreement driver's seeded calls of every exported routine, each routed
 * through a shim that hands the routine blocks of exactly the declared
 * extents (extent_shims.h, generated from the interface description). Built
 * with AddressSanitizer, a routine that reads or writes one element past
 * what a host must allocate aborts the run and names the call.
 *
 *   shellfe_extents [PERCENT]   runs the first PERCENT% (default 100) of
 *                               each routine's calls, at least one
 *
 * The driver is compiled into this file, so that its generators and drivers
 * are used as they are and only the number of calls is ours to choose. Its
 * instruction-set variants of the dense products call the kernels directly,
 * past any shim, so they are not run here and the kernels are not linked.
 */
#include "extent_shims.h"

#define main agreement_main
#include "agreement.c"
#undef main

int agreement_isa_count(void) { return 0; }
const char* agreement_isa_name(int isa) { (void)isa; return ""; }
int agreement_isa_supported(int isa) { (void)isa; return 0; }
void agreement_product(int isa, int kind, const void* a, const void* b, void* c, int32_t m,
                       int32_t k, int32_t n) {
    (void)isa, (void)kind, (void)a, (void)b, (void)c, (void)m, (void)k, (void)n;
    abort();
}

int main(int argc, char** argv) {
    long percent = 100;
    if (argc > 2 || (argc == 2 && (percent = strtol(argv[1], NULL, 10)) <= 0)) {
        fprintf(stderr, "usage: %s [PERCENT]\n", argv[0]);
        return 2;
    }
    for (int i = 0; i < NROUTINES; ++i) {
        const Routine* rt = &routines[i];
        int64_t calls = rt->calls * percent / 100;
        if (calls < 1) calls = 1;
        uint64_t h = 0xCBF29CE484222325u;
        for (int64_t k = 0; k < calls; ++k) {
            uint64_t ch = run_call(rt, k, -1, 0);
            h = fnv(h, &ch, sizeof ch);
        }
        printf("%s %" PRId64 " %016" PRIx64 "\n", rt->name, calls, h);
        fflush(stdout);
    }
    return 0;
}
