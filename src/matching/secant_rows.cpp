#include "matching/secant_rows.hpp"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace kvr {

namespace {

double product(const CellArray<double>& a, const CellArray<double>& b) {
    const auto first = a.cells(), second = b.cells();
    return std::inner_product(first.begin(), first.end(), second.begin(), 0.0);
}

void addTo(CellArray<double>& to, double factor, const CellArray<double>& values) {
    for (CellId cell = 1; cell <= to.count(); ++cell) to[cell] += factor * values[cell];
}

/// Way from the present field to a tried one.
struct Secant {
    CellArray<double> way;
    CellArray<double> own;  // of the way, what no nearer one spans
    const TriedField* to = nullptr;
};

std::vector<Secant> waysTo(const TriedField& present, std::span<const TriedField> tried) {
    std::vector<Secant> ways;
    for (const TriedField& field : tried) {
        if (field.misfit.size() != present.misfit.size()) continue;
        Secant secant{field.lnk, {}, &field};
        addTo(secant.way, -1.0, present.lnk);
        double largest = 0.0;
        for (const double value : secant.way.cells()) largest = std::max(largest, std::abs(value));
        if (largest >= LeastDistance) ways.push_back(std::move(secant));
    }
    std::stable_sort(ways.begin(), ways.end(), [](const Secant& a, const Secant& b) {
        return product(a.way, a.way) < product(b.way, b.way);
    });
    return ways;
}

/// Those that show something of their own, each with its part.
std::vector<Secant> independent(std::vector<Secant> ways) {
    std::vector<Secant> kept;
    for (Secant& secant : ways) {
        secant.own = secant.way;
        for (const Secant& nearer : kept)
            addTo(secant.own, -product(nearer.own, secant.own) / product(nearer.own, nearer.own), nearer.own);
        const double whole = product(secant.way, secant.way);
        if (product(secant.own, secant.own) >= LeastNewShare * LeastNewShare * whole)
            kept.push_back(std::move(secant));
    }
    return kept;
}

}  // namespace

SecantTerms secantTerms(const SensitivityRows& rows, std::span<const std::size_t> datum,
                        const TriedField& present, std::span<const TriedField> tried) {
    std::vector<Secant> secants = independent(waysTo(present, tried));
    const std::size_t count = secants.size();
    SecantTerms terms;
    terms.factor.resize(rows.count() * count);
    for (std::size_t n = 0; n < count; ++n) {
        std::vector<double> spanned;  // of this way, by the parts of the nearer ones
        for (std::size_t nearer = 0; nearer < n; ++nearer)
            spanned.push_back(product(secants[nearer].own, secants[n].way));
        const double length = product(secants[n].own, secants[n].way);
        for (std::size_t r = 0; r < rows.count(); ++r) {
            double* factor = terms.factor.data() + r * count;
            const double given = rowTimes(rows, r, secants[n].way) +
                                 std::inner_product(spanned.begin(), spanned.end(), factor, 0.0);
            const double shown = present.misfit[datum[r]] - secants[n].to->misfit[datum[r]];
            factor[n] = (shown - given) / length;
        }
    }
    for (Secant& secant : secants) terms.fields.push_back(std::move(secant.own));
    return terms;
}

}  // namespace kvr
