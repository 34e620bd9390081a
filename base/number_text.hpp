// Internal: numbers as text in the "C" locale's form, whatever locale the host has set.
#ifndef KORVELBASE_BASE_NUMBER_TEXT_HPP
#define KORVELBASE_BASE_NUMBER_TEXT_HPP

#include "base/heap.hpp"

namespace kb {

// printf's "%.*f" in the "C" locale: fixed-point with `decimals` digits and '.' as separator.
String fixedText(double value, int decimals);

// printf's "%lld".
String integerText(long long value);

}  // namespace kb

#endif  // KORVELBASE_BASE_NUMBER_TEXT_HPP
