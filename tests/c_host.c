/* A host written in C: the header compiles as C and the library is callable
 * with plain C types. Exits non-zero on a wrong result. */
#include <stdio.h>

#include "shellfe.h"

int main(void) {
    /* C = A B, A 2x3 with A(i, t) = i + t, B 3x2 with B(t, j) = t - j, each
     * array (0:rows, 0:columns) in column-major order with a spare slot 0. */
    const float a[12] = {0, 0, 0, 0, 0, 2, 3, 4, 0, 3, 4, 5};
    const float b[12] = {0, 0, 0, 0, 0, -1, 0, 1, 0, 0, 2, 1};
    const float want[9] = {-7, -7, -7, -7, 11, 2, -7, 14, 2};
    float c[9] = {-7, -7, -7, -7, -7, -7, -7, -7, -7};
    int32_t m = 2, k = 3, n = 2, i, bad = 0;
    MATMULDLLDOTNET(a, b, c, &m, &k, &n);
    for (i = 0; i < 9; ++i) bad |= c[i] != want[i];
    printf("C host: %s\n", bad ? "wrong product" : "ok");
    return bad;
}
