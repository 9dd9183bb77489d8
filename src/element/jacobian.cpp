// Jacobian, determinant and Cartesian shape-function derivatives at one
// point of a plane isoparametric element.
#include "element/jacobian.hpp"

#include "frame/canonical_nan.hpp"
#include "shellfe.h"

namespace shellfe {

template <class Real>
Real cartesian_derivatives(Array1<const Real> dxi, Array1<const Real> deta, Array1<const Real> x,
                           Array1<const Real> y, Index nnode, Array1<Real> dx, Array1<Real> dy) {
    // Rows of the Jacobian: d(x, y)/dxi and d(x, y)/deta.
    double x_xi = 0.0, y_xi = 0.0, x_eta = 0.0, y_eta = 0.0;
    const Index ngeo = geometry_nodes(nnode);
    for (Index k = 1; k <= ngeo; ++k) {
        x_xi += static_cast<double>(dxi(k) * x(k));
        y_xi += static_cast<double>(dxi(k) * y(k));
        x_eta += static_cast<double>(deta(k) * x(k));
        y_eta += static_cast<double>(deta(k) * y(k));
    }
    const Real det = static_cast<Real>(x_xi * y_eta - y_xi * x_eta);

    const double d = static_cast<double>(det);
    const double xi_x = y_eta / d;
    const double eta_x = -y_xi / d;
    const double xi_y = -x_eta / d;
    const double eta_y = x_xi / d;

    // Formed in local storage first and copied out afterwards, so that the
    // loop vectorises whatever the caller's outputs overlap.
    Real gx[kMaxElementNodes + 1];
    Real gy[kMaxElementNodes + 1];
    for (Index k = 1; k <= nnode; ++k) {
        const double a = static_cast<double>(dxi(k));
        const double b = static_cast<double>(deta(k));
        // Accumulated from a cleared entry, as the derivative table is: the
        // start from +0 decides the sign of a zero result.
        Real u = 0;
        u = static_cast<Real>(static_cast<double>(u) + a * xi_x);
        u = static_cast<Real>(static_cast<double>(u) + b * eta_x);
        Real v = 0;
        v = static_cast<Real>(static_cast<double>(v) + a * xi_y);
        v = static_cast<Real>(static_cast<double>(v) + b * eta_y);
        gx[k] = u;
        gy[k] = v;
    }
    for (Index k = 1; k <= nnode; ++k) {
        dx(k) = gx[k];
        dy(k) = gy[k];
    }
    return det;
}

template float cartesian_derivatives(Array1<const float>, Array1<const float>, Array1<const float>,
                                     Array1<const float>, Index, Array1<float>, Array1<float>);
template double cartesian_derivatives(Array1<const double>, Array1<const double>,
                                      Array1<const double>, Array1<const double>, Index,
                                      Array1<double>, Array1<double>);

namespace {

template <class Real>
void jacobian(Real* CARTD, const Real* DERIV, Real* DETJ, const Real* ELCOD,
              const std::int32_t* NENOD) {
    // DERIV, ELCOD and CARTD all have the fixed shape (0:9, 0:*).
    const Dim node_rows{0, kMaxElementNodes};
    const auto deriv = host_array(DERIV, node_rows);
    const auto elcod = host_array(ELCOD, node_rows);
    const auto cartd = host_array(CARTD, node_rows);
    const Index nnode = element_nodes(*NENOD);
    *DETJ = canonical(cartesian_derivatives(deriv.column(2), deriv.column(3), elcod.column(1),
                                            elcod.column(2), nnode, cartd.column(1),
                                            cartd.column(2)));
    for (Index k = 1; k <= nnode; ++k) {
        cartd(k, 1) = canonical(cartd(k, 1));
        cartd(k, 2) = canonical(cartd(k, 2));
    }
}

}  // namespace
}  // namespace shellfe

using namespace shellfe;

extern "C" void JACOB2DLLDOTNET(float* CARTD, const float* DERIV, float* DETJ, const float* ELCOD,
                                const int32_t* NENOD) noexcept {
    jacobian(CARTD, DERIV, DETJ, ELCOD, NENOD);
}

extern "C" void shellfe_jacobian(double* CARTD, const double* DERIV, double* DETJ,
                                 const double* ELCOD, const int32_t* NENOD) noexcept {
    jacobian(CARTD, DERIV, DETJ, ELCOD, NENOD);
}
