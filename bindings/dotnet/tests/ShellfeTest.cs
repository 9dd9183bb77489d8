// A .NET host of the library: every routine once through the checked layer
// (so each declared extent is met by a real call), each double-precision
// routine beside its single-precision twin, results checked where a case is
// cheap to state, and the checks themselves made to fire.
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
    // The double route takes the single-precision fixtures widened, and its results must agree with
    // the compatible twin's to single rounding: relative to the largest entry, since entries that
    // cancel to almost nothing keep only the absolute accuracy of the whole.
    static double[] W(float[] a) { return Array.ConvertAll(a, x => (double)x); }
    static void Near(float[] f, double[] d, string what)
    {
        double scale = 0; foreach (var x in d) scale = Math.Max(scale, Math.Abs(x));
        int i = 0; while (i < f.Length && Math.Abs(f[i] - d[i]) <= 1e-5 * scale) ++i;
        Expect(scale > 0 && i == f.Length, what + (i < f.Length ? " at " + i + ": " + f[i] + " vs " + d[i] : " all zero"));
    }

    static void Products()
    {
        // Symmetric factors, so A*B, A*B^T and A^T*B agree: [[2,1],[1,3]] * [[1,4],[4,5]].
        var a = new ColumnMajor<float>(2, 2); var b = new ColumnMajor<float>(2, 2);
        float[] sa = { 2, 1, 1, 3 }, sb = { 1, 4, 4, 5 }, want = { 6, 13, 13, 19 };
        for (int k = 0; k < 4; ++k) { a[1 + k / 2, 1 + k % 2] = sa[k]; b[1 + k / 2, 1 + k % 2] = sb[k]; }
        double[] ad = W(a.Data), bd = W(b.Data);
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
        // Each routine of the double route follows its twin on the same inputs, widened.
        double[] dmatd = D(16), propd = W(prop.Data), xyd = W(xy.Data), gposd = W(gpos.Data), gweid = W(gwei.Data);
        C.shellfe_membrane_material(dmatd, propd, ref imat, ref nmat);
        Near(dmat.Data, dmatd, "double material matrix");
        var estif = new ColumnMajor<float>(18, 18); float detj = 0;
        C.STIFFP003DOTNET(ref ngp, ref ngp, ref ntype, gpos.Data, ref ngpt, ref iel, ref nnode, xy.Data,
            tnode.Data, Z, ref imat, prop.Data, gwei.Data, Z, ref nelem, ref nmat, Z, Z, ref nnodt, estif.Data, ref detj);
        Expect(Math.Abs(detj - 0.25f) < 1e-6 && ngpt == 4, "membrane DETJ " + detj + ", points " + ngpt);
        double[] tnoded = W(tnode.Data), estifd = D(19 * 19); double detjd = 0; int ngptd = 0;
        C.shellfe_membrane_stiffness(ref ngp, ref ngp, ref ntype, gposd, ref ngptd, ref iel, ref nnode, xyd, tnoded, Z, ref imat,
            propd, gweid, Z, ref nelem, ref nmat, Z, Z, ref nnodt, estifd, ref detjd);
        Near(estif.Data, estifd, "double membrane stiffness");
        Expect(detjd == 0.25 && ngptd == 4 && Math.Abs(propd[1 + 3 * 2] - 0.2) < 1e-7,
            "double membrane DETJ " + detjd + ", points " + ngptd + ", thickness " + propd[1 + 3 * 2]);
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
        double[] cartdd = D(30), derivd = W(shp.Data);
        C.shellfe_jacobian(cartdd, derivd, ref detjd, xyd, ref eight);
        Near(cartd.Data, cartdd, "double Cartesian derivatives");
        float[] dbend = F(16), dshear = F(9), zlay = { 0, -0.1f, 0.1f }; int ibend = 1, nlay = 1;
        C.MODPBDLLDOTNET(dbend, dshear, ref ibend, ref ibend, prop.Data, zlay, ref nlay);
        Expect(dbend[5] > 0 && dbend[6] == dbend[9], "bending rigidities");
        double[] dbendd = D(16), zlayd = W(zlay); int compat = 0;
        C.shellfe_plate_rigidities(dbendd, D(9), ref ibend, ref ibend, propd, zlayd, ref nlay, ref compat);
        Near(dbend, dbendd, "double bending rigidities");
        {   // plate bending then transverse shear, three degrees of freedom per node
            float gd = 0; int ioff = 0, ngpt2 = 0, ndofn = 3, ldes = 24; var pe = F(25 * 25);
            C.STIFFP001DOTNET(ref ngp, ref ngp, ref ntype, gpos.Data, ref ngpt, ref iel, ref ngpt2, Z, ref nnode, xy.Data,
                tnode.Data, Z, ref imat, prop.Data, ref ioff, pe, gwei.Data, Z, Z, ref nelem, ref nmat, ref ldes, ref ndofn,
                ref nnodt, prop.Data, zlay, ref nlay, ref gd);
            C.STIFFP002DOTNET(ref ngp, ref ngp, ref ntype, gpos.Data, ref ngpt, ref iel, ref nnode, xy.Data, tnode.Data, Z,
                ref imat, prop.Data, ref ioff, pe, gwei.Data, Z, ref nelem, ref nmat, ref ldes, ref ndofn, ref nnodt,
                prop.Data, zlay, ref nlay, ref gd);
            Expect(Math.Abs(gd - 0.25f) < 1e-6 && pe[1 + 25] > 0 && pe[2 + 2 * 25] > 0, "plate element " + gd);
            var ped = D(25 * 25); int ngptd2 = 0;
            C.shellfe_plate_bending_stiffness(ref ngp, ref ngp, ref ntype, gposd, ref ngptd, ref iel, ref ngptd2, Z, ref nnode, xyd,
                tnoded, Z, ref imat, propd, ref ioff, ped, gweid, Z, Z, ref nelem, ref nmat, ref ldes, ref ndofn, ref nnodt, propd,
                zlayd, ref nlay, ref detjd, ref compat);
            C.shellfe_plate_shear_stiffness(ref ngp, ref ngp, ref ntype, gposd, ref ngptd, ref iel, ref nnode, xyd, tnoded, Z,
                ref imat, propd, ref ioff, ped, gweid, Z, ref nelem, ref nmat, ref ldes, ref ndofn, ref nnodt, propd, zlayd, ref nlay,
                ref detjd, ref compat);
            Near(pe, ped, "double plate element"); Expect(detjd == 0.25 && ngptd == 12, "double plate DETJ " + detjd);
        }
        // Finishing: node 1 of element 1 receives its drilling stiffness once and is flagged.
        int[] flag = I(2), ielnod = { 0, 0, 0, 1 }; int one = 1, six = 6, ldcn = 1; float ratio = 1000; var shell = F(7 * 8 + 1);
        C.STIESTDLLDOTNET(estif.Data, shell, ref one, flag, ref six, ref six, Z, ref ldcn, ref one, ielnod, ref ratio);
        Expect(flag[1] == 1, "drilling flag set");
        var shelld = D(7 * 8 + 1); double ratiod = ratio; flag[1] = 0;
        C.shellfe_finish_shell_element(estifd, shelld, ref one, flag, ref six, ref six, Z, ref ldcn, ref one, ielnod, ref ratiod);
        Near(shell, shelld, "double finished element"); Expect(flag[1] == 1, "double drilling flag set");
        // Keep degrees of freedom 3 then 1 of a one-node six-per-node matrix.
        float[] src = F(49), dst = F(17); int[] idof = { 0, 3, 1 }; int sel = 2;
        src[3 + 3 * 7] = 9; src[1 + 3 * 7] = 4;
        C.BUILDESTIF1DOTNET(ref one, ref sel, ref six, src, dst, idof);
        Expect(dst[1 + 1 * 7] == 9 && dst[2 + 1 * 7] == 4, "selected degrees of freedom");
        var dstd = D(17); C.shellfe_select_dofs(ref one, ref sel, ref six, W(src), dstd, idof);
        Near(dst, dstd, "double selected degrees of freedom");

        // What only the double route does. At 90 degrees the material axes swap exactly, leaving no
        // shear coupling where single precision's pi/2 leaves a cosine of about -4e-8. The bending
        // coupling is then the layer's own, unmixed, and the physical nu*E2/den is exactly E1/E2 times
        // the compatible nu*E2^2/(E1*den). And the determinant of a distorted element keeps the bits
        // that the compatible route rounds away.
        prop[1, 17] = 90; propd = W(prop.Data);
        C.MODIPDLLDOTNET(dmat.Data, prop.Data, ref imat, ref nmat);
        C.shellfe_membrane_material(dmatd, propd, ref imat, ref nmat);
        Expect(dmatd[3 + 1 * 4] == 0.0 && dmatd[3 + 2 * 4] == 0.0 && dmat[3, 1] != 0, "exact 90 degrees " + dmat[3, 1]);
        var dphys = D(16); int physical = 2;   // SHELLFE_PHYSICAL_BENDING_COUPLING
        C.shellfe_plate_rigidities(dbendd, D(9), ref ibend, ref ibend, propd, zlayd, ref nlay, ref compat);
        C.shellfe_plate_rigidities(dphys, D(9), ref ibend, ref ibend, propd, zlayd, ref nlay, ref physical);
        Expect(Math.Abs(dphys[2 + 1 * 4] / dbendd[2 + 1 * 4] - 30000 / 12000.0) < 1e-12, "physical bending coupling " + dphys[6]);
        xy[4, 1] = 1.1f; xy[4, 2] = 0.6f; xy[6, 1] = 0.7f;
        C.JACOB2DLLDOTNET(cartd.Data, shp.Data, ref detj, xy.Data, ref eight);
        C.shellfe_jacobian(cartdd, derivd, ref detjd, W(xy.Data), ref eight);
        Expect((float)detjd == detj && detjd != detj, "distorted DETJ " + detjd.ToString("R") + ", single " + detj.ToString("R"));
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
    }

    // Node matrices of node 1 of a two-node bar (one unknown per node, k = 4; row length 3, so
    // entry (a, b) of a table is at 3a + b): node 1's spring of 5 enters once, node 2's prescribed
    // displacement 0.5 moves 0.5 * 4 onto node 1's load, and both upper couplings are counted.
    static void NodeMatrices()
    {
        int one = 1, two = 2, cnt = 0;
        float[] estif = { 0, 0, 0, 0, 4, -4, 0, -4, 4 }, snode = F(6), spring = { 0, 5 }, upres = { 0, 0, 0.5f }, fload = F(2);
        int[] ielnod = { 0, 0, 0, 1, 0, 2 }, locnod = { 0, 1, 2 }, ivisit = I(3), isprf = { 0, 1, 0 }, map = { 0, 1 };
        double[] estifd = W(estif), snoded = D(6), floadd = D(2); int cntd = 0;
        C.BUILDALLNODESTIFFDLLDOTNET(estif, ref one, ref two, snode, ref one, spring, ivisit, Z, ielnod, isprf, ref one,
            ref one, ref two, ref two, ref two, Z, ref one, Z, upres, fload, locnod, ref cnt, map);
        Expect(snode[4] == 9 && snode[5] == -4 && cnt == 2 && fload[1] == 2 && ivisit[1] == -1, "stiffness node matrix");
        C.shellfe_gather_node_stiffness(estifd, ref one, ref two, snoded, ref one, W(spring), I(3), Z, ielnod, isprf, ref one,
            ref one, ref two, ref two, ref two, Z, ref one, Z, W(upres), floadd, locnod, ref cntd, map);
        Near(snode, snoded, "double node matrix"); Near(fload, floadd, "double node load");
        Near(estif, estifd, "spring left in the double element matrix"); Expect(cntd == 2, "double count " + cntd);
        // Node 1 is visited now: the spring stays in ESTIF but is not added a second time.
        var dload = D(2); snode = F(6);
        C.BUILDALLNODESTIFFDLLDOTNET01(estif, ref one, ref two, snode, ref one, spring, ivisit, Z, ielnod, isprf, ref one,
            ref one, ref two, ref two, ref two, Z, ref one, Z, upres, dload, locnod, ref cnt, map);
        Expect(snode[4] == 9 && cnt == 4 && dload[1] == 2, "node matrix, double load " + snode[4] + " " + cnt);
        // For node 2 the coupling to node 1 lies below the diagonal: only node 2's own entry is gathered.
        var dnode = D(6); cnt = 0;
        C.BUILDALLNODEMASSDLL(new double[] { 0, 0, 0, 0, 2, 1, 0, 1, 2 }, ref two, ref two, dnode, ref one, Z, ielnod,
            ref one, ref one, ref two, Z, ref two, Z, ref one, locnod, ref cnt);
        Expect(dnode[4] == 0 && dnode[5] == 2 && cnt == 1, "mass node matrix");

        // The same bar into skyline storage, equation I's diagonal at SKY(IDIAG(I+1)), by both routines;
        // the second time a band of 1 drops the coupling of equations 2 and 1.
        var sky = D(4); var ses = F(81); int band = 2, eight = 8;
        ielnod = I(18); ielnod[3] = 1; ielnod[5] = 2;   // slots 3 to 8 empty
        ses[10] = ses[20] = 4; ses[11] = ses[19] = -4;  // row length 9
        int[] idiag = { 0, 0, 1, 3 };                   // LOCNOD doubles as the identity numbering
        C.ADDSHELLTOSDLLDOTNET(ses, ielnod, Z, idiag, ref band, ref one, sky, locnod, map, ref one, ref one, Z, Z, ref eight);
        band = 1;
        C.ADDSHELLTOSDOTNET(ses, ielnod, Z, idiag, ref band, ref one, sky, locnod, ref one, ref one, Z, Z, ref eight, ref two);
        Expect(sky[1] == 8 && sky[2] == -4 && sky[3] == 8, "skyline " + string.Join(" ", sky));
        var skyd = D(4); band = 2;
        C.shellfe_add_shell_to_skyline_mapped(W(ses), ielnod, Z, idiag, ref band, ref one, skyd, locnod, map, ref one, ref one, Z, Z,
            ref eight);
        band = 1;
        C.shellfe_add_shell_to_skyline(W(ses), ielnod, Z, idiag, ref band, ref one, skyd, locnod, ref one, ref one, Z, Z, ref eight,
            ref two);
        Expect(string.Join(" ", skyd) == string.Join(" ", sky), "double skyline " + string.Join(" ", skyd));
    }

    static void Loads()
    {
        // One node, given negated, with six unknowns: element unknowns 1 and 6 land on offsets 4 and 2
        // of its global block and leave the node-force table (row length 3) of node 2.
        int one = 1, two = 2, six = 6; int[] ielnod = { 0, 0, 0, -2 }, numnod = { 0, 0, 1 };
        float[] eload = { 0, 7, 0, 0, 0, 0, 3 }, g = F(7), nodfrc = F(21); var gd = D(7);
        C.FELOADTOGLOADDOTNET(ref one, ielnod, ref one, numnod, ref two, ref six, g, eload, nodfrc, Z, ref one);
        C.FELOADTOGLOADDOTNET01(ref one, ielnod, ref one, numnod, ref two, ref six, gd, eload, nodfrc, Z, ref one);
        Expect(g[4] == 7 && g[2] == 3 && g[1] + g[3] + g[5] + g[6] == 0 && gd[4] == 7 && gd[2] == 3
            && nodfrc[1 * 3 + 2] == -14 && nodfrc[6 * 3 + 2] == -6, "element loads " + string.Join(" ", g));
        // Points (0, 0), (2, 1), (4, 0): the nearest, and the lower index of two at the same distance.
        int npt = 3, ipt = -1; float xp = 2.1f, yp = 0.9f; float[] xpt = { 0, 0, 2, 4 }, ypt = { 0, 0, 1, 0 };
        C.FINDLOADPOINT(ref npt, ref ipt, ref xp, ref yp, xpt, ypt);
        Expect(ipt == 2, "nearest load point " + ipt);
        xp = 1; yp = 0.5f;
        C.FINDLOADPOINT(ref npt, ref ipt, ref xp, ref yp, xpt, ypt);
        Expect(ipt == 1, "tied load points " + ipt);
    }

    static void Bookkeeping()
    {
        int one = 1, zero = 0, maxmem = 0; int[] nodmem = I(102), memslt = I(18);
        memslt[1 * 2 + 1] = 1;   // slot 1 of member 1 is node 1
        C.FEMEMBERSTONODES1DOTNET(Z, ref one, ref maxmem, nodmem, memslt);
        Expect(maxmem == 1 && nodmem[51] == 1 && nodmem[52] == 1, "member incidence");
        // Nodes 1 and 3 lie within 0.001 of each other; members 1 (nodes 1, 2) and 2 (nodes 2, 3) are
        // recorded by the incidence routine, then member 2's slot naming node 3 is redirected to node 1.
        int two = 2, three = 3, fifty = 50; int[] idel = I(4), slots = I(27), records = I(4 * 51);
        slots[1 * 3 + 1] = 1; slots[2 * 3 + 1] = 2; slots[1 * 3 + 2] = 2; slots[2 * 3 + 2] = 3;
        C.FEMEMBERSTONODES1DOTNET(Z, ref two, ref maxmem, records, slots);
        float[] xyz = { 0, 0, 1, 0.0009f, 0, 0, 0, 0, 0, 0, 0, 0 };
        C.PACKNODFE1DOTNET(idel, records, ref three, slots, ref two, ref fifty, xyz);
        Expect(maxmem == 2 && idel[3] == -1 && idel[2] == 0 && slots[2 * 3 + 2] == 1 && slots[1 * 3 + 2] == 2, "coincident nodes");
        // Beam 7-3 lies on the edge of slots 3 and 4 and takes the element's value 42; beam 1-3 joins
        // slots 1 and 3, which are no edge, and keeps its own.
        int[] eltab = I(20), ibinfo = I(3), flg = I(10), nodes = { 1, 2, 3, 7, 5, 6, 8, 9 };
        for (int s = 1; s <= 8; ++s) eltab[s * 2 + 1] = nodes[s - 1];
        eltab[9 * 2 + 1] = 42;
        C.SETBEAMINFODLLDOTNET(ref two, ref one, eltab, new[] { 0, 7, 1 }, new[] { 0, 3, 3 }, ibinfo, flg);
        Expect(ibinfo[1] == 42 && ibinfo[2] == 0 && flg[7] == -1 && flg[3] == -1 && flg[1] == 0, "beam on an element edge");
        // Mid-side nodes 1 to 8 of two elements along y = 0; node 8 (slot 8 of element 2) repeats node 2.
        int eight = 8; float tol = 0.001f; var xyp = F(27); idel = I(9); var elslot = I(27);
        for (int n = 1; n <= 8; ++n) xyp[9 + n] = n;
        xyp[9 + 8] = 2.0004f;
        C.PACKMESHNODESDOTNET(idel, ref zero, ref eight, xyp, elslot, ref two, ref tol);
        Expect(idel[8] == -1 && Array.FindAll(idel, v => v != 0).Length == 1 && elslot[8 * 3 + 2] == 2, "mid-side nodes");
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
        // Peak at node 1 (x = 0); member 1 (nodes 1, 2; active) and member 2 (nodes 2, 3; inactive)
        // both reach within 2 of it through node 2 (x = 1), node 3 (x = 5) does not. Tables have
        // row length 3; only the first search takes inactive members, and node 2 is listed once.
        int[] memtab = { 0, 0, 0, 0, 1, 0, 0, 2, 2 }, memnod = { 0, 0, 0, 0, 1, 2, 0, 2, 3 }, memgrp = { 0, 1, 1 };
        float[] xyzn = { 0, 0, 1, 5, 0, 0, 0, 0, 0, 0, 0, 0 }; float reach = 2; int nmem = 2, ldxyz = 3;
        var searches = new Peak[] { C.GETPEAKMEMNODESDOTNET, C.GETPEAKMEMNODESDOTNET1, C.GETPEAKMEMNODESDOTNET2 };
        for (int v = 0; v < 3; ++v)
        {
            int nm = 0, nn = 0; int[] mfnd = I(3), nfnd = I(4);
            searches[v](ref nmem, memtab, memgrp, memnod, xyzn, ref one, ref reach, ref nm, mfnd, ref nn, nfnd, ref ldxyz, ref zero);
            Expect(nm == (v == 0 ? 2 : 1) && mfnd[1] == 1 && nn == 2 && nfnd[1] == 1 && nfnd[2] == 2 && nfnd[3] == 0,
                "peak search " + v + ": " + nm + " members, " + nn + " nodes");
        }
        // Error estimate of an eight-node element on nodes 1 to 8 (a plate 0.2 thick, E = 30000,
        // nu = 0.2), unit weight at each of the 9 points: nothing where the smoothed moments equal
        // the element's, and with Mx smoothed one higher 9 * C11 = 9 * 12 / (E t^3) = 0.45, shared out.
        int eight = 8, nine = 9; float errt = 0; var erre = F(2); var errn = F(9);
        float[] sige = F(40), sigs = F(36), gpos = F(11), wdet = F(20), play = F(36), zlay = { 0, -0.1f, 0.1f };
        int[] ietyp = { 0, 0, 0, 1 }, conn = I(18);
        play[1 + 2 * 1] = 30000; play[1 + 2 * 2] = 0.2f; play[1 + 2 * 8] = 30000; play[1 + 2 * 9] = 12500;
        gpos[1 + 3 * 1] = -0.7745967f; gpos[1 + 3 * 3] = 0.7745967f;
        for (int k = 1; k <= 8; ++k) { conn[1 + 2 * k] = k; sige[k + 10] = sigs[1 + 4 * k] = 2; }
        for (int p = 11; p <= 19; ++p) wdet[p] = 1;
        C.STERRORDLLDOTNET(sige, ref one, ietyp, ref one, gpos, Z, ref eight, F(20), play, zlay, ref one, conn, errn,
            ref errt, F(8), wdet, sigs, erre, ref zero, ref nine, Z, ref one, ref one);
        Expect(errt == 0 && erre[1] == 0 && Array.TrueForAll(errn, e => e == 0), "no error where the moments agree");
        for (int k = 1; k <= 8; ++k) sigs[1 + 4 * k] = 3;
        C.STERRORDLLDOTNET1(sige, ref one, ietyp, ref one, gpos, Z, ref eight, F(20), play, zlay, ref one, conn, errn,
            ref errt, F(8), wdet, sigs, erre, ref zero, ref nine, Z, ref one, ref one, ref one);
        float shared = 0; foreach (var e in errn) shared += e;
        Expect(Math.Abs(errt - 0.45) < 1e-5 && Math.Abs(erre[1] - errt) < 1e-5 && Math.Abs(shared - errt) < 1e-5,
            "error estimate " + errt + " " + erre[1] + " " + shared);
        // A straight 2 x 3 panel carrying x as its result: the cell of side 1 at (xi, eta) = (0, -1) runs
        // from mid-side node 2 past corner node 3 to the panel's centre (1, 1.5). ETA comes before XI.
        float[] xyz = F(30), nodval = F(10), pts = F(15), vals = F(5);
        float[] px = { 0, 1, 2, 2, 2, 1, 0, 0 }, py = { 0, 0, 0, 1.5f, 3, 3, 3, 1.5f };
        for (int k = 1; k <= 8; ++k) { xyz[k] = nodval[k] = px[k - 1]; xyz[k + 10] = py[k - 1]; xyz[k + 20] = 0.5f; }
        float eta = -1, xi = 0, delta = 1; int kind = 1;   // PTS(k, c) at k + 5(c - 1)
        C.SUBDIVIDEPANELDLLDOTNET(xyz, pts, vals, ref eta, ref xi, ref delta, ref kind, nodval);
        Expect(pts[1] == 1 && pts[6] == 0 && pts[2] == 2 && pts[7] == 0 && pts[4] == 1 && pts[9] == 1.5f && pts[14] == 0.5f
            && vals[1] == 1 && vals[2] == 2 && vals[4] == 1, "cell corners " + string.Join(" ", pts));
    }
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
        // The double route's extents are checked alike: one node of six-per-node rows of 7 needs 6 * 8 + 1.
        int one = 1, six = 6;
        try
        {
            C.shellfe_select_dofs(ref one, ref one, ref six, D(48), D(9), new[] { 0, 1 });
            Expect(false, "a short ESRC is refused");
        }
        catch (ArgumentException e)
        {
            Expect(e.ParamName == "ESRC" && e.Message.Contains("shellfe_select_dofs: ESRC needs length 49, given 48"),
                "message: " + e.Message);
        }
        var a = new ColumnMajor<double>(2, 3);
        a[2, 3] = 1;
        Expect(a.Data.Length == 12 && a.Ld == 3 && a.Data[11] == 1, "column-major layout");
        try { a[3, 0] = 1; Expect(false, "a row past the bound is refused"); }
        catch (IndexOutOfRangeException) { }
    }

    static int Main()
    {
        Products(); Element(); Assembly(); NodeMatrices(); Loads(); Bookkeeping(); Geometry(); Results(); Checks();
        Console.WriteLine(failures == 0 ? "all checks passed" : failures + " checks failed");
        return failures == 0 ? 0 : 1;
    }
}
