/* A host written in C: the header compiles as C, the library is callable
 * with plain C types, and the README's snippet does what it says. Exits
 * non-zero on a wrong result. */
#include <stdio.h>

#include "shellfe.h"

int main(void) {
    /* The README's snippet: PROP (0:NMAT, 0:17) with one material in row 1,
     * DMAT (0:3, 0:3); in C element (i, j) of a column-major array is a[j][i]. */
    float prop[18][2] = {{0}}, dmat[4][4] = {{0}};
    int32_t imat = 1, nmat = 1, i, j, bad = 0;
    prop[1][1] = 30000.0f;  /* E1 */
    prop[2][1] = 0.25f;     /* nu12 */
    prop[8][1] = 12000.0f;  /* E2 */
    prop[9][1] = 5000.0f;   /* G12 */
    prop[17][1] = 30.0f;    /* angle of the material axes, degrees */
    MODIPDLLDOTNET(&dmat[0][0], &prop[0][0], &imat, &nmat);
    /* DMAT(i, j), i, j = 1..3, is now dmat[j][i]: symmetric, index 0 untouched. */
    for (i = 0; i <= 3; ++i)
        for (j = 0; j <= 3; ++j) bad |= dmat[j][i] != dmat[i][j] || ((i == 0 || j == 0) && dmat[j][i] != 0);
    bad |= dmat[1][1] != 0x1.671312p+14f;

    /* The README's second snippet: the orientation predicate's constants,
     * computed once by the host, and points as double arrays from 1. */
    {
        const double eps = 0x1p-53;
        const double ccwa = (3 + 16 * eps) * eps, ccwb = (2 + 12 * eps) * eps,
                     ccwc = (9 + 64 * eps) * eps * eps, splitter = 0x1p27 + 1,
                     resbound = (3 + 8 * eps) * eps;
        const double a[2] = {0, 0}, b[2] = {1, 0}, c[2] = {0, 1}, d[2] = {2, 0};
        bad |= ORIENT2D(a, b, c, &ccwa, &ccwb, &ccwc, &splitter, &resbound) != 1.0; /* ccw */
        bad |= ORIENT2D(a, b, d, &ccwa, &ccwb, &ccwc, &splitter, &resbound) != 0.0; /* collinear */
    }
    printf("C host: %s (DMAT(1,1) = %a)\n", bad ? "wrong" : "ok", dmat[1][1]);
    return bad;
}
