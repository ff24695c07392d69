// prefs/PreferenceStore.cpp
//
// The store of small settings that all plug-ins share, and the one setting of the component's own.
#include "frame/BaseProductManager.h"

void CBaseProductManager::Normalize(char* output, const char* input)
{
    char* const last = output + kTextSize - 1;
    for (; *input && output < last; ++input) {
        const char byte = *input;
        const bool upper = byte >= 'A' && byte <= 'Z';
        const bool kept = upper || (byte >= 'a' && byte <= 'z') || (byte >= '0' && byte <= '9') || byte == '.' ||
                          byte == '_' || byte == '-';
        if (kept)
            *output++ = upper ? static_cast<char>(byte - 'A' + 'a') : byte;
        *output = '\0';
    }
}

bool CBaseProductManager::SetRegistryKey(const char*, const char*, const char*)
{
    return false;
}

bool CBaseProductManager::GetRegistryKey(const char*, const char*, char*, int)
{
    return false;
}

bool CBaseProductManager::KnobsDragVertical()
{
    return knobsDragVertical;
}

void CBaseProductManager::SetDragVertical(bool flag)
{
    knobsDragVertical = flag;
    (void)SetRegistryKey("Common", "Knobs Drag Vertical", flag ? "yes" : "no");
}
