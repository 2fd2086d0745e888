#pragma once

namespace kvr {

/// Rate of a well over that of a line, held between 1 and the number of the well's lines.
double rateRatio(double wellRate, double lineFlux, double lines);

/// Generalised travel-time sensitivity of one segment, days: its time of flight over the saturation at the
/// well (the speed of a saturation is taken for the saturation itself) and over the rate ratio.
double travelTimeTerm(double deltaTof, double saturation, double rateRatio);

/// A segment of a line between its neighbours: half lengths in ft, permeabilities in md.
struct SegmentNeighbourhood {
    double a = 0.0, b = 0.0, c = 0.0;    // half lengths of the segment, the one before, the next
    double k = 0.0, kb = 0.0, kf = 0.0;  // their permeabilities
    double D = 1.0;                      // flow term of the segment
    bool hasBefore = true, hasNext = true;
};

/// Derivative of the harmonic mean of the permeabilities of the segment and the next (forward) or the one
/// before (backward), as the classic form writes it. Each comes to a / (D k), k in Darcy units, whatever the
/// neighbour.
double forwardTerm(const SegmentNeighbourhood& segment);
double backwardTerm(const SegmentNeighbourhood& segment);

/// Share of a well in what its line tells of a segment: 1 under "bhp" control, otherwise `part` (days) of the
/// line's whole time of flight.
double classicShare(bool pressureControlled, double part, double whole);

}  // namespace kvr
