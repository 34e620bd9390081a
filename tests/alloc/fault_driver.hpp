// Drives a scenario through every allocation failure it can meet.
//
// A scenario sets up its data with every allocation succeeding, arms the injector around the
// one call under test (FailingAllocation), then checks the result: the documented failure
// result and intact caller data when the armed allocation was reached, the normal result
// otherwise, and releases everything.  tryEveryAllocationFailure runs it with the k-th
// allocation of the call failing for k = 1, 2, ... until a run no longer reaches the armed
// allocation, that is until the call succeeds.  Leaks are caught by the leak checker of the
// sanitizer build, which runs this program too.
#ifndef KORVELBASE_TESTS_ALLOC_FAULT_DRIVER_HPP
#define KORVELBASE_TESTS_ALLOC_FAULT_DRIVER_HPP

#include <gtest/gtest.h>

#include "base/fault_injection.h"

namespace kbtest {

// Makes the k-th allocation from now (and every later one) fail while it lives.
class FailingAllocation {
public:
    explicit FailingAllocation(long long k) : k_(k) { kbFault_failFrom(k); }
    ~FailingAllocation() { kbFault_disarm(); }
    FailingAllocation(const FailingAllocation&) = delete;
    FailingAllocation& operator=(const FailingAllocation&) = delete;
    // True when the armed allocation was attempted, so the call met a failure.
    bool reached() const { return kbFault_allocationsSeen() >= k_; }

private:
    long long k_;
};

// Total failure points tried by the whole program, printed at its end.
long long& failurePointsTried();

// A bound no scenario reaches: a call that keeps allocating after a failure is a fault.
constexpr long long kMostAllocationsPerCall = 100000;

// scenario(k) returns FailingAllocation::reached() of its call.  Returns the points tried.
template <typename Scenario>
long long tryEveryAllocationFailure(Scenario&& scenario) {
    long long k = 1;
    while (k < kMostAllocationsPerCall && scenario(k)) ++k;
    EXPECT_LT(k, kMostAllocationsPerCall) << "the call never stopped allocating";
    failurePointsTried() += k - 1;
    return k - 1;
}

}  // namespace kbtest

#endif  // KORVELBASE_TESTS_ALLOC_FAULT_DRIVER_HPP
