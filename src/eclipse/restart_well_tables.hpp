#pragma once

#include "eclipse/records.hpp"
#include "eclipse/restart_units.hpp"

#include <array>
#include <string>
#include <vector>

namespace kvr {

/// The well and connection tables of a restart with the lengths that its INTEHEAD gives for them.
struct RestartWellTables {
    std::int32_t wells = 0;            // INTEHEAD 17
    std::int32_t mostConnections = 0;  // 18, of a well
    // Words a well of IWEL, SWEL, XWEL, ZWEL (25..28), words a connection of ICON, SCON, XCON (33..35).
    std::int32_t wellIntegers = 0, wellSingles = 0, wellDoubles = 0, wellNames = 0;
    std::int32_t connectionIntegers = 0, connectionSingles = 0, connectionDoubles = 0;
    std::vector<std::int32_t> IWEL, ICON;
    std::vector<float> SWEL, SCON;
    std::vector<double> XWEL, XCON;
    std::vector<Text8> ZWEL;
};

/// Lengths from the header; what it does not hold stays 0.
void takeWellLengths(const std::vector<std::int32_t>& head, RestartWellTables& tables);

/// Takes a block that is one of the seven tables; false for any other.
bool takeWellBlock(const BlockHeader& header, const BlockData& data, RestartWellTables& tables);

/// What a well flows by the file: positive into the reservoir, surface volumes a day inside.
struct FileRates {
    double oil = 0.0, water = 0.0, gas = 0.0;
};

struct FileConnection {
    std::array<int, 3> place{};  // i, j, k
    bool open = false;
    char direction = 'Z';
    double factor = 0.0;    // rb cp/(day psi); 0 where the file has none
    double diameter = 0.0;  // ft
    bool hasRates = false;
    FileRates rates;
};

struct FileWell {
    std::string name;           // blank where the file names none
    std::array<int, 3> head{};  // i, j, k of the head
    int connectionCount = 0;    // as the well table says
    std::string kind;           // "prd" or "inj"; blank for a type that is neither
    std::string fluid;          // "oil", "wat", "gas" of an injector, else blank
    bool open = false;
    bool hasRates = false;
    FileRates rates;
    double bhp = 0.0;  // psia; 0 where the file has none
    std::vector<FileConnection> connections;
};

/// The wells as far as the tables hold them: none without IWEL, whatever the header says.
std::vector<FileWell> wellsOf(const RestartWellTables& tables, const FileUnits& units);

}  // namespace kvr
