#include "eclipse/outside_command.hpp"

#include "base/text.hpp"

#include <cstdio>
#include <cstdlib>

namespace kvr {

std::string outsideCommand(const RunOptions& options) {
    std::string run =
        std::string(trim(options.simulatorCommand)) + " " + std::string(trim(options.headerName));
    if (options.linuxRun) return run;
    return "cd /d " + std::string(trim(options.workingFolder)) + " & " + run;
}

void runOutsideCommand(const Console& console, const RunOptions& options) {
    lineToBoth(console, "Run Simulation by ECLIPSE");
    std::fflush(nullptr);
    if (std::system(outsideCommand(options).c_str()) == 0) return;
    lineToBoth(console, "Commandline -$eclipse- is not recognized");
    lineToBoth(console, "Check environmental varialbe of computer");
}

}  // namespace kvr
