// CoreFoundation/CFPreferences.h
//
// Settings that outlive a process, shared by all processes of a user or of the machine.
//
// A domain (an application's identifier) has a file for each scope: for any user or the current
// one, on any host or the current one. Each file is a property list whose root is a dictionary:
// written as a binary list, read as a binary or an XML one, so that an administrator may write it.
//   any user      first folder of XDG_CONFIG_DIRS, else /etc/xdg
//   current user  XDG_CONFIG_HOME, else .config in HOME, else .config in the home that the
//                 password database tells
//   below that    corvane/ and for the current host corvane/ByHost/
// A process with raised privileges does not read these variables.
//
// The usual order of calls:
//   1. CFPreferencesSetValue for each change: this process sees them.
//   2. CFPreferencesSynchronize: they are on disk and all processes see them.
// and to read
//   1. CFPreferencesSynchronize: takes in what others have written.
//   2. CFPreferencesCopyValue.
//
// All calls may be made from any thread. A forked child begins anew: changes that its parent had
// not written yet stay the parent's. Null arguments, but for `value`, and unknown scopes give null
// or false and change nothing.
#ifndef COREFOUNDATION_CFPREFERENCES_H
#define COREFOUNDATION_CFPREFERENCES_H

#include <CoreFoundation/CFBase.h>

CV_BEGIN_DECLS

/// Scopes: whose settings, and on which machine.
extern const CFStringRef kCFPreferencesAnyUser CV_LINK(kCFPreferencesAnyUser);
extern const CFStringRef kCFPreferencesCurrentUser CV_LINK(kCFPreferencesCurrentUser);
extern const CFStringRef kCFPreferencesAnyHost CV_LINK(kCFPreferencesAnyHost);
extern const CFStringRef kCFPreferencesCurrentHost CV_LINK(kCFPreferencesCurrentHost);
/// Domains: the one that all applications share, and the one of the program that runs (its
/// bundle's identifier, else its file's name).
extern const CFStringRef kCFPreferencesAnyApplication CV_LINK(kCFPreferencesAnyApplication);
extern const CFStringRef kCFPreferencesCurrentApplication CV_LINK(kCFPreferencesCurrentApplication);

/// Sets a key's value for this process; Synchronize writes it.
/// @param value  a property list, copied; null removes the key. What is no property list, or is
///               nested deeper than 512 levels, changes nothing.
void CFPreferencesSetValue(CFStringRef key, CFPropertyListRef value, CFStringRef applicationID, CFStringRef userName,
                           CFStringRef hostName) CV_LINK(CFPreferencesSetValue);
/// Looks in the one scope.
/// @return the value, of any kind of property list, the caller's; null when it is absent.
CFPropertyListRef CFPreferencesCopyValue(CFStringRef key, CFStringRef applicationID, CFStringRef userName,
                                         CFStringRef hostName) CV_LINK(CFPreferencesCopyValue);
/// Writes this process's changes of the domain in that scope and takes in those of others. A key
/// that others changed meanwhile keeps their value unless it was set here too. A value that is
/// stored already costs no write. A file that cannot be understood is put aside beside itself,
/// with ".damaged-" and a number behind its name.
/// @return true when the changes are on disk, power cut or not. False when they cannot be: no right
///         to write there, a full disk, another writer for two seconds; they are then dropped, and
///         what is read is what is stored. True where there is nothing to write.
Boolean CFPreferencesSynchronize(CFStringRef applicationID, CFStringRef userName, CFStringRef hostName)
    CV_LINK(CFPreferencesSynchronize);
/// Answers the keys in the one scope, in no particular order, the caller's; null when it has none.
CFArrayRef CFPreferencesCopyKeyList(CFStringRef applicationID, CFStringRef userName, CFStringRef hostName)
    CV_LINK(CFPreferencesCopyKeyList);

/// As CFPreferencesSetValue, for the current user on any host.
void CFPreferencesSetAppValue(CFStringRef key, CFPropertyListRef value, CFStringRef applicationID)
    CV_LINK(CFPreferencesSetAppValue);
/// Looks in all scopes: the user's before the machine's, in each the application's before those of
/// any application, and the current host's before those of any host.
CFPropertyListRef CFPreferencesCopyAppValue(CFStringRef key, CFStringRef applicationID)
    CV_LINK(CFPreferencesCopyAppValue);
/// Synchronizes all scopes that CFPreferencesCopyAppValue looks in.
/// @return whether each could be.
Boolean CFPreferencesAppSynchronize(CFStringRef applicationID) CV_LINK(CFPreferencesAppSynchronize);

CV_END_DECLS

#endif
