/* KorvelBase: dynarray (being written). */
#ifndef KORVELBASE_DYNARRAY_H
#define KORVELBASE_DYNARRAY_H

#include "korvelbase/types.h"

#endif /* KORVELBASE_DYNARRAY_H */
