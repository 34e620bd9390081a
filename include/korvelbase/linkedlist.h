/* KorvelBase: linkedlist (being written). */
#ifndef KORVELBASE_LINKEDLIST_H
#define KORVELBASE_LINKEDLIST_H

#include "korvelbase/types.h"

#endif /* KORVELBASE_LINKEDLIST_H */
