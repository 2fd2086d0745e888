#pragma once

#include <span>

namespace kvr {

/// Linear interpolation of y over x at one place, held at the ends: beyond them the nearer end's value. x may
/// rise or fall; where it goes back and forth, the first bracket counts. One point gives its value, none 0.
double interpolateHeld(std::span<const double> x, std::span<const double> y, double place);

/// Sum of |observed - calculated|.
double sumOfDifferences(std::span<const double> observed, std::span<const double> calculated);

/// The shift that a whole history is reduced to, and how well the shifted curve fits.
struct TimeShift {
    double days = 0.0;  // above 0: the calculated curve comes too early
    double fit = 0.0;   // R2 at the shift, 0 to 1; 0 where there is none
};

/// Generalised travel-time shift of a well: of 5001 shifts, -2500 .. 2500 times
/// the 2500th part of the span of the times, the first with the highest
///   R2 = 1 - sum (y - v)^2 / sum (y - mean y)^2,   0 < R2 <= 1,
/// v being the calculated curve moved by the shift, interpolated at the times and held at its ends. Under a
/// negative shift only points before the end of the moved curve count. 0 where the curves are the same, where
/// either is flat, and where no shift has a positive R2. Three lists of the same length.
TimeShift travelTimeShift(std::span<const double> times, std::span<const double> observed,
                          std::span<const double> calculated);

/// Steepest rise of a calculated curve, per day: differences over their intervals (the first entry 0), 50
/// sweeps in place of the mean of each entry and its two neighbours, the largest. First and last entry stay.
/// Intervals of no length have the slope 0; fewer than two points too.
double steepestRise(std::span<const double> times, std::span<const double> calculated);

}  // namespace kvr
