// platform/desktop/x11/Xkb.h
//
// xcb's header of the keyboard extension: it names a field with a word that C++ keeps for itself.
#pragma once

#ifdef __clang__
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wkeyword-macro"
#endif
#define explicit explicit_
#include <xcb/xkb.h>
#undef explicit
#ifdef __clang__
#pragma clang diagnostic pop
#endif
