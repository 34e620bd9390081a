/*
 * KorvelBase: umbrella header including every public header of the library.
 */
#ifndef KORVELBASE_KORVELBASE_H
#define KORVELBASE_KORVELBASE_H

#include "korvelbase/types.h"
#include "korvelbase/constants.h"
#include "korvelbase/compare.h"
#include "korvelbase/qmutil.h"
#include "korvelbase/convert.h"
#include "korvelbase/mem.h"
#include "korvelbase/blockarray.h"
#include "korvelbase/utmat.h"
#include "korvelbase/utmat_segments.h"
#include "korvelbase/utmat_polylines.h"
#include "korvelbase/utmat_clothoid.h"
#include "korvelbase/utmat_profiles.h"
#include "korvelbase/utmat_circles.h"
#include "korvelbase/utmat_tangency.h"
#include "korvelbase/bestfit_transform.h"
#include "korvelbase/bestfit_vertical.h"
#include "korvelbase/qmgeoid.h"
#include "korvelbase/conversion.h"
#include "korvelbase/qmformat.h"
#include "korvelbase/qmfilename.h"
#include "korvelbase/qmguid.h"
#include "korvelbase/qmlogfile.h"
#include "korvelbase/qmmath.h"
#include "korvelbase/qmmatrix.h"
#include "korvelbase/qmtransform.h"
#include "korvelbase/qmstring.h"
#include "korvelbase/dynarray.h"
#include "korvelbase/linkedlist.h"
#include "korvelbase/strlist.h"
#include "korvelbase/bestfit_horizontal.h"
#include "korvelbase/qmpoint.h"

#endif /* KORVELBASE_KORVELBASE_H */
