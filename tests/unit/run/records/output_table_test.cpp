#include "run/records/output_table.hpp"

#include <gtest/gtest.h>
#include <set>

namespace kvr {
namespace {

TEST(OutputTable, NamesEveryFileOnce) {
    std::set<std::string_view> names;
    for (int n = 0; n < static_cast<int>(OutputFile::AllCount); ++n)
        names.insert(rowOf(static_cast<OutputFile>(n)).name);
    EXPECT_EQ(names.size(), static_cast<std::size_t>(OutputFile::AllCount));
}

TEST(OutputTable, KeepsTheFixedNumbersAndNamesTogether) {
    EXPECT_EQ(rowOf(OutputFile::TPlotRs).number, 50);
    EXPECT_EQ(outputName(OutputFile::TPlotPcGFloLast), "KVR_TPlot_PcGFlo_Wat_Trv.plt");
    EXPECT_EQ(outputName(OutputFile::HmObjFncNameLast), "KVR_HM_ObjFnc_WPR_Abs.out");
    EXPECT_EQ(outputName(OutputFile::InvLast), "KVR_Inv_RMSError_BHP.out");
    EXPECT_EQ(streamNumber(OutputFile::DebugLog), 300);
    EXPECT_EQ(streamNumber(OutputFile::RunSweepVolume), 0);
}

TEST(OutputSwitch, IsOnByItsOwnOptionOnly) {
    struct Case {
        OutputSwitch output;
        void (*set)(RunOptions&);
    };
    const Case cases[] = {
        {OutputSwitch::Excel, [](RunOptions& o) { o.outputXls = "Yes"; }},
        {OutputSwitch::Tecplot, [](RunOptions& o) { o.outputPlt = "Yes"; }},
        {OutputSwitch::Lines, [](RunOptions& o) { o.outputStreamline = true; }},
        {OutputSwitch::Eclipse, [](RunOptions& o) { o.outputEclipse = "Yes"; }},
        {OutputSwitch::View, [](RunOptions& o) { o.outputKvrView = "Yes"; }},
        {OutputSwitch::PressureMatrix, [](RunOptions& o) { o.outputPressureMatrix = true; }},
        {OutputSwitch::SaturationMatrix, [](RunOptions& o) { o.outputSaturationMatrix = true; }},
        {OutputSwitch::Smoothing, [](RunOptions& o) { o.parameterSmoothing = true; }},
        {OutputSwitch::Upscaling, [](RunOptions& o) { o.flowUpscaling = true; }},
        {OutputSwitch::HistoryMatch, [](RunOptions& o) { o.historyMatch = true; }},
    };
    for (const Case& set : cases) {
        RunOptions options;
        options.outputKvrView = "No";
        set.set(options);
        for (const Case& asked : cases) EXPECT_EQ(isOn(options, asked.output), &asked == &set);
        EXPECT_TRUE(isOn(options, OutputSwitch::Always));
        EXPECT_FALSE(isOn(options, OutputSwitch::Unwritten));
    }
}

TEST(OutputSwitch, OfTwoOptionsTakesBothOrEither) {
    for (const bool first : {false, true})
        for (const bool second : {false, true}) {
            RunOptions options;
            options.outputKvrView = first ? "Yes" : "No";
            options.outputStreamline = second;
            options.outputPlt = second ? "Yes" : "No";
            options.outputEclipse = first ? "Yes" : "No";
            options.outputSln = second ? "Yes" : "No";
            EXPECT_EQ(isOn(options, OutputSwitch::ViewOrLines), first || second);
            EXPECT_EQ(isOn(options, OutputSwitch::TecplotView), first && second);
            options.modelName = first ? DualPorosityName : "SPSP";
            EXPECT_EQ(isOn(options, OutputSwitch::TecplotMatrix), first && second);
            EXPECT_EQ(isOn(options, OutputSwitch::EclipseLines), first && second);
        }
}

}  // namespace
}  // namespace kvr
