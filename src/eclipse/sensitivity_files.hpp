#pragma once

#include "base/cell_array.hpp"
#include "base/console.hpp"
#include "eclipse/records.hpp"

#include <cstddef>
#include <functional>
#include <string>

namespace kvr {

/// The scratch files of sensitivities, one of each kind for a report step and one for their sum over the run.
/// A file holds well after well the values of all cells, numbers of eight bytes in records of 1000, without
/// keyword headers.
enum class SensitivityKind { TravelTime, Pressure };

inline constexpr int WholeRun = 0;  // step of the file with the sums

/// "HM_SENSTEMP_GTTI.K0003", "HM_SENSTEMP_GBHPI.K0003".
std::string sensitivityFileName(SensitivityKind kind, int step);

/// Bytes that the values of one well take.
long long sensitivityBytes(CellId cells);

/// Gives the values of a well (0-based).
using SensitivityFill = std::function<void(std::size_t well, CellArray<double>& values)>;

struct SensitivityPaths {
    std::string ofStep, ofRun;
};

/// Replaces the file of a step and adds it to that of the run, which `first` starts anew. Stops where a file
/// cannot be written, or where that of the run is none of these wells and cells. One cell array is held.
void writeSensitivityStep(const Console& console, const SensitivityPaths& paths, bool first,
                          std::size_t wellCount, CellId cells, const SensitivityFill& fill);

/// A file open for reading; absent ones stay closed.
struct SensitivityReader {
    RecordReader records;
    BlockData data;  // scratch

    [[nodiscard]] bool isOpen() const { return records.file != nullptr; }
};

/// False where the file does not exist; stops where it cannot be read or has another size than these wells
/// and cells give it.
bool openSensitivities(const Console& console, const std::string& path, std::size_t wellCount, CellId cells,
                       SensitivityReader& reader);

/// The values of a well (0-based), [0..cells - 1]; good until the next call.
std::span<const double> readSensitivities(const Console& console, CellId cells, std::size_t well,
                                          SensitivityReader& reader);

void closeSensitivities(SensitivityReader& reader);

}  // namespace kvr
