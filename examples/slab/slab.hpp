// A square slab of eight-node plate elements analysed through the library's
// exported routines only, as a host application drives them: the host keeps
// the model in its own arrays (connectivity row after row, coordinates by
// node number from 1) and hands them to one routine after another.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace slab {

enum class Support { hard, clamped };
enum class Load { uniform, point };
enum class Assembly { crs, skyline };
enum class Dofs { plate, shell };
enum class Route { precise, compatible };  // double-precision extension / single-precision routines

struct Options {
    double a = 1.0;        // side of the square
    double h = 0.0;        // thickness; 0 means a/100
    double E = 2.1e11;     // Young's modulus
    double nu = 0.3;       // Poisson's ratio
    int layers = 1;        // identical unrotated layers through the thickness
    Load load = Load::uniform;
    double q = 1.0e4;      // pressure of the uniform load
    double P = 1.0e4;      // force of the point load at the centre
    Support support = Support::hard;
    std::vector<int> meshes{4, 8, 16, 32};
    Assembly assembly = Assembly::crs;
    Dofs dofs = Dofs::plate;
    Route route = Route::precise;
    std::string outdir = ".";  // where the pictures go; empty: none
    bool compare = true;       // also assemble by the other route and compare
    bool timings = false;      // time every stage (always from 100 x 100 elements on)
    bool digits = false;       // also print the centre values with every digit
    bool petsc = false;        // distributed mode: PETSc over MPI (mpirun -np P slab --petsc)
};

// Parses argv. Returns false with a message in `error` for bad options;
// `help` is set for --help.
bool parse_options(int argc, char** argv, Options& opt, std::string& error, bool& help);
void print_usage(const char* program);

// The slab mesh as the host keeps it: node in slot a (1..8, corners in odd
// slots, counter-clockwise from the lower-left corner) of element e at
// ielnod[a * (nelem + 1) + e], slot 0 of every element 0; coordinates in
// rows x, y, z of nnode + 1 entries each, node n in column n.
struct Mesh {
    int32_t nelem = 0, nnode = 0;
    std::vector<int32_t> ielnod;
    std::vector<float> xyz;
    std::vector<int32_t> nodmem;  // node-to-element records, 51 per node
    int32_t& node(int slot, int32_t e) { return ielnod[std::size_t(slot) * (nelem + 1) + e]; }
    int32_t node(int slot, int32_t e) const { return ielnod[std::size_t(slot) * (nelem + 1) + e]; }
    float x(int32_t n) const { return xyz[n]; }
    float y(int32_t n) const { return xyz[std::size_t(nnode + 1) + n]; }
    const int32_t* record(int32_t n) const { return nodmem.data() + std::size_t(51) * n; }
};

// Meshes the square of side a with n x n elements.
Mesh make_mesh(double a, int n);
// The node-to-element records of the connectivity as it is numbered now.
void make_records(Mesh& mesh);
// Renumbers the nodes: node n becomes newnum[n] (0 drops it), leaving
// `count` nodes, and rebuilds the node-to-element records.
void renumber(Mesh& mesh, const std::vector<int32_t>& newnum, int32_t count);
// Numbers the nodes in a fill-reducing order of the node graph, so that the
// unknowns of a node stay together and the solver keeps the natural order.
void order_nodes(Mesh& mesh);

// The global system: the upper triangle of the stiffness in compressed rows
// (1-based, as the library appends them), the load vector and the
// restraints. Equations are numbered by node; a restrained equation keeps a
// unit diagonal and no load, so that the numbering never changes.
struct System {
    int ndof = 3;                 // unknowns per node
    int wdof = 1;                 // position of w in a node block
    int32_t neq = 0, nfree = 0;
    std::vector<int32_t> ifix;    // by equation from 1
    std::vector<double> load;     // by equation from 1
    std::vector<int32_t> rowptr, col;
    std::vector<double> val;
};

// Element matrices of every element (double or float storage by route), the
// restraints and the loads; assembly by the chosen route. A distributed run
// passes its own piece of the mesh, the element of the point load in the
// piece (0: not in it; -1, the default: find it), and assembles the
// compressed rows of its own nodes, first to last (all where last is 0).
struct Model;
std::shared_ptr<Model> build_model(const Options& opt, const Mesh& mesh, System& sys, int32_t point = -1);
void assemble(const Options& opt, Assembly how, Model& model, const Mesh& mesh, System& sys, int32_t first = 1,
              int32_t last = 0);

// Solves K u = f on the upper-triangle rows; u by equation from 0. Returns
// false with a message when the factorisation fails.
bool solve(System& sys, std::vector<double>& u, std::string& error, double& t_factor, double& t_solve);
const char* solver_name();

// Nodal results and post-processing of one analysis.
struct Results {
    std::vector<double> w, mx, my, mxy;  // by node from 1, moments averaged at nodes
    int32_t centre = 0;                  // node nearest to the centre
    double wc = 0.0, mxc = 0.0;          // interpolated at the centre
    int32_t peak = 0;                    // node of the largest deflection
};
Results recover(const Options& opt, const Mesh& mesh, const System& sys, const std::vector<double>& u);
void post_process(const Options& opt, const Mesh& mesh, const System& sys, const std::vector<double>& u,
                  const Results& r);

// Bending rigidities DBEND (0:3, 0:3) of the layered plate.
void bending_rigidities(const Options& opt, double* dbend);
// Moments (Mx, My, Mxy) at the eight nodes of element e from its own
// curvatures; u by equation from 0 of the mesh's own node numbers.
void element_moments(const Mesh& mesh, const System& sys, const std::vector<double>& u, const double* db,
                     int32_t e, double m[9][3]);
// The error estimate of the moments over every element of the mesh, with
// the nodal moments of r: returns the running sum of the elements' errors,
// and each element's in erre (from 1). The running sum, from 0, passes
// through `carry` before (after = false) and after each element e: a
// distributed run calls it on the mesh of the elements a rank owns and
// carries the sum from rank to rank in the serial element order.
using Carry = std::function<void(int32_t e, bool after, float& errt)>;
float error_estimate(const Options& opt, const Mesh& mesh, const System& sys, const std::vector<double>& u,
                     const Results& r, std::vector<float>& erre, const Carry& carry = {});

// Contour plots of the deflection and of Mx.
bool write_svgs(const Options& opt, const Mesh& mesh, const Results& r, int n, std::string& error);

// Layer table (0:NLAY, 0:17) and face coordinates (0:NLAY+1) of the plate:
// identical isotropic layers through the thickness.
void layer_tables(const Options& opt, std::vector<double>& play, std::vector<double>& zlay);
// The eight-node shape functions SHP (0:9, 0:3) at (xi, eta).
void shape_functions(float xi, float eta, float* shp);
// The element holding the point (x, y) and its natural coordinates there:
// of the elements at the nearest node, the one that maps back best.
bool locate(const Mesh& mesh, float x, float y, int32_t& elem, float& xi, float& eta);
// The same among the elements at the given node.
void locate_at(const Mesh& mesh, int32_t node, float x, float y, int32_t& elem, float& xi, float& eta);

// Loads and restraints, shared with the distributed mode. Element loads
// are six-unknown node blocks with w at element position kElementW.
inline constexpr int kElementW = 5;
void uniform_element_load(const Options& opt, const Mesh& mesh, int32_t e, float eload[49]);
int32_t point_element_load(const Options& opt, const Mesh& mesh, float eload[49], int32_t elem = 0);  // the element
bool restrain_node(const Options& opt, const Mesh& mesh, int32_t n, int32_t* f, int w);

// Processor time and the largest resident set so far of this process.
double cpu_seconds();
double peak_memory_mib();

// Plate data shared by the stages.
double flexural_rigidity(const Options& opt);  // D = E h^3 / 12 (1 - nu^2)

// The distributed mode, a module loaded only when asked for (built where
// PETSc is found), so that the serial program neither links nor maps PETSc
// and MPI. start() starts MPI and PETSc, which reads its own single-dash
// options from the command line; every rank then calls analyse() for each
// mesh, peak_memory_mib() (the largest rank's peak) and finish(). The
// centre values and counts are valid on the root rank, the one that prints
// and draws; analyse() returns false there when a picture could not be
// written (other failures stop every rank).
struct DistributedMode {
    bool (*start)(int* argc, char*** argv);
    bool (*root)();
    const char* (*solver_name)();
    bool (*analyse)(const Options& opt, int n, bool timed, int32_t& nfree, double& wc, double& mxc);
    double (*peak_memory_mib)();
    void (*finish)();
};
// Loads the module; nullptr with the reason in `error` where it cannot.
const DistributedMode* distributed_mode(std::string& error);

}  // namespace slab
