// tests/frame/com/OursLast.cpp
//
// Compiles where the Mac's COM names are there first: then E_FAIL is ours.
#include "CFPlugInCOM.h"

#include "frame/IProductManager.h"

static_assert(E_FAIL == static_cast<HRESULT>(0x80004005), "our E_FAIL holds where our header comes last");
