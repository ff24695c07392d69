// tests/corefoundation/PlaceProbe.cpp
//
// Prints a domain's files for the user and for the machine, as the process that it is sees them.
#include <cstdio>

#include "platform/corefoundation/PreferencesPlace.h"

int main()
{
    for (const PreferencesUser user : {PreferencesUser::Current, PreferencesUser::Any}) {
        const auto place = FindPreferencesPlace("some.domain", {user, PreferencesHost::Any});
        std::puts(place ? place->file.c_str() : "none");
    }
}
