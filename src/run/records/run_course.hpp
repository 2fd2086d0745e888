#pragma once

#include <string>
#include <vector>

namespace kvr {

/// What the closing summary tells of one well.
struct WellCourse {
    bool flowed = false;
    bool atLimit = false;     // at the end of the last step
    std::string limitDate;    // of the first step at whose end it was at its limit; empty: never
    std::string closedDate;   // of the step behind which an economic limit closed it; empty: never
    std::string releaseDate;  // of the last step at whose end it had come off it; empty: never
};

/// What a run was like, kept step by step for its closing summary and its table of reports.
struct RunCourse {
    std::vector<WellCourse> wells;  // by well number
    bool stepsBegun = false;
    int endSignal = 0;      // the signal that ended the run; 0: none
    int stepsAtReport = 0;  // counts when the last row of the table was written
    long cutsAtReport = 0;
    bool tableBegun = false;
    // Of runs by the fully implicit method alone: days in steps over which mobilities change too much for its
    // first order, and the longest MAXDT that would have served the worst of them, days.
    double coarseDays = 0.0, worstLag = 0.0, servingLength = 0.0;
};

}  // namespace kvr
