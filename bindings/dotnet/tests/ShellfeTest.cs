// A .NET host of the library: every routine once through the checked layer
// (so each declared extent is met by a real call), results checked where a
// case is cheap to state, and the checks themselves made to fire.
using System;
using Shellfe;
using C = Shellfe.Checked;

static class ShellfeTest
{
    static int failures;
    static void Expect(bool ok, string what)
    {
        if (!ok) { failures++; Console.Error.WriteLine("FAILED: " + what); }
    }
    static float[] F(int n) { return new float[n]; }
    static double[] D(int n) { return new double[n]; }
    static int[] I(int n) { return new int[n]; }
    static readonly IntPtr Z = IntPtr.Zero;

    static void Products()
    {
        // Symmetric factors, so A*B, A*B^T and A^T*B agree: [[2,1],[1,3]] * [[1,4],[4,5]].
        var a = new ColumnMajor<float>(2, 2); var b = new ColumnMajor<float>(2, 2);
        float[] sa = { 2, 1, 1, 3 }, sb = { 1, 4, 4, 5 }, want = { 6, 13, 13, 19 };
        for (int k = 0; k < 4; ++k) { a[1 + k / 2, 1 + k % 2] = sa[k]; b[1 + k / 2, 1 + k % 2] = sb[k]; }
        double[] ad = Array.ConvertAll(a.Data, x => (double)x), bd = Array.ConvertAll(b.Data, x => (double)x);
        int m = 2, kk = 2, n = 2;
        var c = new float[5][]; var cd = new double[2][];
        for (int i = 0; i < 5; ++i) c[i] = F(9);
        for (int i = 0; i < 2; ++i) cd[i] = D(9);
        C.MATMULDLLDOTNET(a.Data, b.Data, c[0], ref m, ref kk, ref n);
        C.MATMULBTDLLDOTNET(a.Data, b.Data, c[1], ref m, ref kk, ref n);
        C.MATMULATDLLDOTNET(a.Data, b.Data, c[2], ref m, ref kk, ref n);
        C.MATMULDOUBLEDLLDOTNET(ad, bd, cd[0], ref m, ref kk, ref n);
        C.MATMULBTDOUBLEDLLDOTNET(ad, bd, cd[1], ref m, ref kk, ref n);
        for (int k = 0; k < 4; ++k)
        {
            int at = ColumnMajor.Index(1 + k / 2, 1 + k % 2, ColumnMajor.Ld(2));
            for (int v = 0; v < 3; ++v) Expect(c[v][at] == want[k], "product " + v + " entry " + k);
            for (int v = 0; v < 2; ++v) Expect(cd[v][at] == want[k], "double product " + v + " entry " + k);
        }
        Expect(c[0][0] == 0 && c[0][1] == 0, "row 0 and column 0 of CMAT are left alone");
    }

    // The 8-node membrane of the unit square, from which a rigid translation draws no force.
    static void Element()
    {
        var xy = new ColumnMajor<float>(9, 2);
        float[] px = { 0, 0.5f, 1, 1, 1, 0.5f, 0, 0 }, py = { 0, 0, 0, 0.5f, 1, 1, 1, 0.5f };
        for (int k = 1; k <= 8; ++k) { xy[k, 1] = px[k - 1]; xy[k, 2] = py[k - 1]; }
        var gpos = new ColumnMajor<float>(2, 6); var gwei = new ColumnMajor<float>(2, 6);
        gpos[1, 1] = -(float)Math.Sqrt(1 / 3.0); gpos[1, 2] = -gpos[1, 1]; gwei[1, 1] = gwei[1, 2] = 1;
        var tnode = new ColumnMajor<float>(1, 9); var prop = new ColumnMajor<float>(1, 17);
        for (int k = 1; k <= 9; ++k) tnode[1, k] = 0.2f;
        prop[1, 1] = 30000; prop[1, 2] = 0.25f; prop[1, 8] = 12000; prop[1, 9] = 5000; prop[1, 17] = 30;
        prop[1, 10] = prop[1, 11] = 4000;   // transverse shear moduli, for the plate
        var dmat = new ColumnMajor<float>(3, 3);
        int ngp = 2, ntype = 1, ngpt = 0, iel = 1, nnode = 8, imat = 1, nmat = 1, nelem = 1, nnodt = 8;
        C.MODIPDLLDOTNET(dmat.Data, prop.Data, ref imat, ref nmat);
        Expect(dmat[1, 2] == dmat[2, 1] && dmat[1, 3] == dmat[3, 1] && dmat[1, 1] > 0, "material matrix");
        var estif = new ColumnMajor<float>(18, 18); float detj = 0;
        C.STIFFP003DOTNET(ref ngp, ref ngp, ref ntype, gpos.Data, ref ngpt, ref iel, ref nnode, xy.Data,
            tnode.Data, Z, ref imat, prop.Data, gwei.Data, Z, ref nelem, ref nmat, Z, Z, ref nnodt, estif.Data, ref detj);
        Expect(Math.Abs(detj - 0.25f) < 1e-6 && ngpt == 4, "membrane DETJ " + detj + ", points " + ngpt);
        for (int i = 1; i <= 16; ++i)
        {
            double su = 0, sv = 0, scale = Math.Abs(estif[i, i]);
            for (int j = 1; j <= 16; ++j)
            {
                double k = i >= j ? estif[i, j] : estif[j, i];   // the lower triangle holds the matrix
                if (j % 2 == 1) su += k; else sv += k;
            }
            Expect(scale > 0 && Math.Abs(su) < 1e-4 * scale && Math.Abs(sv) < 1e-4 * scale, "rigid translation, row " + i);
        }
        // The shape functions' natural derivatives feed the Jacobian: [0,1]^2 from [-1,1]^2 has det 1/4.
        var shp = new ColumnMajor<float>(9, 3); var cartd = new ColumnMajor<float>(9, 2);
        float xi = 0, eta = 0; int eight = 8; detj = 0;
        C.SFR1DLLDOTNET(shp.Data, ref xi, ref eta, ref ntype);
        C.JACOB2DLLDOTNET(cartd.Data, shp.Data, ref detj, xy.Data, ref eight);
        Expect(Math.Abs(detj - 0.25f) < 1e-6, "Jacobian determinant " + detj);
        float[] dbend = F(16), dshear = F(9), zlay = { 0, -0.1f, 0.1f }; int ibend = 1, nlay = 1;
        C.MODPBDLLDOTNET(dbend, dshear, ref ibend, ref ibend, prop.Data, zlay, ref nlay);
        Expect(dbend[5] > 0 && dbend[6] == dbend[9], "bending rigidities");
        {   // plate bending then transverse shear, three degrees of freedom per node
            float gd = 0; int ioff = 0, ngpt2 = 0, ndofn = 3, ldes = 24; var pe = F(25 * 25);
            C.STIFFP001DOTNET(ref ngp, ref ngp, ref ntype, gpos.Data, ref ngpt, ref iel, ref ngpt2, Z, ref nnode, xy.Data,
                tnode.Data, Z, ref imat, prop.Data, ref ioff, pe, gwei.Data, Z, Z, ref nelem, ref nmat, ref ldes, ref ndofn,
                ref nnodt, prop.Data, zlay, ref nlay, ref gd);
            C.STIFFP002DOTNET(ref ngp, ref ngp, ref ntype, gpos.Data, ref ngpt, ref iel, ref nnode, xy.Data, tnode.Data, Z,
                ref imat, prop.Data, ref ioff, pe, gwei.Data, Z, ref nelem, ref nmat, ref ldes, ref ndofn, ref nnodt,
                prop.Data, zlay, ref nlay, ref gd);
            Expect(Math.Abs(gd - 0.25f) < 1e-6 && pe[1 + 25] > 0 && pe[2 + 2 * 25] > 0, "plate element " + gd);
        }
        // Finishing: node 1 of element 1 receives its drilling stiffness once and is flagged.
        int[] flag = I(2), ielnod = { 0, 0, 0, 1 }; int one = 1, six = 6, ldcn = 1; float ratio = 1000;
        C.STIESTDLLDOTNET(estif.Data, F(7 * 8 + 1), ref one, flag, ref six, ref six, Z, ref ldcn, ref one, ielnod, ref ratio);
        Expect(flag[1] == 1, "drilling flag set");
        // Keep degrees of freedom 3 then 1 of a one-node six-per-node matrix.
        float[] src = F(49), dst = F(17); int[] idof = { 0, 3, 1 }; int sel = 2;
        src[3 + 3 * 7] = 9; src[1 + 3 * 7] = 4;
        C.BUILDESTIF1DOTNET(ref one, ref sel, ref six, src, dst, idof);
        Expect(dst[1 + 1 * 7] == 9 && dst[2 + 1 * 7] == 4, "selected degrees of freedom");
    }

    static void Assembly()
    {
        // One compressed row: node 2's equation is restrained, node 3's entry kept, node 1's first.
        int one = 1, ld = 3, nnz = 0, nrows = 0, row = 0;
        int[] ptr = I(2), col = I(4), ifix = { 0, 0, 1, 0 }, list = { 3, 1, 2, 3 };
        double[] val = D(3);
        C.ADDTOCRSSTIFFDLLDOTNET(ref one, ref ld, ref nnz, ptr, col, Z, ref nrows, ifix, new float[] { 0, 5, 3, -2 },
            val, Z, ref row, list, Z, ref one);
        Expect(nnz == 2 && nrows == 1 && ptr[0] == 1 && col[0] == 1 && col[1] == 3 && val[0] == 5 && val[1] == -2, "CRS row");
        C.ADDTOCRSMASSDLLDLL(ref one, ref ld, ref nnz, ptr, col, Z, ref nrows, ifix, new double[] { 0, 5, 3, -2 },
            val = D(5), Z, ref row, list, Z, ref one);
        Expect(nnz == 4 && nrows == 2 && ptr[1] == 3 && col[3] == 3 && val[2] == 5, "CRS mass row");
        // Elements with no node slots leave everything as it was.
        int zero = 0, cnt = 0;
        var f = F(64); var d = D(64); var it = I(64);
        C.BUILDALLNODESTIFFDLLDOTNET(f, ref one, ref zero, F(64), ref one, f, it, Z, it, it, ref one, ref one, ref one,
            ref one, ref one, Z, ref one, Z, f, F(64), it, ref cnt, it);
        C.BUILDALLNODESTIFFDLLDOTNET01(f, ref one, ref zero, F(64), ref one, f, it, Z, it, it, ref one, ref one, ref one,
            ref one, ref one, Z, ref one, Z, f, D(64), it, ref cnt, it);
        C.BUILDALLNODEMASSDLL(d, ref one, ref zero, D(64), ref one, Z, it, ref one, ref one, ref one, Z, ref one, Z,
            ref one, it, ref cnt);
        C.ADDSHELLTOSDLLDOTNET(F(200), I(64), Z, it, ref one, ref one, d, it, I(2), ref one, ref one, Z, Z, ref ld);
        C.ADDSHELLTOSDOTNET(f, I(64), Z, it, ref one, ref one, d, it, ref one, ref one, Z, Z, ref ld, ref one);
        C.FELOADTOGLOADDOTNET(ref zero, it, ref one, it, ref one, ref one, f, f, F(64), Z, ref one);
        C.FELOADTOGLOADDOTNET01(ref zero, it, ref one, it, ref one, ref one, d, f, F(64), Z, ref one);
        Expect(cnt == 0 && Array.TrueForAll(d, x => x == 0), "empty elements add nothing");
        int npt = 3, ipt = -1; float xp = 2.1f, yp = 0.9f;
        C.FINDLOADPOINT(ref npt, ref ipt, ref xp, ref yp, new float[] { 0, 0, 2, 4 }, new float[] { 0, 0, 1, 0 });
        Expect(ipt == 2, "nearest load point " + ipt);
    }

    static void Bookkeeping()
    {
        int one = 1, zero = 0, maxmem = 0; int[] nodmem = I(102), memslt = I(18);
        memslt[1 * 2 + 1] = 1;   // slot 1 of member 1 is node 1
        C.FEMEMBERSTONODES1DOTNET(Z, ref one, ref maxmem, nodmem, memslt);
        Expect(maxmem == 1 && nodmem[51] == 1 && nodmem[52] == 1, "member incidence");
        float tol = 0.001f;
        C.PACKNODFE1DOTNET(I(1), I(1), ref zero, I(9), ref zero, ref zero, F(3));
        C.SETBEAMINFODLLDOTNET(ref zero, ref zero, I(10), I(1), I(1), I(1), I(1));
        C.PACKMESHNODESDOTNET(I(1), ref zero, ref zero, F(3), null, ref zero, ref tol);
        int isame = 0; float[] ta = { 0, 0, 0, 2 }, tb = { 0, 0, 0, 2 };
        C.COMPAREARRAY(ta, tb, ref one, ref one, ref isame);
        Expect(isame == -1, "equal tables compare the same");
        tb[3] = 3; C.COMPAREARRAY(ta, tb, ref one, ref one, ref isame);
        Expect(isame == 0, "different tables differ");
        // Corners of [-1,1]^2 in slots 1, 3, 5, 7 of element 1, a flat projection.
        int[] ielnod = I(18); var xyzn = new ColumnMajor<float>(4, 2);
        float[] cx = { -1, 1, 1, -1 }, cy = { -1, -1, 1, 1 };
        for (int k = 1; k <= 4; ++k) { ielnod[1 + (2 * k - 1) * 2] = k; xyzn[k, 0] = cx[k - 1]; xyzn[k, 1] = cy[k - 1]; }
        float xi = 9, eta = 9, x = 0.5f, y = -0.25f, z = 0, c0 = 0, c1 = 1; int nn = 4;
        C.NORMALISEDCORDDOTNET(ref one, ref xi, ref eta, ref x, ref y, ref z, ielnod, xyzn.Data, ref one, Z,
            ref c0, ref c1, ref c0, ref c1, ref nn);
        Expect(Math.Abs(xi - 0.5f) < 1e-6 && Math.Abs(eta + 0.25f) < 1e-6, "natural coordinates " + xi + " " + eta);
    }

    static void Geometry()
    {
        double eps = Math.Pow(2, -53), ea = (3 + 16 * eps) * eps, eb = (2 + 12 * eps) * eps;
        double ec = (9 + 64 * eps) * eps * eps, sp = 134217729, er = (3 + 8 * eps) * eps;
        double[] o = { 0, 0 }, ex = { 1, 0 }, ey = { 0, 1 }, far = { 2, 0 };
        Expect(C.ORIENT2D(o, ex, ey, ref ea, ref eb, ref ec, ref sp, ref er) > 0, "counter-clockwise");
        Expect(C.ORIENT2D(o, ey, ex, ref ea, ref eb, ref ec, ref sp, ref er) < 0, "clockwise");
        Expect(C.ORIENT2D(o, ex, far, ref ea, ref eb, ref ec, ref sp, ref er) == 0, "collinear");
        Expect(C.POINTDIST2D(o, new double[] { 3, 4 }) == 5, "distance");
        Expect(C.TRIAREA3D(new double[3], new double[] { 1, 0, 0 }, new double[] { 0, 1, 0 }) == 0.5, "area");
        double s = 0, t = 0, lt = 1e-9, pt = 1e-9;
        int hit = C.LINEINTERSECT2D(o, far, new double[] { 1, -1 }, new double[] { 1, 1 }, ref s, ref t, ref lt, ref pt);
        Expect(hit == 11 && s == 0.5 && t == 0.5, "crossing segments");
        // Base edge 1-2 along y = 0, apex above it and no other edge: accepted.
        int zero = 0, one = 1, two = 2; double ont = 1e-9;
        double[] xy = { 0, 0, 0, 0, 0, 1, 0, 0, 0 };   // nodes 1 and 2 at (0, 0) and (1, 0)
        int ok = C.CHECKNEWTRIANG(ref zero, ref zero, new double[] { 0.5, 1 }, xy, ref one, new int[] { 1, 2 },
            ref ea, ref eb, ref ec, ref sp, ref zero, ref two, ref lt, ref pt, ref ont, ref er);
        Expect(ok == 1, "triangle accepted " + ok);
        int nlast = 2, nv = 2; int[] verts = I(4);
        C.GETELEMENTVERTICES(verts, new int[] { 0, 11, 21, 0, 12, 22 }, Z, ref nlast, Z, ref one, ref nv);
        Expect(verts[0] == 11 && verts[1] == 12 && verts[2] == 21 && verts[3] == 22, "element vertices");
        int nwithin = -1, nnear = 0; double r = 1;
        int found = C.GETNEARNODES(ref one, ref two, o, xy, ref zero, I(1), ref r, ref nwithin, ref nnear, I(1),
            ref ea, ref eb, ref ec, ref sp, ref zero, ref two, ref er, ref one, ref one);
        Expect(found == 0 && nnear == 0, "no rows, no near nodes");
    }

    static void Results()
    {
        // Corner values inside one band give one colour; spread over the scale, several.
        float[] lim = { 0, 0.25f, 0.5f, 0.625f, 1 };
        foreach (var corners in new[] { new float[] { 0, 0.1f, 0.15f, 0.2f, 0.22f }, new float[] { 0, 0.1f, 0.3f, 0.55f, 0.7f } })
        {
            int ncolr = -1, init = 0, ncorn = 4, nbnd = 4, split = 0, mode = 0, fix = 0, ra = 2, rb = 1, ldrf = 3, ldxc = 9;
            float vmin = 0, vmax = 1, vlo = 0, vhi = 0, tol = 0;
            C.CHECKNUMCOLOURDOTNET(ref ncolr, lim, corners, ref init, ref ncorn, ref vmin, ref vmax, ref nbnd, I(5), ref split,
                ref mode, ref fix, ref ra, ref vlo, ref vhi, F(30), ref rb, ref ldrf, ref ldxc, ref tol, F(12), I(5));
            Expect(ncolr == (corners[4] < 0.25f ? 1 : 4), "colour bands " + ncolr);
        }
        // Two coincident nodes of one element: the net gathers both values.
        int zero = 0, one = 1, nnode = 2; float peak = 0, high = 0, low = 0, avg = 0, rad = 1;
        int[] nodmem = { 0, 0, 1, 1, 1, 1 }, ielnod = I(18);
        ielnod[1 + 1 * 2] = 1; ielnod[1 + 2 * 2] = 2;
        C.CASTNETFMDOTNET(ref peak, new float[] { 0, -7, 3 }, ref zero, ref zero, ref one, ref nnode, F(9), ref rad, ref one,
            ref high, ref low, nodmem, ref one, ref one, ref one, ielnod, ref avg, ref nnode);
        Expect(high == 3 && low == -7 && avg == -2 && peak == 7, "net " + peak + " " + high + " " + low + " " + avg);
        int nm = 0, nn = 0;
        foreach (Peak search in new Peak[] { C.GETPEAKMEMNODESDOTNET, C.GETPEAKMEMNODESDOTNET1, C.GETPEAKMEMNODESDOTNET2 })
            search(ref zero, I(3), I(1), I(1), F(6), ref one, ref rad, ref nm, I(1), ref nn, I(1), ref one, ref zero);
        Expect(nm == 0 && nn == 0, "no members, nothing found");
        // The error estimate of an element whose moments match the smoothed ones is zero.
        float errt = 0; var erre = F(2); int nlay = 1, iel = 1, ntyp = 8;
        float[] play = F(36), zlay = { 0, -0.1f, 0.1f };
        play[1 + 2 * 1] = 30000; play[1 + 2 * 2] = 0.2f; play[1 + 2 * 8] = 30000; play[1 + 2 * 9] = 12500;
        C.STERRORDLLDOTNET(F(40), ref iel, I(4), ref one, F(11), Z, ref ntyp, F(20), play, zlay, ref nlay, I(18), F(2),
            ref errt, F(8), F(20), F(36), erre, ref zero, ref ld9, Z, ref one, ref one);
        C.STERRORDLLDOTNET1(F(40), ref iel, I(4), ref one, F(11), Z, ref ntyp, F(20), play, zlay, ref nlay, I(18), F(2),
            ref errt, F(8), F(20), F(36), erre, ref zero, ref ld9, Z, ref one, ref one, ref one);
        Expect(errt == 0 && erre[1] == 0, "no error without a moment difference");
        float[] pts = F(15), vals = F(5); float e0 = 0, x0 = 0, delta = 0.5f; int nt = 1;
        C.SUBDIVIDEPANELDLLDOTNET(F(30), pts, vals, ref e0, ref x0, ref delta, ref nt, F(10));
    }
    static int ld9 = 9;
    delegate void Peak(ref int nmem, int[] memtab, int[] memgrp, int[] memnod, float[] xyzn, ref int ipeak, ref float rad,
        ref int nmfnd, int[] mfnd, ref int nnfnd, int[] nfnd, ref int ldxyz, ref int igrp);

    static void Checks()
    {
        int m = 2, k = 2, n = 2;
        try
        {
            C.MATMULDLLDOTNET(F(9), F(9), F(8), ref m, ref k, ref n);
            Expect(false, "a short CMAT is refused");
        }
        catch (ArgumentException e)
        {
            Expect(e.ParamName == "CMAT" && e.Message.Contains("needs length 9, given 8"), "message: " + e.Message);
        }
        try { C.MATMULDLLDOTNET(null, F(9), F(9), ref m, ref k, ref n); Expect(false, "a missing AMAT is refused"); }
        catch (ArgumentNullException e) { Expect(e.ParamName == "AMAT", "null names AMAT"); }
        // Extents follow the counts: the same arrays pass once the counts shrink, and a
        // product of large counts cannot wrap around into a small length.
        m = 1; C.MATMULDLLDOTNET(F(6), F(9), F(6), ref m, ref k, ref n);
        m = 65536; n = 65535;
        try { C.MATMULDLLDOTNET(F(9), F(9), F(9), ref m, ref k, ref n); Expect(false, "huge counts are refused"); }
        catch (ArgumentException e) { Expect(e.ParamName == "AMAT", "huge counts: " + e.Message); }
        var a = new ColumnMajor<double>(2, 3);
        a[2, 3] = 1;
        Expect(a.Data.Length == 12 && a.Ld == 3 && a.Data[11] == 1, "column-major layout");
        try { a[3, 0] = 1; Expect(false, "a row past the bound is refused"); }
        catch (IndexOutOfRangeException) { }
    }

    static int Main()
    {
        Products(); Element(); Assembly(); Bookkeeping(); Geometry(); Results(); Checks();
        Console.WriteLine(failures == 0 ? "all checks passed" : failures + " checks failed");
        return failures == 0 ? 0 : 1;
    }
}
