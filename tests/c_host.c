/* A host written in C: the header must compile as C and the library must be
 * callable with plain C types. Exits non-zero on a wrong result. */
#include <stdio.h>

#include "shellfe.h"

int main(void) {
    /* Row-major host view C = A*B with A 2x3 and B 3x2, every array declared
     * by upper bound so index 0 of each dimension is a spare slot. */
    float a[4 * 3];  /* (0:3, 0:2) column-major: AMAT(t, i) */
    float b[3 * 4];  /* (0:2, 0:3): BMAT(j, t) */
    float c[3 * 3];  /* (0:2, 0:2): CMAT(j, i) */
    int32_t m = 2, k = 3, n = 2;
    int t, i, j;
    for (i = 0; i < 12; ++i) a[i] = b[i] = -1.0f;
    for (i = 0; i < 9; ++i) c[i] = -7.0f;
    for (i = 1; i <= 2; ++i)
        for (t = 1; t <= 3; ++t) a[t + 4 * i] = (float)(i + t);
    for (t = 1; t <= 3; ++t)
        for (j = 1; j <= 2; ++j) b[j + 3 * t] = (float)(t - j);
    MATMULDLLDOTNET(a, b, c, &m, &k, &n);
    for (i = 1; i <= 2; ++i)
        for (j = 1; j <= 2; ++j) {
            float want = 0.0f;
            for (t = 1; t <= 3; ++t) want += (float)(i + t) * (float)(t - j);
            if (c[j + 3 * i] != want) {
                printf("C(%d,%d) = %g, expected %g\n", j, i, c[j + 3 * i], want);
                return 1;
            }
        }
    if (c[0] != -7.0f || c[3] != -7.0f || c[6] != -7.0f || c[1] != -7.0f || c[2] != -7.0f) {
        printf("slot 0 was written\n");
        return 1;
    }
    printf("C host: ok\n");
    return 0;
}
