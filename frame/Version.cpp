// frame/Version.cpp
//
// The version record and its two readings: a number and a line of text.
#include <math.h>
#include <stdio.h>

#include "frame/BaseProductManager.h"

// An aggregate on purpose: in some headers major and minor are macros with an argument.
CVProductVersion g_VersionInf = {1, 3, 0, "Copyright \xC2\xA9 2009-2011 Corvane Audio. All rights reserved."};

CVProductVersion* CBaseProductManager::GetProductVersion()
{
    return &g_VersionInf;
}

float CBaseProductManager::GetVersion(CVProductVersion* version)
{
    if (!version)
        return 1.0f;
    // On purpose one more decimal place for every ten of the minor number, not for every digit of
    // it: 20 reads as 1.02 and 35 as 1.0035. Plug-ins compare these numbers.
    const float divisor = powf(10.0f, static_cast<float>(version->minor / 10 + 1));
    return static_cast<float>(version->major) + static_cast<float>(version->minor) / divisor;
}

void CBaseProductManager::FormatVersionString(char* buffer, int size, CVProductVersion* version)
{
    if (!version || !buffer || size <= 0)
        return;
    snprintf(buffer, static_cast<size_t>(size), "%s %d.%d Build %d",
             TranslateCommon(kEffectLangInfoDialog, "Version", nullptr), static_cast<int>(version->major),
             static_cast<int>(version->minor), static_cast<int>(version->build));
}
