"""The Python binding against the built library: results of the cheap routines
checked against numpy and closed forms, every routine called through its
wrapper, and the checks that stop bad arrays before they reach the library."""
import inspect
import json
import os
import re
import sys

import numpy as np
import pytest

import shellfe
from shellfe._core import _cdiv, _cmod

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, os.path.dirname(HERE))
from generate import translate_extent  # noqa: E402

INTERFACE = os.environ.get("SHELLFE_INTERFACE",
                           os.path.join(HERE, "..", "..", "..", "src", "frame", "interface.json"))
with open(INTERFACE, encoding="utf-8") as f:
    ROUTINES = {r["name"]: r for r in json.load(f)["routines"]}
DTYPES = {"int32": np.int32, "float": np.float32, "double": np.float64}
EPS = 2.0 ** -53
PREDICATE = dict(CCWERRBOUNDA=(3 + 16 * EPS) * EPS, CCWERRBOUNDB=(2 + 12 * EPS) * EPS,
                 CCWERRBOUNDC=(9 + 64 * EPS) * EPS * EPS, SPLITTER=2.0 ** 27 + 1,
                 RESULTERRBOUND=(3 + 8 * EPS) * EPS)


def f32(*shape):
    return np.zeros(shape, np.float32, order="F")


def pts(*xy):
    return [np.array(p, np.float64) for p in xy]


def test_every_described_routine_is_exposed_with_its_inputs_in_order():
    assert sorted(shellfe.__all__) == sorted(ROUTINES)
    for name, r in ROUTINES.items():
        expected = [a["name"] for a in r["args"] if a["intent"] != "ignored"
                    and not (a["kind"] == "scalar" and a["intent"] == "out")]
        assert list(inspect.signature(getattr(shellfe, name)).parameters) == expected, name


@pytest.mark.parametrize("text, values, expected", [
    ("1+2*3-4", {}, 3), ("(1+2)*3", {}, 9), ("-7/2", {}, -3), ("7/-2+A", {"A": 0}, -3),
    ("A<B ? 10 : 20", {"A": 1, "B": 2}, 10), ("A<1||B<1 ? 0 : (A+1)*(B+1)", {"A": 0, "B": 5}, 0),
    ("A == 1 || A == 2 && B == 3", {"A": 1, "B": 0}, 1), ("(A > 0) + (B > 0)", {"A": 1, "B": 1}, 2),
    ("min(A, 9)*max(B, 2)", {"A": 12, "B": 1}, 18), ("A ? B ? 1 : 2 : 3", {"A": 1, "B": 0}, 2),
])
def test_extents_keep_their_c_meaning(text, values, expected):
    expr, _ = translate_extent(text, set(values) | {"A", "B"})
    assert eval(expr, {"_cdiv": _cdiv, "_cmod": _cmod}, values) == expected


def test_extent_naming_an_unknown_argument_is_refused():
    with pytest.raises(ValueError, match="NOPE"):
        translate_extent("NOPE+1", {"N"})


@pytest.mark.parametrize("routine, dtype, kdim_le_ndim", [
    ("MATMULDLLDOTNET", np.float32, False), ("MATMULDOUBLEDLLDOTNET", np.float64, False),
    ("MATMULBTDLLDOTNET", np.float32, True), ("MATMULBTDOUBLEDLLDOTNET", np.float64, True)])
def test_dense_products_match_numpy_and_leave_row_and_column_zero(routine, dtype, kdim_le_ndim):
    m, k, n = 3, 4, 5
    rng = np.random.default_rng(1)
    a = np.asfortranarray(rng.uniform(-1, 1, (k + 1, m + 1)).astype(dtype))
    b = np.asfortranarray(rng.uniform(-1, 1, (n + 1, k + 1) if not kdim_le_ndim else (n + 1, n + 1))
                          .astype(dtype))
    c = np.full((n + 1, m + 1), 7, dtype, order="F")
    out = getattr(shellfe, routine)(a, b, c, m, k, n)
    assert out.CMAT is c
    bt = b[1:, 1:k + 1] if not kdim_le_ndim else b[1:k + 1, 1:].T
    np.testing.assert_allclose(c[1:, 1:], bt @ a[1:, 1:], rtol=1e-5)
    assert (c[0, :] == 7).all() and (c[:, 0] == 7).all()


def test_transposed_first_factor():
    m, k, n = 2, 3, 2
    a = np.asfortranarray(np.arange(16, dtype=np.float32).reshape(4, 4))  # AMAT(i, t)
    b = np.asfortranarray(np.arange(12, dtype=np.float32).reshape(3, 4))  # BMAT(j, t)
    c = f32(n + 1, m + 1)
    shellfe.MATMULATDLLDOTNET(a.ravel(order="F"), b, c, m, k, n)
    np.testing.assert_array_equal(c[1:, 1:], b[1:, 1:] @ a[1:m + 1, 1:].T)


def test_planar_geometry():
    assert shellfe.POINTDIST2D(*pts([1, 1], [4, 5])) == 5.0
    assert shellfe.TRIAREA3D(*pts([0, 0, 1], [2, 0, 1], [0, 3, 1])) == 3.0
    ccw = shellfe.ORIENT2D(*pts([0, 0], [1, 0], [0, 1]), **PREDICATE)
    cw = shellfe.ORIENT2D(*pts([0, 0], [0, 1], [1, 0]), **PREDICATE)
    assert ccw > 0 > cw and shellfe.ORIENT2D(*pts([0, 0], [1, 1], [3, 3]), **PREDICATE) == 0
    hit = shellfe.LINEINTERSECT2D(*pts([0, 0], [2, 2], [0, 2], [2, 0]), 1e-9, 1e-9)
    assert hit == (11, 0.5, 0.5)
    assert shellfe.LINEINTERSECT2D(*pts([0, 0], [1, 0], [0, 1], [1, 1]), 1e-9, 1e-9).result == 10


def test_material_and_membrane_triangle():
    e, nu, t = 200.0, 0.25, 0.1
    prop = f32(2, 18)
    prop[1, [1, 2, 8, 9]] = e, nu, e, e / (2 * (1 + nu))
    d = shellfe.MODIPDLLDOTNET(f32(4, 4), prop, 1, 1).DMAT[1:, 1:]
    closed = e / (1 - nu * nu) * np.array([[1, nu, 0], [nu, 1, 0], [0, 0, (1 - nu) / 2]])
    np.testing.assert_allclose(d, closed, rtol=1e-6)

    xy, tnode, gpos, gwei, estif = f32(10, 3), f32(2, 4), f32(3, 3), f32(3, 3), f32(19, 19)
    xy[1:4, 1:3] = [[0, 0], [1, 0], [0, 1]]
    tnode[1, 1:4] = t
    gpos[2, 1:3], gwei[2, 1] = 1 / 3, 0.5
    out = shellfe.STIFFP003DOTNET(1, 1, 6, gpos, 0, 1, 3, xy, tnode, 1, prop, gwei, 1, 1, 3, estif)
    assert out.NGPT == 1 and out.DETJ == pytest.approx(1.0) and prop[1, 3] == pytest.approx(t)
    low = np.tril(estif[1:7, 1:7]).astype(np.float64)
    k = low + low.T - np.diag(np.diag(low))
    x, y = xy[1:4, 1], xy[1:4, 2]
    rigid = [np.tile([1, 0], 3), np.tile([0, 1], 3), np.ravel(np.column_stack([-y, x]))]
    for u in rigid:
        np.testing.assert_allclose(k @ u, 0, atol=1e-4 * k.max())
    stretch = np.ravel(np.column_stack([x, 0 * x]))  # u = x: strain energy t A D11
    assert stretch @ k @ stretch == pytest.approx(t * 0.5 * closed[0, 0], rel=1e-5)


@pytest.mark.parametrize("ntype, nodes", [(1, 8), (3, 6), (6, 3)])
def test_shape_functions_partition_unity(ntype, nodes):
    shp = shellfe.SFR1DLLDOTNET(f32(10, 4), 0.3, 0.2, ntype).SHP
    assert shp[1:nodes + 1, 1].sum() == pytest.approx(1, abs=1e-6)
    np.testing.assert_allclose(shp[1:nodes + 1, 2:4].sum(axis=0), 0, atol=1e-6)


def test_tables_and_lists():
    a = np.asfortranarray(np.arange(12, dtype=np.float32).reshape(3, 4))
    assert shellfe.COMPAREARRAY(a, a.copy(order="F"), 3, 2).ISAME == -1
    b = a.copy(order="F")
    b[2, 3] += 1
    assert shellfe.COMPAREARRAY(a, b, 3, 2).ISAME == 0
    xs, ys = np.array([0, 5, 1, 1], np.float32), np.array([0, 5, 1, 1], np.float32)
    assert shellfe.FINDLOADPOINT(3, 1.2, 0.9, xs, ys).IPT == 2  # the lower of two equals
    elemnod = np.asfortranarray(np.arange(8, dtype=np.int32).reshape(4, 2))  # (0:NLAST, 1:NV)
    verts = shellfe.GETELEMENTVERTICES(np.zeros(4, np.int32), elemnod, 3, 2, 2).VERTS
    np.testing.assert_array_equal(verts, elemnod[2:4, :].ravel())  # element after element


def _smoke_args(name, size=4096):
    args = []
    for p in inspect.signature(getattr(shellfe, name)).parameters:
        a = next(x for x in ROUTINES[name]["args"] if x["name"] == p)
        if a["kind"] == "scalar":
            args.append(1 if a["type"] == "int32" else 0.5)
        else:
            args.append(np.full(size, 1, DTYPES[a["type"]]))
    return args


@pytest.mark.parametrize("name", sorted(ROUTINES))
def test_every_routine_runs_and_reports_its_outputs(name):
    # Counts of one, node 1 everywhere, ample arrays: a valid call of each.
    args = _smoke_args(name)
    out = getattr(shellfe, name)(*args)
    r = ROUTINES[name]
    written = [a["name"] for a in r["args"] if a["intent"] in ("out", "inout")]
    if written:
        assert out._fields == (("result",) if r["returns"] != "void" else ()) + tuple(written)
        params = list(inspect.signature(getattr(shellfe, name)).parameters)
        for field in written:
            if field in params and isinstance(args[params.index(field)], np.ndarray):
                assert getattr(out, field) is args[params.index(field)]
    else:
        assert isinstance(out, float if r["returns"] == "double" else int)


@pytest.mark.parametrize("name", sorted(ROUTINES))
def test_every_sized_array_is_refused_one_element_short(name):
    params = list(inspect.signature(getattr(shellfe, name)).parameters)
    for a in ROUTINES[name]["args"]:
        if a["kind"] != "array" or a.get("extent") is None:
            continue
        args = _smoke_args(name)
        i = params.index(a["name"])
        args[i] = args[i][:0]
        try:
            getattr(shellfe, name)(*args)
            continue  # nothing needed for these counts
        except ValueError as err:
            needed = int(re.search(r"at least (\d+) (\w+) elements", str(err)).group(1))
            assert a["name"] in str(err) and "got 0" in str(err)
        args[i] = np.full(4096, 1, DTYPES[a["type"]])[:needed - 1]
        with pytest.raises(ValueError, match=f"at least {needed} .* got {needed - 1}$"):
            getattr(shellfe, name)(*args)
        args[i] = np.full(4096, 1, DTYPES[a["type"]])[:needed]
        getattr(shellfe, name)(*args)


def test_bad_arguments_are_refused_before_the_call():
    a, b, c = f32(3, 3), f32(3, 3), f32(3, 3)
    call = shellfe.MATMULDLLDOTNET
    cases = [
        (TypeError, "AMAT .* 9 float32 elements .* got dtype float64", (a.astype(np.float64), b, c)),
        (TypeError, "BMAT .* got list", (a, [0.0] * 9, c)),
        (ValueError, r"CMAT .* at least 9 float32 .*\(NDIM\+1\)\*\(MDIM\+1\) with NDIM=2, MDIM=2.* got 8",
         (a, b, np.zeros(8, np.float32))),
        (ValueError, "AMAT .* C-ordered array of shape \\(3, 3\\)", (np.zeros((3, 3), np.float32), b, c)),
        (ValueError, "BMAT .* non-contiguous", (a, np.zeros(18, np.float32)[::2], c)),
        (ValueError, "CMAT .* read-only", (a, b, np.frombuffer(bytes(36), np.float32))),
    ]
    for exc, message, arrays in cases:
        with pytest.raises(exc, match=message):
            call(*arrays, 2, 2, 2)
    with pytest.raises(TypeError, match="KDIM must be an integer"):
        call(a, b, c, 2, 2.0, 2)
    with pytest.raises(ValueError, match="NDIM = 4294967296 does not fit"):
        call(a, b, c, 2, 2, 2 ** 32)
    # A C-ordered array with one long dimension is column-major as well.
    call(a, np.zeros((1, 9), np.float32), np.zeros((9, 1), np.float32), 2, 2, 2)
    with pytest.raises(ValueError, match="not checked"):
        shellfe.ADDSHELLTOSDOTNET(*[np.zeros((2, 2), np.int32) if p == "IDIAG" else v for p, v in zip(
            inspect.signature(shellfe.ADDSHELLTOSDOTNET).parameters, _smoke_args("ADDSHELLTOSDOTNET"))])
