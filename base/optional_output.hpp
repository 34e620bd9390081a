// Internal: writing an output the caller may omit.
//
// Many exported functions take output pointers that may be null; each such write goes
// through storeOptional so the null test is written once.
#ifndef KORVELBASE_BASE_OPTIONAL_OUTPUT_HPP
#define KORVELBASE_BASE_OPTIONAL_OUTPUT_HPP

namespace kb {

template <typename T>
inline void storeOptional(T* destination, T value) noexcept {
    if (destination != nullptr) *destination = value;
}

}  // namespace kb

#endif  // KORVELBASE_BASE_OPTIONAL_OUTPUT_HPP
