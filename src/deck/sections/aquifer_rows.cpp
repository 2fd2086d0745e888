#include "deck/sections/aquifer_rows.hpp"

#include "base/text.hpp"
#include "deck/sections/grid_barriers.hpp"
#include "deck/sections/well_rows.hpp"
#include "model/cell_box.hpp"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

namespace kvr {

namespace {

/// A size that the law divides by or that makes the aquifer.
void requireAbove0(const SectionReader& reader, int number, std::string_view what, double value) {
    if (value > 0.0) return;
    both(consoleOf(reader), "ERROR :: AQUIFER {}: {} {} IS NOT ABOVE 0", number, what, kvr::number(value));
    stopAtPlace(reader);
}

/// An aquifer of the number in place of an earlier one.
void keep(const GivenAquifer& aquifer, std::vector<GivenAquifer>& aquifers) {
    const auto same = std::find_if(aquifers.begin(), aquifers.end(), [&aquifer](const GivenAquifer& known) {
        return known.number == aquifer.number;
    });
    if (same == aquifers.end())
        aquifers.push_back(aquifer);
    else
        *same = aquifer;
}

/// What both laws have, from deck units.
void setCommon(const SectionReader& reader, double depth, double pressure, double compressibility,
               GivenAquifer& aquifer) {
    const UnitSystem& units = *reader.units;
    aquifer.place = placeOf(reader);
    aquifer.datumDepth = depth * units.length;
    aquifer.pressure = pressure > 0.0 ? pressure * units.pressure : GivenAquifer::AtRest;
    aquifer.compressibility = compressibility / units.pressure;
    requireAbove0(reader, aquifer.number, "COMPRESSIBILITY", compressibility);
}

}  // namespace

void readFetkovichAquifers(SectionReader& reader, GivenAquifers& aquifers) {
    announce(reader, reader.keyword);
    while (nextRow(reader, RowStart::Number)) {
        GivenAquifer aquifer;
        double depth = 0.0, pressure = GivenAquifer::AtRest, compressibility = 0.0;
        readRow(reader,
                std::array<ListTarget, 7>{&aquifer.number, &depth, &pressure, &aquifer.volume,
                                          &compressibility, &aquifer.productivity, &aquifer.pvtTable});
        setCommon(reader, depth, pressure, compressibility, aquifer);
        requireAbove0(reader, aquifer.number, "VOLUME", aquifer.volume);
        requireAbove0(reader, aquifer.number, "PRODUCTIVITY", aquifer.productivity);
        const UnitSystem& units = *reader.units;
        aquifer.volume *= units.liquidRate;
        aquifer.productivity *= units.liquidRate / units.pressure;
        keep(aquifer, aquifers.aquifers);
    }
}

void readCarterTracyAquifers(SectionReader& reader, GivenAquifers& aquifers) {
    announce(reader, reader.keyword);
    while (nextRow(reader, RowStart::Number)) {
        GivenAquifer aquifer;
        aquifer.law = AquiferLaw::CarterTracy;
        double depth = 0.0, pressure = GivenAquifer::AtRest, compressibility = 0.0;
        readRow(reader, std::array<ListTarget, 11>{&aquifer.number, &depth, &pressure, &aquifer.permeability,
                                                   &aquifer.porosity, &compressibility, &aquifer.radius,
                                                   &aquifer.thickness, &aquifer.angle, &aquifer.pvtTable,
                                                   &aquifer.influenceTable});
        setCommon(reader, depth, pressure, compressibility, aquifer);
        struct Item {
            std::string_view name;
            double value;
        };
        for (const Item& item : {Item{"PERMEABILITY", aquifer.permeability},
                                 {"POROSITY", aquifer.porosity},
                                 {"RADIUS", aquifer.radius},
                                 {"THICKNESS", aquifer.thickness},
                                 {"ANGLE", aquifer.angle}})
            requireAbove0(reader, aquifer.number, item.name, item.value);
        aquifer.radius *= reader.units->length;
        aquifer.thickness *= reader.units->length;
        keep(aquifer, aquifers.aquifers);
    }
}

void readAquiferFaces(SectionReader& reader, const GridModel& grid, GivenAquifers& aquifers) {
    announce(reader, reader.keyword);
    while (nextRow(reader, RowStart::Number)) {
        AquiferFaces row;
        std::string face, inside = "NO";
        CellBox& box = row.box;
        readRow(reader,
                std::array<ListTarget, 11>{&row.number, &box.i1, &box.i2, &box.j1, &box.j2, &box.k1, &box.k2,
                                           &face, &row.coefficient, &row.multiplier, &inside});
        row.face = faceOf(reader, face);
        row.inside = toUpper(trim(inside)).starts_with('Y');
        if (boxFits(grid, box))
            aquifers.faces.push_back(row);
        else
            warnHere(reader, "WARNING :: AQUIFER {}: A BOX OUTSIDE OF THE GRID, ROW SKIPPED", row.number);
    }
}

void readInfluenceTable(SectionReader& reader, FluidTables& tables) {
    announce(reader, reader.keyword);
    InfluenceTable table;
    RowLoop rows{RowSlash::EndsTable, RowStart::Number};
    while (nextTableRow(reader, rows)) {
        std::array<double, 2> row{};
        rows.last = readDoubles(*reader.cursor, row);
        checkRead(reader, rows.last);
        if (rows.last.count == 0) continue;
        rows.axis = row[0];
        if (!table.time.empty() && !(row[0] > table.time.back())) {
            lineToBoth(consoleOf(reader), "ERROR :: TIMES OF AN AQUIFER DO NOT RISE");
            stopAtPlace(reader);
        }
        table.time.push_back(row[0]);
        table.pressure.push_back(row[1]);
    }
    tables.influenceTables.push_back(std::move(table));
}

}  // namespace kvr
