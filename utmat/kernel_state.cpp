// The geometry kernel's global state (error word, memory detail word, calculation precision,
// distance tolerance, spiral-formula selector) and the kernel's tolerant comparisons.
#include "utmat/kernel_state.hpp"

#include "korvelbase/blockarray.h"
#include "korvelbase/compare.h"
#include "korvelbase/utmat.h"

namespace {

constexpr double kInitialCalculationPrecision = 0.0001;
// A large value for a length, kept as the stored default: callers set their own.
constexpr double kInitialDistanceTolerance = 2.0;

// One instance for the whole process, without any guard: the kernel is for one thread at a
// time.  Constant-initialised, so usable from any other source's dynamic initialisation.
std::uint32_t kernelErrorWord = 0;
std::uint32_t memoryDetailWord = 0;
double calculationPrecisionValue = kInitialCalculationPrecision;
double distanceToleranceValue = kInitialDistanceTolerance;
int spiralFormulaSelector = UTMAT_SPIRAL_FORMULA_VELMORAN;

}  // namespace

namespace kb::utmat {

void clearError() noexcept { kernelErrorWord = 0; }
void raiseError() noexcept { kernelErrorWord = ERR_FAILURE; }
bool failed() noexcept { return kernelErrorWord != 0; }
std::uint32_t errorWord() noexcept { return kernelErrorWord; }

double calculationPrecision() noexcept { return calculationPrecisionValue; }
double distanceTolerance() noexcept { return distanceToleranceValue; }
int spiralFormula() noexcept { return spiralFormulaSelector; }

void takeBlockArrayError() noexcept {
    int error = 0;
    int detail = 0;
    MEM_GetErreur(&error, &detail);
    kernelErrorWord = static_cast<std::uint32_t>(error);
    memoryDetailWord = static_cast<std::uint32_t>(detail);
}

}  // namespace kb::utmat

using kb::utmat::enter;

extern "C" {

void UTMAT_GetErreur(uint32_t* error, uint32_t* detail) noexcept {
    if (error != nullptr) *error = kernelErrorWord;
    if (detail != nullptr) *detail = memoryDetailWord;
}

void UTMAT_setCalculPrecision(double precision) noexcept {
    enter();
    calculationPrecisionValue = precision;
}

double UTMAT_getCalculPrec(void) noexcept { return calculationPrecisionValue; }

void UTMAT_setDistanceTolerance(double tolerance) noexcept {
    enter();
    distanceToleranceValue = tolerance;
}

double UTMAT_getDistanceTolerance(void) noexcept { return distanceToleranceValue; }

void UTMAT_SetTarnakSpiralFormula(void) noexcept {
    enter();
    spiralFormulaSelector = UTMAT_SPIRAL_FORMULA_TARNAK;
}

void UTMAT_SetVelmoranSpiralFormula(void) noexcept {
    enter();
    spiralFormulaSelector = UTMAT_SPIRAL_FORMULA_VELMORAN;
}

// The kernel's comparisons are the library's tolerant comparisons behind a cleared error
// word.  Equality deliberately uses the magnitude of the tolerance (qmMath_doublesNearEqual).

int UTMAT_Inf(double a, double b, double tol) noexcept {
    enter();
    return qmUtil_lessDouble(a, b, tol);
}

int UTMAT_InfOuEgal(double a, double b, double tol) noexcept {
    enter();
    return qmUtil_lessOrEqualDouble(a, b, tol);
}

int UTMAT_Egal(double a, double b, double tol) noexcept {
    enter();
    return qmMath_doublesNearEqual(a, b, tol);
}

int UTMAT_SupOuEgal(double a, double b, double tol) noexcept {
    enter();
    return qmUtil_greaterOrEqualDouble(a, b, tol);
}

int UTMAT_Sup(double a, double b, double tol) noexcept {
    enter();
    return qmUtil_greaterDouble(a, b, tol);
}

int UTMAT_AppartenirAIntFerme(double x, double lo, double hi, double tol) noexcept {
    enter();
    return qmUtil_belongToClosedIntervalDouble(x, lo, hi, tol);
}

int UTMAT_AppartenirAIntOuvert(double x, double lo, double hi, double tol) noexcept {
    enter();
    return qmUtil_belongToOpenIntervalDouble(x, lo, hi, tol);
}

}  // extern "C"
