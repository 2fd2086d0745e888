// Flashes of feeds from standard input, one a line:
//   count, temperature (R), pressure (psia), Tc, Pc, acentric factors, BIC (count^2), feed
// Prints of each  phases V Z_L Z_V x.. y..  with all digits. Each feed starts from nothing.

#include "fluid/components/flash.hpp"

#include <iostream>
#include <limits>
#include <sstream>

namespace {

void readColumn(std::istream& in, std::size_t count, std::vector<double>& column) {
    column.resize(count);
    for (double& value : column) in >> value;
}

void flashLine(const std::string& line) {
    std::istringstream in(line);
    std::size_t count = 0;
    double temperature = 0.0, pressure = 0.0;
    in >> count >> temperature >> pressure;
    kvr::FluidTables tables;
    readColumn(in, count, tables.TCRIT);
    readColumn(in, count, tables.PCRIT);
    readColumn(in, count, tables.ACF);
    readColumn(in, count * count, tables.BIC);
    kvr::Composition feed{};
    for (std::size_t i = 0; i < count; ++i) in >> feed[i];
    const kvr::ComponentSet set = kvr::componentSet(tables, temperature);
    kvr::FlashState state;
    kvr::FlashPT(set, feed, pressure, state);
    std::cout << static_cast<int>(state.phases) << ' ' << state.isSolved << ' ' << state.vapourFraction << ' '
              << state.zLiquid << ' ' << state.zVapour;
    for (std::size_t i = 0; i < count; ++i) std::cout << ' ' << state.liquid[i];
    for (std::size_t i = 0; i < count; ++i) std::cout << ' ' << state.vapour[i];
    std::cout << '\n';
}

}  // namespace

int main() {
    std::cout.precision(std::numeric_limits<double>::max_digits10);
    std::string line;
    while (std::getline(std::cin, line)) flashLine(line);
}
