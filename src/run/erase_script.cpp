#include "run/erase_script.hpp"

#include "base/written_files.hpp"
#include "run/records/output_streams.hpp"

#include <algorithm>
#include <fnmatch.h>
#include <iterator>
#include <string>
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

namespace {

/// A name as `del` knows it: it has no ranges of characters.
std::string plainPattern(std::string_view name) {
    constexpr std::string_view Digit = "[0-9]";
    const std::size_t at = name.find(Digit);
    if (at == std::string_view::npos) return std::string(name);
    return fmt::format("{}0{}", name.substr(0, at), name.substr(at + Digit.size()));
}

bool isListed(const std::string& name) {
    return std::any_of(std::begin(ErasedNames), std::end(ErasedNames), [&name](std::string_view pattern) {
        return fnmatch(std::string(pattern).c_str(), name.c_str(), 0) == 0;
    });
}

/// Every name of the list, and of the files of a run that the list does not name; `write` gets them as they
/// are in a run with this prefix.
template <class Write>
void forEachErased(const std::string& prefix, const Write& write) {
    for (const std::string_view name : ErasedNames) {
        write(std::string(name));
        if (!prefix.empty() &&
            (name.starts_with("KVR_") || name.starts_with("HM_") || name.starts_with("Mass_")))
            write(outputFileName(prefix, name));
    }
    for (int n = 0; n < static_cast<int>(OutputFile::AllCount); ++n) {
        const auto file = static_cast<OutputFile>(n);
        const std::string name = plainPattern(outputName(file));
        if (file == OutputFile::EraseScript || isListed(name)) continue;
        write(name.starts_with('*') ? name : outputFileName(prefix, name));
    }
}

}  // namespace

void writeEraseScript(const Console& console, const std::string& folder, const std::string& prefix) {
    const std::string name = outputFileName(prefix, outputName(OutputFile::EraseScript));
    std::FILE* file = openForReplace(console, folder + name);
    std::fputs("@echo off\n", file);
    forEachErased(prefix, [file](const std::string& name) { std::fprintf(file, "del %s\n", name.c_str()); });
    closeWhole(console, file);
}

}  // namespace kvr
