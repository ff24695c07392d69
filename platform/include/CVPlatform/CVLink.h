// CVPlatform/CVLink.h
//
// Gives every name of the layer a linker name of its own. Some of the names here are exported by
// other libraries in a host's process too; the prefix keeps ours apart from them, while sources
// still say the plain name.
#ifndef CVPLATFORM_CVLINK_H
#define CVPLATFORM_CVLINK_H

/// Follows a declaration and sets its linker name: `void F(void) CV_LINK(F);`.
#define CV_LINK(name) __asm__("cv_" #name)

// The layer is built with hidden names; what stands between these two is what it offers.
#ifdef __cplusplus
#define CV_BEGIN_DECLS                                                                                                 \
    extern "C" {                                                                                                       \
    _Pragma("GCC visibility push(default)")
#define CV_END_DECLS                                                                                                   \
    _Pragma("GCC visibility pop")                                                                                      \
    }
#else
#define CV_BEGIN_DECLS _Pragma("GCC visibility push(default)")
#define CV_END_DECLS _Pragma("GCC visibility pop")
#endif

#endif
