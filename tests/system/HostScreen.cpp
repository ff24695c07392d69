// tests/system/HostScreen.cpp
#include "tests/system/HostScreen.h"

#include <unistd.h>

#include <cstdlib>
#include <stdexcept>

#include "tests/support/Support.h"

CHostScreen::CHostScreen()
{
    const std::string sound = "quillet-" + std::to_string(getpid());
    setenv("JACK_DEFAULT_SERVER", sound.c_str(), 1);
    setenv("JACK_NO_AUDIO_RESERVATION", "1", 1);
    setenv("NO_AT_BRIDGE", "1", 1);
    m_sound.emplace(
        std::vector<std::string>{"jackd", "--no-realtime", "-n", sound, "-d", "dummy", "-r", "48000", "-p", "1024"});
    if (!WaitFor([] { return RunProgram({"jack_wait", "-c"}).out.find("not") == std::string::npos; }))
        throw std::runtime_error("the sound server did not start: " + m_sound->Log());
}
