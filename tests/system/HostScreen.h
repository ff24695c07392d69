// tests/system/HostScreen.h
//
// A screen for host programs that are not ours: they want a sound server too, here one without
// sound hardware.
#pragma once

#include "tests/support/Screen.h"

class CHostScreen : public CScreen {
public:
    /// Starts the servers; throws when one does not come up.
    CHostScreen();

private:
    std::optional<CProgram> m_sound;
};
