/*
 * Test-only interface of the allocation failure injector.  Exists only in the library built
 * with KB_FAULT_INJECTION (the test build korvelbase_faults); the shipped library has none
 * of these symbols.
 */
#ifndef KORVELBASE_BASE_FAULT_INJECTION_H
#define KORVELBASE_BASE_FAULT_INJECTION_H

#include "korvelbase/export.h"

KB_BEGIN_DECLS

/* Counts allocations from zero again; the k-th from now (1-based) and every later one fail. */
KB_API void kbFault_failFrom(long long k) KB_NOEXCEPT;
/* Lets every allocation succeed again (the count goes on). */
KB_API void kbFault_disarm(void) KB_NOEXCEPT;
/* Allocations attempted since the last kbFault_failFrom. */
KB_API long long kbFault_allocationsSeen(void) KB_NOEXCEPT;

KB_END_DECLS

#endif /* KORVELBASE_BASE_FAULT_INJECTION_H */
