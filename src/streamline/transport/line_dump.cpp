#include "streamline/transport/line_dump.hpp"

#include "base/console.hpp"
#include "base/number_writer.hpp"
#include "base/written_files.hpp"
#include "run/records/output_streams.hpp"

namespace kvr {

namespace {}  // namespace

void dumpLineMatrix(const LineDump& dump, double elapsed, double dt, int iteration,
                    const LineMatrix& matrix) {
    const std::string name =
        fmt::format("SMatrix_T_{}_dt_{}_ite_{}.xls", number(dump.time + elapsed), number(dt), iteration);
    NumberWriter writer;
    writer.file = openForReplace(*dump.console, dump.folder + name);
    const int rows = matrix.nodes * matrix.unknowns;
    for (int row = 0; row < rows; ++row) {
        for (int column = 0; column < rows; ++column) {
            putNumber(writer, entryAt(matrix, row, column), RoundTripDigits);
            put(writer, "\t");
        }
        putNumber(writer, matrix.rhs[static_cast<std::size_t>(row)], RoundTripDigits);
        put(writer, "\n");
    }
    flush(writer);
    closeWhole(*dump.console, writer.file);
}

}  // namespace kvr
