// The slab analysis distributed over MPI ranks with PETSc, as a host whose
// model outgrows one machine runs it.
//
// Each rank owns a contiguous block of nodes and with it their equations.
// PETSc's graph partitioner divides the node graph where it has one, and
// the nodes are renumbered so that each part is a block; without one, the
// row-by-row numbering is cut into strips. A rank takes the piece of the
// mesh touching its nodes, runs the serial program's model on it (element
// matrices, loads, restraints), gathers the node matrix of each of its
// nodes and appends exactly its own rows; the rows go to PETSc as they
// are, with exact preallocation.
//
// What stays replicated on every rank is the mesh (connectivity,
// coordinates, node-to-element records) and its numbering: the panel is
// meshed whole, and the merging of the mid-side and corner nodes that
// neighbouring cells create twice needs every cell's provisional nodes.
// Everything after it (element matrices, restraints, loads, matrix rows,
// solution) is held by the owning rank in local node numbers, its nodes
// and the neighbours its elements reach, so those stages shrink as 1/P. The
// results stay there too: each rank recovers the moments of the elements it
// owns, estimates their error and hands on only totals; the centre values
// and the result net come from the rank holding the centre. The root
// receives the whole deflection and Mx only to draw them.
//
// This file is a module that the program loads for --petsc only; it calls
// back into the program's meshing and recovery.
#include <petscksp.h>

#if defined(__unix__) || defined(__APPLE__)
#include <sys/resource.h>
#endif
#if defined(__GLIBC__)
#include <malloc.h>
#endif

#include <algorithm>
#include <chrono>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <exception>
#include <numeric>
#include <string>
#include <vector>

#include "shellfe.h"
#include "slab.hpp"

namespace slab {

namespace {


int rank = 0, ranks = 1;
std::string solver_description;

// Stops every rank: a rank that fails alone would leave the others waiting
// in the next collective call.
[[noreturn]] void fail(const std::string& what) {
    std::fprintf(stderr, "slab: rank %d: %s\n", rank, what.c_str());
    std::fflush(stderr);
    MPI_Abort(PETSC_COMM_WORLD, 1);
    std::abort();
}

#define SLAB_PETSC(call)                                                   \
    do {                                                                   \
        if (PetscErrorCode ierr_ = (call); ierr_ != 0) fail(#call " failed"); \
    } while (0)

// Wall and processor time of each stage, the slowest rank's, and the peak
// memory of the largest and the smallest rank.
class Stages {
public:
    explicit Stages(bool timed) : timed_(timed) { restart(); }
    void end(const char* name, const std::string& note = "") {
        double mine[3] = {seconds(), cpu_seconds() - cpu_, peak_memory_mib()}, most[3], least = 0.0;
        MPI_Reduce(mine, most, 3, MPI_DOUBLE, MPI_MAX, 0, PETSC_COMM_WORLD);
        MPI_Reduce(&mine[2], &least, 1, MPI_DOUBLE, MPI_MIN, 0, PETSC_COMM_WORLD);
        if (timed_)
            std::printf("  %-18s %7.2f s wall %7.2f s cpu   peak memory per rank %7.1f MiB (smallest %.1f)%s\n", name,
                        most[0], most[1], most[2], least, note.c_str());
        std::fflush(stdout);
        restart();
    }
    void restart() {
        t_ = std::chrono::steady_clock::now();
        cpu_ = cpu_seconds();
    }
    double seconds() const { return std::chrono::duration<double>(std::chrono::steady_clock::now() - t_).count(); }

private:
    bool timed_;
    std::chrono::steady_clock::time_point t_;
    double cpu_ = 0.0;
};

// Hands the memory freed so far back to the system, so that the
// factorisation's peak starts from what is live rather than from the
// assembly's high-water mark.
void release_freed_memory() {
#if defined(__GLIBC__)
    malloc_trim(0);
#endif
}

// Renumbers the nodes row after row of the slab (by y, then x), the
// numbering whose contiguous blocks are strips, and rebuilds the
// node-to-element records for it.
void number_in_strips(Mesh& m, double a) {
    std::vector<int32_t> order(m.nnode);
    std::iota(order.begin(), order.end(), 1);
    const float tol = float(1.0e-3 * a / std::sqrt(double(m.nelem)));
    std::sort(order.begin(), order.end(), [&](int32_t p, int32_t q) {
        return std::fabs(m.y(p) - m.y(q)) > tol ? m.y(p) < m.y(q) : m.x(p) < m.x(q);
    });
    std::vector<int32_t> newnum(m.nnode + 1, 0);
    for (int32_t k = 0; k < m.nnode; ++k) newnum[order[k]] = k + 1;
    renumber(m, newnum, m.nnode);
}

// The first node of each rank's block, and one past the last node at the
// end: rank r owns nodes starts[r] to starts[r + 1] - 1.
std::vector<int32_t> starts;

// The rank that owns node n.
int owner(int32_t n) { return int(std::upper_bound(starts.begin(), starts.end(), n) - starts.begin()) - 1; }

// Position (from 1) of v in an ascending list that holds it.
int32_t position(const std::vector<int32_t>& sorted, int32_t v) {
    return int32_t(std::lower_bound(sorted.begin(), sorted.end(), v) - sorted.begin()) + 1;
}

// The nodes of the given elements, ascending.
std::vector<int32_t> nodes_of(const Mesh& mesh, const std::vector<int32_t>& elems) {
    std::vector<int32_t> nodes;
    nodes.reserve(elems.size() * 3);
    for (int32_t e : elems)
        for (int s = 1; s <= 8; ++s) nodes.push_back(mesh.node(s, e));
    std::sort(nodes.begin(), nodes.end());
    nodes.erase(std::unique(nodes.begin(), nodes.end()), nodes.end());
    return nodes;
}

// Divides the nodes among the ranks. The row-by-row numbering cut into
// equal blocks gives strips of the slab; where PETSc has a graph
// partitioner (PT-Scotch or ParMETIS, or another chosen with
// -mat_partitioning_type), it divides the node graph instead, and the
// nodes are renumbered so that each rank's are contiguous, in their row-by-
// row order. -mat_partitioning_type current keeps the strips. Returns what
// divided them.
std::string partition_nodes(Mesh& mesh) {
    starts.assign(ranks + 1, 0);
    for (int r = 0; r <= ranks; ++r) starts[r] = int32_t(int64_t(mesh.nnode) * r / ranks) + 1;
    if (ranks == 1) return "one rank";
    MatPartitioning parts = nullptr;
    SLAB_PETSC(MatPartitioningCreate(PETSC_COMM_WORLD, &parts));
#if defined(PETSC_HAVE_PTSCOTCH)
    SLAB_PETSC(MatPartitioningSetType(parts, MATPARTITIONINGPTSCOTCH));
#elif defined(PETSC_HAVE_PARMETIS)
    SLAB_PETSC(MatPartitioningSetType(parts, MATPARTITIONINGPARMETIS));
#else
    SLAB_PETSC(MatPartitioningSetType(parts, MATPARTITIONINGCURRENT));
#endif
    SLAB_PETSC(MatPartitioningSetFromOptions(parts));
    MatPartitioningType type = nullptr;
    SLAB_PETSC(MatPartitioningGetType(parts, &type));
    const std::string name = type;
    if (name == MATPARTITIONINGCURRENT) {
        SLAB_PETSC(MatPartitioningDestroy(&parts));
        return "strips";
    }
    // The graph of the block this rank holds now: nodes are neighbours
    // when an element holds both. PETSc takes over both arrays.
    const int32_t first = starts[rank], own = starts[rank + 1] - first;
    std::vector<int32_t> near;
    std::vector<PetscInt> count(own + 1, 0), adjacent;
    for (int32_t n = first; n < first + own; ++n) {
        const int32_t* rec = mesh.record(n);
        near.clear();
        for (int32_t k = 1; k <= rec[0]; ++k)
            for (int s = 1; s <= 8; ++s)
                if (const int32_t m = mesh.node(s, rec[k]); m != n) near.push_back(m - 1);
        std::sort(near.begin(), near.end());
        near.erase(std::unique(near.begin(), near.end()), near.end());
        adjacent.insert(adjacent.end(), near.begin(), near.end());
        count[n - first + 1] = PetscInt(adjacent.size());
    }
    PetscInt *ia = nullptr, *ja = nullptr;
    SLAB_PETSC(PetscMalloc1(count.size(), &ia));
    SLAB_PETSC(PetscMalloc1(std::max<std::size_t>(adjacent.size(), 1), &ja));
    std::copy(count.begin(), count.end(), ia);
    std::copy(adjacent.begin(), adjacent.end(), ja);
    std::vector<PetscInt>().swap(adjacent);
    Mat graph = nullptr;
    SLAB_PETSC(MatCreateMPIAdj(PETSC_COMM_WORLD, own, mesh.nnode, ia, ja, nullptr, &graph));
    SLAB_PETSC(MatPartitioningSetAdjacency(parts, graph));
    IS part = nullptr, number = nullptr, all = nullptr;
    SLAB_PETSC(MatPartitioningApply(parts, &part));
    SLAB_PETSC(ISPartitioningToNumbering(part, &number));
    std::vector<PetscInt> sizes(ranks, 0);
    SLAB_PETSC(ISPartitioningCount(part, ranks, sizes.data()));
    // The new number of every node, on every rank: the mesh is whole on
    // every rank, so its numbering is too.
    SLAB_PETSC(ISAllGather(number, &all));
    const PetscInt* to = nullptr;
    SLAB_PETSC(ISGetIndices(all, &to));
    std::vector<int32_t> newnum(mesh.nnode + 1, 0);
    for (int32_t n = 1; n <= mesh.nnode; ++n) newnum[n] = int32_t(to[n - 1]) + 1;
    SLAB_PETSC(ISRestoreIndices(all, &to));
    for (IS* is : {&all, &number, &part}) SLAB_PETSC(ISDestroy(is));
    SLAB_PETSC(MatDestroy(&graph));
    SLAB_PETSC(MatPartitioningDestroy(&parts));
    renumber(mesh, newnum, mesh.nnode);
    for (int r = 0; r < ranks; ++r) starts[r + 1] = starts[r] + int32_t(sizes[r]);
    return name;
}

// One rank's share of the mesh: the nodes it owns, the elements touching
// them and those elements' nodes, which it numbers from 1 in ascending
// global order. Local equations are numbered by local node as global ones
// are by node, and both orders agree, so the upper triangle stays the upper
// triangle.
struct Part {
    int32_t first = 0, last = 0;  // owned nodes (global numbers)
    std::vector<int32_t> elems;   // global numbers of the local elements, ascending
    std::vector<int32_t> nodes;   // global numbers of the local nodes, ascending
    int32_t local(int32_t global_elem) const { return position(elems, global_elem); }
    int32_t local_node(int32_t global_node) const { return position(nodes, global_node); }
    bool owns_elem(int32_t global_elem) const { return std::binary_search(elems.begin(), elems.end(), global_elem); }
};

void make_part(const Mesh& mesh, Part& p) {
    p.first = starts[rank];
    p.last = starts[rank + 1] - 1;
    for (int32_t n = p.first; n <= p.last; ++n) {
        const int32_t* rec = mesh.record(n);
        p.elems.insert(p.elems.end(), rec + 1, rec + 1 + rec[0]);
    }
    std::sort(p.elems.begin(), p.elems.end());
    p.elems.erase(std::unique(p.elems.begin(), p.elems.end()), p.elems.end());
    p.nodes = nodes_of(mesh, p.elems);
}

// The owned rows of the upper triangle, columns as global equations, all
// counted from 0, as PETSc takes them.
struct Rows {
    std::vector<PetscInt> ptr, col;
};

Rows global_rows(const Part& p, const System& sys) {
    const int nd = sys.ndof;
    Rows rows;
    rows.ptr.assign(sys.rowptr.begin(), sys.rowptr.end());
    for (PetscInt& k : rows.ptr) --k;
    rows.col.resize(sys.col.size());
    for (std::size_t k = 0; k < sys.col.size(); ++k)
        rows.col[k] = PetscInt(p.nodes[(sys.col[k] - 1) / nd] - 1) * nd + (sys.col[k] - 1) % nd;
    return rows;
}

// The near-null space for algebraic multigrid, on the owned equations,
// orthonormalised: the plate's rigid-body modes w = 1; w = x, whose slope
// -dw/dx is theta3 = -1; w = y, whose slope dw/dy is theta2 = 1; and with
// shell unknowns (u, v, w, theta2, theta3, drilling) also u = 1 and v = 1.
// Restrained equations, decoupled in the matrix, are 0.
MatNullSpace rigid_body_modes(const Mesh& local, const Part& p, const System& sys, Mat A) {
    const int nd = sys.ndof, w = sys.wdof - 1, count = nd == 6 ? 5 : 3;
    std::vector<Vec> modes(count);
    for (int k = 0; k < count; ++k) {
        SLAB_PETSC(MatCreateVecs(A, &modes[k], nullptr));
        PetscScalar* v = nullptr;
        SLAB_PETSC(VecGetArray(modes[k], &v));
        for (int32_t n = p.first; n <= p.last; ++n) {
            const int32_t l = p.local_node(n);
            double mode[6] = {};
            if (k < 3) {
                const double plate[3][3] = {{1.0, 0.0, 0.0}, {local.x(l), 0.0, -1.0}, {local.y(l), 1.0, 0.0}};
                std::copy_n(plate[k], 3, mode + w);
            } else {
                mode[k - 3] = 1.0;
            }
            const int32_t* fixed = sys.ifix.data() + std::size_t(l - 1) * nd;
            for (int d = 0; d < nd; ++d) v[(n - p.first) * nd + d] = fixed[d + 1] ? 0.0 : mode[d];
        }
        SLAB_PETSC(VecRestoreArray(modes[k], &v));
        for (int j = 0; j < k; ++j) {
            PetscScalar dot = 0.0;
            SLAB_PETSC(VecDot(modes[k], modes[j], &dot));
            SLAB_PETSC(VecAXPY(modes[k], -dot, modes[j]));
        }
        SLAB_PETSC(VecNormalize(modes[k], nullptr));
    }
    MatNullSpace space = nullptr;
    SLAB_PETSC(MatNullSpaceCreate(PETSC_COMM_WORLD, PETSC_FALSE, count, modes.data(), &space));
    for (Vec& v : modes) SLAB_PETSC(VecDestroy(&v));
    return space;
}

// A piece of the mesh in its own node numbers: the given elements, and
// `nodes` (ascending global numbers), which hold all of theirs, as local
// nodes 1, 2, ...
Mesh piece(const Mesh& mesh, const std::vector<int32_t>& elems, const std::vector<int32_t>& nodes, bool records) {
    Mesh m;
    m.nelem = int32_t(elems.size());
    m.nnode = int32_t(nodes.size());
    m.ielnod.assign(9 * std::size_t(m.nelem + 1), 0);
    for (int32_t k = 1; k <= m.nelem; ++k)
        for (int s = 1; s <= 8; ++s) m.node(s, k) = position(nodes, mesh.node(s, elems[k - 1]));
    const std::size_t row = std::size_t(m.nnode) + 1, whole = std::size_t(mesh.nnode) + 1;
    m.xyz.assign(3 * row, 0.0f);
    for (int c = 0; c < 3; ++c)
        for (int32_t k = 1; k <= m.nnode; ++k) m.xyz[c * row + k] = mesh.xyz[c * whole + nodes[k - 1]];
    if (records) make_records(m);
    return m;
}

// The elements that several ranks hold with a node within `reach` of
// (x, y), gathered on the rank `host` as a mesh of their own: elements in
// ascending global order, nodes numbered in ascending global order, with
// one value per node. Each rank offers the elements of `held` (global
// numbers `elems`, nodes `nodes`), none offered twice.
struct Nearby {
    Mesh mesh;
    std::vector<int32_t> nodes;  // global numbers of its nodes, ascending
    std::vector<double> value;   // by node from 1
};

Nearby gather_near(const Mesh& held, const std::vector<int32_t>& elems, const std::vector<int32_t>& nodes,
                   const std::vector<double>& value, double x, double y, double reach, int host) {
    constexpr int kPer = 1 + 8 * 5;  // element; per node its number, x, y, z and value
    std::vector<double> mine;
    for (int32_t e = 1; e <= held.nelem; ++e) {
        bool near = false;
        for (int s = 1; s <= 8 && !near; ++s)
            near = std::hypot(double(held.x(held.node(s, e))) - x, double(held.y(held.node(s, e))) - y) <= reach;
        if (!near) continue;
        mine.push_back(elems[e - 1]);
        for (int s = 1; s <= 8; ++s) {
            const int32_t n = held.node(s, e);
            const std::size_t row = std::size_t(held.nnode) + 1;
            mine.insert(mine.end(), {double(nodes[n - 1]), double(held.xyz[n]), double(held.xyz[row + n]),
                                     double(held.xyz[2 * row + n]), value.empty() ? 0.0 : value[n]});
        }
    }
    const int count = int(mine.size());
    std::vector<int> counts(ranks), displs(ranks, 0);
    MPI_Gather(&count, 1, MPI_INT, counts.data(), 1, MPI_INT, host, PETSC_COMM_WORLD);
    for (int r = 1; r < ranks; ++r) displs[r] = displs[r - 1] + counts[r - 1];
    std::vector<double> all(rank == host ? std::size_t(displs[ranks - 1] + counts[ranks - 1]) : 0);
    MPI_Gatherv(mine.data(), count, MPI_DOUBLE, all.data(), counts.data(), displs.data(), MPI_DOUBLE, host,
                PETSC_COMM_WORLD);
    Nearby got;
    if (rank != host) return got;
    const std::size_t nelem = all.size() / kPer;
    std::vector<std::size_t> order(nelem);
    std::iota(order.begin(), order.end(), std::size_t(0));
    std::sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) { return all[a * kPer] < all[b * kPer]; });
    for (std::size_t k = 0; k < nelem; ++k)
        for (int s = 0; s < 8; ++s) got.nodes.push_back(int32_t(all[k * kPer + 1 + 5 * s]));
    std::sort(got.nodes.begin(), got.nodes.end());
    got.nodes.erase(std::unique(got.nodes.begin(), got.nodes.end()), got.nodes.end());
    Mesh& m = got.mesh;
    m.nelem = int32_t(nelem), m.nnode = int32_t(got.nodes.size());
    m.ielnod.assign(9 * std::size_t(m.nelem + 1), 0);
    const std::size_t row = std::size_t(m.nnode) + 1;
    m.xyz.assign(3 * row, 0.0f);
    got.value.assign(row, 0.0);
    for (int32_t k = 1; k <= m.nelem; ++k)
        for (int s = 1; s <= 8; ++s) {
            const double* at = all.data() + order[k - 1] * kPer + 1 + 5 * (s - 1);
            const int32_t n = position(got.nodes, int32_t(at[0]));
            m.node(s, k) = n;
            for (int c = 0; c < 3; ++c) m.xyz[c * row + n] = float(at[1 + c]);
            got.value[n] = at[4];
        }
    make_records(m);
    return got;
}

// The equations (from 0) of the given nodes, `per` to a node.
std::vector<PetscInt> equations_of(const std::vector<int32_t>& nodes, int per) {
    std::vector<PetscInt> eqs(nodes.size() * per);
    for (std::size_t k = 0; k < nodes.size(); ++k)
        for (int d = 0; d < per; ++d) eqs[k * per + d] = PetscInt(nodes[k] - 1) * per + d;
    return eqs;
}

// Reads the entries `at` of a distributed vector into `into`.
void read_entries(Vec from, const std::vector<PetscInt>& at, double* into) {
    Vec local = nullptr;
    IS is = nullptr;
    VecScatter scatter = nullptr;
    SLAB_PETSC(VecCreateSeqWithArray(PETSC_COMM_SELF, 1, PetscInt(at.size()), into, &local));
    SLAB_PETSC(ISCreateGeneral(PETSC_COMM_SELF, PetscInt(at.size()), at.data(), PETSC_USE_POINTER, &is));
    SLAB_PETSC(VecScatterCreate(from, is, local, nullptr, &scatter));
    SLAB_PETSC(VecScatterBegin(scatter, from, local, INSERT_VALUES, SCATTER_FORWARD));
    SLAB_PETSC(VecScatterEnd(scatter, from, local, INSERT_VALUES, SCATTER_FORWARD));
    SLAB_PETSC(VecScatterDestroy(&scatter));
    SLAB_PETSC(ISDestroy(&is));
    SLAB_PETSC(VecDestroy(&local));
}

// The results where the data lives. A rank owns the elements whose first
// corner it owns; it reads the displacements of their nodes (its own and
// its neighbours', through a scatter), sums their moments at the nodes,
// and the sums of the nodes that several ranks' elements share are
// completed in a distributed vector of four entries per node (three
// moments and a count). The centre is found as the whole mesh's search
// finds it: the nearest node over all ranks, then, on its owner, the best
// element at it. With `post`, each rank estimates the error of its
// elements and the totals reach the root; the elements near the centre
// node and near the peak deflection, with their nodes' moments, are
// gathered on one rank for the result net and the peak search. No rank
// holds more of the mesh than its piece `local` (local numbers; global ones
// in `p`) and those few elements. With `plotted`, the root receives the
// deflection and Mx of every node for the pictures.
void results_here(const Options& opt, const Mesh& local, const Part& p, int32_t nelem_total, const System& unknowns,
                  Vec x, Vec b, bool post, Results* plotted, double& wc, double& mxc) {
    const int nd = unknowns.ndof, wd = unknowns.wdof - 1;
    std::vector<int32_t> held, heldnodes, elems, nodes;  // local numbers; global numbers
    for (int32_t k = 1; k <= local.nelem; ++k)
        if (const int32_t c = p.nodes[local.node(1, k) - 1]; c >= p.first && c <= p.last) held.push_back(k);
    heldnodes = nodes_of(local, held);
    for (int32_t k : held) elems.push_back(p.elems[k - 1]);
    for (int32_t n : heldnodes) nodes.push_back(p.nodes[n - 1]);
    const Mesh mine = piece(local, held, heldnodes, false);
    System sys;
    sys.ndof = nd, sys.wdof = unknowns.wdof, sys.neq = mine.nnode * nd;
    std::vector<double> u(std::size_t(sys.neq), 0.0);
    read_entries(x, equations_of(nodes, nd), u.data());

    // The moments at the nodes: this rank's sums, completed across ranks.
    double db[16];
    bending_rigidities(opt, db);
    constexpr int kSum = 4;
    std::vector<double> sums(std::size_t(mine.nnode) * kSum, 0.0);
    for (int32_t e = 1; e <= mine.nelem; ++e) {
        double m[9][3];
        element_moments(mine, sys, u, db, e, m);
        for (int k = 1; k <= 8; ++k) {
            double* to = sums.data() + std::size_t(mine.node(k, e) - 1) * kSum;
            to[0] += m[k][0], to[1] += m[k][1], to[2] += m[k][2], to[3] += 1.0;
        }
    }
    Vec whole = nullptr;
    SLAB_PETSC(VecCreateMPI(PETSC_COMM_WORLD, PetscInt(p.last - p.first + 1) * kSum, PETSC_DETERMINE, &whole));
    const std::vector<PetscInt> at = equations_of(nodes, kSum);
    SLAB_PETSC(VecSetValues(whole, PetscInt(at.size()), at.data(), sums.data(), ADD_VALUES));
    SLAB_PETSC(VecAssemblyBegin(whole));
    SLAB_PETSC(VecAssemblyEnd(whole));
    read_entries(whole, at, sums.data());
    Results r;
    r.mx.assign(mine.nnode + 1, 0.0), r.my.assign(mine.nnode + 1, 0.0), r.mxy.assign(mine.nnode + 1, 0.0);
    for (int32_t n = 1; n <= mine.nnode; ++n) {
        const double* s = sums.data() + std::size_t(n - 1) * kSum;
        if (s[3] > 0.0) r.mx[n] = s[0] / s[3], r.my[n] = s[1] / s[3], r.mxy[n] = s[2] / s[3];
    }

    // The centre: the nearest node in the whole mesh's node order (the
    // first of equals), then the best element at it on the node's owner,
    // which reads the values of that element's nodes.
    const float cx = float(0.5 * opt.a), cy = cx;
    const int32_t lfirst = p.local_node(p.first), owned = p.last - p.first + 1;
    struct {
        double distance;
        int node;
    } nearest{1.0e300, 0}, best{};
    {
        int32_t ipt = 0;
        const std::size_t row = std::size_t(local.nnode) + 1;
        FINDLOADPOINT(&owned, &ipt, &cx, &cy, local.xyz.data() + (lfirst - 1), local.xyz.data() + row + (lfirst - 1));
        if (ipt > 0) {
            const float dx = local.x(lfirst + ipt - 1) - cx, dy = local.y(lfirst + ipt - 1) - cy;
            nearest = {double(std::sqrt(dx * dx + dy * dy)), p.first + ipt - 1};
        }
    }
    MPI_Allreduce(&nearest, &best, 1, MPI_DOUBLE_INT, MPI_MINLOC, PETSC_COMM_WORLD);
    if (best.node == 0) fail("no element holds the centre");
    const int holder = owner(best.node);
    double values[5] = {0.0, 0.0, 0.0, 0.0, 0.0};  // w, Mx, centre node and its x, y
    {
        int32_t elem = 0;
        float xi = 0.0f, eta = 0.0f;
        std::vector<int32_t> corners;
        if (rank == holder) {
            Mesh around = local;
            make_records(around);
            locate_at(around, p.local_node(best.node), cx, cy, elem, xi, eta);
            for (int s = 1; s <= 8; ++s) corners.push_back(p.nodes[local.node(s, elem) - 1]);
        }
        std::vector<double> ue(corners.size() * nd), se(corners.size() * kSum);
        read_entries(x, equations_of(corners, nd), ue.data());
        read_entries(whole, equations_of(corners, kSum), se.data());
        if (rank == holder) {
            float shp[40], most = 0;
            shape_functions(xi, eta, shp);
            for (int s = 1; s <= 8; ++s) {
                const double* m = se.data() + (s - 1) * kSum;
                values[0] += shp[10 + s] * ue[(s - 1) * nd + wd];
                values[1] += shp[10 + s] * (m[3] > 0.0 ? m[0] / m[3] : 0.0);
                if (values[2] == 0.0 || shp[10 + s] > most) {
                    const int32_t n = local.node(s, elem);
                    values[2] = corners[s - 1], values[3] = local.x(n), values[4] = local.y(n), most = shp[10 + s];
                }
            }
        }
        MPI_Bcast(values, 5, MPI_DOUBLE, holder, PETSC_COMM_WORLD);
        wc = values[0], mxc = values[1];
    }
    const int32_t centre = int32_t(values[2]);
    const double side = opt.a / std::sqrt(double(nelem_total));

    if (post) {
        // Error estimate: the sum of the elements' errors and the worst
        // element. The sum is a single-precision running sum over the
        // elements in order, so the serial run's rounding is kept by
        // carrying it along that order: where the next element is another
        // rank's, the running sum goes to that rank. Every rank learns
        // where each rank's runs of consecutive elements begin.
        std::vector<int32_t> begins;
        for (std::size_t k = 0; k < elems.size(); ++k)
            if (k == 0 || elems[k - 1] != elems[k] - 1) begins.push_back(elems[k]);
        std::vector<int> counts(ranks), displs(ranks, 0);
        const int count = int(begins.size());
        MPI_Allgather(&count, 1, MPI_INT, counts.data(), 1, MPI_INT, PETSC_COMM_WORLD);
        for (int k = 1; k < ranks; ++k) displs[k] = displs[k - 1] + counts[k - 1];
        std::vector<int32_t> runs(std::size_t(displs[ranks - 1] + counts[ranks - 1]));
        MPI_Allgatherv(begins.data(), count, MPI_INT32_T, runs.data(), counts.data(), displs.data(), MPI_INT32_T,
                       PETSC_COMM_WORLD);
        std::vector<std::pair<int32_t, int>> run_rank;
        for (int k = 0; k < ranks; ++k)
            for (int j = 0; j < counts[k]; ++j) run_rank.emplace_back(runs[displs[k] + j], k);
        std::sort(run_rank.begin(), run_rank.end());
        auto element_owner = [&](int32_t e) {
            return (std::upper_bound(run_rank.begin(), run_rank.end(), std::make_pair(e, ranks)) - 1)->second;
        };
        const Carry carry = [&](int32_t k, bool after, float& errt) {
            const int32_t e = elems[k - 1];
            if (!after && e > 1 && (k == 1 || elems[k - 2] != e - 1))
                MPI_Recv(&errt, 1, MPI_FLOAT, element_owner(e - 1), 1, PETSC_COMM_WORLD, MPI_STATUS_IGNORE);
            if (after && e < nelem_total && (k == mine.nelem || elems[k] != e + 1))
                MPI_Send(&errt, 1, MPI_FLOAT, element_owner(e + 1), 1, PETSC_COMM_WORLD);
        };
        std::vector<float> erre;
        float total = error_estimate(opt, mine, sys, u, r, erre, carry);
        MPI_Bcast(&total, 1, MPI_FLOAT, element_owner(nelem_total), PETSC_COMM_WORLD);
        struct {
            float error;
            int element;
        } worst{-1.0f, 0}, most{};
        for (int32_t e = 1; e <= mine.nelem; ++e)
            if (erre[e] > worst.error) worst = {erre[e], elems[e - 1]};
        PetscScalar energy = 0.0;
        SLAB_PETSC(VecDot(b, x, &energy));
        MPI_Allreduce(&worst, &most, 1, MPI_FLOAT_INT, MPI_MAXLOC, PETSC_COMM_WORLD);
        double where[2] = {0.0, 0.0};  // the worst element's centre, from its owner
        if (const int32_t e = position(elems, most.element); e <= mine.nelem && elems[e - 1] == most.element) {
            where[0] = 0.5 * (mine.x(mine.node(1, e)) + mine.x(mine.node(5, e)));
            where[1] = 0.5 * (mine.y(mine.node(1, e)) + mine.y(mine.node(5, e)));
        }
        double sum[2] = {0.0, 0.0};
        MPI_Reduce(where, sum, 2, MPI_DOUBLE, MPI_SUM, 0, PETSC_COMM_WORLD);
        if (rank == 0)
            std::printf("  error estimate (STERRORDLLDOTNET): relative moment error %.3e, largest in element %d at "
                        "(%.3f, %.3f)\n",
                        total > 0.0f ? std::sqrt(total / (total + energy)) : 0.0, most.element, sum[0], sum[1]);

        // Mx in a net of radius a/10 around the centre node, on the
        // elements near it gathered on the rank owning that node.
        const float radius = float(0.1 * opt.a);
        const int host = owner(centre);
        const Nearby net = gather_near(mine, elems, nodes, r.mx, values[3], values[4], radius + 2.0 * side, host);
        float result[4] = {0, 0, 0, 0};  // peak, high, low, mean
        if (rank == host) {
            const Mesh& m = net.mesh;
            const int32_t nnode = m.nnode, nelem = m.nelem, ldres = 3 * nnode, icase = 1, icomp = 0, ncomp = 3,
                          ldmem = 50, at = position(net.nodes, centre);
            std::vector<float> res(std::size_t(ldres + 1) * 2, 0.0f);
            for (int32_t n = 1; n <= nnode; ++n) res[(1 + 3 * (n - 1)) + std::size_t(ldres + 1)] = float(net.value[n]);
            CASTNETFMDOTNET(&result[0], res.data(), &icase, &icomp, &ncomp, &nnode, m.xyz.data(), &radius, &at,
                            &result[1], &result[2], m.nodmem.data(), &nelem, &ldmem, &nelem, m.ielnod.data(),
                            &result[3], &ldres);
        }
        if (host != 0) {
            if (rank == host) MPI_Send(result, 4, MPI_FLOAT, 0, 0, PETSC_COMM_WORLD);
            if (rank == 0) MPI_Recv(result, 4, MPI_FLOAT, host, 0, PETSC_COMM_WORLD, MPI_STATUS_IGNORE);
        }
        const double scale = opt.load == Load::uniform ? opt.q * opt.a * opt.a : opt.P;
        if (rank == 0)
            std::printf("  Mx within a/10 of the centre (CASTNETFMDOTNET): %.5f to %.5f, mean %.5f, peak %.5f (x %s)\n",
                        result[2] / scale, result[1] / scale, result[3] / scale, result[0] / scale,
                        opt.load == Load::uniform ? "q a^2" : "P");
    }

    // The deflection and Mx of the owned nodes, in node order.
    std::vector<double> w(owned), mxs(owned);
    {
        const PetscScalar *v = nullptr, *sum = nullptr;
        SLAB_PETSC(VecGetArrayRead(x, &v));
        SLAB_PETSC(VecGetArrayRead(whole, &sum));
        for (int32_t k = 0; k < owned; ++k) {
            const PetscScalar* s = sum + std::size_t(k) * kSum;
            w[k] = v[std::size_t(k) * nd + wd], mxs[k] = s[3] > 0.0 ? s[0] / s[3] : 0.0;
        }
        SLAB_PETSC(VecRestoreArrayRead(whole, &sum));
        SLAB_PETSC(VecRestoreArrayRead(x, &v));
    }
    SLAB_PETSC(VecDestroy(&whole));

    if (post) {
        // The peak deflection, the first largest in node order of each
        // rank, and the elements and nodes within one element side of it,
        // gathered on the root.
        struct {
            double w;
            int node;
        } peak{-1.0, 0}, top{};
        for (int32_t k = 0; k < owned; ++k)
            if (std::fabs(w[k]) > peak.w) peak = {std::fabs(w[k]), p.first + k};
        MPI_Allreduce(&peak, &top, 1, MPI_DOUBLE_INT, MPI_MAXLOC, PETSC_COMM_WORLD);
        double xy[2] = {0.0, 0.0};
        if (owner(top.node) == rank) {
            const int32_t n = p.local_node(top.node);
            xy[0] = local.x(n), xy[1] = local.y(n);
        }
        MPI_Bcast(xy, 2, MPI_DOUBLE, owner(top.node), PETSC_COMM_WORLD);
        const float rad = float(1.001 * side);
        const Nearby around = gather_near(mine, elems, nodes, {}, xy[0], xy[1], 3.0 * rad, 0);
        if (rank == 0) {
            const Mesh& m = around.mesh;
            const int32_t nelem = m.nelem, nnode = m.nnode, igrp = 0, at = position(around.nodes, top.node);
            std::vector<int32_t> memtab(std::size_t(nelem + 1) * 3, 0), memgrp(nelem + 1, 1), mfnd(nelem + 1, 0),
                nfnd(nnode + 1, 0);
            for (int32_t e = 1; e <= nelem; ++e)
                memtab[std::size_t(nelem + 1) + e] = 1, memtab[2 * std::size_t(nelem + 1) + e] = 8;
            int32_t nmfnd = 0, nnfnd = 0;
            GETPEAKMEMNODESDOTNET(&nelem, memtab.data(), memgrp.data(), m.ielnod.data(), m.xyz.data(), &at, &rad, &nmfnd,
                                  mfnd.data(), &nnfnd, nfnd.data(), &nnode, &igrp);
            std::printf("  peak deflection at node %d (%.4f, %.4f): %d elements and %d nodes within one element side "
                        "(GETPEAKMEMNODESDOTNET)\n",
                        top.node, xy[0], xy[1], nmfnd, nnfnd);
        }
    }

    // The pictures: the whole deflection and Mx, on the root only.
    if (plotted) {
        std::vector<int> counts(ranks), displs(ranks);
        for (int k = 0; k < ranks; ++k) counts[k] = starts[k + 1] - starts[k], displs[k] = starts[k];
        const bool root = rank == 0;
        const std::size_t size = root ? std::size_t(starts[ranks]) : 0;  // nodes + 1
        plotted->w.assign(size, 0.0), plotted->mx.assign(size, 0.0);
        MPI_Gatherv(w.data(), owned, MPI_DOUBLE, plotted->w.data(), counts.data(), displs.data(), MPI_DOUBLE, 0,
                    PETSC_COMM_WORLD);
        MPI_Gatherv(mxs.data(), owned, MPI_DOUBLE, plotted->mx.data(), counts.data(), displs.data(), MPI_DOUBLE, 0,
                    PETSC_COMM_WORLD);
    }
}

bool analyse_here(const Options& opt, int n, bool timed, int32_t& nfree, double& wc, double& mxc) {
    Stages stage(timed);
    Mesh mesh = make_mesh(opt.a, n);
    stage.end("mesh");
    number_in_strips(mesh, opt.a);
    const std::string divided = partition_nodes(mesh);
    stage.end("node numbering");

    // This rank's piece of the mesh, with the element of the point load
    // where the piece holds it; the whole mesh's node-to-element records
    // are not needed again before the results.
    Part part;
    make_part(mesh, part);
    const int32_t owned = part.last - part.first + 1;
    {
        // How evenly the nodes are shared, and how many of other ranks'
        // nodes each rank's elements reach.
        const int mine[3] = {owned, -owned, int(part.nodes.size()) - owned};
        int most[2] = {0, 0}, halo = 0;
        MPI_Reduce(mine, most, 2, MPI_INT, MPI_MAX, 0, PETSC_COMM_WORLD);
        MPI_Reduce(&mine[2], &halo, 1, MPI_INT, MPI_SUM, 0, PETSC_COMM_WORLD);
        std::printf("  nodes divided by %s: %d to %d per rank, %d nodes of other ranks reached\n", divided.c_str(),
                    -most[1], most[0], halo);
    }
    int32_t point = 0;
    if (opt.load == Load::point) {
        int32_t elem = 0;
        float xi = 0.0f, eta = 0.0f;
        if (!locate(mesh, float(0.5 * opt.a), float(0.5 * opt.a), elem, xi, eta)) fail("no element holds the centre");
        if (part.owns_elem(elem)) point = part.local(elem);
    }
    // From here on a rank holds its piece of the mesh only; the root keeps
    // the whole mesh where it is to draw it.
    Mesh local = piece(mesh, part.elems, part.nodes, true);
    const int32_t nelem_total = mesh.nelem;
    const bool last = n == opt.meshes.back(), draw = last && !opt.outdir.empty();
    if (draw && rank == 0)
        std::vector<int32_t>().swap(mesh.nodmem);
    else
        mesh = Mesh{};

    // The element matrices, loads and restraints of the piece, and the rows
    // of the owned nodes, exactly as the serial program forms them. An
    // owned node has all its elements in the piece, so its rows and load
    // are complete; the other nodes' are never read.
    System sys;
    std::shared_ptr<Model> model = build_model(opt, local, sys, point);
    stage.end("element matrices");
    assemble(opt, Assembly::crs, *model, local, sys, part.local_node(part.first), part.local_node(part.last));
    model.reset();  // the element matrices are not needed beyond assembly
    Rows rows = global_rows(part, sys);
    std::vector<int32_t>().swap(sys.rowptr), std::vector<int32_t>().swap(sys.col);
    // The rows hold the upper triangle, which is what a symmetric SBAIJ
    // matrix stores: no half to mirror, and none of it to send to the rank
    // owning the transposed row. MUMPS factorises it as it is.
    const int nd = sys.ndof;
    const PetscInt own = PetscInt(owned) * nd;
    Mat A = nullptr;
    SLAB_PETSC(MatCreate(PETSC_COMM_WORLD, &A));
    SLAB_PETSC(MatSetSizes(A, own, own, PETSC_DETERMINE, PETSC_DETERMINE));
    SLAB_PETSC(MatSetType(A, MATMPISBAIJ));
    SLAB_PETSC(MatMPISBAIJSetPreallocationCSR(A, 1, rows.ptr.data(), rows.col.data(), sys.val.data()));
    Rows().ptr.swap(rows.ptr), Rows().col.swap(rows.col), std::vector<double>().swap(sys.val);
    MatInfo info{};
    SLAB_PETSC(MatGetInfo(A, MAT_GLOBAL_SUM, &info));
    Vec b = nullptr, x = nullptr;
    SLAB_PETSC(MatCreateVecs(A, &x, &b));
    const std::size_t at = std::size_t(part.local_node(part.first) - 1) * nd + 1;  // first owned local equation
    {
        PetscScalar* v = nullptr;
        SLAB_PETSC(VecGetArray(b, &v));
        std::copy_n(sys.load.begin() + at, own, v);
        SLAB_PETSC(VecRestoreArray(b, &v));
    }
    const int32_t free_here = int32_t(std::count(sys.ifix.begin() + at, sys.ifix.begin() + at + own, 0));
    MPI_Allreduce(&free_here, &nfree, 1, MPI_INT32_T, MPI_SUM, PETSC_COMM_WORLD);
    stage.end("assembly");
    std::printf("  %d rank%s: %.0f upper-triangle entries preallocated from the rows, %.0f mallocs, %.0f unneeded\n", ranks,
                ranks > 1 ? "s" : "", info.nz_used, info.mallocs, info.nz_unneeded);
    if (info.mallocs != 0) fail("the matrix reallocated during assembly");

    // MUMPS Cholesky on the upper triangle unless the PETSc options choose
    // otherwise; preconditioners that need both triangles get the matrix
    // converted, with the plate's rigid-body modes as near-null space.
    KSP ksp = nullptr;
    PC pc = nullptr;
    SLAB_PETSC(KSPCreate(PETSC_COMM_WORLD, &ksp));
    SLAB_PETSC(KSPSetOperators(ksp, A, A));
    SLAB_PETSC(KSPSetType(ksp, KSPPREONLY));
    SLAB_PETSC(KSPGetPC(ksp, &pc));
    SLAB_PETSC(PCSetType(pc, PCCHOLESKY));
    SLAB_PETSC(PCFactorSetMatSolverType(pc, MATSOLVERMUMPS));
    // An iterative solver chosen by option is held to the direct one's
    // centre values, far below PETSc's default 1e-5.
    SLAB_PETSC(KSPSetTolerances(ksp, 1.0e-10, PETSC_DEFAULT, PETSC_DEFAULT, 10000));
    SLAB_PETSC(KSPSetFromOptions(ksp));
    PetscBool upper_only = PETSC_FALSE;
    SLAB_PETSC(PetscObjectTypeCompareAny((PetscObject)pc, &upper_only, PCCHOLESKY, PCICC, PCJACOBI, PCNONE, ""));
    if (!upper_only) {
        Mat full = nullptr;
        SLAB_PETSC(MatConvert(A, MATAIJ, MAT_INITIAL_MATRIX, &full));
        SLAB_PETSC(MatSetBlockSize(full, nd));
        SLAB_PETSC(KSPSetOperators(ksp, full, full));
        SLAB_PETSC(MatDestroy(&A));
        A = full;
    }
    MatNullSpace modes = rigid_body_modes(local, part, sys, A);
    SLAB_PETSC(MatSetNearNullSpace(A, modes));
    SLAB_PETSC(MatNullSpaceDestroy(&modes));
    // Nothing of the model is read again before the solution is there: its
    // loads and restraints go, and so do the piece's node-to-element
    // records; the results rebuild what they need of them.
    System unknowns;  // the layout of the unknowns, all the results need of it
    unknowns.ndof = sys.ndof, unknowns.wdof = sys.wdof;
    sys = System{};
    std::vector<int32_t>().swap(local.nodmem);
    release_freed_memory();
    stage.restart();
    auto t0 = std::chrono::steady_clock::now();
    SLAB_PETSC(KSPSetUp(ksp));
    const double t_setup = std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
    t0 = std::chrono::steady_clock::now();
    SLAB_PETSC(KSPSolve(ksp, b, x));
    const double t_solve = std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
    KSPConvergedReason reason;
    PetscInt its = 0;
    SLAB_PETSC(KSPGetConvergedReason(ksp, &reason));
    SLAB_PETSC(KSPGetIterationNumber(ksp, &its));
    if (reason < 0) fail(std::string("the solver did not converge: ") + KSPConvergedReasons[reason]);
    std::string factor;
    PetscBool mumps = PETSC_FALSE;
    if (upper_only) {
        MatSolverType type = nullptr;
        SLAB_PETSC(PCFactorGetMatSolverType(pc, &type));
        PetscBool cholesky = PETSC_FALSE;
        SLAB_PETSC(PetscObjectTypeCompare((PetscObject)pc, PCCHOLESKY, &cholesky));
        mumps = PetscBool(cholesky && type && std::string(type) == MATSOLVERMUMPS);
    }
    if (mumps) {
        Mat F = nullptr;
        PetscInt entries = 0, most = 0, total = 0;
        SLAB_PETSC(PCFactorGetMatrix(pc, &F));
        SLAB_PETSC(MatMumpsGetInfog(F, 29, &entries));  // entries in the factor, negative: millions
        SLAB_PETSC(MatMumpsGetInfog(F, 21, &most));     // MB used in the factorisation, largest rank
        SLAB_PETSC(MatMumpsGetInfog(F, 22, &total));    // and all ranks together
        char s[160];
        std::snprintf(s, sizeof s, "; factor %.4g entries, %d MB on the largest rank, %d MB in all",
                      entries < 0 ? -1.0e6 * double(entries) : double(entries), int(most), int(total));
        factor = s;
    }
    PetscBool direct = PETSC_FALSE;
    SLAB_PETSC(PetscObjectTypeCompare((PetscObject)ksp, KSPPREONLY, &direct));
    const std::string iterations = direct ? "direct" : std::to_string(its) + " iterations";
    char note2[300];
    std::snprintf(note2, sizeof note2, "  (setup %.2f s, solve %.2f s, %s%s)", t_setup, t_solve, iterations.c_str(),
                  factor.c_str());
    stage.end("solution", note2);
    std::printf("  solver: %s, %s%s\n", solver_description.c_str(), iterations.c_str(), factor.c_str());

    // The results need the solution and the loads only: the factor and
    // the matrix go first, so that the results' arrays reuse their memory.
    SLAB_PETSC(KSPDestroy(&ksp));
    SLAB_PETSC(MatDestroy(&A));
    release_freed_memory();
    Results plotted;
    results_here(opt, local, part, nelem_total, unknowns, x, b, timed || last, draw ? &plotted : nullptr, wc, mxc);
    stage.end("results");
    SLAB_PETSC(VecDestroy(&x));
    SLAB_PETSC(VecDestroy(&b));
    bool drawn = true;
    if (draw && rank == 0) {
        std::string error;
        if (!(drawn = write_svgs(opt, mesh, plotted, n, error))) std::fprintf(stderr, "slab: %s\n", error.c_str());
    }
    if (draw) stage.end("pictures");
    return drawn;
}

// PETSc is shown only its own options (single-dash names and their
// values), so that it can name those it did not use without listing the
// program's.
std::vector<char*> petsc_arguments;

bool start_mode(int* argc, char*** argv) {
    auto option = [](const char* a) { return a[0] == '-' && std::isalpha((unsigned char)a[1]); };
    petsc_arguments.assign(1, (*argv)[0]);
    for (int i = 1; i < *argc; ++i) {
        const char* a = (*argv)[i];
        if (!option(a)) continue;
        petsc_arguments.push_back((*argv)[i]);
        if (i + 1 < *argc && !option((*argv)[i + 1]) && std::strncmp((*argv)[i + 1], "--", 2) != 0)
            petsc_arguments.push_back((*argv)[++i]);
    }
    int count = int(petsc_arguments.size());
    petsc_arguments.push_back(nullptr);
    char** given = petsc_arguments.data();
    if (PetscInitialize(&count, &given, nullptr, nullptr) != 0) {
        std::fprintf(stderr, "slab: PETSc could not be started\n");
        return false;
    }
    MPI_Comm_rank(PETSC_COMM_WORLD, &rank);
    MPI_Comm_size(PETSC_COMM_WORLD, &ranks);
    char ksp[64] = "preonly", pc[64] = "cholesky";
    PetscBool set = PETSC_FALSE;
    PetscOptionsGetString(nullptr, nullptr, "-ksp_type", ksp, sizeof ksp, &set);
    PetscOptionsGetString(nullptr, nullptr, "-pc_type", pc, sizeof pc, &set);
    const std::string k = ksp, p = pc;
    if (k == "preonly" && p == "cholesky")
        solver_description = "PETSc with MUMPS Cholesky on " + std::to_string(ranks) + " MPI rank" + (ranks > 1 ? "s" : "");
    else
        solver_description = "PETSc " + k + " + " + p + " on " + std::to_string(ranks) + " MPI rank" + (ranks > 1 ? "s" : "");
    return true;
}

bool is_root() { return rank == 0; }

const char* describe_solver() { return solver_description.c_str(); }

bool analyse_mesh(const Options& opt, int n, bool timed, int32_t& nfree, double& wc, double& mxc) {
    try {
        return analyse_here(opt, n, timed, nfree, wc, mxc);
    } catch (const std::exception& e) {
        fail(std::to_string(n) + "x" + std::to_string(n) + " mesh: " + e.what());
    }
}

double largest_peak_mib() {
    const double mine = peak_memory_mib();
    double most = 0.0;
    MPI_Reduce(&mine, &most, 1, MPI_DOUBLE, MPI_MAX, 0, PETSC_COMM_WORLD);
    return most;
}

void finish_mode() { PetscFinalize(); }

const DistributedMode mode = {start_mode, is_root, describe_solver, analyse_mesh, largest_peak_mib, finish_mode};

}  // namespace
}  // namespace slab

// The module's one entry point, looked up by name.
extern "C" __attribute__((visibility("default"))) const slab::DistributedMode* slab_distributed_mode() {
    return &slab::mode;
}
