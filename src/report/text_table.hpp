#pragma once

#include "base/number_writer.hpp"
#include "report/well_figures.hpp"

#include <cstdio>
#include <string>
#include <string_view>

namespace kvr {

/// A column of a table by step, and one that stands for every well.
struct FieldColumn {
    std::string_view name;
    double (*value)(const StepFigures&);
};
struct WellColumn {
    std::string_view name;
    double (*value)(const WellFigures&);
};

/// Nothing has been written into the file since it was opened: its head is still to come.
bool isEmptyFile(std::FILE* file);

/// A well name as it can stand in a column name: blanks inside it become low lines.
std::string withoutBlanks(std::string_view name);

/// Right-aligned columns with a blank in front, wide enough for numbers of ten digits.
void putHeading(NumberWriter& table, std::string_view name);
void putColumn(NumberWriter& table, double value);

}  // namespace kvr
