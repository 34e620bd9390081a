/* KorvelBase: utmat (being written). */
#ifndef KORVELBASE_UTMAT_H
#define KORVELBASE_UTMAT_H

#include "korvelbase/types.h"

#endif /* KORVELBASE_UTMAT_H */
