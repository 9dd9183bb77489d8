/* A host program: the membrane stiffness K = t*A * B^T * D * B of a
 * constant-strain triangle, formed with the library's dense products.
 *
 * Arrays are declared by upper bound, as a Fortran-style host declares them,
 * so index 0 of each dimension is a spare slot. In this row-major view
 * MATMULDLLDOTNET(A, B, C, M, K, N) computes C = A*B for A (0:M, 0:K),
 * B (0:K, 0:N) and C (0:M, 0:N).
 *
 *   cmake -S . -B build && cmake --build build -j2 && build/bin/triangle_stiffness
 */
#include <math.h>
#include <stdio.h>

#include "shellfe.h"

int main(void) {
    /* Triangle (0,0), (2,0), (0,1); thickness 0.2; E = 30000, nu = 0.2. */
    const float x[4] = {0, 0.0f, 2.0f, 0.0f}, y[4] = {0, 0.0f, 0.0f, 1.0f};
    const float t = 0.2f, e = 30000.0f, nu = 0.2f;
    const float two_area = (x[2] - x[1]) * (y[3] - y[1]) - (x[3] - x[1]) * (y[2] - y[1]);

    float d[4][4] = {{0}}, b[4][7] = {{0}}, bt[7][4] = {{0}}, db[4][7], k[7][7];
    const float f = e / (1.0f - nu * nu);
    d[1][1] = d[2][2] = f;
    d[1][2] = d[2][1] = f * nu;
    d[3][3] = f * (1.0f - nu) * 0.5f;

    /* Strain-displacement matrix B (3 x 6), columns u1 v1 u2 v2 u3 v3. */
    for (int n = 1; n <= 3; ++n) {
        const int p = n % 3 + 1, q = p % 3 + 1; /* the other two nodes */
        const float dndx = (y[p] - y[q]) / two_area, dndy = (x[q] - x[p]) / two_area;
        b[1][2 * n - 1] = dndx;
        b[2][2 * n] = dndy;
        b[3][2 * n - 1] = dndy;
        b[3][2 * n] = dndx;
    }
    for (int r = 1; r <= 3; ++r)
        for (int c = 1; c <= 6; ++c) bt[c][r] = b[r][c];

    int32_t m = 3, kk = 3, n = 6;
    MATMULDLLDOTNET(&d[0][0], &b[0][0], &db[0][0], &m, &kk, &n); /* DB = D*B   (3x6) */
    m = 6;
    n = 6;
    MATMULDLLDOTNET(&bt[0][0], &db[0][0], &k[0][0], &m, &kk, &n); /* K = B^T*DB (6x6) */

    const float scale = t * 0.5f * two_area;
    double worst_row_sum = 0.0;
    printf("membrane stiffness of the triangle (u1 v1 u2 v2 u3 v3):\n");
    for (int r = 1; r <= 6; ++r) {
        double sum_u = 0.0, sum_v = 0.0;
        for (int c = 1; c <= 6; ++c) {
            k[r][c] *= scale;
            printf("%10.1f", k[r][c]);
            if (c % 2) sum_u += k[r][c]; else sum_v += k[r][c];
        }
        printf("\n");
        worst_row_sum = fmax(worst_row_sum, fmax(fabs(sum_u), fabs(sum_v)));
    }
    /* A rigid translation produces no forces: each row sums to zero over
     * the u columns and over the v columns. */
    printf("largest force from a rigid translation: %g\n", worst_row_sum);
    return worst_row_sum < 1e-2 ? 0 : 1;
}
