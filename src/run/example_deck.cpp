#include "run/example_deck.hpp"

#include "base/written_files.hpp"
#include "run/records/output_streams.hpp"

#include <string_view>

namespace kvr {

namespace {

// The deck is fixed text. Its comments are the manual of the option section. Several of the defaults that
// they quote are older than those in force; programs that compare the text find them where they were, and
// the default in force stands on the line behind.

constexpr std::string_view ModelText = R"(-- One-dimensional analytical test, 100 x 1 x 1 cells
RUNSPEC

NOECHO

DIMENS
100    1    1  /

OIL
WATER
GAS
DISGAS
FIELD

START
1 JAN 2000/

TABDIMS
-- NTSFUN NTPVT            NSSFUN           NPPVT  NTFIP NRPVT
1    1                  100              100    1         50  /

WELLDIMS
-- Wells                Connections  Groups  Wells   Well list
-- in all               per well             /group
1                       1    2   30 1* 7 /

GRID

INIT

GRIDFILE
1 2 /

DX
100*0.82497192435831 /
DY
100*0.82497192435831 /
DZ
100*0.82497192435831 /

TOPS
100*4000/

PORO
100*0.1 /

PERMX
100*157.937419847697 /
PERMY
100*157.937419847697 /
PERMZ
100*157.937419847697 /

MINPV
0.0/

EDIT

PROPS

PVTO
-- Rs         Pbub   Bo      Vis
0.000      10.0  1.000   2.200   /
1.000    5010.0  1.100   2.000
10010.0  1.090   2.020   /
/

PVDG
-- Pres Bg   Vis
10  5.25  0.010
10010  0.25  0.020
/

PVTW
-- Pref    Bw       Cw       Vis Cvis
5000.00     1.00   1.0d-6   1.0 0.0/

DENSITY
-- Oil   Water   Gas
30.0   60.0   0.01/

SGOF
-- Sg  Krg  Krog Pcog
0.0  0.0  1.0  0.0
1.0  1.0  0.0  0.0
/

SWOF
-- Sw  Krw  Krow Pcow
0.0  0.0  1.0  0.0
1.0  1.0  0.0  0.0
/

ROCK
-- Pref Cr
4000 4.0d-6 /

RPTPROPS
1 1 1 1 1 1 1 1 /

REGIONS

SATNUM
100*1 /

SOLUTION

--EQUIL
-- Datum Pres  WOC  Pcow GOC  Pcog
-- 4000  4000  5000 0.0  3000 0.0 1 1 0 /
--RSVD
-- 4000 0.0
-- 5000 0.0
-- /

RS
100*0.0 /

PRESSURE
100*4000.0 /

SWAT
100*0.5d0 /

SGAS
100*0.0 /

RPTRST
'BASIC=2' 'FLOWS' /

SUMMARY

EXCEL
RUNSUM
RPTONLY
FPR
FOE
WBHP
/
WOPR
/
WWPR
/
WGPR
/
WOPT
/
WWPT
/
WGPT
/
WWCT
/
WGOR
/
WWIR
/
WOIR
/
WGIR
/
WVIR
/
WVPR
/
CVFR
/

SCHEDULE

DIMPES
0.9 0.9 10000.0 /

TUNING
-- Init Max  Min    Chop
0.001  0.1  0.00001 0.0001 /
-- Errors in truncation, non-linear and linear solution
4* /
-- Iterations: Newton max, min, linear max, min
12 1 100 1 /

WELSPECS
-- Well Group I J Depth Phase
'INJ' 'G1' 1 1 4000 'WATER' /
/

COMPDAT
-- Well I J K1 K2 Status Table Factor Diameter
'INJ' 1 1 1 1 'OPEN' 1* 1* 0.1 /
/

WCONINJE
-- Well Fluid Status Control Rate Resv BHP
'INJ' 'WATER' 'OPEN' 'RATE' 0.001 1* 10000.0 /
/

TSTEP
0.001 0.099/

END
)";

constexpr std::string_view OptionText = R"(
-- Everything below END is read by KVR only

TUNEKVR

FDMETHOD
-- Numerical Method [SL/IMPES/FIM : Def = SL]
STREAMLINE

PSOLVER
-- Prs Lin Mtx Solver [SGAUSS/DGESV/ITGSV/CG/GMRES/AMG : Def = AMG]
AMG

SSOLVER
-- Sat Lin Mtx Solver on SL [SGAUSS/GBAND : Def = GBAND]
GBAND

CONVERGE
-- Convergence criteria for pressure    [Def = 1.E-2]
-- Convergence criteria for sat for FIM [Def = 1.E-3]
--   in force: 1.E-4
-- Behind them: pressure iterations, saturation iterations, 30 each
1.d-2 1.d-4 /

NUMLINE
-- Number of streamline    [Def = MAX(Nx,Ny,Nz)*Nwell]
--   in force: NX*NY*NZ*Nwell/5, but no more than the larger of 500 and a sixteenth of the active cells
-- SL launching position   [INJ/PRD/CEL : Def = INJ]
-- Trace From missed block [Yes/No : Def = No]
2 INJ No /

SL1DCON
-- Solution of 1D equation  [EXPLICIT/IMPLICIT/ANALYTICAL : Def = EXPLICIT]
-- Node control on SL       [REG/IRR/AUTO : Def = IRR, REG on a record that says nothing else]
-- Node factor              [Def = 1.0]
-- Upstream weighting       [SPU/TVD(2PU)/LEONARD(3PU) : Def = SPU]
-- Compressibility on SL    [Yes/No : Def = Yes]
-- Gravity by Op-Splitting  [Yes/No : Def = Yes]
-- Capillary pressure       [Yes/No : Def = Yes, No on a record that says nothing else]
-- Orthogonal projection    [Yes/No : Def = No]
EXPLICIT  IRR 1.0 SPU Yes Yes Yes No/

CFL
-- CFL number, for explicit [Def = 0.8]
-- Minimum CFL time         [Def = 1.E-3]
--   in force: 1.E-2
0.01 1.d-5/

CFLG
-- CFL number, for Grv&Pc   [Def = 0.8]
-- Minimum time of Grv&Pc   [Def = 1.E-2]
0.01 1.d-5 / 

OPTIONKVR
-- Pressure update frequency, 0 = first step only  [Def = 1]
-- Corner point Tecplot output with faults         [Def = 0]
-- Use upstream Pressure of Trans Calc          [Def = 0, Use upstream]
--   in force: 0, and 1 holds saturations at the end points of their tables
-- Sensitivity output                              [Def = 0]
-- Upper solution GOR constraint                   [Def = 0]
-- Lower solution GOR constraint                   [Def = 0]
-- Internal debug, keep 0                          [Def = 0]
-- Iterative IMPES, number of iterations           [Def = 0]
1 0 0 0 0 0 0 0/

OUTPUTKVR
-- Debug output                                    [Def = 0]
-- Excel output   (.xls)                           [Def = 0]
-- Tecplot output (.plt)                           [Def = 0]
-- Streamline output                               [Def = 0]
-- Diffusive TOF output                            [Def = 0]
-- Pressure matrix output   (very heavy)           [Def = 0]
-- Saturation matrix output (very heavy)           [Def = 0]
-- View files                                      [Def = 1]
-- ECLIPSE format output (binary)                  [Def = 0]
-- Streamline output in .SLN                       [Def = 0]
1 1 1 0 0 0 0 /

MAXDT
-- Maximum Allowable Tstep  [Def = 999999.0]
--   in force: 1.E7
0.001

--OPTTSTEP
-- Time step control: largest pressure change of a step, psi
-- 100.0 /

--SL1DMAP
-- Mapping sub-steps of one pressure step [1 to 1000 : Def = 1]
-- 1 /

PVTOROWS
-- Oil above its bubble point: rows of every Rs or of the last [ALL/LAST : Def = ALL]
ALL

MAPPING
-- From lines to cells [CONSERVE/AVERAGE : Def = CONSERVE]
CONSERVE

--TOFMAP
-- Maps of the time of flight: lines of a cell [MEAN/SMALLEST : Def = MEAN]
-- MEAN

STEPCTRL
-- Steps that judge themselves [Yes/No : Def = Yes]
-- Volume error of the field, share of its pore volume [Def = 2.E-3]
-- Volume error of a cell, share of its pore volume    [Def = 0.5]
-- Volume that cells did not hold, share of the field  [Def = 1.E-4]
-- Rate over its target                                [Def = 8.E-3]
-- Rate away from the solved one                       [Def = 3.E-2]
-- Error of the mobilities of the solve                [Def = 0.025]
-- Smallest step, days                                 [Def = 1.E-3]
-- (limits are a fifth of these beside free gas)
Yes 2.d-3 0.5 1.d-4 8.d-3 3.d-2 0.03 1.d-3 /

--CHKRSAT
-- Check of residual saturations
-- 1 /

-- ECLIPSE run parameters
--ECLTRACE
--OUTWHIST
--ECL2TEC
--DELECL
--ECLCOMM
-- $e300
--USEECLP
--USEECLS
--USEECLTR
--LINUXRUN

--SMTHPRM
-- Property, number of smoothing passes
-- PERMX 1 /
-- /

--UPSCALE
-- Property, window along X, Y, Z
-- PERMX 2 2 1 /
-- /

-- Optimization parameters
--WFOOPT
-- Start step, emin, emax, alpha, wmin, wmax, minimum flux, usage of TOF
-- 1 0.0 1.0 2.0 -0.25 25.0 1.0 100.0 /
--OPTIMIZE
--EQARRIVE
--EQWAFS
--NPVOPT
--NPVPRICE
-- Oil $/bbl, water $/bbl, gas $/Mscf
-- 50.0 -1.0 2.0 /
--OPTMMP

-- Inversion parameters
--DOINV
-- Misfit [TRAVEL/AMPLITUDE], method [LSQR/GN], iterations [Def = 30]
-- TRAVEL LSQR 30 /
--OBJINV
-- Weight of water cut, of bottom hole pressure
-- 0.5 0.5 /
--OPTINV
-- Water cut limit global and per grid, Ln(k) limits
-- 0.0 0.0 2.0 2.0 0.0 /
--SNSTIMWT
-- 1.0 1.0 /
--SNSFORM
-- Travel time [COUPLED/LINES/CLASSIC : Def = COUPLED]
-- Pressure [COUPLED/LINES/CLASSIC : Def = COUPLED]
-- COUPLED COUPLED /
--AVGSENS
-- 2 5 /
--MISFCRIT
-- 10.0 10.0 /
--LSQOPT
-- Iterations, norm, horizontal and vertical smoothness
-- 400 0.1 0.1 0.1 /
--MAXPARAM
-- 5000.0 /
--MINPARAM
-- 0.0001 /
)";

void putText(std::string_view text, std::FILE* file) {
    std::fwrite(text.data(), 1, text.size(), file);
}

}  // namespace

void writeExampleDeck(const Console& console, const std::string& path) {
    std::FILE* file = openForReplace(console, path);
    putText(ModelText, file);
    putText(OptionText, file);
    closeWhole(console, file);
}

}  // namespace kvr
