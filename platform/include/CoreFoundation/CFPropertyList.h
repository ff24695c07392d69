// CoreFoundation/CFPropertyList.h
//
// Property lists, read from XML and binary data, written as XML. Lists may come from anywhere, so
// they are bounded: 16 MiB, 512 levels, about a million nodes, 131,072 keys in a dictionary.
// Whole numbers have 64 bits; dates lie between 1934 and 2068, and XML gives them whole seconds.
#ifndef COREFOUNDATION_CFPROPERTYLIST_H
#define COREFOUNDATION_CFPROPERTYLIST_H

#include <CoreFoundation/CFBase.h>

CV_BEGIN_DECLS

enum { kCFPropertyListImmutable = 0 };

/// Makes the objects of a property list; any kind may be its root. The result is immutable
/// whatever `mutabilityOption` asks for.
/// @param errorString  receives null, or on failure a text that is the caller's; may be null.
/// @return the root, the caller's; null for malformed data or what passes the bounds above.
CFPropertyListRef CFPropertyListCreateFromXMLData(CFAllocatorRef allocator, CFDataRef xmlData,
                                                  CFOptionFlags mutabilityOption, CFStringRef* errorString)
    CV_LINK(CFPropertyListCreateFromXMLData);
/// Writes a property list as XML.
/// @return the bytes, the caller's; null for an object that no property list can hold or that
///         could not be read again (a text with a NUL in it, or what passes the bounds above).
CFDataRef CFPropertyListCreateXMLData(CFAllocatorRef allocator, CFPropertyListRef propertyList)
    CV_LINK(CFPropertyListCreateXMLData);

CV_END_DECLS

#endif
