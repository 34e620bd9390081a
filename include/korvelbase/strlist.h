/* KorvelBase: strlist (being written). */
#ifndef KORVELBASE_STRLIST_H
#define KORVELBASE_STRLIST_H

#include "korvelbase/types.h"

#endif /* KORVELBASE_STRLIST_H */
