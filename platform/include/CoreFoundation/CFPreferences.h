// CoreFoundation/CFPreferences.h
//
// Settings that outlive a process, shared by all processes of a user or of the machine.
#ifndef COREFOUNDATION_CFPREFERENCES_H
#define COREFOUNDATION_CFPREFERENCES_H

#include <CoreFoundation/CFBase.h>

CV_BEGIN_DECLS

/// Scopes: whose settings, and on which machine.
extern const CFStringRef kCFPreferencesAnyUser CV_LINK(kCFPreferencesAnyUser);
extern const CFStringRef kCFPreferencesCurrentUser CV_LINK(kCFPreferencesCurrentUser);
extern const CFStringRef kCFPreferencesCurrentHost CV_LINK(kCFPreferencesCurrentHost);

CV_END_DECLS

#endif
