// CoreFoundation/CFPropertyList.h
//
// Property lists, read from XML and binary data, written as XML.
#ifndef COREFOUNDATION_CFPROPERTYLIST_H
#define COREFOUNDATION_CFPROPERTYLIST_H

#include <CoreFoundation/CFBase.h>

CV_BEGIN_DECLS

enum { kCFPropertyListImmutable = 0 };

/// Makes the objects of a property list; any kind may be its root. The result is immutable
/// whatever `mutabilityOption` asks for.
/// @param errorString  receives null, or on failure a text that is the caller's; may be null.
/// @return the root, the caller's; null for malformed data.
CFPropertyListRef CFPropertyListCreateFromXMLData(CFAllocatorRef allocator, CFDataRef xmlData,
                                                  CFOptionFlags mutabilityOption, CFStringRef* errorString)
    CV_LINK(CFPropertyListCreateFromXMLData);
/// Writes a property list as XML.
/// @return the bytes, the caller's; null for an object that no property list can hold.
CFDataRef CFPropertyListCreateXMLData(CFAllocatorRef allocator, CFPropertyListRef propertyList)
    CV_LINK(CFPropertyListCreateXMLData);

CV_END_DECLS

#endif
