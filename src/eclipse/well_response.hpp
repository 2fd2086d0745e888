#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kvr {

/// Numbers by which the vectors of a summary are known inside; component c has FirstComponent + c - 1 and
/// SecondComponentRun + c - 1.
namespace response {
inline constexpr int WOPR = 1, WWPR = 2, WGPR = 3, WBHP = 4, WWCT = 5, WGOR = 6;
inline constexpr int WOPRH = 7, WWPRH = 8, WGPRH = 9, WBHPH = 10, WWCTH = 11, WGORH = 12;
inline constexpr int CVFR = 15;
inline constexpr int WWIR = 20, WGIR = 21, WOIR = 22;
inline constexpr int FPR = 41, FGIR = 50;
inline constexpr int FirstComponent = 51, SecondComponentRun = 101;
}  // namespace response

struct ResponseMnemonic {
    std::string name;  // eight characters
    int id = 0;
};
/// Every mnemonic that is looked for, those of the components included.
std::vector<ResponseMnemonic> responseMnemonics(int componentCount);

/// A vector by step, in the units of the file.
struct ResponseVector {
    int id = 0;
    int slot = 0;  // of its well's name, 1-based; 1 for the field
    std::vector<double> values;
};

/// Reservoir rate of one connection by step.
struct ConnectionResponse {
    std::string well;
    int cell = 0;        // NUMS of the vector
    int connection = 0;  // 1-based among those of its well
    std::vector<double> values;
};

/// A step that the simulator took on its way to a report.
struct StepBetween {
    double time = 0.0;           // days
    std::size_t report = 0;      // the one that it leads to, 0-based
    std::vector<double> values;  // one a vector
};

/// Units of a summary, by what it says of them.
enum class ResponseUnits { Unknown, Field, Metric };

/// What the summary files of a run tell, step by step.
struct SummaryResponse {
    int firstStep = 0;
    ResponseUnits units = ResponseUnits::Unknown;
    std::vector<double> time;             // days, one a step
    std::vector<std::string> wellNames;   // by slot, in the order in which the index names them
    std::vector<ResponseVector> vectors;  // of wells and field
    std::vector<ConnectionResponse> connections;
    std::vector<StepBetween> between;  // in the order of time
};

/// Values of a well's vector, empty where the files have none. `slot` is 1-based.
const std::vector<double>* responseOf(const SummaryResponse& response, int id, int slot);

/// A report, or a step on the way to it.
struct ResponsePlace {
    std::size_t report = 0;                // 0-based
    const StepBetween* between = nullptr;  // null: the report itself
};
/// A well's value there, none where the files have none.
std::optional<double> responseAt(const SummaryResponse& response, int id, int slot,
                                 const ResponsePlace& place);

}  // namespace kvr
