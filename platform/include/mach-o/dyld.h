// mach-o/dyld.h
//
// The images (programs and shared libraries) that are loaded into this process. Every call works
// on every thread. The list changes when libraries are loaded and unloaded; a thread's indices mean
// the images that it counted last, so that a search is not led astray by other threads.
#ifndef MACH_O_DYLD_H
#define MACH_O_DYLD_H

#include <CVPlatform/CVLink.h>
#include <stdint.h>

CV_BEGIN_DECLS

/// The first bytes of an image in memory; on this platform its ELF header.
struct mach_header;

/// Answers how many images are loaded, and numbers them for the calling thread. Index 0 is the main
/// executable.
uint32_t _dyld_image_count(void) CV_LINK(_dyld_image_count);
/// Answers where an image begins in memory; null for an index out of range.
const struct mach_header* _dyld_get_image_header(uint32_t image_index) CV_LINK(_dyld_get_image_header);
/// Answers an image's absolute path, in memory that is never freed; null for an index out of range
/// or an image without a file. It stays right when the process changes its working folder, and
/// names the new place of an image that was moved.
const char* _dyld_get_image_name(uint32_t image_index) CV_LINK(_dyld_get_image_name);

// The address of __dso_handle is that of the own image's header. The ELF linker's word for it is
// __ehdr_start; hidden, so that it is always the own image's.
#define __dso_handle __ehdr_start
extern void* __ehdr_start __attribute__((visibility("hidden")));

CV_END_DECLS

#endif
