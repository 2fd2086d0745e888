#include "run/erase_script.hpp"

#include "base/written_files.hpp"
#include "run/records/output_streams.hpp"

#include <string_view>

namespace kvr {

namespace {

// What follows "del " on each line. The row that starts with "del" itself is deliberate: the line has
// always had its doubled word, and folders are compared by it.
constexpr std::string_view ErasedNames[] = {
    // Names of earlier releases.
    "KVR_Run_RateAllocation.dat",
    "tau.dat",
    "KVR_Run_Wct.out",
    "production_numeric.his",
    "stream.dat",
    "dummy2.dat",
    "dummy3.dat",
    "dummy4.dat",
    "dummy5.dat",
    "data.bak",
    "tau_prd.dat",
    "tau_inj.dat",
    "poil.plt",
    "swat.plt",
    "soil.plt",
    "sgas.plt",
    "Rs.plt",
    "swatmp.plt",
    "HM_ITE_0*",
    "del HM_ITE_0*",
    "mbe.xls",
    "mbec.xls",
    "Well.xls",
    "Well_Blk.xls",
    "Grid_Sat.xls",
    "Grid_Prs.xls",
    // The present set, by kind.
    "KVR_TPlot_*.plt",
    "KVR_Tplot_*.plt",
    "KVR_Run_*.out",
    "KVR_Excl_Grid_Prs.xls",
    "KVR_Excl_Grid_Sat.xls",
    "KVR_Excl_Well.xls",
    "KVR_Excl_Well_Blk.xls",
    "KVR_Excl_mbe.xls",
    "KVR_Excl_mbec.xls",
    "KVR_HM_*.out",
    "KVR_HM_*.plt",
    "KVR_Info_*.out",
    "KVR_Inv_*.out",
    "KVR_OPT_*",
    "HM_SENSTEMP_*",
    "WFLOOD_REALOC_ALL.out",
    "Mass_Balance_CO2.out",
    "KVR_ECLMtricTemporaty.tmp",
    "KVR_ECLFieldTemporaty.tmp",
    "KVR_dbg.out",
    // Output of the outside simulators.
    "*.SMSPEC",
    "*.A0*",
    "*.CFE",
    "*.CFG",
    "*.DBG",
    "*.ECLEND",
    "*.ECLTXT",
    "*.EGRID",
    "*.F0*",
    "*.FEGRID",
    "*.FGRID",
    "*.FINIT",
    "*.FINSPEC",
    "*.FRSSPEC",
    "*.GRID",
    "*.INIT",
    "*.INSPEC",
    "*.K0*",
    "*.LOG",
    "*.MSG",
    "*.PRT",
    "*.RFT",
    "*.RSSPEC",
    "*.S0*",
    "*.SLN0*",
    "*.SLNSPEC",
    "*.X0*",
};

}  // namespace

void writeEraseScript(const Console& console, const std::string& folder, const std::string& prefix) {
    const std::string name = outputFileName(prefix, outputName(OutputFile::EraseScript));
    std::FILE* file = openForReplace(console, folder + name);
    std::fputs("@echo off\n", file);
    for (const std::string_view name : ErasedNames)
        std::fprintf(file, "del %.*s\n", static_cast<int>(name.size()), name.data());
    closeWhole(console, file);
}

}  // namespace kvr
