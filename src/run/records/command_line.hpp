#pragma once

#include <string>

namespace kvr {

/// What the user said when starting the program.
struct CommandLine {
    std::string deck;           // path of the deck; empty: found by its name in the present folder
    std::string outputFolder;   // empty: the folder of the deck
    int threads = 0;            // 0: as many as the machine or OMP_NUM_THREADS give
    bool check = false;         // read and tell, run and write nothing
    bool verbose = false;       // the console shows what the log has, too
    bool allowOutside = false;  // a command that the deck names may be run
};

/// A deck was named: results have its name, and the console is concise.
inline bool isNamed(const CommandLine& command) {
    return !command.deck.empty();
}

}  // namespace kvr
