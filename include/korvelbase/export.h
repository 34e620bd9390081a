/*
 * KorvelBase: export and calling-convention macros shared by every public header.
 *
 * KB_API marks a function or constant that belongs to the library interface; the library is
 * built with hidden default visibility, so only what carries KB_API is exported.
 * KB_NOEXCEPT makes every exported function noexcept when the header is read by C++: no C++
 * exception ever crosses the C boundary.
 */
#ifndef KORVELBASE_EXPORT_H
#define KORVELBASE_EXPORT_H

#if defined(_WIN32) || defined(__CYGWIN__)
#  if defined(KORVELBASE_BUILDING)
#    define KB_API __declspec(dllexport)
#  else
#    define KB_API __declspec(dllimport)
#  endif
#else
#  define KB_API __attribute__((visibility("default")))
#endif

/*
 * KB_CALLEE_POPS marks the entry points that use the callee-pops (stdcall) convention on
 * 32-bit Windows, where a 32-bit host must declare them the same way; on every other target
 * there is one convention and it expands to nothing.
 */
#if defined(_WIN32) && !defined(_WIN64)
#  define KB_CALLEE_POPS __stdcall
#else
#  define KB_CALLEE_POPS
#endif

#ifdef __cplusplus
#  define KB_NOEXCEPT noexcept
#  define KB_BEGIN_DECLS extern "C" {
#  define KB_END_DECLS }
#else
#  define KB_NOEXCEPT
#  define KB_BEGIN_DECLS
#  define KB_END_DECLS
#endif

#endif /* KORVELBASE_EXPORT_H */
