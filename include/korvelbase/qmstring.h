/* KorvelBase: qmstring (being written). */
#ifndef KORVELBASE_QMSTRING_H
#define KORVELBASE_QMSTRING_H

#include "korvelbase/types.h"

#endif /* KORVELBASE_QMSTRING_H */
