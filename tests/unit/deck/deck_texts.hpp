#pragma once

#include <string>
#include <string_view>

/// Sections of a small deck: three cells between an injector and a producer.
namespace kvr {

inline constexpr std::string_view Size = "RUNSPEC\nDIMENS\n 3 1 1 /\nOIL\nWATER\nFIELD\n";
inline constexpr std::string_view Grid =
    "GRID\nDX\n3*100 /\nDY\n3*100 /\nDZ\n3*10 /\nTOPS\n3*4000 /\nPORO\n3*0.2 /\n"
    "PERMX\n3*50 /\nPERMY\n3*50 /\nPERMZ\n3*5 /\n";
inline constexpr std::string_view Fluids =
    "PROPS\nPVDO\n1000 1.1 1.0\n2000 1.0 1.0 /\nSWOF\n0.2 0 1 0\n0.8 1 0 0 /\n"
    "DENSITY\n50 62 0.06 /\nPVTW\n3000 1 3e-6 0.5 0 /\nROCK\n3000 1e-6 /\n";
inline constexpr std::string_view Start = "SOLUTION\nPRESSURE\n3*3000 /\nSWAT\n3*0.2 /\n";
inline constexpr std::string_view Wells =
    "SCHEDULE\nWELSPECS\n'I' 'G' 1 1 4000 'WATER' /\n'P' 'G' 3 1 4000 'OIL' /\n/\n"
    "COMPDAT\n'I' 1 1 1 1 'OPEN' 2* 0.5 /\n'P' 3 1 1 1 'OPEN' 2* 0.5 /\n/\n"
    "WCONPROD\n'P' 'OPEN' 'BHP' 5* 1000 /\n/\nWCONINJE\n'I' 'WATER' 'OPEN' 'RATE' 100 1* 9000 /\n/\n"
    "TSTEP\n10 20 /\n";

inline bool holds(const std::string& text, std::string_view part) {
    return text.find(part) != std::string::npos;
}

}  // namespace kvr
