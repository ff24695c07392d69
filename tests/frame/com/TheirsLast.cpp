// tests/frame/com/TheirsLast.cpp
//
// Compiles where the Mac's COM names come behind ours, and a class may use both.
#include "frame/IProductManager.h"

#include "CFPlugInCOM.h"

static_assert(S_OK == 0, "their names are there");
static_assert(sizeof(IUnknown) == sizeof(corvane::IUnknown), "both are classes of their own");
