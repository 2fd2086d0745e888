#pragma once

#include "base/cell_array.hpp"
#include "matching/sensitivity_rows.hpp"

#include <cstddef>
#include <span>
#include <vector>

namespace kvr {

/// A field that has been run, and what it left of every datum.
struct TriedField {
    CellArray<double> lnk;
    std::vector<double> misfit;  // observed minus calculated
};

/// What is to be added to rows so that they give the changes that runs of other fields have shown: to row r
/// factor[r * fields.size() + n] times fields[n], over all n. Rows are long and fields few, so the sums are
/// not held.
struct SecantTerms {
    std::vector<CellArray<double>> fields;
    std::vector<double> factor;
};

/// For a field s away from the present one, whose data differ by y,
///   G = G + (y - G s) q' / (q . s),
/// q being the part of s that no nearer field spans (the secant update of least change: Broyden, Math. Comp.
/// 19, 1965; several at once: Gay and Schnabel, Nonlinear Programming 3, 1978). Nearest first; fields that
/// differ by less than `LeastDistance` of ln k in every cell show the scatter of lines, those of less than
/// `LeastNewShare` of their length outside the others' span nothing new: both are left out, as are those with
/// another number of data. `datum`: place of each row in the lists of misfits.
inline constexpr double LeastDistance = 0.02, LeastNewShare = 0.3;
SecantTerms secantTerms(const SensitivityRows& rows, std::span<const std::size_t> datum,
                        const TriedField& present, std::span<const TriedField> tried);

}  // namespace kvr
