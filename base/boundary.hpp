// Internal: the C boundary guard.
//
// Exported functions are noexcept.  Those whose implementation can throw (allocation inside a
// standard container, a length error) run their body through callGuarded, which turns any
// exception into the failure result the function documents instead of terminating the host.
#ifndef KORVELBASE_BASE_BOUNDARY_HPP
#define KORVELBASE_BASE_BOUNDARY_HPP

#include <utility>

namespace kb {

template <typename Result, typename Body>
Result callGuarded(Result onFailure, Body&& body) noexcept {
    try {
        return std::forward<Body>(body)();
    } catch (...) {
        return onFailure;
    }
}

}  // namespace kb

#endif  // KORVELBASE_BASE_BOUNDARY_HPP
