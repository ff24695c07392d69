// frame/BuildNumber.cpp
//
// The build number: the day on which this file was compiled.
#include "frame/BuildNumber.h"

#include <stdlib.h>
#include <string.h>

#include "frame/ProductVersion.h"

// A build that must give the same bytes on another day states its date.
#ifndef CV_COMPILE_DATE
#define CV_COMPILE_DATE __DATE__
#endif

uint32_t BuildNumberOfDate(const char* date)
{
    static const char* const kMonths[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                          "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    static const int kMonthCount = sizeof kMonths / sizeof kMonths[0];
    char text[12] = "";
    strncpy(text, date, sizeof text - 1);
    if (strlen(text) < sizeof text - 1)
        return 0;
    text[3] = '\0';
    text[6] = '\0';
    int month = 0;
    for (int index = 0; index < kMonthCount && month == 0; ++index) {
        if (strncmp(text, kMonths[index], 3) == 0)
            month = index + 1;
    }
    const int day = atoi(text + 4);
    const int year = atoi(text + 9); // on purpose the last two digits only
    return static_cast<uint32_t>(year * 10000 + month * 100 + day);
}

uint32_t g_CVGetCurrentBuildNumber()
{
    return BuildNumberOfDate(CV_COMPILE_DATE);
}
