#pragma once

#include "deck/sections/grid_section.hpp"
#include "model/block_grid.hpp"
#include "model/grid_memory.hpp"
#include "unit/deck/deck_bench.hpp"

#include <cstdio>
#include <fmt/format.h>
#include <gtest/gtest.h>
#include <string>
#include <unistd.h>

namespace kvr {

/// A deck text of the GRID (or EDIT) section and the records it fills.
struct GridBench : DeckBench {
    RunOptions options;
    GridModel grid;

    GridBench(int nx, int ny, int nz, std::string_view text, std::string_view section = "GRID")
        : DeckBench(text, section) {
        options.workingFolder = fmt::format("{}grid_bench_{}_", testing::TempDir(), getpid());
        grid.NX = nx;
        grid.NY = ny;
        grid.NZ = nz;
        allocateGrid(grid);
    }
    GridBench(const GridBench&) = delete;
    GridBench& operator=(const GridBench&) = delete;
    ~GridBench() { std::remove(cornerPointDeck().c_str()); }

    [[nodiscard]] std::string cornerPointDeck() const { return options.workingFolder + CornerPointDeckName; }
    GridBench& readGrid() {
        GridRecords records{options, grid};
        readGridSection(reader, records);
        return *this;
    }
    GridBench& readEdit() {
        readEditSection(reader, grid);
        return *this;
    }
};

/// Keywords that make a sound 2x2x2 block grid; tests add or replace some.
inline const std::string Sizes = "DX\n8*100 /\nDY\n8*50 /\nDZ\n4*10 4*20 /\n";
inline const std::string Tops = "TOPS\n4*1000 /\n";
inline const std::string Poro = "PORO\n8*0.2 /\n";
inline const std::string PermX = "PERMX\n8*100 /\n";
inline const std::string PermYZ = "PERMY\n8*100 /\nPERMZ\n8*100 /\n";
inline const std::string SoundBlocks = Sizes + Tops + Poro + PermX + PermYZ;

/// Reads a 2x2x2 GRID section that is expected to stop; its texts go to standard error.
inline void readAndStop(const std::string& text) {
    GridBench bench(2, 2, 2, text);
    bench.speakToStandardError();
    bench.readGrid();
}

}  // namespace kvr
