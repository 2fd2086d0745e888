#include "run/records/output_table.hpp"

#include <array>

namespace kvr {

namespace {

constexpr auto RowCount = static_cast<std::size_t>(OutputFile::AllCount);

/// The file `steps` places behind `first`, in a run of files that share one name.
constexpr OutputFile next(OutputFile first, int steps) {
    return static_cast<OutputFile>(static_cast<int>(first) + steps);
}

// In the order of OutputFile. tools/file_list makes docs/files.md from these rows.
constexpr std::array<OutputRow, RowCount> Rows = {{
    {OutputFile::TPlotPoil, 10, "KVR_TPlot_poil.plt", OutputSwitch::Tecplot, "p<sub>o</sub>",
     "Information Added for poil,ssat.plt", "pressure, psia: a zone at time zero and one per report"},
    {OutputFile::TPlotSwat, 20, "KVR_TPlot_swat.plt", OutputSwitch::Tecplot, "S<sub>w</sub>", "",
     "the same for water saturation"},
    {OutputFile::TPlotSoil, 30, "KVR_TPlot_soil.plt", OutputSwitch::Tecplot, "S<sub>o</sub>", "",
     "the same for oil saturation"},
    {OutputFile::TPlotSgas, 40, "KVR_TPlot_sgas.plt", OutputSwitch::Tecplot, "S<sub>g</sub>", "",
     "the same for gas saturation, in runs with gas"},
    {OutputFile::TPlotRs, 50, "KVR_TPlot_Rs.plt", OutputSwitch::Tecplot, "R<sub>s</sub>", "",
     "the same for dissolved gas, Mscf/stb, in runs with gas"},
    {OutputFile::TPlotSwatmp, 60, "KVR_TPlot_swatmp.plt", OutputSwitch::Unwritten, "", "", ""},
    {OutputFile::RunRecovery, 61, "KVR_Run_Recovery.out", OutputSwitch::Always, "",
     "File Replaced : KVR_Run_Recovery.out",
     "one row at time zero and per step: field rates, cumulatives, pressure, recovery, then every well; one "
     "header line. Not with `ANALYTICAL` lines"},
    {OutputFile::RunProduction, 62, "KVR_Run_Production.out", OutputSwitch::View, "",
     "Info Added in FILE : KVR_Run_Production.out", "rates of the producers, one row per well and step"},
    {OutputFile::RunWct, 63, "KVR_Run_Wct.out", OutputSwitch::View, "",
     "Info Added in FILE : KVR_Run_Wct.out", "water cut of the producers, one row per well and step"},
    {OutputFile::RunStreamline, 64, "KVR_Run_Streamline.out", OutputSwitch::ViewOrLines, "", "",
     "geometry of the streamlines"},
    {OutputFile::RunIniSwat, 65, "KVR_Run_IniSwat.out", OutputSwitch::View, "Saturation",
     "File Generated : permx,permy,permz,swini for KVR", "initial water saturation: cell centres and values"},
    {OutputFile::RunPermX, 66, "KVR_Run_PermX.out", OutputSwitch::View, "Permx", "",
     "permeability along x, md, in the same form"},
    {OutputFile::RunPermY, 67, "KVR_Run_PermY.out", OutputSwitch::View, "Permy", "", "permeability along y"},
    {OutputFile::RunPermZ, 68, "KVR_Run_PermZ.out", OutputSwitch::View, "Permz", "", "permeability along z"},
    {OutputFile::ExclGridPrs, 69, "KVR_Excl_Grid_Prs.xls", OutputSwitch::Excel, "",
     "Information Added for XXX.xls",
     "pressure layer by layer at time zero and at each report, tab-separated"},
    {OutputFile::ExclGridSat, 70, "KVR_Excl_Grid_Sat.xls", OutputSwitch::Excel, "", "",
     "saturations in the same form"},
    {OutputFile::ExclWell, 71, "KVR_Excl_Well.xls", OutputSwitch::Excel, "", "",
     "wells: rates, cumulatives, bottom-hole pressure, a row per well and step"},
    {OutputFile::ExclWellBlk, 72, "KVR_Excl_Well_Blk.xls", OutputSwitch::Excel, "",
     "Info Added in FILE : Well_Blk.xls", "connections of the wells, step by step"},
    {OutputFile::ExclMbe, 73, "KVR_Excl_mbe.xls", OutputSwitch::Excel, "", "",
     "material balance errors in per cent, one row at time zero and per step"},
    {OutputFile::ExclMbec, 74, "KVR_Excl_mbec.xls", OutputSwitch::Excel, "", "",
     "the same, then the mass in place (lb) and the error of each component; only its head in black-oil "
     "runs"},
    {OutputFile::TPlotAllFloGas, 75, "KVR_TPlot_AllFlo_Gas.plt", OutputSwitch::Unwritten, "", "", ""},
    {OutputFile::TPlotAllFloOil, 76, "KVR_TPlot_AllFlo_Oil.plt", OutputSwitch::Unwritten, "", "", ""},
    {OutputFile::TPlotAllFloWat, 77, "KVR_TPlot_AllFlo_Wat.plt", OutputSwitch::Unwritten, "", "", ""},
    {OutputFile::TPlotZmf, 78, "KVR_TPlot_Out_Zmf.plt", OutputSwitch::Tecplot, "z<sub>i</sub>", "",
     "overall mole fractions as maps, a column per component, in runs with components"},
    {OutputFile::TPlotMobG, 79, "KVR_TPlot_Out_mobg.plt", OutputSwitch::Unwritten, "", "", ""},
    {OutputFile::TPlotMobO, 80, "KVR_TPlot_Out_mobo.plt", OutputSwitch::Unwritten, "", "", ""},
    {OutputFile::TPlotMobT, 81, "KVR_TPlot_Out_mobt.plt", OutputSwitch::Unwritten, "", "", ""},
    {OutputFile::TPlotMobW, 82, "KVR_TPlot_Out_mobw.plt", OutputSwitch::Unwritten, "", "", ""},
    {OutputFile::TPlotVelT, 83, "KVR_TPlot_Out_velt.plt", OutputSwitch::Unwritten, "", "", ""},
    {OutputFile::TPlotVelX, 84, "KVR_TPlot_Out_velx.plt", OutputSwitch::Unwritten, "", "", ""},
    {OutputFile::TPlotVelY, 85, "KVR_TPlot_Out_vely.plt", OutputSwitch::Unwritten, "", "", ""},
    {OutputFile::TPlotVelZ, 86, "KVR_TPlot_Out_velz.plt", OutputSwitch::Unwritten, "", "", ""},
    {OutputFile::TPlotPcGFloFirst, 87, "KVR_TPlot_PcGFlo_Gas_All.plt", OutputSwitch::Unwritten, "", "", ""},
    {next(OutputFile::TPlotPcGFloFirst, 1), 88, "KVR_TPlot_PcGFlo_Gas_Pll.plt", OutputSwitch::Unwritten, "",
     "", ""},
    {next(OutputFile::TPlotPcGFloFirst, 2), 89, "KVR_TPlot_PcGFlo_Gas_Trv.plt", OutputSwitch::Unwritten, "",
     "", ""},
    {next(OutputFile::TPlotPcGFloFirst, 3), 90, "KVR_TPlot_PcGFlo_Oil_All.plt", OutputSwitch::Unwritten, "",
     "", ""},
    {next(OutputFile::TPlotPcGFloFirst, 4), 91, "KVR_TPlot_PcGFlo_Oil_Pll.plt", OutputSwitch::Unwritten, "",
     "", ""},
    {next(OutputFile::TPlotPcGFloFirst, 5), 92, "KVR_TPlot_PcGFlo_Oil_Trv.plt", OutputSwitch::Unwritten, "",
     "", ""},
    {next(OutputFile::TPlotPcGFloFirst, 6), 93, "KVR_TPlot_PcGFlo_Wat_All.plt", OutputSwitch::Unwritten, "",
     "", ""},
    {next(OutputFile::TPlotPcGFloFirst, 7), 94, "KVR_TPlot_PcGFlo_Wat_Pll.plt", OutputSwitch::Unwritten, "",
     "", ""},
    {OutputFile::TPlotPcGFloLast, 95, "KVR_TPlot_PcGFlo_Wat_Trv.plt", OutputSwitch::Unwritten, "", "", ""},
    {OutputFile::TPlotWellBlk, 96, "KVR_TPlot_Well_Blk.plt", OutputSwitch::Tecplot,
     "WELL_GRID_PROPERTY_OUTPUT", "", "state of the first cell of each well, one row per step"},
    {OutputFile::TPlotWellRate, 97, "KVR_TPlot_Well_Rate.plt", OutputSwitch::Tecplot,
     "WELL_SINKSOURCE_DATA_OUTPUT", "", "rates and cumulatives of wells and field, one row per step"},
    {OutputFile::TPlotTracer, 98, "KVR_Tplot_Tracer.plt", OutputSwitch::Tecplot, "TracerConcentration", "",
     "tracer concentrations as maps, a column per tracer, in runs with tracers"},
    {OutputFile::HmObjFnc, 99, "KVR_HM_ObjFnc.out", OutputSwitch::HistoryMatch, "", "",
     "misfits by iteration: travel time RMS (days), and what updates are judged by"},
    {OutputFile::HmObjFncBeta, 100, "KVR_HM_ObjFnc_BETA.out", OutputSwitch::HistoryMatch, "", "",
     "steepest rise of each well's calculated curve by iteration, a day"},
    {OutputFile::HmObjFncNameFirst, 101, "KVR_HM_ObjFnc_BHP.out", OutputSwitch::HistoryMatch, "", "",
     "bottom-hole pressure, psi: sum over the points of observed minus calculated, a row per iteration, a "
     "column per producer"},
    {next(OutputFile::HmObjFncNameFirst, 1), 102, "KVR_HM_ObjFnc_BHP_Abs.out", OutputSwitch::HistoryMatch, "",
     "", "bottom-hole pressure, psi: the same of the absolute values"},
    {next(OutputFile::HmObjFncNameFirst, 2), 103, "KVR_HM_ObjFnc_CMP.out", OutputSwitch::HistoryMatch, "", "",
     "mole fraction: sum over the points of observed minus calculated, a row per iteration, a column per "
     "producer"},
    {next(OutputFile::HmObjFncNameFirst, 3), 104, "KVR_HM_ObjFnc_CMP_Abs.out", OutputSwitch::HistoryMatch, "",
     "", "mole fraction: the same of the absolute values"},
    {next(OutputFile::HmObjFncNameFirst, 4), 105, "KVR_HM_ObjFnc_GOR.out", OutputSwitch::HistoryMatch, "", "",
     "gas-oil ratio: sum over the points of observed minus calculated, a row per iteration, a column per "
     "producer"},
    {next(OutputFile::HmObjFncNameFirst, 5), 106, "KVR_HM_ObjFnc_GOR_Abs.out", OutputSwitch::HistoryMatch, "",
     "", "gas-oil ratio: the same of the absolute values"},
    {next(OutputFile::HmObjFncNameFirst, 6), 107, "KVR_HM_ObjFnc_GPR.out", OutputSwitch::HistoryMatch, "", "",
     "gas rate: sum over the points of observed minus calculated, a row per iteration, a column per "
     "producer"},
    {next(OutputFile::HmObjFncNameFirst, 7), 108, "KVR_HM_ObjFnc_GPR_Abs.out", OutputSwitch::HistoryMatch, "",
     "", "gas rate: the same of the absolute values"},
    {next(OutputFile::HmObjFncNameFirst, 8), 109, "KVR_HM_ObjFnc_OPR.out", OutputSwitch::HistoryMatch, "", "",
     "oil rate: sum over the points of observed minus calculated, a row per iteration, a column per "
     "producer"},
    {next(OutputFile::HmObjFncNameFirst, 9), 110, "KVR_HM_ObjFnc_OPR_Abs.out", OutputSwitch::HistoryMatch, "",
     "", "oil rate: the same of the absolute values"},
    {next(OutputFile::HmObjFncNameFirst, 10), 111, "KVR_HM_ObjFnc_WCT.out", OutputSwitch::HistoryMatch, "",
     "",
     "water cut: sum over the points of observed minus calculated, a row per iteration, a column per "
     "producer"},
    {next(OutputFile::HmObjFncNameFirst, 11), 112, "KVR_HM_ObjFnc_WCT_Abs.out", OutputSwitch::HistoryMatch,
     "", "", "water cut: the same of the absolute values"},
    {next(OutputFile::HmObjFncNameFirst, 12), 113, "KVR_HM_ObjFnc_WPR.out", OutputSwitch::HistoryMatch, "",
     "",
     "water rate: sum over the points of observed minus calculated, a row per iteration, a column per "
     "producer"},
    {OutputFile::HmObjFncNameLast, 114, "KVR_HM_ObjFnc_WPR_Abs.out", OutputSwitch::HistoryMatch, "", "",
     "water rate: the same of the absolute values"},
    {OutputFile::HmPermChangeCum, 115, "KVR_HM_Perm_Change_Cum.plt", OutputSwitch::HistoryMatch, "", "",
     "change of ln k since the first run, a zone per update, with `OUTPUTKVR` 3 only, like the next three"},
    {OutputFile::HmPermChangeInc, 116, "KVR_HM_Perm_Change_Inc.plt", OutputSwitch::HistoryMatch, "", "",
     "change of ln k by the update"},
    {OutputFile::HmPermHist, 117, "KVR_HM_Perm_Hist.plt", OutputSwitch::HistoryMatch, "", "",
     "permeability along x, md"},
    {OutputFile::HmPermHistLog, 118, "KVR_HM_Perm_Hist_Log.plt", OutputSwitch::HistoryMatch, "", "",
     "its logarithm to base ten"},
    {OutputFile::InfoAspect, 119, "KVR_Info_aspect.out", OutputSwitch::Always, "", "",
     "misfits of a history match by iteration; the head alone in other runs"},
    {OutputFile::InfoFstream, 120, "KVR_Info_fstream.out", OutputSwitch::Unwritten, "", "", ""},
    {OutputFile::InfoGeneral, 121, "KVR_Info_general.out", OutputSwitch::Always, "", "",
     "summary of the input: grid, rock and fluid tables, options"},
    {OutputFile::InvFirst, 122, "KVR_Inv_FinalBHP.out", OutputSwitch::HistoryMatch, "", "",
     "pressure misfit of each producer in the last run, psi"},
    {next(OutputFile::InvFirst, 1), 123, "KVR_Inv_FinalK.out", OutputSwitch::HistoryMatch, "", "",
     "permeability along x behind the last update"},
    {next(OutputFile::InvFirst, 2), 124, "KVR_Inv_FinalObsCalBHP.out", OutputSwitch::HistoryMatch, "", "",
     "bottom-hole pressures of the last run: well, time, observed, calculated"},
    {next(OutputFile::InvFirst, 3), 125, "KVR_Inv_FinalObsCalWCT.out", OutputSwitch::HistoryMatch, "", "",
     "the same of the curve that gives the shifts, water cut or gas-oil ratio"},
    {next(OutputFile::InvFirst, 4), 126, "KVR_Inv_FinalTTime.out", OutputSwitch::HistoryMatch, "", "",
     "travel-time shift of each producer in the last run, days"},
    {next(OutputFile::InvFirst, 5), 127, "KVR_Inv_IncrementK.out", OutputSwitch::HistoryMatch, "", "",
     "change of ln k by the last update"},
    {next(OutputFile::InvFirst, 6), 128, "KVR_Inv_InitBHP.out", OutputSwitch::HistoryMatch, "", "",
     "pressure misfit of each producer in the first run"},
    {next(OutputFile::InvFirst, 7), 129, "KVR_Inv_InitObsCalBHP.out", OutputSwitch::HistoryMatch, "", "",
     "bottom-hole pressures of the first run"},
    {next(OutputFile::InvFirst, 8), 130, "KVR_Inv_InitObsCalWCT.out", OutputSwitch::HistoryMatch, "", "",
     "matched curves of the first run"},
    {next(OutputFile::InvFirst, 9), 131, "KVR_Inv_InitTTime.out", OutputSwitch::HistoryMatch, "", "",
     "shifts in the first run"},
    {next(OutputFile::InvFirst, 10), 132, "KVR_Inv_InitialK.out", OutputSwitch::HistoryMatch, "", "",
     "permeability along x of the first run"},
    {next(OutputFile::InvFirst, 11), 133, "KVR_Inv_RMSError.out", OutputSwitch::HistoryMatch, "", "",
     "by iteration: travel time RMS (days), sum of the differences of the matched curves"},
    {OutputFile::InvLast, 134, "KVR_Inv_RMSError_BHP.out", OutputSwitch::HistoryMatch, "", "",
     "by iteration: pressure RMS, psi"},
    {OutputFile::DebugLog, 300, "KVR_dbg.out", OutputSwitch::Always, "", "",
     "log: deck as read, options, tables, wells, iterations, material balance of every step"},
    {OutputFile::MetricCopy, 301, "KVR_ECLMtricTemporaty.tmp", OutputSwitch::Always, "", "",
     "copy of the deck in metric units; numbers only with the comment `-- ConvertUnitCommandKVR` in "
     "`RUNSPEC`"},
    {OutputFile::FieldCopy, 302, "KVR_ECLFieldTemporaty.tmp", OutputSwitch::Always, "", "",
     "the same in field units"},
    {OutputFile::RunSweepVolume, 0, "KVR_Run_SweepVolume.out", OutputSwitch::Always, "",
     "File Replaced : KVR_Run_SweepVolume.out",
     "material balance and field figures, one row at time zero and per step"},
    {OutputFile::RunRegions, 0, "KVR_Run_Regions.out", OutputSwitch::Always, "", "",
     "fluids in place of each region of `FIPNUM`, a row per region at time zero and per step; only in decks "
     "with "
     "`FIPNUM`"},
    {OutputFile::Co2Balance, 0, "Mass_Balance_CO2.out", OutputSwitch::Co2, "", "",
     "CO2 in the cells, Mscf: free (trapped included), dissolved, solid and their sum, one row at time zero "
     "and per step"},
    {OutputFile::Co2Stores, 0, "KVR_CO2_Stores.csv", OutputSwitch::Co2, "", "",
     "the same with commas between, in the unit of the deck: what can move and what is trapped apart, what "
     "wells "
     "have brought and taken, and the error of the balance"},
    {OutputFile::Co2FreeZone, 0, "KVR_TPlot_CO2_Free.plt", OutputSwitch::Co2Tecplot, "CO2 free", "",
     "free CO2 of each cell, Mscf, trapped included: a zone at time zero and one per report"},
    {OutputFile::Co2TrappedZone, 0, "KVR_TPlot_CO2_Trapped.plt", OutputSwitch::Co2Tecplot, "CO2 trapped", "",
     "the part of it that cannot move"},
    {OutputFile::Co2DissolvedZone, 0, "KVR_TPlot_CO2_Dissolved.plt", OutputSwitch::Co2Tecplot,
     "CO2 dissolved", "", "dissolved CO2, Mscf, in the same form"},
    {OutputFile::Co2SolidZone, 0, "KVR_TPlot_CO2_Solid.plt", OutputSwitch::Co2Tecplot, "CO2 solid", "",
     "CO2 in minerals, Mscf, in the same form"},
    {OutputFile::Co2KxZone, 0, "KVR_TPlot_CO2_Kx.plt", OutputSwitch::Co2Tecplot, "K<sub>x</sub>", "",
     "permeability along x, md, in the same form"},
    {OutputFile::Co2PorosityZone, 0, "KVR_TPlot_CO2_Porosity.plt", OutputSwitch::Co2Tecplot, "Porosity", "",
     "porosity at the pressure of the time, in the same form"},
    {OutputFile::RunEndSwat, 0, "KVR_Run_EndSwat.out", OutputSwitch::View, "Saturation            ",
     "File Replaced : KVR_Run_EndSwat.out", "water saturation at the end: cell centres and values"},
    {OutputFile::RunPressure, 0, "KVR_Run_Pressure.out", OutputSwitch::View, "pressure          ",
     "File Replaced : KVR_Run_Pressure.out", "pressure at the end, psia, in the same form"},
    {OutputFile::RunRateAllocation, 0, "KVR_Run_RateAllocation.out", OutputSwitch::View, "", "",
     "rate that lines carry from each injector to each producer in the last step: running number, connection "
     "number, rb/day"},
    {OutputFile::LinePlots, 0, "Streamline_Time_*.plt", OutputSwitch::Lines, "SL_FRAME_PLOT", "",
     "streamlines of a report time: the grid with the water that the lines start from (gravity and "
     "capillarity of "
     "half a step are in it), then a zone of points per line"},
    {OutputFile::TauInjZone, 0, "KVR_Run_TauINJ.plt", OutputSwitch::TecplotView, "TOF-Inj         ", "",
     "time of flight from the injector at the end of the run, days; 1e10 where no line comes"},
    {OutputFile::TauPrdZone, 0, "KVR_Run_TauPRD.plt", OutputSwitch::TecplotView, "TOF-Prd         ", "",
     "time of flight to the producer"},
    {OutputFile::TauSumZone, 0, "KVR_Run_TauSUM.plt", OutputSwitch::TecplotView, "TOF-Sum         ", "",
     "the sum of both"},
    {OutputFile::PrdCxnZone, 0, "KVR_Run_PrdCxn.plt", OutputSwitch::TecplotView, "PrdCxn", "",
     "number of the producer that a cell feeds, 0 for none"},
    {OutputFile::InjCxnZone, 0, "KVR_Run_InjCxn.plt", OutputSwitch::TecplotView, "InjCxn", "",
     "number of the injector that feeds a cell"},
    {OutputFile::CxnCxnZone, 0, "KVR_Run_CxnCxn.plt", OutputSwitch::TecplotView, "CxnCxn", "",
     "connection number of the pair"},
    {OutputFile::TauInjList, 0, "KVR_Run_TauINJ.out", OutputSwitch::View, "", "",
     "time of flight from the injector, one value per cell"},
    {OutputFile::TauPrdList, 0, "KVR_Run_TauPRD.out", OutputSwitch::View, "", "",
     "time of flight to the producer"},
    {OutputFile::TauSumList, 0, "KVR_Run_TauSUM.out", OutputSwitch::View, "", "", "the sum of both"},
    {OutputFile::PrdCxnList, 0, "KVR_Run_prdCxn.out", OutputSwitch::View, "", "",
     "number of the producer, one value per cell"},
    {OutputFile::InjCxnList, 0, "KVR_Run_InjCxn.out", OutputSwitch::View, "", "", "number of the injector"},
    {OutputFile::MatrixPoil, 0, "KVR_TPlot_poil_Mtrx.plt", OutputSwitch::TecplotMatrix, "p<sub>o</sub>", "",
     "pressure of the matrix, psia: a zone at time zero and one per report, of dual porosity (`DUALPORO`)"},
    {OutputFile::MatrixSwat, 0, "KVR_TPlot_swat_Mtrx.plt", OutputSwitch::TecplotMatrix, "S<sub>w</sub>", "",
     "water saturation of the matrix"},
    {OutputFile::MatrixSoil, 0, "KVR_TPlot_soil_Mtrx.plt", OutputSwitch::TecplotMatrix, "S<sub>o</sub>", "",
     "oil saturation of the matrix"},
    {OutputFile::MatrixSgas, 0, "KVR_TPlot_sgas_Mtrx.plt", OutputSwitch::TecplotMatrix, "S<sub>g</sub>", "",
     "gas saturation of the matrix, in runs with gas"},
    {OutputFile::MatrixRs, 0, "KVR_TPlot_Rs_Mtrx.plt", OutputSwitch::TecplotMatrix, "R<sub>s</sub>", "",
     "dissolved gas of the matrix, Mscf/stb, in runs with gas"},
    {OutputFile::StaticLogKx, 0, "KVR_Tplot_Static_Logkx.plt", OutputSwitch::Tecplot, "Log_k<sub>x</sub>",
     "File Generated : Logkx.plt", "logarithm to base ten of the permeability along x"},
    {OutputFile::StaticLogKy, 0, "KVR_Tplot_Static_Logky.plt", OutputSwitch::Tecplot, "Log_k<sub>y</sub>",
     "File Generated : Logky.plt", "the same along y"},
    {OutputFile::StaticLogKz, 0, "KVR_Tplot_Static_Logkz.plt", OutputSwitch::Tecplot, "Log_k<sub>z</sub>",
     "File Generated : Logkz.plt", "the same along z"},
    {OutputFile::StaticPorosity, 0, "KVR_Tplot_Static_phif.plt", OutputSwitch::Tecplot, "<greek>f</greek>",
     "", "porosity"},
    {OutputFile::StaticKx, 0, "KVR_Tplot_Static_kx.plt", OutputSwitch::Tecplot, "k<sub>x</sub>",
     "File Generated : kx.plt", "permeability along x, md"},
    {OutputFile::StaticKy, 0, "KVR_Tplot_Static_ky.plt", OutputSwitch::Tecplot, "k<sub>y</sub>",
     "File Generated : ky.plt", "permeability along y"},
    {OutputFile::StaticKz, 0, "KVR_Tplot_Static_kz.plt", OutputSwitch::Tecplot, "k<sub>z</sub>",
     "File Generated : kz.plt", "permeability along z"},
    {OutputFile::StaticTransX, 0, "KVR_Tplot_Static_TRNSX.plt", OutputSwitch::Tecplot, "TrnsX",
     "File Generated : TRNSX.plt", "transmissibility to the next cell along x, rb cp/(day psi)"},
    {OutputFile::StaticTransY, 0, "KVR_Tplot_Static_TRNSY.plt", OutputSwitch::Tecplot, "TrnsY",
     "File Generated : TRNSY.plt", "the same along y"},
    {OutputFile::StaticTransZ, 0, "KVR_Tplot_Static_TRNSZ.plt", OutputSwitch::Tecplot, "TrnsZ",
     "File Generated : TRNSZ.plt", "the same along z"},
    {OutputFile::SmoothedKx, 0, "Smoothed_Kx.plt", OutputSwitch::Smoothing, "k<sub>x</sub>", "",
     "permeability along x after smoothing; only if it is in the list, like the next three"},
    {OutputFile::SmoothedKy, 0, "Smoothed_Ky.plt", OutputSwitch::Smoothing, "k<sub>y</sub>", "",
     "permeability along y"},
    {OutputFile::SmoothedKz, 0, "Smoothed_Kz.plt", OutputSwitch::Smoothing, "k<sub>z</sub>", "",
     "permeability along z"},
    {OutputFile::SmoothedPoro, 0, "Smoothed_Poro.plt", OutputSwitch::Smoothing, "Poro", "", "porosity"},
    {OutputFile::UpscaledPorosity, 0, "Upscaled_Porosity.plt", OutputSwitch::Upscaling, "", "",
     "porosity, constant in each window"},
    {OutputFile::UpscaledPorosityData, 0, "UPSCALED_POROSITY.DATA", OutputSwitch::Upscaling, "", "",
     "the same as `PORO`, to include in a deck"},
    {OutputFile::UpscaledPermX, 0, "Upscaled_PERMX.plt", OutputSwitch::Upscaling, "", "",
     "upscaled permeability along x, md"},
    {OutputFile::UpscaledPermXLog, 0, "Upscaled_PERMX_LOG10.plt", OutputSwitch::Upscaling, "", "",
     "its logarithm to base ten"},
    {OutputFile::UpscaledPermY, 0, "Upscaled_PERMY.plt", OutputSwitch::Upscaling, "", "", "the same along y"},
    {OutputFile::UpscaledPermYLog, 0, "Upscaled_PERMY_LOG10.plt", OutputSwitch::Upscaling, "", "",
     "its logarithm"},
    {OutputFile::UpscaledPermZ, 0, "Upscaled_PERMZ.plt", OutputSwitch::Upscaling, "", "", "the same along z"},
    {OutputFile::UpscaledPermZLog, 0, "Upscaled_PERMZ_LOG10.plt", OutputSwitch::Upscaling, "", "",
     "its logarithm"},
    {OutputFile::UpscaledPermData, 0, "UPSCALED_PERM.DATA", OutputSwitch::Upscaling, "", "",
     "the three as `PERMX`, `PERMY`, `PERMZ`, to include in a deck"},
    {OutputFile::PressureMatrix, 0, "pmtrx.out", OutputSwitch::PressureMatrix, "", "",
     "pressure matrix of the last solve: row, column, value"},
    {OutputFile::FailedMatrix, 0, "PMatrix_T_*_ite_*.xls", OutputSwitch::Always, "", "",
     "the matrix that the dense solver could not solve, by time and iteration"},
    {OutputFile::SaturationMatrix, 0, "SMatrix_T_*_dt_*_ite_*.xls", OutputSwitch::SaturationMatrix, "", "",
     "Newton matrices of implicit lines, by time, step and iteration"},
    {OutputFile::AmgInfo, 0, "KVR_dbgAMG.out", OutputSwitch::Always, "", "",
     "iterations and residual of each pressure solve by multigrid"},
    {OutputFile::BicgstabInfo, 0, "KVR_BICGSTB_Info.out", OutputSwitch::Always, "", "",
     "the same for the Krylov methods"},
    {OutputFile::CoordinateFile, 0, "_COORD_BYKVR.tmp", OutputSwitch::Always, "", "",
     "a block-input grid as corner points (`COORD`, `ZCORN`), to include in another deck"},
    {OutputFile::HistorySchedule, 0, "SCHEDULE_TEMPORARY_FOR_HM.DATA", OutputSwitch::WellHistory, "", "",
     "rates and bottom-hole pressures of a run as a history schedule (`WCONINJH`, `WCONHIST`, `TSTEP`), with "
     "`OUTWHIST`, and of every outside run that is traced"},
    {OutputFile::SensitivitySteps, 0, "HM_SENSTEMP_*.K*", OutputSwitch::Sensitivity, "", "",
     "sensitivities of the wells to ln k of the cells, of travel time (`GTTI`) and of bottom-hole pressure "
     "(`GBHPI`), one file of each for a report and for their sum (`K0000`); binary"},
    {OutputFile::SensitivityPlots, 0, "HM_SENSITIVITY_*_Ite*.plt", OutputSwitch::Sensitivity, "Sensitivity",
     "", "the same as maps, a zone per report with a variable per well, of an iteration of a match"},
    {OutputFile::HmPermLatest, 0, "HM_Perm_Latest.plt", OutputSwitch::HistoryMatch, "PERMX", "",
     "permeability along x of the match so far, md"},
    {OutputFile::HmPermLatestLog, 0, "HM_Perm_Latest_LOG.plt", OutputSwitch::HistoryMatch, "Kx_Log", "",
     "its logarithm to base ten"},
    {OutputFile::HmPermChange, 0, "HM_Perm_Change_FromINI.plt", OutputSwitch::HistoryMatch, "CgKx", "",
     "change of ln k since the first run"},
    {OutputFile::HmPermInclude, 0, "HM_Perm_Latest.DATA", OutputSwitch::HistoryMatch, "", "",
     "the field of the match so far as `PERMX`, `PERMY`, `PERMZ`, to include in a deck"},
    {OutputFile::HmIteration, 0, "HM_ITE_*", OutputSwitch::HistoryMatch, "PERMX", "",
     "permeability along x behind an iteration"},
    {OutputFile::HmResume, 0, "KVR_HM_Resume.bin", OutputSwitch::HistoryMatch, "", "",
     "where a match stands, for a run that goes on with it; gone at its end"},
    {OutputFile::EraseScript, 0, "0EraseData.bat", OutputSwitch::Always, "", "", "deletes what runs leave"},
    {OutputFile::RunSummary, 0, "KVR_Summary.csv", OutputSwitch::Always, "", "",
     "field and well vectors under their usual mnemonics, one row at time zero and per step, commas between; "
     "the second line has the units, those of the deck"},
    {OutputFile::FilesIndex, 0, "KVR_Files.txt", OutputSwitch::Always, "", "",
     "what each file of the run holds"},
    {OutputFile::RateChanges, 0, "KVR_RateChanges.csv", OutputSwitch::RateOptimization, "", "",
     "every rate that the optimisation has looked at where it changed any: well, rate before and after in "
     "the "
     "units of the deck, and what bounded it"},
    {OutputFile::RateSchedule, 0, "KVR_RateSchedule.DATA", OutputSwitch::RateOptimization, "", "",
     "the rates of an optimised run as a schedule (`WELSPECS`, `COMPDAT`, `WCONINJE`, `WCONPROD`, `TSTEP`), "
     "to be "
     "run in place of the deck's"},
    {OutputFile::RateSteps, 0, "KVR_OPT_*WFLD_REALOC*.out", OutputSwitch::RateOptimization, "",
     "File Generated : WFLOOD_REALOC_ALL.out",
     "reallocation of rates: a file per step with pairs and wells, and `.._ALL.out` with a row per step"},
    {OutputFile::PairMaps, 0, "KVR_OPT_*_PTNMAP*.plt", OutputSwitch::RateOptimization, "", "",
     "pairs of wells step by step: flux, oil, efficiency, times of flight"},
    {OutputFile::PressureMap, 0, "KVR_OPT_*WFLD_MMP.plt", OutputSwitch::RateOptimization, "", "",
     "average pressure and a map of 50 by 50 points, with `OPTMMP` and a target"},
    {OutputFile::EclipseGrid, 0, "*.EGRID", OutputSwitch::Eclipse, "", "",
     "grid, under the name of the deck; this and the next: [files for viewers](eclipse-files.md)"},
    {OutputFile::EclipseInit, 0, "*.INIT", OutputSwitch::Eclipse, "", "File Generated : *.INIT",
     "static properties"},
    {OutputFile::EclipseRestart, 0, "*.X[0-9]*", OutputSwitch::Eclipse, "", "File Generated : *.X0000",
     "pressure and saturations of a report; in the last of a streamline run with 8 also the wells and the "
     "times of flight of the diagnostics (`PRDID`, `INJID`, `CXNID`, `TOFI`, `TOFP`, `TOFT`)"},
    {OutputFile::EclipseSummarySpec, 0, "*.SMSPEC", OutputSwitch::Eclipse, "", "File Generated : *.SMSPEC",
     "names and units of the summary vectors; not without wells"},
    {OutputFile::EclipseSummary, 0, "*.S[0-9]*", OutputSwitch::Eclipse, "", "File Generated : *.S0000",
     "values of the summary vectors at a report"},
    {OutputFile::EclipseRft, 0, "*.RFT", OutputSwitch::Eclipse, "", "File Generated : *.RFT",
     "pressure and saturations along the wells, report by report; empty without the switch"},
    {OutputFile::EclipseLineSpec, 0, "*.SLNSPEC", OutputSwitch::EclipseLines, "",
     "File Generated : *.SLNSPEC", "names and extent for the streamlines"},
    {OutputFile::EclipseLines, 0, "*.SLN[0-9]*", OutputSwitch::EclipseLines, "", "", "streamlines of a step"},
    {OutputFile::EclipseEnd, 0, "*.ECLEND", OutputSwitch::Always, "", "File Generated : *.ECLEND",
     "counts of warnings, problems and errors of the run"},
}};

constexpr bool rowsFollowTheirOrder() {
    for (std::size_t n = 0; n < RowCount; ++n)
        if (static_cast<std::size_t>(Rows[n].file) != n) return false;
    return true;
}
static_assert(rowsFollowTheirOrder());

}  // namespace

bool isOn(const RunOptions& options, OutputSwitch output) {
    switch (output) {
        case OutputSwitch::Always:
            return true;
        case OutputSwitch::Excel:
            return options.outputXls == "Yes";
        case OutputSwitch::Tecplot:
            return options.outputPlt == "Yes";
        case OutputSwitch::TecplotMatrix:
            return options.outputPlt == "Yes" && isDualPorosity(options);
        case OutputSwitch::PressureMatrix:
            return options.outputPressureMatrix;
        case OutputSwitch::SaturationMatrix:
            return options.outputSaturationMatrix;
        case OutputSwitch::View:
            return options.outputKvrView == "Yes";
        case OutputSwitch::ViewOrLines:
            return options.outputKvrView == "Yes" || options.outputStreamline;
        case OutputSwitch::Eclipse:
            return options.outputEclipse == "Yes";
        case OutputSwitch::EclipseLines:
            return options.outputEclipse == "Yes" && options.outputSln == "Yes";
        case OutputSwitch::Lines:
            return options.outputStreamline;
        case OutputSwitch::TecplotView:
            return options.outputPlt == "Yes" && options.outputKvrView == "Yes";
        case OutputSwitch::Smoothing:
            return options.parameterSmoothing;
        case OutputSwitch::Upscaling:
            return options.flowUpscaling;
        case OutputSwitch::HistoryMatch:
            return options.historyMatch;
        case OutputSwitch::Sensitivity:
            return options.outputSensitivity || options.historyMatch;
        case OutputSwitch::WellHistory:
            return options.outputWellHistory || options.traceFromRestart;
        case OutputSwitch::Co2:
            return options.co2Model;
        case OutputSwitch::Co2Tecplot:
            return options.co2Model && options.outputPlt == "Yes";
        case OutputSwitch::RateOptimization:
            return optimizesRates(options);
        case OutputSwitch::Unwritten:
            return false;
    }
    return false;
}

const OutputRow& rowOf(OutputFile file) {
    return Rows[static_cast<std::size_t>(file)];
}

std::string outputFileName(std::string_view prefix, std::string_view name) {
    constexpr std::string_view Own = "KVR";
    if (prefix.empty()) return std::string(name);
    if (name.starts_with("KVR_")) name.remove_prefix(Own.size());
    return std::string(prefix) + (name.starts_with('_') ? "" : "_") + std::string(name);
}

std::string_view outputName(OutputFile file) {
    return rowOf(file).name;
}

int streamNumber(OutputFile file) {
    return rowOf(file).number;
}

}  // namespace kvr
