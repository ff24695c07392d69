// platform/desktop/x11/Xkb.h
//
// The keyboard extension's header, which names a member with a word of C++.
#pragma once

#define explicit explicit_
#include <xcb/xkb.h>
#undef explicit
