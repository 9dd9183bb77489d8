// The host's own step: solving the assembled system with a sparse direct
// solver. The upper triangle in compressed rows is, read by columns, the
// lower triangle in compressed columns, so the solver takes the host's
// arrays as they are (shifted to count from 0). The nodes are already in a
// fill-reducing order, so the solver keeps the natural order.
#include <chrono>

#include "slab.hpp"

#if defined(SLAB_HAVE_CHOLMOD)
#include <cholmod.h>
#else
#include <Eigen/SparseCholesky>
#include <Eigen/SparseCore>
#endif

namespace slab {

namespace {
double seconds_since(std::chrono::steady_clock::time_point t0) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
}
}  // namespace

#if defined(SLAB_HAVE_CHOLMOD)

const char* solver_name() { return "CHOLMOD supernodal Cholesky"; }

bool solve(System& sys, std::vector<double>& u, std::string& error, double& t_factor, double& t_solve) {
    const int32_t n = sys.neq;
    for (auto& p : sys.rowptr) --p;
    for (auto& c : sys.col) --c;
    cholmod_common c;
    cholmod_start(&c);
    c.print = 0;
    c.nmethods = 1;
    c.method[0].ordering = CHOLMOD_NATURAL;
    c.supernodal = CHOLMOD_SUPERNODAL;
    cholmod_sparse a{};
    a.nrow = a.ncol = std::size_t(n);
    a.nzmax = sys.val.size();
    a.p = sys.rowptr.data();
    a.i = sys.col.data();
    a.x = sys.val.data();
    a.stype = -1;
    a.itype = CHOLMOD_INT;
    a.xtype = CHOLMOD_REAL;
    a.dtype = CHOLMOD_DOUBLE;
    a.sorted = 1;
    a.packed = 1;
    auto t0 = std::chrono::steady_clock::now();
    cholmod_factor* L = cholmod_analyze(&a, &c);
    bool ok = L && cholmod_factorize(&a, L, &c) && c.status == CHOLMOD_OK;
    t_factor = seconds_since(t0);
    if (!ok) {
        error = L && c.status == CHOLMOD_NOT_POSDEF
                    ? "the stiffness matrix is not positive definite (equation " + std::to_string(L->minor + 1) + ")"
                    : "CHOLMOD failed with status " + std::to_string(c.status);
    } else {
        t0 = std::chrono::steady_clock::now();
        cholmod_dense b{};
        b.nrow = b.d = std::size_t(n);
        b.ncol = 1;
        b.nzmax = std::size_t(n);
        b.x = sys.load.data() + 1;
        b.xtype = CHOLMOD_REAL;
        b.dtype = CHOLMOD_DOUBLE;
        cholmod_dense* x = cholmod_solve(CHOLMOD_A, L, &b, &c);
        ok = x != nullptr;
        if (ok) {
            const double* v = static_cast<const double*>(x->x);
            u.assign(v, v + n);
            cholmod_free_dense(&x, &c);
        } else {
            error = "CHOLMOD could not solve";
        }
        t_solve = seconds_since(t0);
    }
    cholmod_free_factor(&L, &c);
    cholmod_finish(&c);
    for (auto& p : sys.rowptr) ++p;
    for (auto& col : sys.col) ++col;
    return ok;
}

#else

const char* solver_name() { return "Eigen SimplicialLDLT"; }

bool solve(System& sys, std::vector<double>& u, std::string& error, double& t_factor, double& t_solve) {
    const int32_t n = sys.neq;
    for (auto& p : sys.rowptr) --p;
    for (auto& c : sys.col) --c;
    bool ok = true;
    {
        Eigen::Map<const Eigen::SparseMatrix<double, Eigen::ColMajor, int>> a(
            n, n, int(sys.val.size()), sys.rowptr.data(), sys.col.data(), sys.val.data());
        auto t0 = std::chrono::steady_clock::now();
        Eigen::SimplicialLDLT<Eigen::SparseMatrix<double>, Eigen::Lower, Eigen::NaturalOrdering<int>> ldlt(a);
        t_factor = seconds_since(t0);
        if (ldlt.info() != Eigen::Success) {
            error = "the stiffness matrix could not be factorised";
            ok = false;
        } else {
            t0 = std::chrono::steady_clock::now();
            Eigen::Map<const Eigen::VectorXd> b(sys.load.data() + 1, n);
            Eigen::VectorXd x = ldlt.solve(b);
            u.assign(x.data(), x.data() + n);
            t_solve = seconds_since(t0);
        }
    }
    for (auto& p : sys.rowptr) ++p;
    for (auto& c : sys.col) ++c;
    return ok;
}

#endif

}  // namespace slab
