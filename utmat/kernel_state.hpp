// Internal: the geometry kernel's process-wide state, for the kernel's own sources.
//
// Every exported kernel operation starts with enter(...) (clears the error word, refuses null
// pointers) and calls raiseError() when it fails;
// composite operations call other kernel operations and test failed() after each one,
// returning at once (with the word as the callee left it) when it is set.  Internal helpers
// that are not exported only ever raise the word, never clear it.
#ifndef KORVELBASE_UTMAT_KERNEL_STATE_HPP
#define KORVELBASE_UTMAT_KERNEL_STATE_HPP

#include <cstdint>

#include "base/entry.hpp"

namespace kb::utmat {

void clearError() noexcept;
void raiseError() noexcept;           // error word := ERR_FAILURE
bool failed() noexcept;               // error word non-zero
std::uint32_t errorWord() noexcept;

double calculationPrecision() noexcept;  // tolerance of near-equality tests on non-distances
double distanceTolerance() noexcept;     // coincidence tolerance of points
int spiralFormula() noexcept;            // UTMAT_SPIRAL_FORMULA_TARNAK or _VELMORAN

// After a MEM_ block-array call: copies the block-array error pair into the kernel error word
// and the memory detail word, so that UTMAT_GetErreur reports what the block array reported.
void takeBlockArrayError() noexcept;

// The entry of every exported kernel operation: clears the error word, then false (word
// raised) when any of the given pointers is null.
template <typename... Pointers>
[[nodiscard]] bool enter(const Pointers*... pointers) noexcept {
    return kb::enterOperation<clearError, raiseError>(pointers...);
}

// The entry of an operation without pointer arguments.
inline void enter() noexcept { clearError(); }

// The same check without clearing, for a composite operation part-way through.
template <typename... Pointers>
bool refuseNull(const Pointers*... pointers) noexcept {
    if (kb::allPresent(pointers...)) return false;
    raiseError();
    return true;
}

}  // namespace kb::utmat

#endif  // KORVELBASE_UTMAT_KERNEL_STATE_HPP
