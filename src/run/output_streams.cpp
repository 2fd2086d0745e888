#include "run/output_streams.hpp"

#include "base/hard_stop.hpp"
#include "run/erase_script.hpp"

#include <array>
#include <cerrno>

namespace kvr {

namespace {

constexpr std::size_t FileCount = static_cast<std::size_t>(OutputFile::Count);
constexpr int LastClosedStream = 200;  // streams up to this number end with the run, the rest with the log

constexpr std::string_view EraseScriptName = "0EraseData.bat";

struct OutputRow {
    int number;
    std::string_view name;
};

// In the order of OutputFile, which is the order of opening.
constexpr std::array<OutputRow, FileCount> OutputTable = {{
    {10, "KVR_TPlot_poil.plt"},
    {20, "KVR_TPlot_swat.plt"},
    {30, "KVR_TPlot_soil.plt"},
    {40, "KVR_TPlot_sgas.plt"},
    {50, "KVR_TPlot_Rs.plt"},
    {60, "KVR_TPlot_swatmp.plt"},
    {61, "KVR_Run_Recovery.out"},
    {62, "KVR_Run_Production.out"},
    {63, "KVR_Run_Wct.out"},
    {64, "KVR_Run_Streamline.out"},
    {65, "KVR_Run_IniSwat.out"},
    {66, "KVR_Run_PermX.out"},
    {67, "KVR_Run_PermY.out"},
    {68, "KVR_Run_PermZ.out"},
    {69, "KVR_Excl_Grid_Prs.xls"},
    {70, "KVR_Excl_Grid_Sat.xls"},
    {71, "KVR_Excl_Well.xls"},
    {72, "KVR_Excl_Well_Blk.xls"},
    {73, "KVR_Excl_mbe.xls"},
    {74, "KVR_Excl_mbec.xls"},
    {75, "KVR_TPlot_AllFlo_Gas.plt"},
    {76, "KVR_TPlot_AllFlo_Oil.plt"},
    {77, "KVR_TPlot_AllFlo_Wat.plt"},
    {78, "KVR_TPlot_Out_Zmf.plt"},
    {79, "KVR_TPlot_Out_mobg.plt"},
    {80, "KVR_TPlot_Out_mobo.plt"},
    {81, "KVR_TPlot_Out_mobt.plt"},
    {82, "KVR_TPlot_Out_mobw.plt"},
    {83, "KVR_TPlot_Out_velt.plt"},
    {84, "KVR_TPlot_Out_velx.plt"},
    {85, "KVR_TPlot_Out_vely.plt"},
    {86, "KVR_TPlot_Out_velz.plt"},
    {87, "KVR_TPlot_PcGFlo_Gas_All.plt"},
    {88, "KVR_TPlot_PcGFlo_Gas_Pll.plt"},
    {89, "KVR_TPlot_PcGFlo_Gas_Trv.plt"},
    {90, "KVR_TPlot_PcGFlo_Oil_All.plt"},
    {91, "KVR_TPlot_PcGFlo_Oil_Pll.plt"},
    {92, "KVR_TPlot_PcGFlo_Oil_Trv.plt"},
    {93, "KVR_TPlot_PcGFlo_Wat_All.plt"},
    {94, "KVR_TPlot_PcGFlo_Wat_Pll.plt"},
    {95, "KVR_TPlot_PcGFlo_Wat_Trv.plt"},
    {96, "KVR_TPlot_Well_Blk.plt"},
    {97, "KVR_TPlot_Well_Rate.plt"},
    {98, "KVR_Tplot_Tracer.plt"},
    {99, "KVR_HM_ObjFnc.out"},
    {100, "KVR_HM_ObjFnc_BETA.out"},
    {101, "KVR_HM_ObjFnc_BHP.out"},
    {102, "KVR_HM_ObjFnc_BHP_Abs.out"},
    {103, "KVR_HM_ObjFnc_CMP.out"},
    {104, "KVR_HM_ObjFnc_CMP_Abs.out"},
    {105, "KVR_HM_ObjFnc_GOR.out"},
    {106, "KVR_HM_ObjFnc_GOR_Abs.out"},
    {107, "KVR_HM_ObjFnc_GPR.out"},
    {108, "KVR_HM_ObjFnc_GPR_Abs.out"},
    {109, "KVR_HM_ObjFnc_OPR.out"},
    {110, "KVR_HM_ObjFnc_OPR_Abs.out"},
    {111, "KVR_HM_ObjFnc_WCT.out"},
    {112, "KVR_HM_ObjFnc_WCT_Abs.out"},
    {113, "KVR_HM_ObjFnc_WPR.out"},
    {114, "KVR_HM_ObjFnc_WPR_Abs.out"},
    {115, "KVR_HM_Perm_Change_Cum.plt"},
    {116, "KVR_HM_Perm_Change_Inc.plt"},
    {117, "KVR_HM_Perm_Hist.plt"},
    {118, "KVR_HM_Perm_Hist_Log.plt"},
    {119, "KVR_Info_aspect.out"},
    {120, "KVR_Info_fstream.out"},
    {121, "KVR_Info_general.out"},
    {122, "KVR_Inv_FinalBHP.out"},
    {123, "KVR_Inv_FinalK.out"},
    {124, "KVR_Inv_FinalObsCalBHP.out"},
    {125, "KVR_Inv_FinalObsCalWCT.out"},
    {126, "KVR_Inv_FinalTTime.out"},
    {127, "KVR_Inv_IncrementK.out"},
    {128, "KVR_Inv_InitBHP.out"},
    {129, "KVR_Inv_InitObsCalBHP.out"},
    {130, "KVR_Inv_InitObsCalWCT.out"},
    {131, "KVR_Inv_InitTTime.out"},
    {132, "KVR_Inv_InitialK.out"},
    {133, "KVR_Inv_RMSError.out"},
    {134, "KVR_Inv_RMSError_BHP.out"},
    {300, "KVR_dbg.out"},
    {301, "KVR_ECLMtricTemporaty.tmp"},
    {302, "KVR_ECLFieldTemporaty.tmp"},
}};

constexpr const OutputRow& rowOf(OutputFile file) {
    return OutputTable[static_cast<std::size_t>(file)];
}
static_assert(rowOf(OutputFile::TPlotRs).number == 50);
static_assert(rowOf(OutputFile::TPlotPcGFloLast).name == "KVR_TPlot_PcGFlo_Wat_Trv.plt");
static_assert(rowOf(OutputFile::HmObjFncNameLast).name == "KVR_HM_ObjFnc_WPR_Abs.out");
static_assert(rowOf(OutputFile::InvLast).name == "KVR_Inv_RMSError_BHP.out");
static_assert(rowOf(OutputFile::DebugLog).number == 300);

// Heads that stand in their files from the start, whatever the options are.
struct HeadRow {
    OutputFile file;
    const char* text;
};
constexpr HeadRow Heads[] = {
    {OutputFile::ExclMbe, "TIME\tPVI\tMBE_O %\tMBE_W %\tMBE_G %\tPCT %\n"},
    {OutputFile::ExclMbec,
     "TIME\tPVI\tMBE_O %\tMBE_W %\tMBE_G %\tPCT %\tMassbyCompoent ->     \tComponents ->     \n"},
    {OutputFile::DebugLog, "BLACKOIL   KVR   LAST UPDATE :   **/**/2012\n"},
};

constexpr int OpenErrorStatus = -1;
constexpr int HandlingErrorStatus = -2;

[[noreturn]] void stopOnOpenFailure(const Console& console, const std::string& path, int status) {
    if (status == OpenErrorStatus)
        lineToBoth(console, "ERROR: File Open Error");
    else if (status == HandlingErrorStatus)
        lineToBoth(console, "ERROR: File handling Error");
    else
        both(console, "ERROR: File handling error, code = {}", status);
    lineToBoth(console, "Cannot create file for output. Check Directry path.");
    lineToBoth(console, path);
    hardStop(console);
}

std::FILE* openOrStop(const Console& console, const std::string& path, const char* mode) {
    errno = 0;
    std::FILE* file = std::fopen(path.c_str(), mode);
    if (file == nullptr) stopOnOpenFailure(console, path, errno);
    return file;
}

std::FILE*& slot(OutputStreams& outputs, OutputFile file) {
    return outputs.streams[static_cast<std::size_t>(file)];
}

void closeRange(OutputStreams& outputs, bool (*wanted)(int number)) {
    for (std::size_t n = 0; n < outputs.streams.size(); ++n) {
        std::FILE*& open = outputs.streams[n];
        if (open == nullptr || !wanted(OutputTable[n].number)) continue;
        std::fclose(open);
        open = nullptr;
    }
}

}  // namespace

std::string_view outputName(OutputFile file) {
    return rowOf(file).name;
}

int streamNumber(OutputFile file) {
    return rowOf(file).number;
}

std::FILE* stream(const OutputStreams& outputs, OutputFile file) {
    const auto index = static_cast<std::size_t>(file);
    return index < outputs.streams.size() ? outputs.streams[index] : nullptr;
}

std::FILE* openForReplace(const Console& console, const std::string& path) {
    return openOrStop(console, path, "w");
}

std::FILE* openForAppend(const Console& console, const std::string& path) {
    return openOrStop(console, path, "a");
}

std::string outputPath(const OutputStreams& outputs, std::string_view name) {
    return outputs.folder + std::string(name);
}

void openOutputs(const std::string& folder, OutputStreams& outputs, Console& console) {
    outputs.folder = folder;
    outputs.streams.assign(FileCount, nullptr);
    writeEraseScript(console, outputPath(outputs, EraseScriptName));
    for (std::size_t n = 0; n < FileCount; ++n)
        outputs.streams[n] = openForReplace(console, outputPath(outputs, OutputTable[n].name));
    for (const HeadRow& head : Heads) std::fputs(head.text, slot(outputs, head.file));
    console.log = stream(outputs, OutputFile::DebugLog);
}

void replaceOutput(const Console& console, OutputFile file, OutputStreams& outputs) {
    if (stream(outputs, file) == nullptr) return;
    const std::string path = outputPath(outputs, outputName(file));
    errno = 0;
    slot(outputs, file) = std::freopen(path.c_str(), "w", slot(outputs, file));
    if (slot(outputs, file) == nullptr) stopOnOpenFailure(console, path, errno);
}

void flushOutputs(const OutputStreams& outputs) {
    for (std::FILE* open : outputs.streams)
        if (open != nullptr) std::fflush(open);
}

void closeOutputs(OutputStreams& outputs) {
    closeRange(outputs, [](int number) { return number <= LastClosedStream; });
}

void closeLog(OutputStreams& outputs, Console& console) {
    console.log = nullptr;
    closeRange(outputs, [](int number) { return number > LastClosedStream; });
}

}  // namespace kvr
