#include "eclipse/line_files.hpp"

#include "unit/eclipse/block_file.hpp"
#include "unit/eclipse/small_case.hpp"

#include <filesystem>
#include <gtest/gtest.h>

namespace kvr {
namespace {

LinePath pathOf(int segments, int begin, int end) {
    LinePath path;
    path.segments = segments;
    for (int n = 0; n <= segments; ++n) {
        path.point.push_back({1.0 * n, 2.0 * n, 3.0 * n});
        path.time.push_back(10.0 * n);
        path.cell.push_back(100 * segments + n);
        path.Sw.push_back(0.125 * n);
    }
    path.begin = begin;
    path.end = end;
    return path;
}

struct LineCase : SmallCase {
    LineCase() : SmallCase(2, 2, 1) {
        run.options.outputSln = "Yes";
        run.eclipse.wellCount = 2;
        run.clock.reportIndex = 4;
        run.clock.time = 10.0;
        run.clock.dt = 0.7604;
    }
    void addTwoLines() {
        addPath(run.console, pathOf(3, 1, 2), run.eclipse.paths);
        addPath(run.console, pathOf(2, 1, 0), run.eclipse.paths);
    }
    void write(int tracedLines) {
        writeLineStep(run.console, run.options, run.clock, tracedLines, run.eclipse);
    }
};

TEST(LineSpec, HasOneHeaderThatIsAByteShort) {
    LineCase c;
    c.run.grid.mapAxes = {0, 100, 0, 0, 100, 0};
    writeLineSpec(c.run.console, c.run.options, c.run.grid, {"I1", "P1"}, c.run.eclipse.paths);
    EXPECT_TRUE(c.run.eclipse.paths.wanted);
    const std::string bytes = c.folder.read("CASE.SLNSPEC");
    EXPECT_EQ(bytes.size(), 423U);
    const std::size_t place = bytes.find("MAPAXES");
    ASSERT_NE(place, std::string::npos);
    EXPECT_EQ(bytes.substr(place - 4, 4), std::string("\0\0\0\x0f", 4));
    EXPECT_EQ(bytes.substr(place + 7, 8), std::string("\0\0\0\x06REAL", 8));

    const std::vector<ReadBlock> blocks = blocksOf(c.path(".SLNSPEC"));
    EXPECT_EQ(keywordsOf(blocks), (std::vector<std::string>{"RESTART", "EXTENT", "NAMES", "MAPAXES",
                                                            "GRIDUNIT", "MAPUNITS", "RADIAL"}));
    EXPECT_EQ(blocks[1].data.doubles, (std::vector<double>{0, 200, 0, 200, 1000, 1020}));
    EXPECT_EQ(textsOf(blocks[2]), (std::vector<std::string>{"I1      ", "P1      ", "STAGSL  "}));
    EXPECT_EQ(blocks[3].data.reals, (std::vector<float>{0, 100, 0, 0, 100, 0}));
    EXPECT_EQ(textsOf(blocks[4]), (std::vector<std::string>{"FEET    ", "        "}));
    EXPECT_EQ(textsOf(blocks[5]), std::vector<std::string>{"FEET    "});
    EXPECT_EQ(textsOf(blocks[6]), std::vector<std::string>{"FALSE   "});
}

TEST(LineStep, HoldsNodesAndSegmentsOfEveryLine) {
    LineCase c;
    c.addTwoLines();
    c.write(2);
    EXPECT_EQ(c.size(".SLN0004"), 608U);
    const std::vector<ReadBlock> blocks = blocksOf(c.path(".SLN0004"));
    EXPECT_EQ(keywordsOf(blocks), (std::vector<std::string>{"INTEHEAD", "GEOMETRY", "GEOMINDX", "ID_CELL",
                                                            "ID_BEG", "ID_END", "TIME_BEG", "SWAT"}));
    EXPECT_EQ(blocks[0].data.integers, (std::vector<std::int32_t>{2, 2, 3, 4, 3, 2, 2001, 18, 14, 0}));
    EXPECT_EQ(blocks[1].data.doubles, (std::vector<double>{0, 0, 0, 1, 2, 3, 2, 4, 6, 3, 6, 9,  //
                                                           0, 0, 0, 1, 2, 3, 2, 4, 6}));
    EXPECT_EQ(blocks[2].data.integers, (std::vector<std::int32_t>{1, 13, 22}));
    EXPECT_EQ(blocks[3].data.integers, (std::vector<std::int32_t>{301, 302, 303, 201, 202}));
    EXPECT_EQ(blocks[4].data.integers, (std::vector<std::int32_t>{1, 1}));
    EXPECT_EQ(blocks[5].data.integers, (std::vector<std::int32_t>{2, 3}));  // 3 points to STAGSL
    EXPECT_EQ(blocks[6].data.doubles, (std::vector<double>{0, 10, 20, 30, 0, 10, 20}));
    EXPECT_EQ(blocks[7].data.doubles, (std::vector<double>{0.125, 0.25, 0.375, 0.125, 0.25}));
}

TEST(LineStep, ForgetsItsLinesButGoesOnCollecting) {
    LineCase c;
    c.run.eclipse.paths.wanted = true;
    c.addTwoLines();
    c.write(2);
    EXPECT_TRUE(c.run.eclipse.paths.wanted);
    EXPECT_EQ(c.run.eclipse.paths.offset, std::vector<std::int32_t>{0});
    c.addTwoLines();
    c.addTwoLines();
    c.write(4);
    EXPECT_EQ(blockNamed(blocksOf(c.path(".SLN0004")), "GEOMINDX").data.integers,
              (std::vector<std::int32_t>{1, 13, 22, 34, 43}));
}

TEST(LineStep, WithoutLinesIsEmptyButWhole) {
    LineCase c;
    c.write(0);
    const std::vector<ReadBlock> blocks = blocksOf(c.path(".SLN0004"));
    EXPECT_EQ(blocks.size(), 8U);
    EXPECT_EQ(blocks[2].data.integers, std::vector<std::int32_t>{1});
}

TEST(LineStep, CountsLinesWithTheOptionsOff) {
    for (const auto& [eclipse, lines] : {std::pair{"No", "Yes"}, std::pair{"Yes", "No"}}) {
        LineCase c;
        c.run.options.outputEclipse = eclipse;
        c.run.options.outputSln = lines;
        c.write(7);
        EXPECT_EQ(c.run.eclipse.tracedLines, 7);
        EXPECT_FALSE(std::filesystem::exists(c.path(".SLN0004")));
        writeLineSpec(c.run.console, c.run.options, c.run.grid, {}, c.run.eclipse.paths);
        EXPECT_FALSE(std::filesystem::exists(c.path(".SLNSPEC")));
        EXPECT_FALSE(c.run.eclipse.paths.wanted);
    }
}

}  // namespace
}  // namespace kvr
