#pragma once

#include <limits>
#include <vector>

namespace kvr {

/// Work vectors of the Krylov methods, [size] each, kept from solve to solve.
struct KrylovVectors {
    std::vector<double> r, rt;  // residual and shadow residual
    std::vector<double> p, pt;  // search directions
    std::vector<double> q, qt;  // A p, A' pt; BiCGSTAB: v, t
    std::vector<double> z, zt;  // preconditioned vectors

    /// For BiCGSTAB, which has one search direction and one preconditioned vector at a time.
    void resize(int size) {
        for (std::vector<double>* v : {&r, &rt, &p, &q, &qt, &z}) v->resize(size);
    }
    /// For biconjugate gradients.
    void resizeBoth(int size) {
        resize(size);
        pt.resize(size);
        zt.resize(size);
    }
};

struct KrylovLimits {
    double tolerance = 0.0;  // of ||r|| over the right-side size
    int iterations = 0;
    /// Iterations without halving the best residual after which to give up.
    int patience = std::numeric_limits<int>::max();
};

struct KrylovOutcome {
    int iterations = 0;
    double residual = 0.0;  // the same of the recurrence at the end
};

/// Watches a residual history for the end of progress.
struct StallWatch {
    double mark = 0.0;  // residual at the last halving
    int since = 0;      // iterations since then

    bool stalled(double residual, int patience) {
        if (residual < 0.5 * mark || mark == 0.0) {
            mark = residual;
            since = 0;
        }
        return ++since > patience;
    }
};

}  // namespace kvr
