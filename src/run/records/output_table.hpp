#pragma once

#include "deck/options.hpp"

#include <cstddef>
#include <string>
#include <string_view>

namespace kvr {

/// Every file that the run itself opens: first the fixed set in the order of its opening, then the files
/// that their writers open. The table of rows in output_table.cpp follows this order.
enum class OutputFile {
    TPlotPoil,
    TPlotSwat,
    TPlotSoil,
    TPlotSgas,
    TPlotRs,
    TPlotSwatmp,
    RunRecovery,
    RunProduction,
    RunWct,
    RunStreamline,
    RunIniSwat,
    RunPermX,
    RunPermY,
    RunPermZ,
    ExclGridPrs,
    ExclGridSat,
    ExclWell,
    ExclWellBlk,
    ExclMbe,
    ExclMbec,
    TPlotAllFloGas,
    TPlotAllFloOil,
    TPlotAllFloWat,
    TPlotZmf,
    TPlotMobG,
    TPlotMobO,
    TPlotMobT,
    TPlotMobW,
    TPlotVelT,
    TPlotVelX,
    TPlotVelY,
    TPlotVelZ,
    TPlotPcGFloFirst,  // nine files: gas, oil, water times All, Pll, Trv
    TPlotPcGFloLast = TPlotPcGFloFirst + 8,
    TPlotWellBlk,
    TPlotWellRate,
    TPlotTracer,
    HmObjFnc,
    HmObjFncBeta,
    HmObjFncNameFirst,  // fourteen files: seven names, each followed by its _Abs twin
    HmObjFncNameLast = HmObjFncNameFirst + 13,
    HmPermChangeCum,
    HmPermChangeInc,
    HmPermHist,
    HmPermHistLog,
    InfoAspect,
    InfoFstream,
    InfoGeneral,
    InvFirst,  // thirteen inversion files
    InvLast = InvFirst + 12,
    DebugLog,
    MetricCopy,
    FieldCopy,
    Count,  // of the fixed set

    RunSweepVolume = Count,
    RunRegions,
    Co2Balance,
    Co2Stores,
    Co2FreeZone,  // maps with a zone at time zero and per report, up to Co2PorosityZone
    Co2TrappedZone,
    Co2DissolvedZone,
    Co2SolidZone,
    Co2KxZone,
    Co2PorosityZone,
    RunEndSwat,
    RunPressure,
    RunRateAllocation,
    LinePlots,  // a pattern of names
    TauInjZone,
    TauPrdZone,
    TauSumZone,
    PrdCxnZone,
    InjCxnZone,
    CxnCxnZone,
    TauInjList,
    TauPrdList,
    TauSumList,
    PrdCxnList,
    InjCxnList,
    MatrixPoil,  // maps of the matrix of dual porosity
    MatrixSwat,
    MatrixSoil,
    MatrixSgas,
    MatrixRs,
    StaticLogKx,
    StaticLogKy,
    StaticLogKz,
    StaticPorosity,
    StaticKx,
    StaticKy,
    StaticKz,
    StaticTransX,
    StaticTransY,
    StaticTransZ,
    SmoothedKx,
    SmoothedKy,
    SmoothedKz,
    SmoothedPoro,
    UpscaledPorosity,
    UpscaledPorosityData,
    UpscaledPermX,
    UpscaledPermXLog,
    UpscaledPermY,
    UpscaledPermYLog,
    UpscaledPermZ,
    UpscaledPermZLog,
    UpscaledPermData,
    PressureMatrix,
    FailedMatrix,  // a pattern of names, like the next
    SaturationMatrix,
    AmgInfo,
    BicgstabInfo,
    CoordinateFile,
    HistorySchedule,
    SensitivitySteps,
    SensitivityPlots,
    HmPermLatest,
    HmPermLatestLog,
    HmPermChange,
    HmPermInclude,
    HmIteration,  // a pattern of names
    HmResume,
    EraseScript,
    RunSummary,
    FilesIndex,
    RateChanges,
    RateSchedule,
    RateSteps,  // patterns of names
    PairMaps,
    PressureMap,
    EclipseGrid,  // patterns of names from here on
    EclipseInit,
    EclipseRestart,
    EclipseSummarySpec,
    EclipseSummary,
    EclipseRft,
    EclipseLineSpec,
    EclipseLines,
    EclipseEnd,
    AllCount,  // of every row
};

/// What must be asked for before a file is filled.
enum class OutputSwitch {
    Always,
    Excel,             // OUTPUTKVR 2
    Tecplot,           // OUTPUTKVR 3
    TecplotMatrix,     // OUTPUTKVR 3, of dual porosity
    PressureMatrix,    // OUTPUTKVR 6
    SaturationMatrix,  // OUTPUTKVR 7
    View,              // OUTPUTKVR 8
    ViewOrLines,       // OUTPUTKVR 8 or 4
    Eclipse,           // OUTPUTKVR 9
    EclipseLines,      // OUTPUTKVR 9 and 10
    Lines,             // OUTPUTKVR 4
    TecplotView,       // OUTPUTKVR 3 and 8
    Smoothing,         // SMTHPRM
    Upscaling,         // UPSCALE
    HistoryMatch,      // DOINV
    Sensitivity,       // OPTIONKVR 4, and of a match
    WellHistory,       // OUTWHIST, and of a run that is traced
    Co2,               // CO2MBM
    Co2Tecplot,        // CO2MBM and OUTPUTKVR 3
    RateOptimization,  // OPTIMIZE, NPVOPT, EQWAFS, EQARRIVE, OPTMMP
    Unwritten          // opened for readers that look for the name; nothing fills it
};
bool isOn(const RunOptions& options, OutputSwitch output);

/// One file: its fixed stream number (0 for those beside the fixed set), name, switch, the title of its zones
/// where there is one, the line that tells of its writing (on the first file of a group that shares one),
/// and its content as the user guide gives it (empty: as the row before).
struct OutputRow {
    OutputFile file;
    int number;
    std::string_view name;
    OutputSwitch output;
    std::string_view title;
    std::string_view told;
    std::string_view content;
};

const OutputRow& rowOf(OutputFile file);

/// Name of a file in a run whose results have the name `prefix`: it stands for KVR, and in front of names
/// without it. An empty prefix leaves the name as it is.
std::string outputFileName(std::string_view prefix, std::string_view name);

/// Name in the working folder and fixed stream number of a file.
std::string_view outputName(OutputFile file);
int streamNumber(OutputFile file);

}  // namespace kvr
